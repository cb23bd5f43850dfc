// Transfers run on libcurl in the calling thread, which follows redirects to the web alone; files are read
// directly.

#include "Platform/Foundation/URLLoading.h"

#include "Platform/Foundation/Exception.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <curl/curl.h>
#include <memory>
#include <mutex>
#include <new>

namespace Imaging::Platform {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

struct SharedLimits {
    std::mutex lock;
    URLLimits limits;
};

SharedLimits& sharedLimits() {
    static SharedLimits& instance = *new SharedLimits;
    return instance;
}

/// libcurl wants to be set up once before it is used; a static local is that also with threads.
bool isLibraryReady() {
    static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return ready;
}

/// "30 s", or "1.5 s" when it is no whole number.
std::string secondsText(Milliseconds duration) {
    std::array<char, 40> digits{};
    const double seconds = static_cast<double>(duration.count()) / 1000.0;
    const auto [end, failure] = std::to_chars(digits.data(), digits.data() + digits.size(), seconds);
    return std::string(digits.data(), end) + " s";
}

std::string statusText(long status) {
    switch (status) {
    case 401:
        return "401 (not authorised)";
    case 403:
        return "403 (forbidden)";
    case 404:
        return "404 (not found)";
    case 410:
        return "410 (gone)";
    case 429:
        return "429 (too many requests); try again later";
    case 500:
        return "500 (internal error); try again later";
    case 502:
        return "502 (bad gateway); try again later";
    case 503:
        return "503 (unavailable); try again later";
    case 504:
        return "504 (gateway timed out); try again later";
    default:
        return std::to_string(status);
    }
}

std::string largerThan(std::uint64_t maximumBytes) {
    return "it holds more than the limit of " + std::to_string(maximumBytes) + " bytes";
}

/// Hosts that are never asked through a proxy: those that the environment names, and this machine.
std::string hostsWithoutProxy() {
    const char* named = std::getenv("no_proxy");
    if (named == nullptr) named = std::getenv("NO_PROXY");
    const std::string hosts = named == nullptr ? "" : named;
    if (hosts == "*") return hosts;
    return hosts + (hosts.empty() ? "" : ",") + "localhost,127.0.0.0/8,::1";
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

/// The value of a header line of the given lower-case name, or nullopt when the line is another.
std::optional<std::string_view> headerValue(std::string_view line, std::string_view name) {
    if (line.size() <= name.size() || line[name.size()] != ':') return std::nullopt;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char c = line[i];
        if ((c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c) != name[i]) return std::nullopt;
    }
    return trimmed(line.substr(name.size() + 1));
}

/// One transfer. It is driven here rather than by curl_easy_perform, which counts a stall in whole seconds.
class Transfer {
public:
    Transfer(const NSURL& url, const URLLimits& limits);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    std::optional<NSData> run(NSError* error);

private:
    template<class T>
    void set(CURLoption option, T value) {
        curl_easy_setopt(m_easy, option, value);
    }
    void setUp(const NSURL& url);
    void setCallbacks();

    static std::size_t receivedHeader(char* bytes, std::size_t size, std::size_t count, void* transfer);
    static std::size_t receivedBody(char* bytes, std::size_t size, std::size_t count, void* transfer);
    static int connected(void* transfer, char*, char*, int, int);
    bool acceptHeader(std::string_view line);
    bool acceptBody(std::string_view bytes);

    /// Drives the transfer until it is over or a limit is reached, which goes into the failure.
    CURLcode drive();
    /// How long to wait for the network at most; nullopt, with a failure, when a limit is reached.
    std::optional<Milliseconds> timeLeft();
    CURLcode result();

    bool refuse(NSErrorCode code, std::string message);
    std::string describe(CURLcode code) const;
    NSError failureFor(CURLcode code) const;

