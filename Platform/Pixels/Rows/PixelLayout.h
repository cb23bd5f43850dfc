#pragma once

// Internal: how the samples of a bitmap lie in memory, and rows of any layout read and written as plain
// RGBA. Not installed.

#include "Platform/Pixels/Rows/SampleDivision.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Imaging::Platform {

enum class PixelColor { Gray, InvertedGray, RGB, CMYK };
enum class PixelAlpha { None, Last, First, SkipLast, SkipFirst };

/// One pixel's layout. Samples that belong to neither colour nor alpha are passed over.
struct PixelLayout {
    PixelColor color = PixelColor::RGB;
    PixelAlpha alpha = PixelAlpha::None;
    bool premultiplied = true;
    int bitsPerSample = 8; ///< 8 or 16, the latter in the machine's byte order

    int colorSamples() const { return color == PixelColor::RGB ? 3 : color == PixelColor::CMYK ? 4 : 1; }
    bool hasAlpha() const { return alpha == PixelAlpha::Last || alpha == PixelAlpha::First; }
    bool alphaStandsFirst() const { return alpha == PixelAlpha::First || alpha == PixelAlpha::SkipFirst; }
};

/// Where pixels lie. Of meshed pixels only the first plane is used and consecutive pixels are `pixelStride`
/// bytes apart; of planar ones each sample has its own plane and the stride is that of one sample.
template<class Byte>
struct PixelPlanes {
    std::array<Byte*, 5> planes{};
    bool planar = false;
    std::size_t pixelStride = 0;
    std::size_t bytesPerRow = 0;
    std::size_t width = 0;
    std::size_t height = 0;
};
using SourcePixels = PixelPlanes<const std::uint8_t>;
using TargetPixels = PixelPlanes<std::uint8_t>;

/// Row y (0 is the top one) as premultiplied RGBA, four samples a pixel. `Sample` is std::uint8_t or
/// std::uint16_t and need not be the bitmap's own depth: 8 bits become 16 by v·257, 16 become 8 rounding to
/// nearest. Premultiplying rounds to nearest. Pixels without alpha come out opaque.
template<class Sample>
void readRow(const SourcePixels& pixels, const PixelLayout& layout, std::size_t y, Sample* rgba);

/// The opposite way, into a meshed layout. Colour turned into gray is (30·R + 59·G + 11·B) / 100, rounded to
/// nearest; a layout without alpha gets the premultiplied colour, which is how the pixel looks on black.
/// Unmultiplying rounds to nearest. CMYK cannot be written.
template<class Sample>
void writeRow(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y, const Sample* rgba);

/// The same with the native 32-bit words that Cairo draws on (premultiplied, 0xAARRGGBB) in place of RGBA of
/// 8 bits.
void readWords(const SourcePixels& pixels, const PixelLayout& layout, std::size_t y, std::uint32_t* words);
void writeWords(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y,
                const std::uint32_t* words);

/// Row `sourceY` of one layout in row `targetY` of another that is not straight, over the width of the
/// narrower: what readRow and writeRow give at the target's depth, except that a sample which the target
/// keeps in alpha's place without meaning it becomes the largest. The target may be planar; the two must not
/// overlap.
void carryRow(const SourcePixels& source, const PixelLayout& sourceLayout, std::size_t sourceY,
              const TargetPixels& target, const PixelLayout& targetLayout, std::size_t targetY);

/// Columns `first` to `first + width` of pixels.
template<class Byte>
PixelPlanes<Byte> columnsOf(const PixelPlanes<Byte>& pixels, std::size_t first, std::size_t width) {
    PixelPlanes<Byte> columns = pixels;
    for (Byte*& plane : columns.planes) {
        if (plane != nullptr) plane += first * pixels.pixelStride;
    }
    columns.width = width;
    return columns;
}

/// Premultiplied RGBA of 8 bits to and from such words.
void packWords(const std::uint8_t* rgba, std::uint32_t* words, std::size_t count);
void unpackWords(const std::uint32_t* words, std::uint8_t* rgba, std::size_t count);

} // namespace Imaging::Platform
