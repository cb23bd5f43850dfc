// Sizes are compared and divided as whole numbers, so that a picture takes the same pixels whatever the
// place.

#include "Show/Placement.h"

#include <algorithm>
#include <cmath>

namespace Imaging {

using Platform::NSMakeRect;
using Platform::NSRect;
using Platform::NSSize;

NSSize floats(PixelSize size) { return {static_cast<float>(size.width), static_cast<float>(size.height)}; }

NSRect rectOf(PixelSize size) { return {Platform::NSZeroPoint, floats(size)}; }

std::int64_t wholePixels(float length) {
    return std::max<std::int64_t>(
        1, static_cast<std::int64_t>(std::ceil(static_cast<double>(length) - 1.0 / 256)));
}

std::int64_t inProportion(std::int64_t a, std::int64_t b, std::int64_t c) {
    return std::max<std::int64_t>(
        1, std::llround(static_cast<double>(a) * static_cast<double>(b) / static_cast<double>(c)));
}

PixelSize completedSize(PixelSize asked, PixelSize shape) {
    if (asked.width == 0 && asked.height == 0) return shape;
    if (asked.height == 0) asked.height = inProportion(asked.width, shape.height, shape.width);
    if (asked.width == 0) asked.width = inProportion(asked.height, shape.width, shape.height);
    return asked;
}

NSRect placedIn(NSRect place, PixelSize picture, Fit fit) {
    if (fit == Fit::Stretch) return place;
    const auto width = static_cast<std::int64_t>(place.size.width);
    const auto height = static_cast<std::int64_t>(place.size.height);
    // Compared without division: the side on which the picture meets the place.
    const bool isWider = picture.width * height > width * picture.height;
    const bool meetsSides = isWider == (fit == Fit::Contain);
    PixelSize size = {width, height};
    if (meetsSides) {
        size.height = inProportion(width, picture.height, picture.width);
    } else {
        size.width = inProportion(height, picture.width, picture.height);
    }
    // Halves are rounded down, also below zero, where the picture reaches beyond the place.
    const auto offset = [](std::int64_t room) {
        const std::int64_t half = (room - (room & 1)) / 2;
        return static_cast<float>(half);
    };
    return NSMakeRect(place.origin.x + offset(width - size.width),
                      place.origin.y + offset(height - size.height), static_cast<float>(size.width),
                      static_cast<float>(size.height));
}

} // namespace Imaging
