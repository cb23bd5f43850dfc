#pragma once

// Internal: what 2-D graphics draw, laid over an OpenGL frame. Not installed.

#include "Platform/Foundation/Geometry.h"

#include <functional>
#include <memory>

namespace Imaging::Platform {
class NSImage;
class OpenGLCommands;
} // namespace Imaging::Platform

namespace Imaging {

/// A picture of a size, transparent where the function leaves it so. The function draws into it, one point a
/// pixel from the lower left corner; the 2-D context that was current before is as it was, also when the
/// function throws, which passes on. Null for a size below one pixel.
std::shared_ptr<Platform::NSImage> overlayPicture(Platform::NSSize size, const std::function<void()>& draw);

/// Draws the picture source-over on the whole normalised square, through textures that are made for it and
/// deleted again.
void drawOverlay(Platform::OpenGLCommands& gl, const std::shared_ptr<Platform::NSImage>& picture);

} // namespace Imaging
