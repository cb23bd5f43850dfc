#pragma once

// Internal: the routines for rows of pixels in vector code. Not installed.

#include "Platform/Pixels/Rows/PixelRowRoutines.h"

namespace Imaging::Platform {

/// The routines in the best vector code that the processor has.
const PixelRowRoutines& pixelRows();

} // namespace Imaging::Platform
