#pragma once

// Internal: one context of the platform as one native context for each thread that uses it. Not installed.

#include "Platform/OpenGL/Contexts/NativeContext.h"
#include "Platform/OpenGL/OpenGLPixelFormat.h"
#include "Platform/OpenGL/View.h"

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Imaging::Platform {

/// The native context that draws, for the thread that owns it, and companions for the others:
///
/// ```
///   take ─→ makeCurrent (any number of times) ─→ giveBack        on each thread
/// ```
///
/// A native context that was taken belongs to the thread until it gives it back. All functions may be called
/// on any thread. Where contexts share, the younger's lock is held while the older's is taken.
class ThreadedContext {
public:
    ThreadedContext(std::shared_ptr<const NSOpenGLPixelFormat> format,
                    std::shared_ptr<ThreadedContext> share);
    ~ThreadedContext();
    ThreadedContext(const ThreadedContext&) = delete;
    ThreadedContext& operator=(const ThreadedContext&) = delete;

    /// The calling thread, which has taken nothing, owns the drawing context from now on. Throws an
    /// NSException (NSOpenGLException) while another has taken that, and what making and attaching it throws.
    void setView(std::shared_ptr<NSView> view);
    void clearDrawable();
    std::shared_ptr<NSView> view() const;

    /// The calling thread's native context: the one that draws on its owner, else a companion. Null when it
    /// is lost.
    NativeContext* take();
    void giveBack(NativeContext& native);

    /// Makes what the calling thread has taken current, with the view's size of this moment. False when it is
    /// lost.
    bool makeCurrent(NativeContext& native);

    void noteLost();
    bool isLost() const;
    void setSwapInterval(int interval);
    int swapInterval() const;
    const NSOpenGLPixelFormat& format() const { return *m_format; }

private:
    struct Companion {
        std::unique_ptr<NativeContext> native;
        bool taken = false;
    };

    NativeContext& ensureDrawing(ViewBacking& backing);
    NativeContext& drawingForSharing();
    void attachToView();
    void forgetLost();

    const std::shared_ptr<const NSOpenGLPixelFormat> m_format;
    const std::shared_ptr<ThreadedContext> m_share;

    mutable std::mutex m_lock; // guards all below; what a thread has taken it uses without
    std::thread::id m_owner;
    std::shared_ptr<NSView> m_view;
    std::shared_ptr<ViewBacking> m_backing; // of the view that the native context was attached to
    PixelSize m_size;
    std::unique_ptr<NativeContext> m_drawing;
    bool m_drawing_taken = false;
    std::vector<Companion> m_companions;
    int m_swap_interval = 1;
    bool m_lost = false;
};

} // namespace Imaging::Platform
