// The colour transform one pixel after another: what the vector code is compared with.

#include "Imaging/Pixels/ColorTransformPlain.h"

namespace Imaging::Plain {

void color_transform(const ColorTransformRecord& record) {
    forEachRow(record, [&](std::int64_t row) {
        const std::uint8_t* from = sourceRow(record, row);
        std::uint8_t* to = destinationRow(record, row);
        for (std::int32_t x = 0; x < record.width; ++x, from += 3, to += 3) {
            to[0] = multiplied(from[0], record.redMultiplier);
            to[1] = multiplied(from[1], record.greenMultiplier);
            to[2] = multiplied(from[2], record.blueMultiplier);
        }
    });
}

} // namespace Imaging::Plain
