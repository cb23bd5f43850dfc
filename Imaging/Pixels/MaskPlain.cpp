#include "Imaging/Pixels/MaskPlain.h"

#include "Imaging/Pixels/PixelWorkers.h"

namespace Imaging::Plain {

template<class Pixel>
void mask_worker(const MaskRecord& record) {
    constexpr std::size_t samples = Pixel::sampleCount;
    forEachRow(record, [&](std::size_t row) {
        const std::uint8_t* const from = record.source + row * record.sourceRowLength;
        const std::uint8_t* const mask = record.mask + row * record.maskRowLength;
        std::uint8_t* const to = record.destination + row * record.destinationRowLength;
        const std::size_t count = static_cast<std::size_t>(record.width) * samples;
        for (std::size_t i = 0; i < count; ++i) to[i] = masked(from[i], mask[i / samples]);
    });
}

template void mask_worker<GAPixel>(const MaskRecord& record);
template void mask_worker<RGBAPixel>(const MaskRecord& record);

} // namespace Imaging::Plain
