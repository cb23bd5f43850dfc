#pragma once

// Internal: a picture that is ready to be drawn, and where it lies. Not installed.

#include "Platform/Foundation/Geometry.h"
#include "Platform/Painter/PictureLevels.h"

#include <memory>

namespace Imaging::Platform {

/// Levels of pixels that cover `bounds` of a picture's own space. The pixels' rows run downward, the space's
/// y axis upward, so the first row lies at the top of the bounds.
class DrawablePicture : public PictureLevels {
public:
    DrawablePicture(std::shared_ptr<const PictureRows> rows, NSRect bounds);

    /// A picture of pixels that are there already, and that may be drawn into.
    DrawablePicture(std::shared_ptr<PixelImage> pixels, NSRect bounds);

    NSRect bounds() const { return m_bounds; }

    /// A copy of pixels of its own.
    std::shared_ptr<DrawablePicture> copy();

    /// The same pixels over other bounds.
    std::shared_ptr<DrawablePicture> withBounds(NSRect bounds);

private:
    NSRect m_bounds;
};

} // namespace Imaging::Platform
