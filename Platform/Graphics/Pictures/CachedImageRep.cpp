// A representation that holds a drawable picture.

#include "Platform/Graphics/Pictures/CachedImageRep.h"

#include <utility>

namespace Imaging::Platform {

NSCachedImageRep::NSCachedImageRep(std::shared_ptr<DrawablePicture> picture)
    : NSImageRep(picture->width(), picture->height()), m_picture(std::move(picture)) {
    setSize(m_picture->bounds().size);
}

NSCachedImageRep::~NSCachedImageRep() = default;

} // namespace Imaging::Platform
