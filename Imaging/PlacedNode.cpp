// The kept transform and the lock around it. Whoever draws on one thread may meet a change on another: it
// then gets the transform of before or of after, never half of one.

#include "Imaging/PlacedNode.h"

namespace Imaging {

PlacedNode::PlacedNode() = default;

PlacedNode::~PlacedNode() = default;

NSAffineTransform PlacedNode::transform() const {
    const std::lock_guard<std::recursive_mutex> lock(m_lock);
    if (!m_cached_transform.has_value()) m_cached_transform = computedTransform();
    return *m_cached_transform;
}

void PlacedNode::changed() {
    {
        const std::lock_guard<std::recursive_mutex> lock(m_lock);
        m_cached_transform.reset();
    }
    IMGImage::changed();
}

std::shared_ptr<CCImage> PlacedNode::untransformedImage() { return sourceAtIndex(0)->untransformedImage(); }

} // namespace Imaging
