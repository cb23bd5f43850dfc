// Reads numbers, sizes, colours and words with std::from_chars, whatever the locale, and says what would have
// been right.

#include "Tools/Command/Values.h"

#include <array>
#include <charconv>
#include <optional>

namespace Imaging::Tool {

using Platform::NSColor;

namespace {

struct NamedColor {
    std::string_view name;
    std::uint32_t rgb;
};

/// The basic colour names of CSS Color Module Level 3 (4.1), and its gray ones (4.3).
constexpr std::array namedColors = {
    NamedColor{"aqua", 0x00FFFF},       NamedColor{"black", 0x000000},    NamedColor{"blue", 0x0000FF},
    NamedColor{"fuchsia", 0xFF00FF},    NamedColor{"gray", 0x808080},     NamedColor{"green", 0x008000},
    NamedColor{"lime", 0x00FF00},       NamedColor{"maroon", 0x800000},   NamedColor{"navy", 0x000080},
    NamedColor{"olive", 0x808000},      NamedColor{"purple", 0x800080},   NamedColor{"red", 0xFF0000},
    NamedColor{"silver", 0xC0C0C0},     NamedColor{"teal", 0x008080},     NamedColor{"white", 0xFFFFFF},
    NamedColor{"yellow", 0xFFFF00},     NamedColor{"darkgray", 0xA9A9A9}, NamedColor{"dimgray", 0x696969},
    NamedColor{"gainsboro", 0xDCDCDC},  NamedColor{"grey", 0x808080},     NamedColor{"lightgray", 0xD3D3D3},
    NamedColor{"darkgrey", 0xA9A9A9},   NamedColor{"dimgrey", 0x696969},  NamedColor{"lightgrey", 0xD3D3D3},
    NamedColor{"whitesmoke", 0xF5F5F5},
};

constexpr std::string_view transparentName = "transparent";

std::string lowerCase(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

/// The whole text as a number, or nullopt.
template<class T, class... Base>
std::optional<T> numberIn(std::string_view text, Base... base) {
    T number{};
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number, base...);
    if (failure != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// A side of a size; "" is 0. More digits than these are beyond everything.
std::optional<std::int64_t> sideIn(std::string_view text) {
    if (text.empty()) return 0;
    const auto number = numberIn<std::uint32_t>(text);
    if (!number.has_value() || *number == 0) return std::nullopt;
    return *number;
}

/// Both sides, or one of them: "W" or "xH".
std::optional<PixelSize> sizeIn(std::string_view text) {
    const std::size_t cross = text.find_first_of("xX");
    const auto width = sideIn(text.substr(0, cross));
    const auto height = cross == std::string_view::npos ? 0 : sideIn(text.substr(cross + 1));
    if (!width.has_value() || !height.has_value()) return std::nullopt;
    const bool isComplete = *width > 0 && *height > 0;
    const bool isOneSided = cross == std::string_view::npos ? *width > 0 : *width == 0 && *height > 0;
    return isComplete || isOneSided ? std::optional(PixelSize{*width, *height}) : std::nullopt;
}

NSColor colorOf(std::uint32_t rgba) {
    const auto component = [rgba](int shift) { return static_cast<float>((rgba >> shift) & 255) / 255.0F; };
    return NSColor::colorWithCalibratedRed(component(24), component(16), component(8), component(0));
}

/// The colour that the digits after "#" stand for, or nullopt.
std::optional<NSColor> colorOfDigits(std::string_view digits) {
    std::string whole;
    if (digits.size() == 3 || digits.size() == 4) {
        for (const char digit : digits) whole += {digit, digit};
    } else if (digits.size() == 6 || digits.size() == 8) {
        whole = digits;
    }
    if (whole.size() == 6) whole += "ff";
    const auto number = numberIn<std::uint32_t>(whole, 16);
    return number.has_value() ? std::optional(colorOf(*number)) : std::nullopt;
}

} // namespace

std::int64_t parseNumber(std::string_view text, const std::string& option, std::int64_t low,
                         std::int64_t high) {
    const auto number = numberIn<std::int64_t>(text);
    if (number.has_value() && *number >= low && *number <= high) return *number;
    throw UsageError(option + ": '" + std::string(text) + "' is not a whole number from " +
                     std::to_string(low) + " to " + std::to_string(high));
}

std::vector<double> parseNumbers(std::string_view text, const std::string& option, std::size_t count,
                                 const std::string& what, const std::string& example) {
    constexpr double furthest = 1e6;
    std::vector<double> numbers;
    std::string_view rest = text;
    while (true) {
        const std::size_t comma = rest.find(',');
        const auto number = numberIn<double>(rest.substr(0, comma));
        // False for what is not a number, too.
        if (!number.has_value() || !(*number >= -furthest && *number <= furthest)) break;
        numbers.push_back(*number);
        if (comma == std::string_view::npos) {
            if (numbers.size() != count) break;
            return numbers;
        }
        rest.remove_prefix(comma + 1);
    }
    throw UsageError(option + ": '" + std::string(text) + "' is " + what + "; give " + example);
}

double parseSeconds(std::string_view text, const std::string& option) {
    double seconds = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size();
    if (isNumber && seconds > 0 && seconds <= 86400) return seconds;
    throw UsageError(option + ": '" + std::string(text) +
                     "' is not a number of seconds above 0 and up to 86400");
}

PixelSize parseSize(std::string_view text, const std::string& option) {
    if (const auto size = sizeIn(text)) return *size;
    throw UsageError(option + ": '" + std::string(text) +
                     "' is no size in pixels; give WxH, W or xH, such as 800x600, 800 or x600");
}

PixelSize parseWholeSize(std::string_view text, const std::string& option) {
    const auto size = sizeIn(text);
    if (size.has_value() && size->width > 0 && size->height > 0) return *size;
    throw UsageError(option + ": '" + std::string(text) +
                     "' is no size in pixels; give WxH, such as 400x300");
}

Platform::NSSize floats(PixelSize size) {
    return {static_cast<float>(size.width), static_cast<float>(size.height)};
}

Platform::NSRect rectOf(PixelSize size) { return {Platform::NSZeroPoint, floats(size)}; }

NSColor parseColor(const std::string& text, const std::string& option) {
    const std::string name = lowerCase(text);
    if (name == transparentName) return NSColor::clearColor();
    std::vector<std::string> known = {std::string(transparentName)};
    for (const NamedColor& color : namedColors) {
        if (color.name == name) return colorOf(color.rgb << 8 | 0xFF);
        known.emplace_back(color.name);
    }
    if (name.starts_with('#')) {
        if (const auto color = colorOfDigits(std::string_view(name).substr(1))) return *color;
    }
    throw UsageError(option + ": '" + text + "' is no colour; known are #rgb, #rrggbb, #rrggbbaa, " +
                     enumeration(known) + suggestion(name, known));
}

Fit parseFit(const std::string& text, const std::string& option) {
    static const std::vector<std::pair<std::string, Fit>> words = {
        {"contain", Fit::Contain}, {"cover", Fit::Cover}, {"stretch", Fit::Stretch}};
    return parseWord(text, option, "way to fit", words);
}

} // namespace Imaging::Tool
