#pragma once

// Internal: what stands behind a context of the platform. Not installed.

#include "Platform/OpenGL/OpenGLCommands.h"

#include <memory>

namespace Imaging::Platform {

class NSOpenGLPixelFormat;
class ViewBacking;

/// Width and height of what is drawn on, in pixels.
struct PixelSize {
    int width = 0;
    int height = 0;

    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

/// One native context with what it draws on, at first nothing. It is current on one thread at most; whoever
/// holds it sees to that. Functions throw an NSException (NSOpenGLException) when the system refuses what
/// they ask.
class NativeContext {
public:
    virtual ~NativeContext();
    NativeContext(const NativeContext&) = delete;
    NativeContext& operator=(const NativeContext&) = delete;

    /// Another context of the same share group that draws on nothing, for another thread. Any thread. Null
    /// where the system gives none.
    virtual std::unique_ptr<NativeContext> makeCompanion() = 0;

    /// Draws on a view of this size from the next `makeCurrent` on, or on the same view with another size.
    /// Its contents may be lost. Not while current on another thread. Throws also for a view of another kind
    /// than the context was made for.
    virtual void attach(ViewBacking& backing, PixelSize size) = 0;

    /// Draws on nothing from the next `makeCurrent` on.
    virtual void detach() = 0;

    /// On the calling thread. False when the context is lost for good (the device was reset or went away).
    virtual bool makeCurrent() = 0;

    /// The calling thread, on which it is current, has no context afterwards.
    virtual void release() = 0;

    /// Shows what was drawn, while current. False when the context is lost.
    virtual bool flush() = 0;

    /// Refreshes of the screen to wait for between two flushes; heeded from the next `makeCurrent` on.
    virtual void setSwapInterval(int interval) = 0;

    /// Null before the first `makeCurrent`.
    virtual std::shared_ptr<OpenGLCommands> commands() = 0;

protected:
    NativeContext() = default;
};

/// What contexts of one view are made of.
class ViewBacking {
public:
    virtual ~ViewBacking();
    ViewBacking(const ViewBacking&) = delete;
    ViewBacking& operator=(const ViewBacking&) = delete;

    /// A context of a format that can draw on the view, and shares textures with another one unless null.
    /// Throws an NSException (NSOpenGLException) that says what is missing.
    virtual std::unique_ptr<NativeContext> makeContext(const NSOpenGLPixelFormat& format,
                                                       NativeContext* share) = 0;

protected:
    ViewBacking() = default;
};

/// For views that are on no screen: pixels of their own in the display that needs none. One for all of them.
std::shared_ptr<ViewBacking> offscreenBacking();

} // namespace Imaging::Platform
