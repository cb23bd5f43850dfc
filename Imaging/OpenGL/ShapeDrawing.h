#pragma once

// Internal: rectangles, frames and outlines in one colour. Not installed.

#include "Imaging/PolygonClipping.h"
#include "Platform/OpenGL/OpenGLConstants.h"

namespace Imaging::Platform {
class NSColor;
class OpenGLCommands;
} // namespace Imaging::Platform

/// All coordinates are those of the normalised square, and every function leaves OpenGL's state as it was.
/// Colours are not multiplied by their alpha.
namespace Imaging {

/// Combined with what is there as `SetCompositedModeGL` says for the operation.
void drawRectangle(Platform::OpenGLCommands& gl, NSRect rect, const Platform::NSColor& color, int operation);

/// Four lines of a width in pixels along the rectangle's edges, each longer by `overlap` at both ends, so
/// that the corners are closed.
void drawFrame(Platform::OpenGLCommands& gl, NSRect rect, float overlap, const Platform::NSColor& color,
               float lineWidth);

/// Each list of points as a polygon, a fan from its first point, or as a closed line of a width in pixels.
void drawOutlines(Platform::OpenGLCommands& gl, const PointLists& outlines,
                  Platform::OpenGL::Primitive primitive, const Platform::NSColor& color, float lineWidth);

} // namespace Imaging
