#pragma once

#include "Imaging/DrawingTarget.h"
#include "Imaging/TransitionDirection.h"
#include "Platform/Foundation/Geometry.h"

#include <memory>
#include <string>

namespace Imaging::Platform {
class NSBezierPath;
class NSBitmapImageRep;
class NSColor;
class NSView;
} // namespace Imaging::Platform

namespace Imaging {

using Platform::NSBezierPath;
using Platform::NSBitmapImageRep;
using Platform::NSColor;
using Platform::NSRect;

/// The abstract drawing target that views own and hand to every draw. Coordinates are those of the target's
/// bounds, y upward. Every operation of this base class does nothing, but for the bounds, the image clip
/// rectangle and the focus ring, which it draws with its own `frameRect`.
///
/// A view calls `prepareOnce` once it exists; for each frame `beginDrawing` with its bounds, any number of
/// drawing operations, `endDrawing`; `reprepare` when it is attached again; `unprepare` before it goes. One
/// target belongs to one thread at a time. No operation leaves a colour, clip or operation behind.
///
/// Example:
/// @code
/// class Counting : public GraphicsContext {
/// public:
///     int texts = 0;
///     void drawHintText(const std::string&, NSRect) override { ++texts; }
/// };
/// Counting target;
/// target.drawHintText("no picture", NSMakeRect(0, 0, 100, 40));
/// @endcode
class IMAGING_EXPORT GraphicsContext : public IMGDrawingTarget {
public:
    GraphicsContext();
    ~GraphicsContext() override;
    GraphicsContext(const GraphicsContext&) = delete;
    GraphicsContext& operator=(const GraphicsContext&) = delete;

    /// Sends `prepare` the first time, nothing later. Only this counts: a target prepared by `prepare` itself
    /// is prepared once more, and `unprepare` does not make it unprepared again.
    void prepareOnce(Platform::NSView* view);

    /// The view is the one that the target draws into; it is not kept.
    virtual void prepare(Platform::NSView* view);
    virtual void unprepare(Platform::NSView* view);
    virtual void reprepare(Platform::NSView* view);

    /// Whether less than the whole bounds may be drawn in a frame.
    virtual bool canDrawPartial() const;

    /// Begins a frame: the rectangle becomes the bounds, and the image clip rectangle the zero rectangle.
    virtual void beginDrawing(NSRect rect);
    virtual void endDrawing();

    /// The nine-piece border that fills the rectangle, on the window background where the flag says so.
    virtual void drawFrameInside(NSRect rect, bool drawBackground);

    /// A text in the middle of the rectangle, neither wrapped nor clipped. UTF-8.
    virtual void drawHintText(const std::string& text, NSRect inside);

    /// A line of width 2 in the colour of the keyboard focus, 8 inside the rectangle.
    virtual void drawFocusRingInside(NSRect rect);

    virtual void fillRect(NSRect rect, const NSColor& color, CompositingOperation operation);

    /// A border of a width, inwards from the rectangle's edges.
    virtual void frameRect(NSRect rect, const NSColor& color, float lineWidth);

    /// A target may bring the path into its own coordinates and leave it there, so draw a copy of a path that
    /// is needed again.
    virtual void fillBezierPath(NSBezierPath& path, const NSColor& color);
    virtual void strokeBezierPath(NSBezierPath& path, const NSColor& color);

    /// A node whose bounds are fitted onto the rectangle, with an operation and an alpha from 0
    /// to 1.
    virtual void drawImage(const std::shared_ptr<IMGImage>& node, NSRect rect, CompositingOperation operation,
                           float alpha);

    /// Does nothing: see IMGDrawingTarget.
    void drawImage(IMGImage& node, const TransformAndClipList& transformClip, CompositingOperation operation,
                   float fraction) override;

    /// Announces that a bitmap is drawn in about so many seconds.
    virtual void preloadBitmap(const std::shared_ptr<NSBitmapImageRep>& bitmap, float timeUntilNeeded);

    /// A clip for the pictures of this frame; the zero rectangle stands for none.
    void setImageClipRect(NSRect rect) { m_image_clip_rect = rect; }
    NSRect imageClipRect() const { return m_image_clip_rect; }

    /// The rectangle of the last `beginDrawing`.
    NSRect bounds() const { return m_bounds; }

    /// Two pictures on neighbouring faces of a cube that turns by a quarter turn while the weight goes from 0
    /// to 1, in an IMGTransitionDirection, drawn into the rectangle under the records.
    virtual void drawCubeTransition(const std::shared_ptr<IMGImage>& fromImage,
                                    const std::shared_ptr<IMGImage>& toImage, NSRect destinationRect,
                                    const TransformAndClipList& transformClip,
                                    IMGTransitionDirection direction, float weight, float alpha);

    GraphicsContext* graphicsContext() override { return this; }

protected:
    /// Whether `prepareOnce` has prepared the target.
    bool isPrepared() const { return m_prepared; }

private:
    bool m_prepared = false;
    NSRect m_bounds;
    NSRect m_image_clip_rect;
};

} // namespace Imaging
