// What a drawing target is before it draws anything: it keeps the bounds and the clip rectangle, and every
// operation but the focus ring, which is made of another one, does nothing.

#include "Imaging/GraphicsContext.h"

#include "Platform/Graphics/Appearance.h"

namespace Imaging {

GraphicsContext::GraphicsContext() = default;

GraphicsContext::~GraphicsContext() = default;

void GraphicsContext::prepareOnce(Platform::NSView* view) {
    if (m_prepared) return;
    prepare(view);
    m_prepared = true;
}

void GraphicsContext::prepare(Platform::NSView*) {}

void GraphicsContext::unprepare(Platform::NSView*) {}

void GraphicsContext::reprepare(Platform::NSView*) {}

bool GraphicsContext::canDrawPartial() const { return false; }

void GraphicsContext::beginDrawing(NSRect rect) {
    m_bounds = rect;
    m_image_clip_rect = Platform::NSZeroRect;
}

void GraphicsContext::endDrawing() {}

void GraphicsContext::drawFrameInside(NSRect, bool) {}

void GraphicsContext::drawHintText(const std::string&, NSRect) {}

void GraphicsContext::drawFocusRingInside(NSRect rect) {
    const NSColor color = Platform::appearance().keyboardFocusIndicator;
    frameRect(Platform::NSInsetRect(rect, 8, 8), color, 2);
}

void GraphicsContext::fillRect(NSRect, const NSColor&, CompositingOperation) {}

void GraphicsContext::frameRect(NSRect, const NSColor&, float) {}

void GraphicsContext::fillBezierPath(NSBezierPath&, const NSColor&) {}

void GraphicsContext::strokeBezierPath(NSBezierPath&, const NSColor&) {}

void GraphicsContext::drawImage(const std::shared_ptr<IMGImage>&, NSRect, CompositingOperation, float) {}

void GraphicsContext::drawImage(IMGImage&, const TransformAndClipList&, CompositingOperation, float) {}

void GraphicsContext::preloadBitmap(const std::shared_ptr<NSBitmapImageRep>&, float) {}

void GraphicsContext::drawCubeTransition(const std::shared_ptr<IMGImage>&, const std::shared_ptr<IMGImage>&,
                                         NSRect, const TransformAndClipList&, IMGTransitionDirection, float,
                                         float) {}

} // namespace Imaging
