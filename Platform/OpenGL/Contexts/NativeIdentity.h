#pragma once

// Internal: which native context is current, whoever made it so. Not installed.

#include <epoxy/egl.h>

#include <optional>

namespace Imaging::Platform {

/// Stands for the native context that is current on this thread: its handle in EGL or GLX. Null without one.
/// No library is loaded for it that the application has not loaded.
const void* currentNativeContext();

/// How a context of EGL was made, so that another can be made to share with it.
struct EglOrigin {
    EGLDisplay display;
    EGLContext context;
    EGLConfig config;
};

/// That of the context that is current on this thread; nothing where it is not EGL's.
std::optional<EglOrigin> currentEglOrigin();

} // namespace Imaging::Platform
