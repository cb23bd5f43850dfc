#pragma once

// Internal: what the two threads of the mask operation do. Not installed.

#include "Imaging/Pixels/PixelTypes.h"

#include <cstdint>

namespace Imaging {

/// One thread's share of a masking. The mask has one byte a pixel.
struct MaskRecord {
    std::int32_t width; ///< of the three bitmaps, in pixels
    std::int32_t height;
    std::uint32_t sourceRowLength; ///< in bytes, padding included
    std::uint32_t maskRowLength;
    std::uint32_t destinationRowLength;
    const std::uint8_t* source;
    const std::uint8_t* mask;
    std::uint8_t* destination;
    std::int32_t firstRow;
    std::int32_t rowStep;
};

/// Every sample of the source times the pixel's mask, divided by 256 and truncated. For GAPixel and
/// RGBAPixel; with vector code for this machine. Padding between rows is neither read nor written.
template<class Pixel>
void mask_worker(const MaskRecord& record);

/// The same one sample after another: what the vector code must agree with, and what runs where there is
/// none.
namespace Plain {

/// Truncation included: a full mask of 255 takes 1 from every sample but 0.
inline std::uint8_t masked(std::uint8_t sample, std::uint8_t mask) {
    return static_cast<std::uint8_t>(sample * mask >> 8);
}

template<class Pixel>
void mask_worker(const MaskRecord& record);

} // namespace Plain

} // namespace Imaging