    URLLimits m_limits;
    CURL* m_easy;
    CURLM* m_multi;
    NSError m_failure;
    NSData m_data;
    long m_status = 0;             ///< of the answer whose headers are being read
    std::uint64_t m_announced = 0; ///< its Content-Length
    std::string m_location;        ///< where it redirects to
    Clock::time_point m_start;
    Clock::time_point m_last_arrival;
    bool m_is_connected = false;
};

Transfer::Transfer(const NSURL& url, const URLLimits& limits)
    : m_limits(limits), m_easy(curl_easy_init()), m_multi(curl_multi_init()) {
    if (m_easy != nullptr) setUp(url);
}

Transfer::~Transfer() {
    if (m_easy != nullptr && m_multi != nullptr) curl_multi_remove_handle(m_multi, m_easy);
    curl_easy_cleanup(m_easy);
    curl_multi_cleanup(m_multi);
}

void Transfer::setUp(const NSURL& url) {
    set(CURLOPT_URL, url.absoluteString().c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, static_cast<long>(std::max(m_limits.maximumRedirects, 0)));
    // Signals belong to the application.
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_CONNECTTIMEOUT_MS,
        static_cast<long>(std::max<Milliseconds::rep>(1, m_limits.connectTimeout.count())));
    set(CURLOPT_NOPROXY, hostsWithoutProxy().c_str());
    // Otherwise giving up would wait for a name server that does not answer, whatever the limits are.
    set(CURLOPT_QUICK_EXIT, 1L);
    // What a proxy says about the tunnel through it is not the answer.
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(CURLOPT_ACCEPT_ENCODING, "gzip");
    set(CURLOPT_USERAGENT, "imaging/" IMAGING_VERSION);
    setCallbacks();
}

void Transfer::setCallbacks() {
    set(CURLOPT_HEADERFUNCTION, &Transfer::receivedHeader);
    set(CURLOPT_HEADERDATA, static_cast<void*>(this));
    set(CURLOPT_WRITEFUNCTION, &Transfer::receivedBody);
    set(CURLOPT_WRITEDATA, static_cast<void*>(this));
    set(CURLOPT_PREREQFUNCTION, &Transfer::connected);
    set(CURLOPT_PREREQDATA, static_cast<void*>(this));
}

std::size_t Transfer::receivedHeader(char* bytes, std::size_t size, std::size_t count, void* transfer) {
    const bool goOn = static_cast<Transfer*>(transfer)->acceptHeader({bytes, size * count});
    return goOn ? size * count : 0;
}

std::size_t Transfer::receivedBody(char* bytes, std::size_t size, std::size_t count, void* transfer) {
    const bool goOn = static_cast<Transfer*>(transfer)->acceptBody({bytes, size * count});
    // An answer of no bytes is success for an empty piece, so failure has to be another number.
    return goOn ? size * count : size * count + 1;
}

int Transfer::connected(void* transfer, char*, char*, int, int) {
    auto* self = static_cast<Transfer*>(transfer);
    self->m_is_connected = true;
    self->m_last_arrival = Clock::now();
    return CURL_PREREQFUNC_OK;
}

bool Transfer::refuse(NSErrorCode code, std::string message) {
    m_failure = {code, std::move(message)};
    return false;
}

bool Transfer::acceptHeader(std::string_view line) {
    m_last_arrival = Clock::now();
    if (line.starts_with("HTTP/")) {
        curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &m_status);
        m_announced = 0;
        m_location.clear();
    } else if (const auto length = headerValue(line, "content-length"); length.has_value()) {
        const auto parsed = std::from_chars(length->data(), length->data() + length->size(), m_announced);
        if (parsed.ec == std::errc::result_out_of_range) m_announced = UINT64_MAX;
    } else if (const auto location = headerValue(line, "location"); location.has_value()) {
        m_location = *location;
    }
    if (!trimmed(line).empty() || m_status < 200) return true;
    // All headers of this answer are there.
    if (m_status >= 300 && m_status < 400 && !m_location.empty()) return true;
    if (m_status >= 300) return refuse(NSErrorCode::Network, "the server answered " + statusText(m_status));
    if (m_announced <= m_limits.maximumBytes) return true;
    return refuse(NSErrorCode::TooLarge, largerThan(m_limits.maximumBytes));
}

bool Transfer::acceptBody(std::string_view bytes) {
    m_last_arrival = Clock::now();
    if (bytes.size() > m_limits.maximumBytes - m_data.size()) {
        return refuse(NSErrorCode::TooLarge, largerThan(m_limits.maximumBytes));
    }
    try {
        m_data.insert(m_data.end(), bytes.begin(), bytes.end());
    } catch (const std::exception&) {
        // Nothing may be thrown through the library in between.
        return refuse(NSErrorCode::TooLarge, "there is not enough memory for it");
    }
    return true;
}

std::optional<Milliseconds> Transfer::timeLeft() {
    const Clock::time_point now = Clock::now();
    const auto totalLeft = m_start + m_limits.totalTimeout - now;
    if (totalLeft <= Clock::duration::zero()) {
        refuse(NSErrorCode::Network, "it did not arrive within " + secondsText(m_limits.totalTimeout) +
                                         "; the network may be slow, try again later");
        return std::nullopt;
    }
    // Until there is a connection its own limit counts.
    const auto stallLeft = m_is_connected ? m_last_arrival + m_limits.stallTimeout - now : totalLeft;
    if (stallLeft <= Clock::duration::zero()) {
        refuse(NSErrorCode::Network, "nothing arrived for " + secondsText(m_limits.stallTimeout) +
                                         "; the server may be down, try again later");
        return std::nullopt;
    }
    // Long waits are cut, since the library has times of its own to look after.
    return std::min(std::chrono::ceil<Milliseconds>(std::min(totalLeft, stallLeft)), Milliseconds(1000));
}

