#pragma once

// Internal: connections to EGL. Not installed.

#include <epoxy/egl.h>

#include <string>

namespace Imaging::Platform {

/// A display that is initialised. Displays are never terminated, since the application may use the same one,
/// and EGL counts nobody. Any thread.
class EglDisplay {
public:
    /// The display that needs no screen: software or hardware without a display server, else whatever EGL
    /// gives by default. Throws an NSException (NSOpenGLException) that says what is missing.
    static const EglDisplay& headless();

    /// The display of a native one: `platform` is EGL's number of its kind (EGL_PLATFORM_X11_KHR and the
    /// like). Throws the same.
    static EglDisplay forNative(EGLenum platform, void* nativeDisplay);

    /// One that the application has initialised.
    static EglDisplay ofApplication(EGLDisplay handle) { return EglDisplay(handle); }

    EGLDisplay handle() const { return m_handle; }
    bool hasExtension(const char* name) const;

private:
    explicit EglDisplay(EGLDisplay handle) : m_handle(handle) {}
    static EglDisplay openHeadless();

    EGLDisplay m_handle;
};

/// EGL's word for its last error on this thread, "EGL_BAD_CONTEXT" or a hexadecimal number.
std::string eglErrorText();

} // namespace Imaging::Platform
