#pragma once

#include "Platform/Graphics/Color.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The values that options take. Everything here throws a UsageError that begins with the option's name and
/// says what would have been right. Numbers have a point whatever the locale.
namespace Tool {

/// A whole number in a range, ends included.
std::int64_t parseNumber(std::string_view text, const std::string& option, std::int64_t low,
                         std::int64_t high);

/// A time above 0 and up to a day.
double parseSeconds(std::string_view text, const std::string& option);

/// A size in pixels, of which one side may be 0: it follows from the shape of what is drawn.
struct PixelSize {
    std::int64_t width = 0;
    std::int64_t height = 0;
};

/// "WxH", "W" or "xH". Where `both` is true only the first will do.
PixelSize parseSize(std::string_view text, const std::string& option, bool both);

/// A colour by its name or as #rgb, #rgba, #rrggbb or #rrggbbaa.
Platform::NSColor parseColor(const std::string& text, const std::string& option);

/// How a picture is brought into a size of another shape.
enum class Fit { Contain, Cover, Stretch };

Fit parseFit(const std::string& text, const std::string& option);

} // namespace Tool
