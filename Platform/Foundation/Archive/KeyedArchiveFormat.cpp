// Values as text and bytes whatever the locale, and the look at the stack that keeps recursion from ending
// the program.

#include "Platform/Foundation/Archive/KeyedArchiveFormat.h"

#include "Platform/Foundation/Exception.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <pthread.h>
#include <span>

namespace Imaging::Platform {

namespace {

locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

/// Nine digits are enough to get every float back, whatever the locale.
void appendNumber(std::string& text, float value) {
    std::array<char, 32> digits{};
    const auto [end, failure] = std::to_chars(digits.data(), digits.data() + digits.size(),
                                              static_cast<double>(value), std::chars_format::general, 9);
    text.append(digits.data(), end);
}

/// Fills in the numbers of a pattern in which "#" stands for one.
std::string fillPattern(std::string_view pattern, std::span<const float> numbers) {
    std::string text;
    for (const char c : pattern) {
        if (c == '#') {
            appendNumber(text, numbers.front());
            numbers = numbers.subspan(1);
        } else {
            text += c;
        }
    }
    return text;
}

void skipSpaces(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

// The pieces of a pattern, each taken off the front of the text.
bool takeNumber(std::string_view& text, float& number) {
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool takeCharacter(std::string_view& text, char expected) {
    if (text.empty() || text.front() != expected) return false;
    text.remove_prefix(1);
    return true;
}

/// Reads the numbers of a pattern back; false when the text is not of that form.
bool matchPattern(std::string_view pattern, std::string_view text, std::span<float> numbers) {
    for (const char c : pattern) {
        skipSpaces(text);
        if (c == ' ') continue;
        if (c != '#') {
            if (!takeCharacter(text, c)) return false;
            continue;
        }
        if (!takeNumber(text, numbers.front())) return false;
        numbers = numbers.subspan(1);
    }
    skipSpaces(text);
    return text.empty();
}

constexpr std::string_view sizePattern = "{#, #}";
constexpr std::string_view rectPattern = "{{#, #}, {#, #}}";

/// The length of the well-formed UTF-8 sequence that the text begins with, or 0.
std::size_t sequenceLength(std::string_view text) {
    const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return first == 0 ? 0 : 1;
    const std::size_t length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
    if (length == 0 || length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    // Longer than needed, a surrogate, or beyond U+10FFFF.
    if (first == 0xE0 && byte(1) < 0xA0) return 0;
    if (first == 0xED && byte(1) > 0x9F) return 0;
    if (first == 0xF0 && byte(1) < 0x90) return 0;
    if (first == 0xF4 && byte(1) > 0x8F) return 0;
    return length;
}

} // namespace

ScopedCLocale::ScopedCLocale() : m_previous(uselocale(cLocale())) {}

ScopedCLocale::~ScopedCLocale() { uselocale(m_previous); }

NestingGuard::NestingGuard(int deepest) : m_deepest(deepest) {
    // Enough for whatever one object's own decoding does at the deepest level.
    constexpr std::uintptr_t reserve = 262'144;
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
    void* lowest = nullptr;
    std::size_t size = 0;
    if (pthread_attr_getstack(&attributes, &lowest, &size) == 0) {
        const auto start = reinterpret_cast<std::uintptr_t>(lowest);
        const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
        // A coroutine runs on a stack of its own, of which the thread knows nothing.
        if (here >= start && here - start < size) m_lowest_address = start + std::min(reserve, size / 4);
    }
    pthread_attr_destroy(&attributes);
}

bool NestingGuard::enter() {
    if (m_depth >= m_deepest) return false;
    if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < m_lowest_address) return false;
    ++m_depth;
    return true;
}

void throwDamagedArchive(const std::string& reason) {
    throw NSException(NSInvalidUnarchiveOperationException, reason);
}

// Texts come from files that may be made to hurt: no control characters, and no long lines.
std::string textForMessage(std::string_view text) {
    constexpr std::size_t longest = 80;
    std::string result(text.substr(0, longest));
    for (char& c : result) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    }
    if (text.size() > longest) result += "...";
    return result;
}

std::string archiveKey(std::string_view key) {
    if (!isArchivableText(key)) {
        throw NSException(NSInvalidArgumentException, "a key of an archive must be UTF-8 without zero bytes");
    }
    std::string name(key.starts_with('$') ? 1 : 0, '$');
    return name.append(key);
}

bool isArchivableText(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

bool hasControlCharacters(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
    });
}

std::string stringFromSize(NSSize size) {
    return fillPattern(sizePattern, std::array{size.width, size.height});
}

std::string stringFromRect(NSRect rect) {
    return fillPattern(rectPattern,
                       std::array{rect.origin.x, rect.origin.y, rect.size.width, rect.size.height});
}

std::optional<NSSize> sizeFromString(std::string_view text) {
    std::array<float, 2> numbers{};
    if (!matchPattern(sizePattern, text, numbers)) return std::nullopt;
    return NSMakeSize(numbers[0], numbers[1]);
}

std::optional<NSRect> rectFromString(std::string_view text) {
    std::array<float, 4> numbers{};
    if (!matchPattern(rectPattern, text, numbers)) return std::nullopt;
    return NSMakeRect(numbers[0], numbers[1], numbers[2], numbers[3]);
}

std::string bytesFromTransform(const NSAffineTransform& transform) {
    const NSAffineTransformStruct m = transform.transformStruct();
    std::string bytes;
    for (const float entry : {m.m11, m.m12, m.m21, m.m22, m.tX, m.tY}) {
        const auto bits = std::bit_cast<std::uint32_t>(entry);
        for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>((bits >> shift) & 0xFF);
    }
    return bytes;
}

std::optional<NSAffineTransform> transformFromBytes(std::string_view bytes) {
    std::array<float, 6> entries{};
    if (bytes.size() != 4 * entries.size()) return std::nullopt;
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        std::uint32_t bits = 0;
        for (const char c : bytes.substr(i, 4)) bits = bits << 8 | static_cast<unsigned char>(c);
        entries[i / 4] = std::bit_cast<float>(bits);
    }
    return NSAffineTransform({entries[0], entries[1], entries[2], entries[3], entries[4], entries[5]});
}

} // namespace Imaging::Platform
