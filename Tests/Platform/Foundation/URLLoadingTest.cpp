#include "Platform/Foundation/URLLoading.h"

#include "Tests/Platform/Foundation/TemporaryFolder.h"
#include "Tests/Support/LoopbackServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <latch>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <zlib.h>

using namespace Imaging::Platform;
using namespace TestSupport;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

using Connection = LoopbackServer::Connection;
using Request = LoopbackServer::Request;

/// What came of loading a URL.
struct Loaded {
    std::optional<std::string> content;
    NSError error;
};

Loaded load(const std::string& text) {
    Loaded loaded;
    const std::optional<NSURL> url = NSURL::URLWithString(text);
    if (!url.has_value()) throw std::invalid_argument(text);
    const std::optional<NSData> data = dataWithContentsOfURL(*url, &loaded.error);
    if (data.has_value()) loaded.content = std::string(data->begin(), data->end());
    EXPECT_EQ(data.has_value(), loaded.error.code == NSErrorCode::None);
    EXPECT_EQ(loaded.error.message.find('\n'), std::string::npos);
    return loaded;
}

void expectFailure(const Loaded& loaded, NSErrorCode code, const std::string& message) {
    EXPECT_FALSE(loaded.content.has_value());
    EXPECT_EQ(loaded.error.code, code);
    EXPECT_EQ(loaded.error.message, message);
}

/// Compressed as a server would.
std::string gzipped(std::string text) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY), Z_OK);
    std::string result(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(text.data());
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(result.data());
    stream.avail_out = static_cast<uInt>(result.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    result.resize(stream.total_out);
    deflateEnd(&stream);
    return result;
}

LoopbackServer::Handler raw(std::string answer, bool staysOpen = false) {
    return [=](const Request&, Connection& connection) {
        connection.send(answer);
        if (staysOpen) connection.waitUntilClosed();
    };
}

/// Each test has a server, short limits that it may change, and no proxy from outside.
class URLLoading : public testing::Test {
protected:
    URLLoading() {
        m_limits.totalTimeout = 60s;
        m_limits.stallTimeout = 60s;
        m_limits.connectTimeout = 60s;
        m_limits.maximumBytes = 1 << 20;
        apply();
    }
    ~URLLoading() override { setURLLimits(URLLimits()); }

    void apply() { setURLLimits(m_limits); }

    URLLimits m_limits;
    ScopedVariable m_no_http_proxy{"http_proxy", nullptr};
    ScopedVariable m_no_https_proxy{"https_proxy", nullptr};
    ScopedVariable m_no_all_proxy{"all_proxy", nullptr};
    ScopedVariable m_no_all_proxies{"ALL_PROXY", nullptr};
    ScopedVariable m_no_proxy{"no_proxy", nullptr};
    ScopedVariable m_no_proxies{"NO_PROXY", nullptr};
    LoopbackServer m_server;
};

} // namespace

TEST_F(URLLoading, GivesEveryByteOfTheAnswer) {
    std::string content;
    for (int i = 0; i < 200'000; ++i) content += static_cast<char>(i * 11 + i / 256);
    m_server.route("/a.png", LoopbackServer::answer(200, content, "image/png"));
    m_server.route("/empty", LoopbackServer::answer(204, ""));
    EXPECT_EQ(load(m_server.url("/a.png")).content, content);
    EXPECT_EQ(load(m_server.url("/empty")).content, "");
}

TEST_F(URLLoading, SaysWhoItIsAndWhatItTakes) {
    m_server.route("/a", LoopbackServer::answer(200, "x"));
    load(m_server.url("/a?x=1&y=%20"));
    const std::vector<Request> requests = m_server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].target, "/a?x=1&y=%20");
    EXPECT_THAT(requests[0].headers.at("user-agent"),
                testing::MatchesRegex("imaging/[0-9]+\\.[0-9]+\\.[0-9]+"));
    EXPECT_EQ(requests[0].headers.at("accept-encoding"), "gzip");
}

TEST_F(URLLoading, AnswersOtherThan2xxAreFailures) {
    m_server.route("/500", LoopbackServer::answer(500, "broken"));
    m_server.route("/304", LoopbackServer::answer(304, ""));
    m_server.route("/418", LoopbackServer::answer(418, ""));
    expectFailure(load(m_server.url("/missing")), NSErrorCode::Network,
                  "the server answered 404 (not found)");
    expectFailure(load(m_server.url("/500")), NSErrorCode::Network,
                  "the server answered 500 (internal error); try again later");
    expectFailure(load(m_server.url("/304")), NSErrorCode::Network, "the server answered 304");
    expectFailure(load(m_server.url("/418")), NSErrorCode::Network, "the server answered 418");
}

