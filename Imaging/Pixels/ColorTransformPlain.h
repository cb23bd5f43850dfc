#pragma once

// Internal: what the two threads of the colour operations do. Not installed.

#include <array>
#include <cstdint>
#include <optional>

namespace Imaging {

/// One thread's share of a colour transform of RGB pixels.
struct ColorTransformRecord {
    float redMultiplier;
    float greenMultiplier;
    float blueMultiplier;
    std::int32_t width; ///< of the bitmaps, in pixels
    std::int32_t height;
    std::uint32_t sourceRowLength; ///< in bytes, padding included
    std::uint32_t destinationRowLength;
    const std::uint8_t* source;
    std::uint8_t* destination;
    std::int32_t firstRow;
    std::int32_t rowStep;
};

/// One thread's share of a hue adjustment.
struct HueAdjustRecord {
    float hueShift; ///< in sextants of the colour wheel
    std::int32_t width;
    std::int32_t height;
    std::uint32_t sourceRowLength;
    std::uint32_t destinationRowLength;
    const std::uint8_t* source;
    std::uint8_t* destination;
    std::int32_t firstRow;
    std::int32_t rowStep;
};

// The workers, with vector code for this machine. Padding between rows is neither read nor written.

void color_transform(const ColorTransformRecord& record);
void hue_adjust_rgb(const HueAdjustRecord& record);
void hue_adjust_rgba(const HueAdjustRecord& record);

/// Multipliers as whole numbers below 2^24, for red, green and blue: the smaller of 255 and
/// floor(sample · multiplier / 2^(16 + shift)) is the very result of the product in floats for every sample.
struct WholeMultipliers {
    std::array<std::uint32_t, 3> values;
    int shift; ///< 0 to 8
};

/// nullopt where there are none: rounded to floats, 50 · 0.42 reaches 21 and 150 · 0.42 does not reach 63.
/// Of three multipliers at random that is so for one triple in ten thousand.
std::optional<WholeMultipliers> wholeMultipliers(const ColorTransformRecord& record);

/// The workers one pixel after another: what the vector code must agree with bit for bit, and what runs where
/// there is none.
namespace Plain {

/// A product clamped to 0 … 255 and truncated; 0 when it is not a number.
inline std::uint8_t multiplied(std::uint8_t sample, float multiplier) {
    const float product = static_cast<float>(sample) * multiplier;
    if (!(product >= 0)) return 0;
    return product > 255 ? 255 : static_cast<std::uint8_t>(product);
}

/// The red, green and blue of one pixel with the hue shifted by sextants.
void adjustHue(double hueShift, const std::uint8_t* source, std::uint8_t* destination);

void color_transform(const ColorTransformRecord& record);
void hue_adjust_rgb(const HueAdjustRecord& record);
void hue_adjust_rgba(const HueAdjustRecord& record);

} // namespace Plain

} // namespace Imaging
