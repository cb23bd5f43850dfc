// Asks EGL and GLX, as far as the application has loaded them, which context is current.

#include "Platform/OpenGL/Contexts/NativeIdentity.h"

#include <array>

#include <dlfcn.h>

namespace Imaging::Platform {

namespace {

using CurrentFunction = void* (*)();

/// Asks a library that is loaded already.
const void* currentOf(const char* library, const char* function) {
    void* const handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr) return nullptr;
    const auto current = reinterpret_cast<CurrentFunction>(dlsym(handle, function));
    const void* const context = current == nullptr ? nullptr : current();
    dlclose(handle);
    return context;
}

} // namespace

const void* currentNativeContext() {
    if (const void* const egl = currentOf("libEGL.so.1", "eglGetCurrentContext")) return egl;
    if (const void* const glx = currentOf("libGLX.so.0", "glXGetCurrentContext")) return glx;
    return currentOf("libGL.so.1", "glXGetCurrentContext");
}

std::optional<EglOrigin> currentEglOrigin() {
    if (currentOf("libEGL.so.1", "eglGetCurrentContext") == nullptr) return std::nullopt;
    EglOrigin origin{eglGetCurrentDisplay(), eglGetCurrentContext(), nullptr};
    EGLint number = 0;
    EGLint count = 0;
    if (eglQueryContext(origin.display, origin.context, EGL_CONFIG_ID, &number) == EGL_FALSE)
        return std::nullopt;
    const std::array<EGLint, 3> attributes{EGL_CONFIG_ID, number, EGL_NONE};
    if (number != 0) eglChooseConfig(origin.display, attributes.data(), &origin.config, 1, &count);
    if (count == 1) return origin;
    return std::nullopt; // made without a configuration, or by a library that hides it
}

} // namespace Imaging::Platform
