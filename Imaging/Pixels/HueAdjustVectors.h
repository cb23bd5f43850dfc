#pragma once

// Internal: the hue adjustment with vectors. Not installed.

#include "Imaging/Pixels/HueAdjustPlain.h"

namespace Imaging {

/// What the functions of these names in `Plain` do, with vector code for this machine.
void hue_adjust_rgb(const HueAdjustRecord& record);
void hue_adjust_rgba(const HueAdjustRecord& record);

} // namespace Imaging
