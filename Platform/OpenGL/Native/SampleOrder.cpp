// Turns pixels of each upload format into bytes in the order red, green, blue, alpha, a run at a time.

#include "Platform/OpenGL/Native/SampleOrder.h"

#include "Platform/Pixels/Rows/PixelRows.h"

#include <bit>
#include <cstring>

namespace Imaging::Platform {

using namespace OpenGL;

namespace {

void reverseBytes(const std::uint8_t* pixels, std::uint8_t* reversed, std::size_t count) {
    for (std::size_t i = 0; i < 4 * count; i += 4) {
        for (std::size_t k = 0; k < 4; ++k) reversed[i + k] = pixels[i + 3 - k];
    }
}

void swapRedAndBlue(const std::uint8_t* pixels, std::uint8_t* swapped, std::size_t count) {
    for (std::size_t i = 0; i < 4 * count; i += 4) {
        swapped[i] = pixels[i + 2];
        swapped[i + 1] = pixels[i + 1];
        swapped[i + 2] = pixels[i];
        swapped[i + 3] = pixels[i + 3];
    }
}

/// Whether the first sample lies in the last byte.
bool isReversed(PixelType type) {
    if (type == PixelType::UnsignedByte) return false;
    constexpr bool lowestByteFirst = std::endian::native == std::endian::little;
    return (type == PixelType::UnsignedInt8888) == lowestByteFirst;
}

} // namespace

void orderSamples(PixelFormat format, PixelType type, const std::uint8_t* pixels, std::uint8_t* rgba,
                  std::size_t count) {
    if (format == PixelFormat::Rgba) {
        if (isReversed(type)) return reverseBytes(pixels, rgba, count);
        std::memcpy(rgba, pixels, 4 * count);
    } else if (isReversed(type)) {
        pixelRows().argbToRgba(pixels, rgba, count);
    } else {
        swapRedAndBlue(pixels, rgba, count);
    }
}

} // namespace Imaging::Platform
