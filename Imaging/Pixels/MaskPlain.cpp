// Masking one sample after another: what the vector code is compared with.

#include "Imaging/Pixels/MaskPlain.h"

#include <cstddef>

namespace Imaging::Plain {

template<class Pixel>
void mask_worker(const MaskRecord& record) {
    constexpr std::size_t samples = Pixel::sampleCount;
    forEachRow(record, [&](std::int64_t row) {
        const std::uint8_t* const from = sourceRow(record, row);
        const std::uint8_t* const mask = maskRow(record, row);
        std::uint8_t* const to = destinationRow(record, row);
        const std::size_t count = static_cast<std::size_t>(record.width) * samples;
        for (std::size_t i = 0; i < count; ++i) to[i] = masked(from[i], mask[i / samples]);
    });
}

template void mask_worker<GAPixel>(const MaskRecord& record);
template void mask_worker<RGBAPixel>(const MaskRecord& record);

} // namespace Imaging::Plain
