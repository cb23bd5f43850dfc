// Leaves that draw by themselves, rather than through a picture, place and cut what they draw by this.

#include "Imaging/Drawing/RecordClips.h"

#include "Platform/Graphics/BezierPath.h"

namespace Imaging {

NSAffineTransform addRecordClips(const TransformAndClipList& list) {
    NSAffineTransform transform;
    for (const TransformAndClipRect* record : list.records()) {
        transform.prependTransform(record->transform());
        if (!record->hasClipRect()) continue;
        Platform::NSBezierPath clip = Platform::NSBezierPath::bezierPathWithRect(record->clipRect());
        clip.transformUsingAffineTransform(transform);
        clip.addClip();
    }
    return transform;
}

} // namespace Imaging
