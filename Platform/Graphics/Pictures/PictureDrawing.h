#pragma once

// Internal: the drawing of pictures. Not installed.

#include "Platform/Painter/DrawablePicture.h"
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

/// What one draw of a picture comes to on a Cairo context, whose clip is the destination by now.
struct PlacedPicture {
    DrawablePicture& picture;
    cairo_matrix_t
        matrix;      ///< the picture's pixels, rows downward, to the context's user space under identity
    bool coversClip; ///< whether the picture reaches over all of the destination
};

/// The two ways to draw: by the painter, and by Cairo. The latter rounds fractions to 8 bits and has no
/// plus-darker, for which it throws an NSException (NSGraphicsException); where a pixel is covered in part it
/// clears that pixel under source-in, source-out, destination-in and destination-atop, and under plus-lighter
/// adds the picture in proportion before the limit instead of after it.
void drawByPainter(cairo_t* context, const PlacedPicture& placed, NSCompositingOperation operation,
                   double fraction);
void drawByCairo(cairo_t* context, const PlacedPicture& placed, NSCompositingOperation operation,
                 double fraction);

} // namespace Imaging::Platform
