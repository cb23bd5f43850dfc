#pragma once

// Internal: the one place where an operation, a fraction and a coverage meet on a Cairo context. Not
// installed.

#include "Platform/Pixels/CompositingOperation.h"

#include <cairo.h>
#include <functional>

namespace Imaging::Platform {

/// Paints the context's clip area with what `setSource` sets as the source, scaled by `fraction` (0 to 1,
/// clamped) and combined by `operation`. What is there changes in proportion to the clip's coverage.
///
/// Throws an NSException (NSGraphicsException) when plus-darker is asked for on a target that is not made
/// of pixels, since such targets (PDF, SVG) have no such operation.
void compositeClipArea(cairo_t* context, NSCompositingOperation operation, double fraction,
                       const std::function<void(cairo_t*)>& setSource);

} // namespace Imaging::Platform
