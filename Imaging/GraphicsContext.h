#pragma once

#include "Imaging/DrawingTarget.h"

namespace Imaging {

/// The abstract drawing target that views own and hand to every draw. Every operation of this base class
/// does nothing.
class IMAGING_EXPORT GraphicsContext : public IMGDrawingTarget {
public:
    GraphicsContext();
    ~GraphicsContext() override;

    void drawImage(IMGImage& node, const TransformAndClipList& transformClip, int operation,
                   float fraction) override;

    GraphicsContext* graphicsContext() override { return this; }
};

} // namespace Imaging
