#pragma once

// Internal: the colour transform with vectors. Not installed.

#include "Imaging/Pixels/ColorTransformPlain.h"

#include <array>
#include <cstdint>
#include <optional>

namespace Imaging {

/// Multipliers as whole numbers below 2^24, for red, green and blue: the smaller of 255 and
/// floor(sample · multiplier / 2^(16 + shift)) is the very result of the product in floats for every sample.
struct WholeMultipliers {
    std::array<std::uint32_t, 3> values;
    int shift; ///< 0 to 8
};

/// nullopt where there are none: rounded to floats, 50 · 0.42 reaches 21 and 150 · 0.42 does not reach 63.
/// Of three multipliers at random that is so for one triple in ten thousand.
std::optional<WholeMultipliers> wholeMultipliers(const ColorTransformRecord& record);

/// What the function of that name in `Plain` does, with vector code for this machine: by whole multipliers
/// where there are some, by floats where there are none.
void color_transform(const ColorTransformRecord& record);

} // namespace Imaging
