// The painter's levels with a place in the picture's own space.

#include "Platform/Graphics/Pictures/DrawablePicture.h"

#include <utility>

namespace Imaging::Platform {

DrawablePicture::DrawablePicture(std::shared_ptr<const PictureRows> rows, NSRect bounds)
    : PictureLevels(std::move(rows)), m_bounds(bounds) {}

DrawablePicture::DrawablePicture(std::shared_ptr<PixelImage> pixels, NSRect bounds)
    : PictureLevels(std::move(pixels)), m_bounds(bounds) {}

std::shared_ptr<DrawablePicture> DrawablePicture::copy() {
    return std::make_shared<DrawablePicture>(copiedPixels(), m_bounds);
}

std::shared_ptr<DrawablePicture> DrawablePicture::withBounds(NSRect bounds) {
    return std::make_shared<DrawablePicture>(pixels(), bounds);
}

} // namespace Imaging::Platform
