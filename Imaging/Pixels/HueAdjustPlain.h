#pragma once

// Internal: the hue adjustment one pixel after another, which the vector code must agree with bit for bit.
// Not installed.

#include "Imaging/Pixels/PixelTypes.h"
#include "Imaging/Pixels/PixelWorkers.h"

#include <cstdint>

namespace Imaging {

/// One thread's share of a hue adjustment. A shift of 6 is a whole turn.
struct HueAdjustRecord : PixelRecord {
    float hueShift = 0; ///< in sextants of the colour wheel
};

namespace Plain {

/// The red, green and blue of one pixel with the hue shifted by sextants, in double precision, by the hexcone
/// model that Imaging/HueAdjust.h names. Samples are truncated. Gray ones and those whose hue does not come
/// back into the circle by one turn stay as they are.
void adjustHue(double hueShift, const std::uint8_t* source, std::uint8_t* destination);

/// Adjust every pixel of a record's rows. For RGBPixel, and for RGBAPixel, whose alpha is copied.
void hue_adjust_rgb(const HueAdjustRecord& record);
void hue_adjust_rgba(const HueAdjustRecord& record);

} // namespace Plain

} // namespace Imaging
