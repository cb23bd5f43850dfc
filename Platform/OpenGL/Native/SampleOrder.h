#pragma once

// Internal: pixels of any upload format as bytes in the order red, green, blue, alpha. Not installed.

#include "Platform/OpenGL/OpenGLConstants.h"

#include <cstddef>
#include <cstdint>

namespace Imaging::Platform {

/// Writes `count` pixels of a format as four bytes each in the order red, green, blue, alpha. Source and
/// target do not overlap and need no alignment. Any thread.
void orderSamples(OpenGL::PixelFormat format, OpenGL::PixelType type, const std::uint8_t* pixels,
                  std::uint8_t* rgba, std::size_t count);

} // namespace Imaging::Platform
