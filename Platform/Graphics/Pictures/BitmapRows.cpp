// Rows of a bitmap as words. Those with a profile are taken off their alpha, converted to sRGB and put onto
// it again.

#include "Platform/Graphics/Pictures/BitmapRows.h"

#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Pictures/BitmapPixels.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <variant>
#include <vector>

namespace Imaging::Platform {

namespace {

ColorConversion::Samples samplesOf(const PixelLayout& layout) {
    switch (layout.color) {
    case PixelColor::CMYK:
        return ColorConversion::Samples::CMYK;
    case PixelColor::RGB:
        return ColorConversion::Samples::RGB;
    default:
        return ColorConversion::Samples::Gray;
    }
}

std::shared_ptr<const ColorConversion> conversionFor(const NSBitmapImageRep& bitmap,
                                                     const PixelLayout& layout) {
    const auto property = bitmap.valueForProperty(NSImageColorSyncProfileData);
    if (!property.has_value()) return nullptr;
    const auto* const profile = std::get_if<NSData>(&*property);
    // Inks under an alpha have no agreed meaning.
    if (profile == nullptr || (layout.color == PixelColor::CMYK && layout.hasAlpha())) return nullptr;
    return ColorConversion::toSRGB(*profile, samplesOf(layout));
}

/// The colour without the alpha that it was multiplied by, rounded to nearest.
template<class Sample>
void unmultiply(std::vector<Sample>& rgba) {
    constexpr std::uint64_t full = std::numeric_limits<Sample>::max();
    for (std::size_t x = 0; x < rgba.size(); x += 4) {
        const std::uint64_t alpha = rgba[x + 3];
        if (alpha == full || alpha == 0) continue;
        for (std::size_t i = x; i < x + 3; ++i) {
            rgba[i] = static_cast<Sample>(std::min(full, (rgba[i] * full + alpha / 2) / alpha));
        }
    }
}

void multiply(std::vector<std::uint8_t>& rgba) {
    for (std::size_t x = 0; x < rgba.size(); x += 4) {
        const std::uint32_t alpha = rgba[x + 3];
        if (alpha == 255) continue;
        for (std::size_t i = x; i < x + 3; ++i) {
            rgba[i] = static_cast<std::uint8_t>(dividedByMaximum(rgba[i] * alpha, std::uint8_t{}));
        }
    }
}

std::uint8_t narrowed(std::uint8_t alpha) { return alpha; }
std::uint8_t narrowed(std::uint16_t alpha) {
    return static_cast<std::uint8_t>((alpha * 255U + 32767) / 65535);
}

/// The four inks of a row without alpha, as they are stored.
template<class Sample>
void readInks(const SourcePixels& pixels, std::size_t y, Sample* inks) {
    for (std::size_t x = 0; x < pixels.width; ++x) {
        const std::size_t at = y * pixels.bytesPerRow + x * pixels.pixelStride;
        for (std::size_t i = 0; i < 4; ++i, ++inks) {
            const std::uint8_t* const bytes =
                pixels.planar ? pixels.planes[i] + at : pixels.planes[0] + at + i * sizeof(Sample);
            std::memcpy(inks, bytes, sizeof(Sample));
        }
    }
}

/// A row as premultiplied RGBA bytes in sRGB, the bitmap's samples being as wide as `Sample`.
template<class Sample>
std::vector<std::uint8_t> convertedRow(const ColorConversion& conversion, const SourcePixels& pixels,
                                       const PixelLayout& layout, std::size_t y) {
    std::vector<Sample> samples(pixels.width * 4);
    std::vector<std::uint8_t> rgba(pixels.width * 4, 255);
    if (layout.color == PixelColor::CMYK) {
        readInks(pixels, y, samples.data());
        conversion.convert(samples.data(), rgba.data(), pixels.width);
        return rgba;
    }
    readRow(pixels, layout, y, samples.data());
    unmultiply(samples);
    for (std::size_t x = 0; x < pixels.width; ++x) rgba[x * 4 + 3] = narrowed(samples[x * 4 + 3]);
    if (layout.color != PixelColor::RGB) {
        for (std::size_t x = 0; x < pixels.width; ++x) samples[x] = samples[x * 4];
    }
    conversion.convert(samples.data(), rgba.data(), pixels.width);
    multiply(rgba);
    return rgba;
}

} // namespace

BitmapRows::BitmapRows(std::shared_ptr<const NSBitmapImageRep> bitmap)
    : m_bitmap(std::move(bitmap)),
      m_pixels(sourcePixels(*m_bitmap)),
      m_layout(pixelLayout(*m_bitmap)),
      m_conversion(conversionFor(*m_bitmap, m_layout)) {}

void BitmapRows::read(int y, std::uint32_t* words) const {
    const auto row = static_cast<std::size_t>(y);
    if (m_conversion == nullptr) {
        readWords(m_pixels, m_layout, row, words);
        return;
    }
    const std::vector<std::uint8_t> rgba =
        m_layout.bitsPerSample == 16 ? convertedRow<std::uint16_t>(*m_conversion, m_pixels, m_layout, row)
                                     : convertedRow<std::uint8_t>(*m_conversion, m_pixels, m_layout, row);
    packWords(rgba.data(), words, m_pixels.width);
}

void PlainRows::read(int y, std::uint32_t* words) const {
    readWords(m_pixels, m_layout, static_cast<std::size_t>(y), words);
}

} // namespace Imaging::Platform
