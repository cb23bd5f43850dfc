// A table of names, looked through in order: colours are read a few times in a program's life.

#include "Show/ColorNames.h"

#include "Platform/Foundation/Exception.h"
#include "Show/KnownWords.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Imaging {

using Platform::NSColor;
using Platform::NSException;

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
    std::uint32_t number = 0;
    const char* const wholeEnd = whole.data() + whole.size();
    const auto [end, failure] = std::from_chars(whole.data(), wholeEnd, number, 16);
    if (failure != std::errc() || end != wholeEnd) return std::nullopt;
    return colorOf(number);
}

} // namespace

NSColor colorNamed(const std::string& text) {
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
    throw NSException(Platform::NSInvalidArgumentException,
                      "'" + text + "' is no colour; known are #rgb, #rrggbb, #rrggbbaa, " +
                          enumeration(known) + suggestion(name, known));
}

NSColor opaqueColorNamed(const std::string& text) {
    const NSColor color = colorNamed(text);
    if (color.alphaComponent() >= 1) return color;
    throw NSException(Platform::NSInvalidArgumentException,
                      "'" + text + "' lets something through, which a film cannot; give an opaque colour");
}

} // namespace Imaging
