// Native contexts of EGL, with surfaces of the view's kind. What was current on a thread, and the API that
// was bound, come back after each use.

#include "Platform/OpenGL/Contexts/EglContext.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/Contexts/ContextCommands.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <array>

namespace Imaging::Platform {

namespace {

constexpr EGLint anyVersion[] = {EGL_NONE};
constexpr EGLint coreVersion[] = {EGL_CONTEXT_MAJOR_VERSION,
                                  3,
                                  EGL_CONTEXT_MINOR_VERSION,
                                  2,
                                  EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                  EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                  EGL_NONE};
constexpr EGLint esVersion[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 0, EGL_NONE};

constexpr EglApi compatibilityApi{OpenGLProfile::Compatibility, EGL_OPENGL_API, EGL_OPENGL_BIT, anyVersion};
constexpr EglApi coreApi{OpenGLProfile::Core, EGL_OPENGL_API, EGL_OPENGL_BIT, coreVersion};
constexpr EglApi esApi{OpenGLProfile::ES, EGL_OPENGL_ES_API, EGL_OPENGL_ES3_BIT, esVersion};

/// Contexts are made for the API that is bound on the thread, which belongs to the application.
class ApiScope {
public:
    explicit ApiScope(EGLenum api) : m_before(eglQueryAPI()) { eglBindAPI(api); }
    ~ApiScope() { eglBindAPI(m_before); }
    ApiScope(const ApiScope&) = delete;
    ApiScope& operator=(const ApiScope&) = delete;

private:
    EGLenum m_before;
};

/// What is current on this thread comes back at the end.
class CurrentScope {
public:
    CurrentScope()
        : m_display(eglGetCurrentDisplay()),
          m_draw(eglGetCurrentSurface(EGL_DRAW)),
          m_read(eglGetCurrentSurface(EGL_READ)),
          m_context(eglGetCurrentContext()) {}
    ~CurrentScope() {
        if (m_context != EGL_NO_CONTEXT) eglMakeCurrent(m_display, m_draw, m_read, m_context);
    }
    CurrentScope(const CurrentScope&) = delete;
    CurrentScope& operator=(const CurrentScope&) = delete;

private:
    EGLDisplay m_display;
    EGLSurface m_draw;
    EGLSurface m_read;
    EGLContext m_context;
};

} // namespace

const EglApi& eglApiOf(OpenGLProfile profile) {
    switch (profile) {
    case OpenGLProfile::Core:
        return coreApi;
    case OpenGLProfile::ES:
        return esApi;
    case OpenGLProfile::Compatibility:
        break;
    }
    return compatibilityApi;
}

std::unique_ptr<EglContext> EglContext::makeWith(const EglDisplay& display, EGLConfig config,
                                                 const EglApi& api, EGLContext shared) {
    const ApiScope scope(api.api);
    const EGLContext context = eglCreateContext(display.handle(), config, shared, api.attributes);
    if (context == EGL_NO_CONTEXT) return nullptr;
    return std::unique_ptr<EglContext>(new EglContext(display, config, api, context));
}

std::unique_ptr<EglContext> EglContext::make(const EglDisplay& display, EGLConfig config, const EglApi& api,
                                             const EglContext* share) {
    return makeWith(display, config, api, share == nullptr ? EGL_NO_CONTEXT : share->m_context);
}

std::unique_ptr<EglContext> EglContext::makeSharing(const EglOrigin& origin, const OpenGLFacts& facts) {
    return makeWith(EglDisplay::ofApplication(origin.display), origin.config, eglApiOf(facts.profile),
                    origin.context);
}

EglContext::~EglContext() {
    releaseObjects();
    release();
    detach();
    eglDestroyContext(m_display.handle(), m_context);
}

/// The rest of the share group would keep what this context no longer needs.
void EglContext::releaseObjects() {
    if (!m_commands) return;
    const CurrentScope scope;
    if (!bind()) return;
    m_commands->releaseObjects();
    release();
}

std::unique_ptr<NativeContext> EglContext::makeCompanion() { return make(m_display, m_config, m_api, this); }

void EglContext::attach(ViewBacking& backing, PixelSize size) {
    auto* const view = dynamic_cast<EglBacking*>(&backing);
    if (view == nullptr || view->display().handle() != m_display.handle()) {
        throw NSException(NSOpenGLException,
                          "the context was made for another kind of view; make a new context for "
                          "this one");
    }
    if (m_backing != view || m_surface == EGL_NO_SURFACE || !view->resizeSurface(size)) {
        detach();
        m_surface = view->makeSurface(m_config, size);
        if (m_surface == EGL_NO_SURFACE) {
            throw NSException(NSOpenGLException,
                              "EGL cannot draw on a view of " + std::to_string(size.width) + " x " +
                                  std::to_string(size.height) + " pixels (" + eglErrorText() + ")");
        }
    }
    m_backing = view;
    m_size = size;
    m_is_window = view->surfaceBit() == EGL_WINDOW_BIT;
    m_swap_interval_changed = true;
}

void EglContext::detach() {
    // A surface that is still current lives on until it is not.
    if (m_surface != EGL_NO_SURFACE) eglDestroySurface(m_display.handle(), m_surface);
    m_surface = EGL_NO_SURFACE;
    m_backing = nullptr;
    m_size = {};
    m_is_window = false;
}

/// Where a context must have a surface to be current, one of a single pixel.
EGLSurface EglContext::surfaceForNothing() {
    if (m_display.hasExtension("EGL_KHR_surfaceless_context")) return EGL_NO_SURFACE;
    const std::array<EGLint, 5> attributes{EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
    return eglCreatePbufferSurface(m_display.handle(), m_config, attributes.data());
}

bool EglContext::bind() {
    if (m_surface == EGL_NO_SURFACE) m_surface = surfaceForNothing();
    return eglMakeCurrent(m_display.handle(), m_surface, m_surface, m_context) == EGL_TRUE;
}

bool EglContext::makeCurrent() {
    if (!bind()) {
        const std::string error = eglErrorText();
        if (error == "EGL_CONTEXT_LOST") return false;
        throw NSException(NSOpenGLException, "EGL cannot make the context current (" + error + ")");
    }
    prepareCommands();
    if (m_is_window && m_swap_interval_changed) eglSwapInterval(m_display.handle(), m_swap_interval);
    m_swap_interval_changed = false;
    return true;
}

void EglContext::prepareCommands() {
    try {
        if (!m_commands) m_commands = commandsOfCurrentContext();
    } catch (...) {
        release();
        throw;
    }
    m_commands->setDrawable({0, 0, m_size.width, m_size.height, false});
}

void EglContext::release() {
    // The application may have made another one current meanwhile.
    if (eglGetCurrentContext() != m_context) return;
    if (m_commands) m_commands->flush();
    eglMakeCurrent(m_display.handle(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

bool EglContext::flush() {
    m_commands->flush();
    if (!m_is_window || eglSwapBuffers(m_display.handle(), m_surface) == EGL_TRUE) return true;
    const std::string error = eglErrorText();
    if (error == "EGL_CONTEXT_LOST") return false;
    throw NSException(NSOpenGLException, "EGL cannot show what was drawn (" + error + ")");
}

void EglContext::setSwapInterval(int interval) {
    m_swap_interval = interval;
    m_swap_interval_changed = true;
}

} // namespace Imaging::Platform
