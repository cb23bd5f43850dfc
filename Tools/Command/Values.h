#pragma once

#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/Color.h"
#include "Tools/Command/Messages.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The values that options take, as converters for their tables. Everything here throws a UsageError that
/// begins with the option's name and says what would have been right. Numbers have a point whatever the
/// locale.
namespace Imaging::Tool {

/// A whole number in a range, ends included.
std::int64_t parseNumber(std::string_view text, const std::string& option, std::int64_t low,
                         std::int64_t high);

/// The converter to such a number.
inline auto wholeNumber(std::int64_t low, std::int64_t high) {
    return [low, high](const std::string& text, const std::string& option) {
        return parseNumber(text, option, low, high);
    };
}

/// Numbers with commas between them, `count` of them, each finite and at most a million away from 0. `what`
/// names them and `example` is one: "no angle in degrees", "30 or -12.5".
std::vector<double> parseNumbers(std::string_view text, const std::string& option, std::size_t count,
                                 const std::string& what, const std::string& example);

/// A time above 0 and up to a day.
double parseSeconds(std::string_view text, const std::string& option);

/// A size in pixels, of which one side may be 0: it follows from the shape of what is drawn.
struct PixelSize {
    std::int64_t width = 0;
    std::int64_t height = 0;
};

/// "WxH", "W" or "xH".
PixelSize parseSize(std::string_view text, const std::string& option);

/// "WxH" alone.
PixelSize parseWholeSize(std::string_view text, const std::string& option);

/// A size as lengths, and the rectangle of it whose lower left corner is (0, 0).
Platform::NSSize floats(PixelSize size);
Platform::NSRect rectOf(PixelSize size);

/// A colour by its name or as #rgb, #rgba, #rrggbb or #rrggbbaa.
Platform::NSColor parseColor(const std::string& text, const std::string& option);

/// What a word stands for. `what` is for words that stand for nothing: "way to fit".
template<class Meaning>
Meaning parseWord(const std::string& text, const std::string& option, const std::string& what,
                  const std::vector<std::pair<std::string, Meaning>>& words) {
    std::vector<std::string> known;
    for (const auto& [word, meaning] : words) {
        if (word == text) return meaning;
        known.push_back(word);
    }
    throw UsageError(option + ": there is no " + what + " named '" + text + "'; known are " +
                     enumeration(known) + suggestion(text, known));
}

/// How a picture is brought into a size of another shape.
enum class Fit { Contain, Cover, Stretch };

Fit parseFit(const std::string& text, const std::string& option);

} // namespace Imaging::Tool
