#pragma once

// Internal: where the painter puts its pixels. Not installed.

#include "Platform/Painter/PixelRect.h"

#include <cstddef>
#include <cstdint>

namespace Imaging::Platform {

/// Pixels in memory of another owner: premultiplied words 0xAARRGGBB in the machine's byte order, (0, 0)
/// being the first one. What has to happen before they are written and afterwards is the owner's business.
struct PixelTarget {
    unsigned char* data = nullptr;
    std::ptrdiff_t stride = 0; ///< bytes from one row to the next
    int width = 0;
    int height = 0;
    bool opaque = false; ///< whether the top byte of a word is no alpha

    PixelRect area() const { return {0, 0, width, height}; }
    std::uint32_t* row(int y) const { return reinterpret_cast<std::uint32_t*>(data + y * stride); }
};

} // namespace Imaging::Platform
