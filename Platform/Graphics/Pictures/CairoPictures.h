#pragma once

// Internal: the drawing of pictures by Cairo, where there are no pixels for the painter. Not installed.

#include "Platform/Graphics/Pictures/PlacedPicture.h"
#include "Platform/Pixels/CompositingOperation.h"

#include <cairo.h>

namespace Imaging::Platform {

/// Has Cairo draw the picture. It rounds fractions to 8 bits and has no plus-darker, for which this throws an
/// NSException (NSGraphicsException); where a pixel is covered in part it clears that pixel under source-in,
/// source-out, destination-in and destination-atop, and under plus-lighter adds the picture in proportion
/// before the limit instead of after it.
void drawByCairo(cairo_t* context, const PlacedPicture& placed, NSCompositingOperation operation,
                 double fraction);

} // namespace Imaging::Platform
