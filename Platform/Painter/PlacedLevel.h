#pragma once

// Internal: what the kinds of picture samplers are made of. Not installed.

#include "Platform/Painter/Affine.h"
#include "Platform/Pixels/Rows/PixelImage.h"

#include <memory>

namespace Imaging::Platform {

/// A level of a picture, and how device pixels map to its pixels.
struct PlacedLevel {
    std::shared_ptr<const PixelImage> image;
    Affine inverse; ///< device pixels to the level's pixels, both counted from their edges
    bool opaque = false;
};

} // namespace Imaging::Platform
