#pragma once

// Internal: rows of premultiplied words combined by a compositing operation. Not installed.

#include "Platform/Pixels/CompositingOperation.h"

#include <cstddef>
#include <cstdint>

namespace Imaging::Platform {

/// How a row of source words S is combined with what is there, D: S is scaled by the fraction, the operation
/// gives R, and D·(1 − c) + R·c is stored, c being the pixel's coverage.
struct Blend {
    NSCompositingOperation operation = NSCompositeSourceOver;
    std::int16_t fraction = one; ///< in units of 1/32767, see `blendFraction`
    bool opaqueTarget = false;   ///< the target's top byte is no alpha: it counts as 255 whatever it holds

    static constexpr std::int16_t one = 32767;
};

/// A fraction as `Blend` takes it: clamped to 0 … 1 (not-a-number counts as 0) and rounded to nearest.
std::int16_t blendFraction(double fraction);

/// Combines `count` words (0xAARRGGBB, premultiplied) of `source` with those of `target`, in place.
/// `coverage` holds a byte a pixel, 255 for wholly covered; null covers all.
///
/// Rounding: samples are computed in steps of 1/128 and rounded to nearest once, at the end, so that a result
/// differs from the exact value by less than 0.55 of 255; where all factors are 0 or 1 it is exact. Samples
/// of sources that are not premultiplied (colour above alpha) saturate at 255. Rows must not overlap unless
/// they are the same. Thread-safe for different targets.
void blendRow(const Blend& blend, const std::uint32_t* source, const std::uint8_t* coverage,
              std::uint32_t* target, std::size_t count);

/// The same, bit for bit, one sample after another: what the vector code is compared with.
void blendRowPlain(const Blend& blend, const std::uint32_t* source, const std::uint8_t* coverage,
                   std::uint32_t* target, std::size_t count);

} // namespace Imaging::Platform