TEST_F(URLLoading, ALongErrorPageIsStillAnError) {
    m_server.route("/a", raw("HTTP/1.1 403 No\r\nContent-Length: 99999999999\r\n\r\n", true));
    expectFailure(load(m_server.url("/a")), NSErrorCode::Network, "the server answered 403 (forbidden)");
}

TEST_F(URLLoading, InterimAnswersAreSkipped) {
    m_server.route("/a",
                   raw("HTTP/1.1 103 Early Hints\r\nLink: </x>\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: "
                       "2\r\n\r\nok"));
    EXPECT_EQ(load(m_server.url("/a")).content, "ok");
}

TEST_F(URLLoading, FollowsAsManyRedirectsAsAreAllowed) {
    m_server.route("/0", LoopbackServer::answer(200, "arrived"));
    for (int i = 1; i <= 9; ++i) {
        m_server.route("/" + std::to_string(i), LoopbackServer::redirect("/" + std::to_string(i - 1)));
    }
    EXPECT_EQ(load(m_server.url("/8")).content, "arrived");
    expectFailure(load(m_server.url("/9")), NSErrorCode::Network, "redirected more than 8 times");
    m_limits.maximumRedirects = 2;
    apply();
    EXPECT_EQ(load(m_server.url("/2")).content, "arrived");
    expectFailure(load(m_server.url("/3")), NSErrorCode::Network, "redirected more than 2 times");
}

TEST_F(URLLoading, GivesUpAnEndlessRedirect) {
    m_server.route("/loop", LoopbackServer::redirect("/loop"));
    expectFailure(load(m_server.url("/loop")), NSErrorCode::Network, "redirected more than 8 times");
    EXPECT_EQ(m_server.requests().size(), 9u);
}

TEST_F(URLLoading, TheBodyOfARedirectIsNotTheAnswer) {
    m_server.route(
        "/a",
        raw("HTTP/1.1 301 Moved\r\nLocation: /b\r\nConnection: close\r\nContent-Length: 5\r\n\r\nmoved"));
    m_server.route("/b", LoopbackServer::answer(200, "here"));
    EXPECT_EQ(load(m_server.url("/a")).content, "here");
}

TEST_F(URLLoading, RedirectsToOtherSchemesAreRefused) {
    const TemporaryFolder folder;
    const std::string secret = folder.write("secret", "secret");
    LoopbackServer other;
    const std::string port = std::to_string(other.port());
    for (const std::string& target :
         {"file://" + secret, "ftp://127.0.0.1:" + port + "/a", "gopher://127.0.0.1:" + port + "/a",
          "dict://127.0.0.1:" + port + "/d:a", std::string("data:text/plain,hello")}) {
        m_server.route("/a", LoopbackServer::redirect(target));
        SCOPED_TRACE(target);
        expectFailure(load(m_server.url("/a")), NSErrorCode::UnsupportedURL,
                      "it redirects to a URL that is not http or https");
    }
    EXPECT_TRUE(other.requests().empty());
}

TEST_F(URLLoading, OnlyFileAndHTTPAreKnown) {
    for (const char* text :
         {"ftp://127.0.0.1/a", "data:text/plain,hello", "mailto:a@b", "gopher://127.0.0.1/a"}) {
        expectFailure(load(text), NSErrorCode::UnsupportedURL, "URLs must begin with file:, http: or https:");
    }
}

TEST_F(URLLoading, ReadsFilesDirectly) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a b#c.png", "content");
    EXPECT_EQ(load(NSURL::fileURLWithPath(path).absoluteString()).content, "content");
    EXPECT_EQ(load("file://" + folder.path("missing")).error.code, NSErrorCode::FileNotFound);
    m_limits.maximumBytes = 6;
    apply();
    expectFailure(load(NSURL::fileURLWithPath(path).absoluteString()), NSErrorCode::TooLarge,
                  "it holds more than the limit of 6 bytes");
}

TEST_F(URLLoading, GivesUpAStallBeforeTheHeaders) {
    m_server.route("/a", raw("", true));
    m_limits.stallTimeout = 50ms;
    apply();
    expectFailure(load(m_server.url("/a")), NSErrorCode::Network,
                  "nothing arrived for 0.05 s; the server may be down, try again later");
}

TEST_F(URLLoading, GivesUpAStallWithinTheHeaders) {
    m_server.route("/a", raw("HTTP/1.1 200 OK\r\nContent-Le", true));
    m_limits.stallTimeout = 50ms;
    apply();
    expectFailure(load(m_server.url("/a")), NSErrorCode::Network,
                  "nothing arrived for 0.05 s; the server may be down, try again later");
}

