#include "Imaging/Pixels/ColorTransformPlain.h"

#include "Imaging/Pixels/PixelWorkers.h"

#include <cstddef>

namespace Imaging::Plain {

void color_transform(const ColorTransformRecord& record) {
    forEachRow(record, [&](std::size_t row) {
        const std::uint8_t* from = record.source + row * record.sourceRowLength;
        std::uint8_t* to = record.destination + row * record.destinationRowLength;
        for (std::int32_t x = 0; x < record.width; ++x, from += 3, to += 3) {
            to[0] = multiplied(from[0], record.redMultiplier);
            to[1] = multiplied(from[1], record.greenMultiplier);
            to[2] = multiplied(from[2], record.blueMultiplier);
        }
    });
}

} // namespace Imaging::Plain