CURLcode Transfer::result() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg == CURLMSG_DONE) return message->data.result;
    }
    return CURLE_FAILED_INIT;
}

CURLcode Transfer::drive() {
    m_start = m_last_arrival = Clock::now();
    if (curl_multi_add_handle(m_multi, m_easy) != CURLM_OK) return CURLE_FAILED_INIT;
    int running = 1;
    while (true) {
        if (curl_multi_perform(m_multi, &running) != CURLM_OK) return CURLE_FAILED_INIT;
        if (running == 0) return result();
        const std::optional<Milliseconds> left = timeLeft();
        if (!left.has_value()) return CURLE_ABORTED_BY_CALLBACK;
        if (curl_multi_poll(m_multi, nullptr, 0, static_cast<int>(left->count()), nullptr) != CURLM_OK) {
            return CURLE_FAILED_INIT;
        }
    }
}

std::string Transfer::describe(CURLcode code) const {
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return "there is no such host, or the network is down";
    case CURLE_COULDNT_RESOLVE_PROXY:
        return "the proxy's host is unknown";
    case CURLE_COULDNT_CONNECT:
        return "the server refused the connection or could not be reached";
    case CURLE_OPERATION_TIMEDOUT:
        return "no connection within " + secondsText(m_limits.connectTimeout) +
               "; the server may be down, try again later";
    case CURLE_TOO_MANY_REDIRECTS:
        return "redirected more than " + std::to_string(m_limits.maximumRedirects) + " times";
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_GOT_NOTHING:
        return "the server closed the connection before all had arrived; try again later";
    case CURLE_SSL_CONNECT_ERROR:
        return "a secure connection could not be made";
    case CURLE_PEER_FAILED_VERIFICATION:
        return "the server's certificate is not valid";
    case CURLE_BAD_CONTENT_ENCODING:
        return "the answer's compression is damaged";
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
        return "the server's answer is not HTTP";
    default:
        return std::string("the transfer failed: ") + curl_easy_strerror(code);
    }
}

NSError Transfer::failureFor(CURLcode code) const {
    if (m_failure.code != NSErrorCode::None) return m_failure;
    const bool isRedirect = m_status >= 300 && m_status < 400;
    if (isRedirect && (code == CURLE_UNSUPPORTED_PROTOCOL || code == CURLE_URL_MALFORMAT)) {
        return {NSErrorCode::UnsupportedURL, "it redirects to a URL that is not http or https"};
    }
    if (code == CURLE_URL_MALFORMAT) return {NSErrorCode::UnsupportedURL, "this is not a URL"};
    return {NSErrorCode::Network, describe(code)};
}

std::optional<NSData> Transfer::run(NSError* error) {
    if (m_easy == nullptr || m_multi == nullptr) {
        setError(error, NSErrorCode::Network, "the network could not be set up");
        return std::nullopt;
    }
    const CURLcode code = drive();
    if (code == CURLE_OK && m_failure.code == NSErrorCode::None) return std::move(m_data);
    const NSError failure = failureFor(code);
    setError(error, failure.code, failure.message);
    return std::nullopt;
}

} // namespace

URLLimits urlLimits() {
    const std::lock_guard guard(sharedLimits().lock);
    return sharedLimits().limits;
}

void setURLLimits(const URLLimits& limits) {
    const std::lock_guard guard(sharedLimits().lock);
    sharedLimits().limits = limits;
}

std::optional<NSData> dataWithContentsOfURL(const NSURL& url, NSError* error) {
    const URLLimits limits = urlLimits();
    if (url.isFileURL()) return dataWithContentsOfFile(url.path(), limits.maximumBytes, error);
    if (url.scheme() != "http" && url.scheme() != "https") {
        setError(error, NSErrorCode::UnsupportedURL, "URLs must begin with file:, http: or https:");
        return std::nullopt;
    }
    if (!isLibraryReady()) {
        setError(error, NSErrorCode::Network, "the network could not be set up");
        return std::nullopt;
    }
    return Transfer(url, limits).run(error);
}

} // namespace Imaging::Platform
