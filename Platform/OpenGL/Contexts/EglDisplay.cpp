// Finds a display of EGL that needs no display server: Mesa's without surfaces first, then devices.

#include "Platform/OpenGL/Contexts/EglDisplay.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/Contexts/OpenGLLibraries.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <array>
#include <cstdio>

namespace Imaging::Platform {

namespace {

EGLDisplay displayOfPlatform(EGLenum platform, void* native) {
    if (!epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_EXT_platform_base")) return EGL_NO_DISPLAY;
    const EGLDisplay display = eglGetPlatformDisplayEXT(platform, native, nullptr);
    if (display == EGL_NO_DISPLAY || eglInitialize(display, nullptr, nullptr) == EGL_FALSE)
        return EGL_NO_DISPLAY;
    return display;
}

EGLDisplay surfacelessDisplay() {
    if (!epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_MESA_platform_surfaceless")) return EGL_NO_DISPLAY;
    return displayOfPlatform(EGL_PLATFORM_SURFACELESS_MESA, nullptr);
}

/// The first device that can be opened, for drivers that know devices but no display without a surface.
EGLDisplay deviceDisplay() {
    if (!epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_EXT_platform_device")) return EGL_NO_DISPLAY;
    std::array<EGLDeviceEXT, 16> devices{};
    EGLint count = 0;
    if (eglQueryDevicesEXT(static_cast<EGLint>(devices.size()), devices.data(), &count) == EGL_FALSE) {
        return EGL_NO_DISPLAY;
    }
    for (EGLint i = 0; i < count; ++i) {
        const EGLDisplay display =
            displayOfPlatform(EGL_PLATFORM_DEVICE_EXT, devices.at(static_cast<std::size_t>(i)));
        if (display != EGL_NO_DISPLAY) return display;
    }
    return EGL_NO_DISPLAY;
}

EGLDisplay defaultDisplay() {
    const EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    if (display == EGL_NO_DISPLAY || eglInitialize(display, nullptr, nullptr) == EGL_FALSE)
        return EGL_NO_DISPLAY;
    return display;
}

} // namespace

EglDisplay EglDisplay::openHeadless() {
    requireOpenGLLibraries();
    for (EGLDisplay (*open)() : {surfacelessDisplay, deviceDisplay, defaultDisplay}) {
        const EGLDisplay display = open();
        if (display != EGL_NO_DISPLAY) return EglDisplay(display);
    }
    throw NSException(NSOpenGLException, "EGL has no driver that draws without a screen (" + eglErrorText() +
                                             "); on Debian: apt install libegl-mesa0 libgl1-mesa-dri");
}

const EglDisplay& EglDisplay::headless() {
    static const EglDisplay display = openHeadless();
    return display;
}

EglDisplay EglDisplay::forNative(EGLenum platform, void* nativeDisplay) {
    requireOpenGLLibraries();
    const EGLDisplay display = displayOfPlatform(platform, nativeDisplay);
    if (display != EGL_NO_DISPLAY) return EglDisplay(display);
    throw NSException(NSOpenGLException, "EGL cannot draw on the application's display (" + eglErrorText() +
                                             "); on Debian: apt install libegl-mesa0 libgl1-mesa-dri");
}

bool EglDisplay::hasExtension(const char* name) const { return epoxy_has_egl_extension(m_handle, name); }

std::string eglErrorText() {
    const EGLint error = eglGetError();
    const std::array<const char*, 15> words{
        "EGL_SUCCESS",       "EGL_NOT_INITIALIZED", "EGL_BAD_ACCESS",        "EGL_BAD_ALLOC",
        "EGL_BAD_ATTRIBUTE", "EGL_BAD_CONFIG",      "EGL_BAD_CONTEXT",       "EGL_BAD_CURRENT_SURFACE",
        "EGL_BAD_DISPLAY",   "EGL_BAD_MATCH",       "EGL_BAD_NATIVE_PIXMAP", "EGL_BAD_NATIVE_WINDOW",
        "EGL_BAD_PARAMETER", "EGL_BAD_SURFACE",     "EGL_CONTEXT_LOST"};
    const EGLint index = error - EGL_SUCCESS;
    if (index >= 0 && index < static_cast<EGLint>(words.size()))
        return words.at(static_cast<std::size_t>(index));
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%04X", static_cast<unsigned>(error));
    return text.data();
}

} // namespace Imaging::Platform
