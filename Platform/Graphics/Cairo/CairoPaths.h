#pragma once

// Internal: paths as Cairo's. Not installed.

#include "Platform/Graphics/Cairo/CairoHandles.h"
#include "Platform/Graphics/PathElement.h"

#include <span>

namespace Imaging::Platform {

/// The elements of a path; the first one is a move.
using PathElements = std::span<const PathElement>;

/// Adds what a path encloses to the context's current path, in the context's user space, for fills and
/// clips. Coordinates may be of any size: what lies too far away for Cairo, and to be seen, is cut off.
/// Nothing is added of a path with coordinates that are not finite.
void appendPath(cairo_t* context, PathElements path);

/// The same for a path's lines, to be stroked.
void appendStrokePath(cairo_t* context, PathElements path);

void setFillRule(cairo_t* context, NSWindingRule rule);

/// A context without pixels, for measuring paths.
CairoContext measuringContext();

} // namespace Imaging::Platform
