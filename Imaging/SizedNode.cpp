// The size is all that such a node needs to know where it is: its sources are asked only about other nodes.

#include "Imaging/SizedNode.h"

#include "Imaging/Geometry.h"

#include <utility>

namespace Imaging {

SizedNode::SizedNode() = default;

SizedNode::SizedNode(NSSize size, Sources sources) : IMGImage(std::move(sources)), m_size(size) {}

SizedNode::~SizedNode() = default;

NSRect SizedNode::wholeRect() const { return RectFromSize(m_size); }

IMGBounds SizedNode::imageBounds() const {
    return IMGBounds::boundsWithRect(wholeRect(), NSAffineTransform());
}

std::optional<IMGBounds> SizedNode::boundsForImage(const IMGImage& image,
                                                   const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    return IMGBounds::boundsWithRect(wholeRect(), transform);
}

} // namespace Imaging
