#pragma once

// Internal: the nine-piece frame as a bitmap for textures. Not installed.

#include "Platform/Foundation/Geometry.h"

#include <memory>

namespace Imaging {

class OpenGLImage;

/// The frame drawn at the rectangle's own coordinates into a picture of the rectangle's size, on the window
/// background where the flag says so. The last one made is kept for the whole process and answered again for
/// every rectangle of the same size, whatever its origin and the flag are. Null for a rectangle below one
/// pixel. Throws like `DrawFrameInside`. Any thread.
std::shared_ptr<OpenGLImage> framePicture(Platform::NSRect rect, bool drawBackground);

/// Lets the picture that is kept go, for tests.
void forgetFramePicture();

} // namespace Imaging
