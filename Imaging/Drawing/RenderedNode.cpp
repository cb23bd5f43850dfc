#include "Imaging/Drawing/RenderedNode.h"

#include "Imaging/CachedImage.h"
#include "Platform/Graphics/Image.h"

#include <cmath>
#include <utility>

namespace Imaging {

std::shared_ptr<CCImage> renderedNode(IMGImage& node, NSSize size) {
    const bool hasArea =
        size.width > 0 && size.height > 0 && std::isfinite(size.width) && std::isfinite(size.height);
    if (!hasArea) return nullptr;
    auto picture = std::make_shared<NSImage>(size);
    {
        const Platform::NSImageFocus focus(*picture);
        const auto record = TransformAndClipRect::transformAndClipRectWithTransform(NSAffineTransform());
        node.drawImage(nullptr, TransformAndClipList(record), node.defaultCompositingOperation(),
                       node.defaultCompositingFraction(), nullptr);
    }
    return CCImage::ccImageWithNSImage(std::move(picture));
}

} // namespace Imaging
