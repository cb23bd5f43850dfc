#pragma once

// Internal: rectangles as clips. Not installed.

#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/BezierPath.h"

namespace Imaging::Platform {

/// The path that clips to a rectangle; empty, so that nothing is left, for one without area.
NSBezierPath clipPath(NSRect rect);

} // namespace Imaging::Platform
