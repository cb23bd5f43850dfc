#pragma once

// Every layout of pixels, and memory that holds some with bytes around them that nothing may touch.

#include "Platform/Pixels/Rows/PixelLayout.h"
#include "Tests/Support/Pixels.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace Pixels {

using Imaging::Platform::PixelAlpha;
using Imaging::Platform::PixelColor;
using Imaging::Platform::PixelLayout;
using Imaging::Platform::SourcePixels;
using Imaging::Platform::TargetPixels;

inline std::string nameOf(const PixelLayout& layout) {
    return "colour " + std::to_string(static_cast<int>(layout.color)) + ", alpha " +
           std::to_string(static_cast<int>(layout.alpha)) + (layout.premultiplied ? "" : ", straight") +
           ", " + std::to_string(layout.bitsPerSample) + " bits";
}

inline std::vector<PixelLayout> allLayouts() {
    std::vector<PixelLayout> layouts;
    for (const PixelColor color :
         {PixelColor::Gray, PixelColor::InvertedGray, PixelColor::RGB, PixelColor::CMYK}) {
        for (const PixelAlpha alpha : {PixelAlpha::None, PixelAlpha::Last, PixelAlpha::First,
                                       PixelAlpha::SkipLast, PixelAlpha::SkipFirst}) {
            for (const int bits : {8, 16}) {
                for (const bool premultiplied : {true, false})
                    layouts.push_back({color, alpha, premultiplied, bits});
            }
        }
    }
    return layouts;
}

inline int samplesOf(const PixelLayout& layout) {
    return layout.colorSamples() + (layout.alpha == PixelAlpha::None ? 0 : 1);
}

/// Pixels of a layout in memory with padding that nothing may touch: `gap` bytes behind each pixel, five more
/// behind each row.
class Memory {
public:
    Memory(const PixelLayout& layout, std::size_t width, std::size_t height, bool planar, std::size_t gap = 3)
        : m_sample_bytes(static_cast<std::size_t>(layout.bitsPerSample / 8)) {
        const auto samples = static_cast<std::size_t>(samplesOf(layout));
        pixels.planar = planar;
        pixels.width = width;
        pixels.height = height;
        pixels.pixelStride = (planar ? 1 : samples) * m_sample_bytes + gap;
        pixels.bytesPerRow = width * pixels.pixelStride + 5;
        const std::size_t planes = planar ? samples : 1;
        m_bytes.assign(planes * height * pixels.bytesPerRow, guard);
        for (std::size_t i = 0; i < planes; ++i) {
            pixels.planes[i] = m_bytes.data() + i * height * pixels.bytesPerRow;
        }
    }

    std::uint8_t* address(std::size_t x, std::size_t y, std::size_t sample) {
        const std::size_t at = y * pixels.bytesPerRow + x * pixels.pixelStride;
        return pixels.planar ? pixels.planes[sample] + at : pixels.planes[0] + at + sample * m_sample_bytes;
    }

    unsigned sample(std::size_t x, std::size_t y, std::size_t index) {
        std::uint16_t wide = 0;
        if (m_sample_bytes == 1) return *address(x, y, index);
        std::memcpy(&wide, address(x, y, index), 2);
        return wide;
    }

    void setSample(std::size_t x, std::size_t y, std::size_t index, unsigned value) {
        const auto wide = static_cast<std::uint16_t>(value);
        if (m_sample_bytes == 1)
            *address(x, y, index) = static_cast<std::uint8_t>(value);
        else
            std::memcpy(address(x, y, index), &wide, 2);
    }

    SourcePixels source() const {
        SourcePixels result;
        for (std::size_t i = 0; i < 5; ++i) result.planes[i] = pixels.planes[i];
        result.planar = pixels.planar;
        result.pixelStride = pixels.pixelStride;
        result.bytesPerRow = pixels.bytesPerRow;
        result.width = pixels.width;
        result.height = pixels.height;
        return result;
    }

    const std::vector<std::uint8_t>& bytes() const { return m_bytes; }

    static constexpr std::uint8_t guard = 0xC7;
    TargetPixels pixels;

private:
    std::size_t m_sample_bytes;
    std::vector<std::uint8_t> m_bytes;
};

/// Random samples in which a premultiplied colour never exceeds its alpha.
inline void fillAtRandom(Random& random, const PixelLayout& layout, Memory& memory) {
    const int maximum = layout.bitsPerSample == 8 ? 255 : 65535;
    const auto count = static_cast<std::size_t>(samplesOf(layout));
    for (std::size_t y = 0; y < memory.pixels.height; ++y) {
        for (std::size_t x = 0; x < memory.pixels.width; ++x) {
            const int alpha = random.sample(maximum);
            const bool limited = layout.hasAlpha() && layout.premultiplied;
            const std::size_t alphaIndex = layout.alphaStandsFirst() ? 0 : count - 1;
            for (std::size_t i = 0; i < count; ++i) {
                const bool isAlpha = layout.hasAlpha() && i == alphaIndex;
                const int value = isAlpha ? alpha : random.sample(limited ? alpha : maximum);
                memory.setSample(x, y, i, static_cast<unsigned>(value));
            }
        }
    }
}

} // namespace Pixels
