#pragma once

// Internal: masking one sample after another, which the vector code must agree with bit for bit. Not
// installed.

#include "Imaging/Pixels/PixelTypes.h"
#include "Imaging/Pixels/PixelWorkers.h"

#include <cstddef>
#include <cstdint>

namespace Imaging {

/// One thread's share of a masking. The mask has the size of the bitmaps and one byte a pixel.
struct MaskRecord : PixelRecord {
    const std::uint8_t* mask = nullptr; ///< its top row; not owned, like the bitmaps
    std::uint32_t maskBytesPerRow = 0;  ///< padding included
};

/// Where a row of the mask begins.
inline const std::uint8_t* maskRow(const MaskRecord& record, std::int64_t row) {
    return record.mask + static_cast<std::size_t>(row) * record.maskBytesPerRow;
}

namespace Plain {

/// A sample times the pixel's mask, divided by 256 and truncated: a full mask of 255 takes 1 from every
/// sample but 0.
inline std::uint8_t masked(std::uint8_t sample, std::uint8_t mask) {
    return static_cast<std::uint8_t>(sample * mask >> 8);
}

/// Masks every sample of a record's rows, alpha included. For GAPixel and RGBAPixel.
template<class Pixel>
void mask_worker(const MaskRecord& record);

} // namespace Plain

} // namespace Imaging
