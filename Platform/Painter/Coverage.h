#pragma once

// Internal: which pixels are painted, and how far. Not installed.

#include "Platform/Painter/PixelRect.h"

#include <cstddef>
#include <cstdint>

namespace Imaging::Platform {

/// How much of each pixel of an area is covered; outside of it none is. A view of rows of another owner.
struct Coverage {
    PixelRect area;

    /// The byte of the pixel (area.left, area.top), rows `stride` bytes apart; null where all is covered
    /// wholly.
    const std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 0;

    /// The coverage of row y from the area's left edge on, 255 for whole pixels; null where the whole row is.
    const std::uint8_t* row(int y) const {
        return data != nullptr ? data + (y - area.top) * stride : nullptr;
    }
};

} // namespace Imaging::Platform
