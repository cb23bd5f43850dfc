// Every node that becomes a picture of its own is drawn here, with the picture's focus held for that time
// only.

#include "Imaging/Drawing/DrawnPicture.h"

#include "Imaging/Geometry.h"

namespace Imaging {

std::shared_ptr<Platform::NSImage> drawnPicture(Platform::NSSize size,
                                                const std::function<void(Platform::NSRect)>& draw,
                                                Platform::NSImageCacheMode cacheMode) {
    auto picture = std::make_shared<Platform::NSImage>(size);
    picture->setCacheMode(cacheMode);
    {
        const Platform::NSImageFocus focus(*picture); // its end makes what was drawn the picture's contents
        draw(RectFromSize(picture->size()));
    }
    return picture;
}

} // namespace Imaging
