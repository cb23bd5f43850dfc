#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <cstdint>

/// Sizes in whole pixels, and how pictures of one shape go into places of another. Everything here is
/// thread-safe.
///
/// Example:
/// @code
/// const NSRect place = placedIn(NSMakeRect(0, 0, 1920, 1080), PixelSize{3000, 2000}, Fit::Contain);
/// const float left = place.origin.x; // 150: 1620 of 1920 pixels are taken
/// static_cast<void>(left);
/// @endcode
namespace Imaging {

/// A size in pixels. Where a size is asked for one side may be 0: it follows from the shape of what is drawn.
struct PixelSize {
    std::int64_t width = 0;
    std::int64_t height = 0;
};

/// A size as lengths, and the rectangle of it whose lower left corner is (0, 0). Sides are rounded to 32-bit
/// floats, which hold whole numbers up to 2^24.
IMAGING_EXPORT Platform::NSSize floats(PixelSize size);
IMAGING_EXPORT Platform::NSRect rectOf(PixelSize size);

/// How a picture is brought into a size of another shape.
enum class Fit {
    Contain, ///< all of it is seen, with room left at two sides
    Cover,   ///< all of the place is covered, and the picture cut at two sides
    Stretch  ///< its shape is changed
};

/// Whole pixels for a length, at least 1: a fraction counts as a whole one, unless it is so small that it
/// must come from rounding (1/256).
IMAGING_EXPORT std::int64_t wholePixels(float length);

/// a · b / c, rounded to nearest, at least 1. The factors are below 2^32 and c is above 0.
IMAGING_EXPORT std::int64_t inProportion(std::int64_t a, std::int64_t b, std::int64_t c);

/// A size with a missing side filled in from a shape, rounded to nearest, at least 1; the shape itself when
/// both are missing.
IMAGING_EXPORT PixelSize completedSize(PixelSize asked, PixelSize shape);

/// Where a picture of a size goes on a place of whole pixels: kept in shape, in whole pixels and in the
/// middle (halves to the left and down), or for Stretch the place itself. With Cover it reaches beyond the
/// place. In the coordinate space of `place`, y growing upward.
IMAGING_EXPORT Platform::NSRect placedIn(Platform::NSRect place, PixelSize picture, Fit fit);

} // namespace Imaging
