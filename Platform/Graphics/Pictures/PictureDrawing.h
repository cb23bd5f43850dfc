#pragma once

// Internal: the drawing of pictures. Not installed.

#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/Pictures/DrawablePicture.h"
#include "Platform/Graphics/Pictures/PlacedPicture.h"
#include "Platform/Pixels/CompositingOperation.h"

#include <cairo.h>

namespace Imaging::Platform {

class NSGraphicsContext;

/// Draws `source` of the picture's space into `destination` of the context's, touching nothing outside. Onto
/// pixels the painter draws; on other targets (PDF, SVG, a window of its own kind) Cairo does. Empty or not
/// finite rectangles draw nothing. Where memory runs out, what can be made again is let go of and the drawing
/// tried once more. Throws an NSException when drawing fails.
void drawPicture(NSGraphicsContext& context, DrawablePicture& picture, NSRect destination, NSRect source,
                 NSCompositingOperation operation, double fraction);

/// The way of the painter, onto the pixels of a context that draws on such.
void drawByPainter(cairo_t* context, const PlacedPicture& placed, NSCompositingOperation operation,
                   double fraction);

} // namespace Imaging::Platform
