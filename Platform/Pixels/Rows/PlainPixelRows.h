#pragma once

// Internal: the routines for rows of pixels in plain code. Not installed.

#include "Platform/Pixels/Rows/PixelRowRoutines.h"

namespace Imaging::Platform {

/// The routines in plain code, which give the same bytes as those in vector code and finish their rows.
const PixelRowRoutines& plainPixelRows();

} // namespace Imaging::Platform
