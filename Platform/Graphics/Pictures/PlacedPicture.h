#pragma once

// Internal: a picture on its way onto a Cairo context. Not installed.

#include "Platform/Graphics/Pictures/DrawablePicture.h"

#include <cairo.h>

namespace Imaging::Platform {

/// What one draw of a picture comes to on a Cairo context, whose clip is the destination by now.
struct PlacedPicture {
    DrawablePicture& picture;

    /// The picture's pixels, rows downward, to the context's user space under identity.
    cairo_matrix_t matrix;

    /// Whether the picture reaches over all of the destination.
    bool coversClip;
};

} // namespace Imaging::Platform
