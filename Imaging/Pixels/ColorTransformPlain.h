#pragma once

// Internal: the colour transform one sample after another, which the vector code must agree with bit for bit.
// Not installed.

#include "Imaging/Pixels/PixelWorkers.h"

#include <cstdint>

namespace Imaging {

/// One thread's share of a colour transform of RGB pixels. Any multiplier will do: negative, without end or
/// not a number.
struct ColorTransformRecord : PixelRecord {
    float redMultiplier = 0;
    float greenMultiplier = 0;
    float blueMultiplier = 0;
};

namespace Plain {

/// A sample times a multiplier in 32-bit floats, clamped to 0 … 255 and truncated; 0 when the product is not
/// a number.
inline std::uint8_t multiplied(std::uint8_t sample, float multiplier) {
    const float product = static_cast<float>(sample) * multiplier;
    if (!(product >= 0)) return 0;
    return product > 255 ? 255 : static_cast<std::uint8_t>(product);
}

/// Multiplies the three samples of every pixel of a record's rows. For RGBPixel.
void color_transform(const ColorTransformRecord& record);

} // namespace Plain

} // namespace Imaging
