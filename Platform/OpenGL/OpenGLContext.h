#pragma once

#include "Platform/Foundation/Export.h"

#include <memory>

namespace Imaging::Platform {

class NSOpenGLPixelFormat;
class NSView;
class ThreadedContext;

/// Parameters of contexts. The number is the platform's own.
enum NSOpenGLContextParameter : int {
    NSOpenGLCPSwapInterval = 222, ///< refreshes of the screen that a flush waits for; 1 at first, 0 for none
};

/// A context that draws with OpenGL into a view. OpenGL is looked for when the context is first needed.
///
/// Threads. The context draws on the thread that gave it its view (or made it, as long as it has none). Made
/// current on any other thread it uses a companion there, a context of its own in the same share group that
/// draws on nothing: what one uploads the other can draw, once the uploader has called `finish`
/// (OpenGLCommands) and the other binds the texture anew. Companions are used again by later threads. All
/// functions may be called on any thread.
///
/// Functions throw an NSException (NSOpenGLException) that says what is missing and how to get it.
class IMAGING_EXPORT NSOpenGLContext : public std::enable_shared_from_this<NSOpenGLContext> {
public:
    /// A context that shares textures with another unless null. Null without a format.
    static std::shared_ptr<NSOpenGLContext>
    contextWithFormat(std::shared_ptr<const NSOpenGLPixelFormat> format,
                      const std::shared_ptr<NSOpenGLContext>& share = nullptr);

    /// Also takes the context from the calling thread where it is current there. On other threads where it
    /// still is, it lives on until they make another current, clear theirs or end.
    ~NSOpenGLContext();
    NSOpenGLContext(const NSOpenGLContext&) = delete;
    NSOpenGLContext& operator=(const NSOpenGLContext&) = delete;

    /// The calling thread's context, or null.
    static std::shared_ptr<NSOpenGLContext> currentContext();

    /// The calling thread has no context afterwards. One that ends does so by itself.
    static void clearCurrentContext();

    /// Draws into the view from now on, on the calling thread; null is `clearDrawable`. The native context is
    /// made here at the first view, whose kind it keeps, and anew where it was lost. Throws also while the
    /// context is current on another thread that draws.
    void setView(const std::shared_ptr<NSView>& view);
    std::shared_ptr<NSView> view() const;

    /// Draws into nothing from now on.
    void clearDrawable();

    /// Takes on the view's size, for what is drawn from now on. Making it current does the same.
    void update();

    /// Commands of the calling thread go to this context from now on (OpenGLCommands::current). False when
    /// the context is lost, because the device was reset or went away: it is logged once, nothing is current,
    /// and the next `setView` makes it anew, without textures.
    bool makeCurrentContext();

    /// Whether the context was lost, and has not been given a view since.
    bool isLost() const;

    /// Shows what was drawn: swaps the buffers of a view on a screen, and hands all commands over elsewhere.
    /// Does nothing unless the context is current on the calling thread.
    void flushBuffer();

    /// Unknown parameters throw an NSException (NSInvalidArgumentException), and so does a negative interval.
    /// It is heeded from the next `makeCurrentContext` on.
    void setValues(int value, int parameter);
    int getValues(int parameter) const;

    const NSOpenGLPixelFormat& pixelFormat() const;

private:
    struct Current;

    explicit NSOpenGLContext(std::shared_ptr<ThreadedContext> state);
    static Current& current();

    std::shared_ptr<ThreadedContext> m_state; // shared with the threads where it is current
};

} // namespace Imaging::Platform
