// A context for a view: makes native contexts as threads need them, and has their commands answer as the
// current ones.

#include "Platform/OpenGL/OpenGLContext.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/Contexts/ThreadedContext.h"
#include "Platform/OpenGL/OpenGLException.h"
#include "Platform/OpenGL/OpenGLPixelFormat.h"

#include <string>
#include <utility>

namespace Imaging::Platform {

/// What is current on a thread. It holds the state, so that the native context outlives its use here.
struct NSOpenGLContext::Current {
    std::shared_ptr<ThreadedContext> state;
    std::weak_ptr<NSOpenGLContext> context;
    NativeContext* native = nullptr;

    /// The thread's commands must outlive this, so they are made first.
    Current() { OpenGLCommands::currentOrNull(); }
    ~Current() { leave(); }
    Current(const Current&) = delete;
    Current& operator=(const Current&) = delete;

    void leave();
};

void NSOpenGLContext::Current::leave() {
    OpenGLCommands::setCurrent(nullptr);
    if (state) state->giveBack(*native);
    native = nullptr;
    context.reset();
    state.reset();
}

NSOpenGLContext::Current& NSOpenGLContext::current() {
    thread_local Current instance;
    return instance;
}

NSOpenGLContext::NSOpenGLContext(std::shared_ptr<ThreadedContext> state) : m_state(std::move(state)) {}

NSOpenGLContext::~NSOpenGLContext() {
    if (current().state == m_state) clearCurrentContext();
}

std::shared_ptr<NSOpenGLContext>
NSOpenGLContext::contextWithFormat(std::shared_ptr<const NSOpenGLPixelFormat> format,
                                   const std::shared_ptr<NSOpenGLContext>& share) {
    if (!format) return nullptr;
    auto state = std::make_shared<ThreadedContext>(std::move(format), share ? share->m_state : nullptr);
    return std::shared_ptr<NSOpenGLContext>(new NSOpenGLContext(std::move(state)));
}

std::shared_ptr<NSOpenGLContext> NSOpenGLContext::currentContext() { return current().context.lock(); }

void NSOpenGLContext::clearCurrentContext() { current().leave(); }

void NSOpenGLContext::setView(const std::shared_ptr<NSView>& view) {
    if (!view) return clearDrawable();
    const bool wasCurrent = current().state == m_state;
    if (wasCurrent) clearCurrentContext();
    m_state->setView(view);
    if (wasCurrent) makeCurrentContext();
}

void NSOpenGLContext::clearDrawable() {
    const bool wasCurrent = current().state == m_state;
    if (wasCurrent) clearCurrentContext();
    m_state->clearDrawable();
    if (wasCurrent) makeCurrentContext();
}

std::shared_ptr<NSView> NSOpenGLContext::view() const { return m_state->view(); }

void NSOpenGLContext::update() {
    if (current().state == m_state) makeCurrentContext();
}

bool NSOpenGLContext::makeCurrentContext() {
    Current& here = current();
    if (here.state != m_state) {
        here.leave();
        NativeContext* const native = m_state->take();
        if (native == nullptr) return false;
        here.state = m_state;
        here.context = weak_from_this();
        here.native = native;
    }
    try {
        if (m_state->makeCurrent(*here.native)) {
            OpenGLCommands::setCurrent(here.native->commands());
            return true;
        }
    } catch (...) {
        here.leave();
        throw;
    }
    here.leave();
    return false;
}

bool NSOpenGLContext::isLost() const { return m_state->isLost(); }

void NSOpenGLContext::flushBuffer() {
    Current& here = current();
    if (here.state != m_state || here.native->flush()) return;
    m_state->noteLost();
    here.leave();
}

void NSOpenGLContext::setValues(int value, int parameter) {
    if (parameter != NSOpenGLCPSwapInterval || value < 0) {
        throw NSException(NSInvalidArgumentException,
                          "contexts know the swap interval (222) of 0 refreshes and more, not " +
                              std::to_string(value) + " for parameter " + std::to_string(parameter));
    }
    m_state->setSwapInterval(value);
}

int NSOpenGLContext::getValues(int parameter) const {
    if (parameter == NSOpenGLCPSwapInterval) return m_state->swapInterval();
    throw NSException(NSInvalidArgumentException,
                      "contexts know the swap interval (222), not parameter " + std::to_string(parameter));
}

const NSOpenGLPixelFormat& NSOpenGLContext::pixelFormat() const { return m_state->format(); }

} // namespace Imaging::Platform
