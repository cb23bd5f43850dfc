#pragma once

#include "Platform/Foundation/Export.h"

namespace Imaging::Platform {

/// Takes back the memory of all pictures that can be made again: ready-to-draw copies of bitmaps, and halved
/// levels. The next draw of a picture makes anew what it needs. Safe from any thread at any time; drawing
/// that runs out of memory calls it by itself.
///
/// Example:
/// @code
/// releasePictureMemory();
/// @endcode
IMAGING_EXPORT void releasePictureMemory();

} // namespace Imaging::Platform
