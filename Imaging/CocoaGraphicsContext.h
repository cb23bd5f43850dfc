#pragma once

#include "Imaging/GraphicsContext.h"

namespace Imaging {

/// The drawing target that draws with the platform's 2-D graphics into whatever context is the thread's
/// current one; without one nothing is drawn. Every operation leaves the graphics state as it found it, also
/// when drawing throws. Bounds clip nothing.
///
/// Example:
/// @code
/// CocoaGraphicsContext target;
/// target.beginDrawing(NSMakeRect(0, 0, 400, 300));
/// target.drawHintText("no picture", target.bounds());
/// target.endDrawing();
/// @endcode
class IMAGING_EXPORT CocoaGraphicsContext : public GraphicsContext {
public:
    CocoaGraphicsContext();
    ~CocoaGraphicsContext() override;

    /// True: whoever draws clips to what is needed.
    bool canDrawPartial() const override;

    /// On the appearance's window background where the flag says so. Throws like `DrawFrameInside`.
    void drawFrameInside(NSRect rect, bool drawBackground) override;

    /// Throws like Platform::drawTextAtPoint.
    void drawHintText(const std::string& text, NSRect inside) override;

    void fillRect(NSRect rect, const NSColor& color, CompositingOperation operation) override;

    /// With the copy operation, so that the colour's alpha replaces what is there.
    void frameRect(NSRect rect, const NSColor& color, float lineWidth) override;

    /// The path stays as it is.
    void fillBezierPath(NSBezierPath& path, const NSColor& color) override;
    void strokeBezierPath(NSBezierPath& path, const NSColor& color) override;

    /// Draws by walking the node's graph. With an image clip rectangle other than the zero rectangle the
    /// picture is clipped, and it is clipped to `rect`: the image clip rectangle itself only turns that on.
    /// Null draws nothing.
    void drawImage(const std::shared_ptr<IMGImage>& node, NSRect rect, CompositingOperation operation,
                   float alpha) override;

    /// Draws the node under the records, without any drawing target, so that a graph drawn with this target
    /// shows its leaves.
    void drawImage(IMGImage& node, const TransformAndClipList& transformClip, CompositingOperation operation,
                   float fraction) override;

    /// Does nothing: the cube needs a target that draws in three dimensions.
    void drawCubeTransition(const std::shared_ptr<IMGImage>& fromImage,
                            const std::shared_ptr<IMGImage>& toImage, NSRect destinationRect,
                            const TransformAndClipList& transformClip, IMGTransitionDirection direction,
                            float weight, float alpha) override;
};

} // namespace Imaging
