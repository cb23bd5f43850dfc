// Gives each thread a native context of its own: the one that draws to its owner, companions from a pool
// to the others.

#include "Platform/OpenGL/Contexts/ThreadedContext.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Log.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Imaging::Platform {

namespace {

/// A part of a pixel needs a whole one. Sizes that are no numbers, or beyond any surface, end at its bounds.
int pixelsFor(float points) {
    constexpr float most = 1 << 20;
    return points > 0 ? static_cast<int>(std::ceil(std::min(points, most))) : 0;
}

PixelSize sizeOf(const NSView& view) {
    const NSSize size = view.bounds().size;
    return {pixelsFor(size.width), pixelsFor(size.height)};
}

} // namespace

ThreadedContext::ThreadedContext(std::shared_ptr<const NSOpenGLPixelFormat> format,
                                 std::shared_ptr<ThreadedContext> share)
    : m_format(std::move(format)), m_share(std::move(share)), m_owner(std::this_thread::get_id()) {}

// Companions go first: they share with the one that draws.
ThreadedContext::~ThreadedContext() { m_companions.clear(); }

NativeContext& ThreadedContext::drawingForSharing() {
    const std::lock_guard guard(m_lock);
    return ensureDrawing(m_view ? *m_view->backing() : *offscreenBacking());
}

NativeContext& ThreadedContext::ensureDrawing(ViewBacking& backing) {
    if (!m_drawing) {
        NativeContext* const shared = m_share ? &m_share->drawingForSharing() : nullptr;
        m_drawing = backing.makeContext(*m_format, shared);
        m_drawing->setSwapInterval(m_swap_interval);
    }
    return *m_drawing;
}

/// Nobody may be using what is thrown away: threads that find their context lost give it back at once.
void ThreadedContext::forgetLost() {
    if (!m_lost) return;
    std::erase_if(m_companions, [](const Companion& companion) { return !companion.taken; });
    if (m_companions.empty()) m_drawing.reset();
    m_lost = !m_companions.empty();
    if (m_lost) {
        throw NSException(NSOpenGLException, "the lost context is still current on another thread; call "
                                             "clearCurrentContext there before it is made anew");
    }
}

void ThreadedContext::setView(std::shared_ptr<NSView> view) {
    const std::lock_guard guard(m_lock);
    if (m_drawing_taken) {
        throw NSException(NSOpenGLException,
                          "the context is current on another thread; call clearCurrentContext "
                          "there before giving it a view here");
    }
    forgetLost();
    ensureDrawing(*view->backing());
    m_drawing->attach(*view->backing(), sizeOf(*view));
    m_owner = std::this_thread::get_id();
    m_backing = view->backing();
    m_size = sizeOf(*view);
    m_view = std::move(view);
}

void ThreadedContext::clearDrawable() {
    const std::lock_guard guard(m_lock);
    if (m_drawing_taken) {
        throw NSException(NSOpenGLException,
                          "the context is current on another thread; call clearCurrentContext "
                          "there before taking its view away");
    }
    m_view.reset();
    m_backing.reset();
    if (m_drawing) m_drawing->detach();
}

std::shared_ptr<NSView> ThreadedContext::view() const {
    const std::lock_guard guard(m_lock);
    return m_view;
}

NativeContext* ThreadedContext::take() {
    const std::lock_guard guard(m_lock);
    if (m_lost) return nullptr;
    NativeContext& drawing = ensureDrawing(m_view ? *m_view->backing() : *offscreenBacking());
    if (m_owner == std::this_thread::get_id() && !m_drawing_taken) {
        m_drawing_taken = true;
        return &drawing;
    }
    for (Companion& companion : m_companions) {
        if (companion.taken) continue;
        companion.taken = true;
        return companion.native.get();
    }
    std::unique_ptr<NativeContext> made = drawing.makeCompanion();
    if (!made) {
        throw NSException(NSOpenGLException,
                          "the system gives no second context for this thread; draw on the thread "
                          "that gave the context its view");
    }
    m_companions.push_back({std::move(made), true});
    return m_companions.back().native.get();
}

void ThreadedContext::giveBack(NativeContext& native) {
    native.release();
    const std::lock_guard guard(m_lock);
    if (&native == m_drawing.get()) m_drawing_taken = false;
    for (Companion& companion : m_companions) {
        if (companion.native.get() == &native) companion.taken = false;
    }
}

void ThreadedContext::attachToView() {
    const PixelSize size = sizeOf(*m_view);
    if (size == m_size) return;
    m_drawing->attach(*m_backing, size);
    m_size = size;
}

bool ThreadedContext::makeCurrent(NativeContext& native) {
    {
        const std::lock_guard guard(m_lock);
        if (&native == m_drawing.get() && m_view) attachToView();
    }
    const bool isThere = native.makeCurrent();
    if (!isThere) noteLost();
    return isThere;
}

void ThreadedContext::noteLost() {
    {
        const std::lock_guard guard(m_lock);
        if (std::exchange(m_lost, true)) return;
    }
    NSLog("the OpenGL context was lost, because its device was reset or went away; it is made anew when it "
          "is given "
          "its view again");
}

bool ThreadedContext::isLost() const {
    const std::lock_guard guard(m_lock);
    return m_lost;
}

void ThreadedContext::setSwapInterval(int interval) {
    const std::lock_guard guard(m_lock);
    m_swap_interval = interval;
    if (m_drawing) m_drawing->setSwapInterval(interval);
}

int ThreadedContext::swapInterval() const {
    const std::lock_guard guard(m_lock);
    return m_swap_interval;
}

} // namespace Imaging::Platform
