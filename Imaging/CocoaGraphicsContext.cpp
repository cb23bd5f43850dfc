// Every operation is one call of the platform's between saving and restoring the graphics state.

#include "Imaging/CocoaGraphicsContext.h"

#include "Imaging/GraphicsUtilities.h"
#include "Imaging/Image.h"
#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/GraphicsContext.h"

namespace Imaging {

using Platform::NSGraphicsStateScope;

CocoaGraphicsContext::CocoaGraphicsContext() = default;

CocoaGraphicsContext::~CocoaGraphicsContext() = default;

bool CocoaGraphicsContext::canDrawPartial() const { return true; }

void CocoaGraphicsContext::drawFrameInside(NSRect rect, bool drawBackground) {
    if (drawBackground) Platform::NSDrawWindowBackground(rect);
    DrawFrameInside(rect);
}

void CocoaGraphicsContext::drawHintText(const std::string& text, NSRect inside) {
    HintTextInFrame(inside, text);
}

void CocoaGraphicsContext::fillRect(NSRect rect, const NSColor& color, CompositingOperation operation) {
    const NSGraphicsStateScope state;
    color.set();
    Platform::NSRectFillUsingOperation(rect, operation);
}

void CocoaGraphicsContext::frameRect(NSRect rect, const NSColor& color, float lineWidth) {
    const NSGraphicsStateScope state;
    color.set();
    Platform::NSFrameRectWithWidth(rect, lineWidth);
}

void CocoaGraphicsContext::fillBezierPath(NSBezierPath& path, const NSColor& color) {
    const NSGraphicsStateScope state;
    color.set();
    path.fill();
}

void CocoaGraphicsContext::strokeBezierPath(NSBezierPath& path, const NSColor& color) {
    const NSGraphicsStateScope state;
    color.set();
    path.stroke();
}

void CocoaGraphicsContext::drawImage(const std::shared_ptr<IMGImage>& node, NSRect rect,
                                     CompositingOperation operation, float alpha) {
    if (node == nullptr) return;
    const NSGraphicsStateScope state;
    // Where the clip rectangle lies does not matter, only that there is one: no picture may then reach out of
    // the place that it was given.
    if (!Platform::NSEqualRects(imageClipRect(), Platform::NSZeroRect)) Platform::NSRectClip(rect);
    node->drawInRect(rect, operation, alpha, false);
}

void CocoaGraphicsContext::drawImage(IMGImage& node, const TransformAndClipList& transformClip,
                                     CompositingOperation operation, float fraction) {
    const NSGraphicsStateScope state;
    node.drawImage(nullptr, transformClip, operation, fraction, nullptr);
}

void CocoaGraphicsContext::drawCubeTransition(const std::shared_ptr<IMGImage>&,
                                              const std::shared_ptr<IMGImage>&, NSRect,
                                              const TransformAndClipList&, IMGTransitionDirection, float,
                                              float) {}

} // namespace Imaging
