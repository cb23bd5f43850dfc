#pragma once

// Internal: masking with vectors. Not installed.

#include "Imaging/Pixels/MaskPlain.h"

namespace Imaging {

/// What the function of that name in `Plain` does, with vector code for this machine. For the same pixels.
template<class Pixel>
void mask_worker(const MaskRecord& record);

} // namespace Imaging
