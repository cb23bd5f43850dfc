// A node's picture is the graph below it, drawn from an empty list of transforms into a picture of its size.

#include "Imaging/Drawing/RenderedNode.h"

#include "Imaging/CCImage.h"
#include "Imaging/Drawing/DrawnPicture.h"

#include <cmath>

namespace Imaging {

std::shared_ptr<CCImage> renderedNode(IMGImage& node, NSSize size) {
    const bool hasArea =
        size.width > 0 && size.height > 0 && std::isfinite(size.width) && std::isfinite(size.height);
    if (!hasArea) return nullptr;
    return CCImage::ccImageWithNSImage(drawnPicture(size, [&node](NSRect) {
        node.drawImage(nullptr, TransformAndClipList(TransformAndClipRect(NSAffineTransform())),
                       node.defaultCompositingOperation(), node.defaultCompositingFraction(), nullptr);
    }));
}

} // namespace Imaging
