#pragma once

#include "Imaging/EnumOrNumber.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Pixels/CompositingOperation.h"

namespace Imaging {

class GraphicsContext;
class IMGImage;
class TransformAndClipList;

/// How what is drawn is combined with what is there, by its name or by the number that graphs carry. Numbers
/// without a name reach whatever draws in the end, for which they count as source-over.
using CompositingOperation = EnumOrNumber<Platform::NSCompositingOperation>;

/// What a draw hands down to be asked to draw a node in a way of its own, for example from textures: a
/// drawing target, or a node that stands in for one.
///
/// Example:
/// @code
/// class Counting : public IMGDrawingTarget {
/// public:
///     int nodes = 0;
///     void drawImage(IMGImage&, const TransformAndClipList&, CompositingOperation, float) override {
///     ++nodes; }
/// };
/// const bool drawsShapes = Counting().graphicsContext() != nullptr; // false: it is asked for whole nodes
/// @endcode
class IMAGING_EXPORT IMGDrawingTarget {
public:
    virtual ~IMGDrawingTarget();

    /// Draws a whole node under the records of a draw, with an operation and a fraction from 0 to
    /// 1. The node and the list are only used during the call.
    virtual void drawImage(IMGImage& node, const TransformAndClipList& transformClip,
                           CompositingOperation operation, float fraction) = 0;

    /// The full set of drawing operations, where the target is a graphics context; null otherwise.
    virtual GraphicsContext* graphicsContext() { return nullptr; }

protected:
    IMGDrawingTarget() = default;
    IMGDrawingTarget(const IMGDrawingTarget&) = default;
    IMGDrawingTarget& operator=(const IMGDrawingTarget&) = default;
};

} // namespace Imaging
