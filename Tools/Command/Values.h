#pragma once

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Color.h"
#include "Show/Placement.h"
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

/// What `read` gives. What it throws as an NSException says, behind the option's name, what is wrong.
template<class Read>
auto understood(const std::string& option, const Read& read) {
    try {
        return read();
    } catch (const Platform::NSException& exception) {
        throw UsageError(option + ": " + exception.reason());
    }
}

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

/// "WxH", "W" or "xH".
PixelSize parseSize(std::string_view text, const std::string& option);

/// "WxH" alone.
PixelSize parseWholeSize(std::string_view text, const std::string& option);

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
    throw UsageError(option + ": " + unknownWord(what, text, known));
}

/// "contain", "cover" or "stretch".
Fit parseFit(const std::string& text, const std::string& option);

} // namespace Imaging::Tool
