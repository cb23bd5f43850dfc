#pragma once

#include <string_view>

namespace Imaging::Platform {

/// The name of the exceptions of everything OpenGL: no library, no driver, no context, a context on a wrong
/// thread. The reason says what is missing and how to get it.
inline constexpr std::string_view NSOpenGLException = "NSOpenGLException";

} // namespace Imaging::Platform
