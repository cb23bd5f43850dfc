#pragma once

// Internal: which of EGL's configurations fits a pixel format. Not installed.

#include "Platform/OpenGL/Contexts/EglDisplay.h"
#include "Platform/OpenGL/OpenGLPixelFormat.h"

#include <optional>

namespace Imaging::Platform {

/// The configuration nearest to a format for an API (`renderableBit`: EGL_OPENGL_BIT and the like) and a kind
/// of surface (`surfaceBit`: EGL_PBUFFER_BIT and the like). Depth is lowered to 24, 16 and 0 bits and several
/// samples to one before anything else is given up. Nothing when there is none.
std::optional<EGLConfig> chooseEglConfig(const EglDisplay& display, const NSOpenGLPixelFormat& format,
                                         EGLint renderableBit, EGLint surfaceBit);

} // namespace Imaging::Platform
