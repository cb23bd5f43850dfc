// Splits the text as RFC 3986 has it, as far as files and the web need it.

#include "Platform/Foundation/URL.h"

#include <algorithm>
#include <array>
#include <curl/curl.h>
#include <filesystem>
#include <memory>
#include <system_error>

namespace Imaging::Platform {

namespace {

struct URLDeleter {
    void operator()(CURLU* handle) const { curl_url_cleanup(handle); }
};

using URLHandle = std::unique_ptr<CURLU, URLDeleter>;

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// The scheme in lower case, without the colon; empty when the text does not begin with one.
std::string schemeOf(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isLetter(text[0])) return {};
    std::string scheme(text.substr(0, colon));
    for (char& c : scheme) {
        if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return {};
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return scheme;
}

bool needsAuthority(std::string_view scheme) {
    return scheme == "http" || scheme == "https" || scheme == "file";
}

/// Null when the text cannot be a URL of a scheme with a host or path.
URLHandle parsed(const std::string& text) {
    URLHandle handle(curl_url());
    if (handle == nullptr) return nullptr;
    // Dots in a path stay: a folder before ".." may be a symbolic link.
    const unsigned flags = CURLU_NON_SUPPORT_SCHEME | CURLU_PATH_AS_IS;
    if (curl_url_set(handle.get(), CURLUPART_URL, text.c_str(), flags) != CURLUE_OK) return nullptr;
    return handle;
}

int hexValue(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// Undoes percent-encoding, of any bytes; a "%" without two digits after it stays.
std::string decoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? hexValue(text[i + 1]) : -1;
        const int low = high >= 0 ? hexValue(text[i + 2]) : -1;
        if (low < 0) {
            result += text[i];
        } else {
            result += static_cast<char>(high * 16 + low);
            i += 2;
        }
    }
    return result;
}

std::string encodedPath(std::string_view path) {
    static constexpr std::string_view unreserved = "-._~!$&'()*+,;=:@/";
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : path) {
        if (isLetter(c) || isDigit(c) || unreserved.find(c) != std::string_view::npos) {
            result += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            result += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return result;
}

} // namespace

std::optional<NSURL> NSURL::URLWithString(std::string_view text) {
    const std::string scheme = schemeOf(text);
    if (scheme.empty() || scheme.size() + 1 == text.size()) return std::nullopt;
    const bool hasForbidden = std::any_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) <= ' ' || c == 0x7F || c == '<' || c == '>' || c == '"';
    });
    if (hasForbidden) return std::nullopt;
    const std::string whole(text);
    if (needsAuthority(scheme) && parsed(whole) == nullptr) return std::nullopt;
    // The parser takes one slash or three for two.
    const std::string_view rest = text.substr(scheme.size() + 1);
    if ((scheme == "http" || scheme == "https") && (!rest.starts_with("//") || rest.starts_with("///")))
        return std::nullopt;
    return NSURL(whole, scheme);
}

NSURL NSURL::fileURLWithPath(std::string_view path) {
    std::string absolute(path);
    if (!path.starts_with('/')) {
        std::error_code failure;
        const std::filesystem::path folder = std::filesystem::current_path(failure);
        // A current folder that was removed has no name; nothing relative to it can be found either.
        absolute = (failure ? std::filesystem::path("/") : folder) / path;
    }
    return NSURL("file://" + encodedPath(absolute), "file");
}

std::string NSURL::path() const {
    if (needsAuthority(m_scheme)) {
        const URLHandle handle = parsed(m_text);
        char* part = nullptr;
        if (handle == nullptr || curl_url_get(handle.get(), CURLUPART_PATH, &part, 0) != CURLUE_OK) return {};
        const std::unique_ptr<char, decltype(&curl_free)> owner(part, &curl_free);
        return decoded(part);
    }
    std::string_view rest = std::string_view(m_text).substr(m_scheme.size() + 1);
    rest = rest.substr(0, rest.find_first_of("?#"));
    if (rest.starts_with("//")) {
        const std::size_t slash = rest.find('/', 2);
        rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash);
    }
    return decoded(rest);
}

} // namespace Imaging::Platform