TEST_F(URLLoading, GivesUpAStallWithinTheBody) {
    m_server.route("/a", raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nonly this", true));
    m_limits.stallTimeout = 50ms;
    apply();
    expectFailure(load(m_server.url("/a")), NSErrorCode::Network,
                  "nothing arrived for 0.05 s; the server may be down, try again later");
}

TEST_F(URLLoading, GivesUpAnAnswerThatDripsOnForever) {
    m_server.route("/a", [](const Request&, Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\n\r\n");
        // A pause between two bytes, so that the limit of bytes is not reached.
        while (connection.send("x")) poll(nullptr, 0, 2);
    });
    m_limits.totalTimeout = 100ms;
    apply();
    expectFailure(load(m_server.url("/a")), NSErrorCode::Network,
                  "it did not arrive within 0.1 s; the network may be slow, try again later");
}

TEST_F(URLLoading, GivesUpAConnectionThatIsNotAccepted) {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    ASSERT_EQ(bind(listener, generic, size), 0);
    ASSERT_EQ(listen(listener, 0), 0);
    ASSERT_EQ(getsockname(listener, generic, &size), 0);
    // The one place in the queue is taken, so the system leaves the next connection unanswered.
    const int first = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(connect(first, generic, size), 0);
    m_limits.connectTimeout = 100ms;
    apply();
    expectFailure(load("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/"),
                  NSErrorCode::Network,
                  "no connection within 0.1 s; the server may be down, try again later");
    close(first);
    close(listener);
}

TEST_F(URLLoading, GivesUpASecureConnectionThatIsNotMade) {
    m_limits.connectTimeout = 100ms;
    apply();
    const Loaded loaded = load("https://127.0.0.1:" + std::to_string(m_server.port()) + "/a");
    expectFailure(loaded, NSErrorCode::Network,
                  "no connection within 0.1 s; the server may be down, try again later");
}

TEST_F(URLLoading, RefusesTooMuchBeforeItIsSent) {
    m_limits.maximumBytes = 1000;
    apply();
    m_server.route("/a", raw("HTTP/1.1 200 OK\r\ncontent-LENGTH: 1001\r\n\r\n", true));
    expectFailure(load(m_server.url("/a")), NSErrorCode::TooLarge,
                  "it holds more than the limit of 1000 bytes");
    m_server.route("/b", raw("HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999999\r\n\r\n", true));
    EXPECT_FALSE(load(m_server.url("/b")).content.has_value());
}

TEST_F(URLLoading, RefusesTooMuchThatWasNotAnnounced) {
    m_limits.maximumBytes = 1000;
    apply();
    m_server.route("/all", raw("HTTP/1.1 200 OK\r\n\r\n" + std::string(1000, 'x')));
    m_server.route("/more", raw("HTTP/1.1 200 OK\r\n\r\n" + std::string(1001, 'x')));
    EXPECT_EQ(load(m_server.url("/all")).content, std::string(1000, 'x'));
    expectFailure(load(m_server.url("/more")), NSErrorCode::TooLarge,
                  "it holds more than the limit of 1000 bytes");
}

TEST_F(URLLoading, RefusesAStreamWithoutEnd) {
    m_server.route("/a", [](const Request&, Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\n\r\n");
        const std::string piece(10'000, 'x');
        while (connection.send(piece)) {
        }
    });
    expectFailure(load(m_server.url("/a")), NSErrorCode::TooLarge,
                  "it holds more than the limit of 1048576 bytes");
}

TEST_F(URLLoading, RefusesChunksWithoutEnd) {
    m_server.route("/a", [](const Request&, Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        while (connection.send("400\r\n" + std::string(1024, 'x') + "\r\n")) {
        }
    });
    expectFailure(load(m_server.url("/a")), NSErrorCode::TooLarge,
                  "it holds more than the limit of 1048576 bytes");
}

TEST_F(URLLoading, UnpacksWhatTheServerCompressed) {
    const std::string content(300'000, 'z');
    const std::string packed = gzipped(content);
    ASSERT_LT(packed.size(), 2000u);
    const auto answer = [](const std::string& body) {
        return raw("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: " +
                   std::to_string(body.size()) + "\r\n\r\n" + body);
    };
    m_server.route("/a", answer(packed));
    EXPECT_EQ(load(m_server.url("/a")).content, content);
    m_server.route("/damaged", answer(std::string("\x1F\x8B\x08\0\0\0\0\0\0\x03", 10) + "no deflate"));
    expectFailure(load(m_server.url("/damaged")), NSErrorCode::Network,
                  "the answer's compression is damaged");
}

TEST_F(URLLoading, TheLimitCountsUnpackedBytes) {
    const std::string packed = gzipped(std::string(2'000'000, 'z'));
    ASSERT_LT(packed.size(), 10'000u);
    m_server.route("/bomb", raw("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\n\r\n" + packed));
    expectFailure(load(m_server.url("/bomb")), NSErrorCode::TooLarge,
                  "it holds more than the limit of 1048576 bytes");
}

TEST_F(URLLoading, AConnectionThatClosesHalfWayIsAFailure) {
    const char* message = "the server closed the connection before all had arrived; try again later";
    m_server.route("/body", raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf"));
    m_server.route("/nothing", raw(""));
    m_server.route("/chunk", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n10\r\nhalf"));
    expectFailure(load(m_server.url("/body")), NSErrorCode::Network, message);
    expectFailure(load(m_server.url("/nothing")), NSErrorCode::Network, message);
    expectFailure(load(m_server.url("/chunk")), NSErrorCode::Network, message);
}

TEST_F(URLLoading, AnAnswerThatIsNotHTTPIsAFailure) {
    m_server.route("/a", raw("220 mail server ready\r\n"));
    expectFailure(load(m_server.url("/a")), NSErrorCode::Network, "the server's answer is not HTTP");
}

TEST_F(URLLoading, ARefusedConnectionIsAFailure) {
    std::string url;
    {
        const LoopbackServer gone;
        url = gone.url("/a");
    }
    expectFailure(load(url), NSErrorCode::Network,
                  "the server refused the connection or could not be reached");
}

TEST_F(URLLoading, ThisMachineIsNeverAskedThroughAProxy) {
    LoopbackServer proxy;
    const ScopedVariable http("http_proxy", proxy.url("").c_str());
    const ScopedVariable all("all_proxy", proxy.url("").c_str());
    m_server.route("/a", LoopbackServer::answer(200, "direct"));
    const std::string port = std::to_string(m_server.port());
    EXPECT_EQ(load("http://127.0.0.1:" + port + "/a").content, "direct");
    EXPECT_EQ(load("http://localhost:" + port + "/a").content, "direct");
    const ScopedVariable none("no_proxy", "elsewhere.invalid");
    EXPECT_EQ(load("http://127.0.0.1:" + port + "/a").content, "direct");
    EXPECT_TRUE(proxy.requests().empty());
}

TEST_F(URLLoading, OtherHostsAreAskedThroughTheProxyOfTheEnvironment) {
    LoopbackServer proxy;
    proxy.route("http://pictures.invalid/a", LoopbackServer::answer(200, "by proxy"));
    const ScopedVariable http("http_proxy", proxy.url("").c_str());
    EXPECT_EQ(load("http://pictures.invalid/a").content, "by proxy");
}

TEST_F(URLLoading, HostsThatTheEnvironmentExceptsAreAskedDirectly) {
    LoopbackServer proxy;
    const ScopedVariable http("http_proxy", proxy.url("").c_str());
    m_server.route("/a", LoopbackServer::answer(200, "direct"));
    // This address leads to this machine as well, but is not one of its names.
    const std::string url = "http://0.0.0.0:" + std::to_string(m_server.port()) + "/a";
    for (const char* hosts : {"elsewhere.invalid,0.0.0.0", "*"}) {
        const ScopedVariable none("NO_PROXY", hosts);
        EXPECT_EQ(load(url).content, "direct") << hosts;
    }
    EXPECT_TRUE(proxy.requests().empty());
    EXPECT_FALSE(load(url).content.has_value());
    EXPECT_EQ(proxy.requests().size(), 1u);
}

TEST_F(URLLoading, LimitsAreKeptForTheProcess) {
    m_limits.maximumRedirects = 3;
    m_limits.stallTimeout = 1234ms;
    apply();
    std::thread([] {
        EXPECT_EQ(urlLimits().maximumRedirects, 3);
        EXPECT_EQ(urlLimits().stallTimeout, 1234ms);
    }).join();
}

TEST_F(URLLoading, ManyThreadsLoadAtOnce) {
    for (int i = 0; i < 8; ++i) {
        m_server.route("/" + std::to_string(i),
                       LoopbackServer::answer(200, std::string(100'000, static_cast<char>('a' + i))));
    }
    std::latch start(8);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            for (int round = 0; round < 5; ++round) {
                EXPECT_EQ(load(m_server.url("/" + std::to_string(i))).content,
                          std::string(100'000, static_cast<char>('a' + i)));
                setURLLimits(urlLimits());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(m_server.requests().size(), 40u);
}
