#pragma once

#include "Imaging/GraphicsContext.h"
#include "Imaging/OpenGLCache.h"
#include "Imaging/OpenGLContextLock.h"
#include "Platform/OpenGL/OpenGLPixelFormat.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace Imaging {

class OpenGLTexture;
class TransformAndClipList;

using Platform::NSSize;

/// The drawing target that draws with OpenGL into a view. It owns an OpenGL context, the lock that guards
/// every command of that context, and a cache of textures.
///
/// ```
///   unprepared ─ prepare, prepareOffscreen ─→ prepared ─ beginDrawing ⇄ endDrawing, once a frame
///                                               │   ↑
///                                           unprepare  reprepare
/// ```
///
/// A node that is a decoded bitmap (OpenGLImage) is drawn from textures; any other is drawn by 2-D graphics
/// into a picture of the bounds' size, which is then laid over the frame source-over. A dissolve therefore
/// does not add its pictures up here: the second lies over the first.
///
/// Coordinates are those of the bounds, y upward, one unit a pixel where the view has the bounds' size.
/// Pictures and 2-D overlays are placed by the bounds' width and height alone, shapes by the bounds with
/// their origin, so give bounds that begin at (0, 0).
///
/// One thread draws. The lock is held from `beginDrawing` to `endDrawing`, but for the moments in which a
/// draw waits for the cache; other threads that use the context hold it too. Every operation leaves OpenGL's
/// attributes and matrices as it found them, also when it throws. OpenGL's errors go to `ReportError`, and
/// drawing goes on.
///
/// When the context is lost (the device was reset or went away), which the next `beginDrawing` finds out,
/// nothing is drawn until `reprepare`, and all textures are then made anew from the bitmaps.
///
/// Example:
/// @code
/// OpenGLGraphicsContext target;
/// const std::shared_ptr<OpenGLContextLock> lock = target.contextLock();
/// const bool isUnprepared = target.openGLContext() == nullptr;
/// @endcode
class IMAGING_EXPORT OpenGLGraphicsContext : public GraphicsContext, public OpenGLContextOwner {
public:
    OpenGLGraphicsContext();

    /// Deletes the textures and lets the context go.
    ~OpenGLGraphicsContext() override;

    /// Which OpenGL contexts made from now on are to speak; nothing, as at first, for fixed function where
    /// the machine has it, else core, else ES. The same is drawn with all of them.
    void setProfile(std::optional<Platform::NSOpenGLProfile> profile) { m_profile = profile; }

    /// Makes a context of its own for the view: double buffered with 32 bits of colour, 8 of alpha and 32 of
    /// depth, or what comes nearest, that waits for the screen's refresh when a frame is shown. A context
    /// from before is let go with its textures. Throws an NSException (NSOpenGLException) that says what is
    /// missing and how to get it; the target is as it was then. Views are made with std::make_shared.
    void prepare(Platform::NSView* view) override;

    /// The same for a view on no screen.
    void prepareOffscreen(Platform::NSView* view);

    /// Draws into no view until `reprepare`; context and textures stay.
    void unprepare(Platform::NSView* view) override;

    /// Draws into another view from now on. Throws an NSException (NSOpenGLException) before `prepare`.
    void reprepare(Platform::NSView* view) override;

    /// Takes the lock, makes the context current, sets the viewport to the rectangle (truncated to whole
    /// pixels) and the matrices to the normalised square, and begins with an opaque white square over the
    /// cleared buffer. A frame that was not ended is ended by this one. Throws an NSException
    /// (NSOpenGLException) before `prepare`; the lock is as it was then.
    void beginDrawing(NSRect rect) override;

    /// Shows the frame and gives up the lock that `beginDrawing` took, also when showing throws. Nothing
    /// happens without a frame.
    void endDrawing() override;

    /// A nine-piece frame as a picture of the rectangle's size, drawn at the rectangle's own coordinates, so
    /// that it is whole for rectangles at (0, 0). The last one is kept for the process and shown again for
    /// every rectangle of its size, whether or not it was to have a background.
    void drawFrameInside(NSRect rect, bool drawBackground) override;

    void drawHintText(const std::string& text, NSRect inside) override;

    /// Fills with a colour that is not multiplied by its alpha, as `SetCompositedModeGL` says for the
    /// operation.
    void fillRect(NSRect rect, const NSColor& color, CompositingOperation operation) override;

    /// Lines of the width in pixels, half of it inside the rectangle's edges, source-over. A width of 0 is an
    /// OpenGL error, which is reported, and the width from before is taken.
    void frameRect(NSRect rect, const NSColor& color, float lineWidth) override;

    /// Fills each part of the path as a fan from its first point, which is right for convex parts, or draws
    /// it as a closed line, source-over. The path is brought into the normalised square and stays there.
    void fillBezierPath(NSBezierPath& path, const NSColor& color) override;
    void strokeBezierPath(NSBezierPath& path, const NSColor& color) override;

    /// Has the node draw itself with this target. Null draws nothing.
    void drawImage(const std::shared_ptr<IMGImage>& node, NSRect rect, CompositingOperation operation,
                   float alpha) override;

    /// Draws a node under records, from textures or as an overlay. Of a bitmap whose texture is not there in
    /// time nothing is drawn in this frame. The operation of an overlay acts in its own transparent picture
    /// only.
    void drawImage(IMGImage& node, const TransformAndClipList& transformClip, CompositingOperation operation,
                   float fraction) override;

    /// Draws a texture as a picture of a size under records, cut by the bounds, the image clip rectangle and
    /// the records' clips. `inverted` is for textures whose first row is the lowest one, such as those made
    /// from the frame buffer. Nothing is drawn under records without an inverse.
    void drawTexture(OpenGLTexture& texture, NSSize imageSize, const TransformAndClipList& transformClip,
                     CompositingOperation operation, float fraction, bool inverted);

    /// Has the bitmap's textures ready for a draw in so many seconds. Only after `prepareOnce`; null is
    /// nothing. Leaves the context current. Throws what OpenGLTexture's constructor throws.
    void preloadBitmap(const std::shared_ptr<NSBitmapImageRep>& bitmap, float timeUntilNeeded) override;

    /// Null before `prepare`.
    std::shared_ptr<Platform::NSOpenGLContext> openGLContext() const override;

    /// For callers that issue commands of their own.
    std::shared_ptr<OpenGLContextLock> contextLock() const override;

private:
    bool canDraw() const { return !m_is_lost; }
    void prepareContext(Platform::NSView* view, bool isOffscreen);
    void releaseTextures();
    void drawBitmap(const std::shared_ptr<NSBitmapImageRep>& bitmap,
                    const TransformAndClipList& transformClip, CompositingOperation operation,
                    float fraction);
    template<class Draw>
    void drawInOverlay(const Draw& draw);
    template<class Shape>
    void drawShape(const Shape& shape);

    std::shared_ptr<Platform::NSOpenGLContext> m_opengl_context;
    std::shared_ptr<OpenGLContextLock> m_context_lock;
    std::unique_ptr<OpenGLCache> m_cache;
    std::unique_lock<OpenGLContextLock> m_frame; ///< the hold of the frame that is being drawn
    std::optional<Platform::NSOpenGLProfile> m_profile;
    bool m_is_lost = false;
};

} // namespace Imaging
