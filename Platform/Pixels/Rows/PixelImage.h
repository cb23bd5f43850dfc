#pragma once

// Internal: pictures as the painter reads and writes them. Not installed.

#include "Platform/Pixels/PixelBuffer.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace Imaging::Platform {

/// Premultiplied words 0xAARRGGBB in the machine's byte order, row after row from the top, without padding.
/// One thread may write it while no other one reads it.
class PixelImage {
public:
    /// Pixels that are transparent black, or not yet written. Throws an NSException (NSImageCacheException)
    /// when a side is 0 or the picture limits are exceeded, and std::bad_alloc.
    static std::shared_ptr<PixelImage> transparent(std::int64_t width, std::int64_t height);
    static std::shared_ptr<PixelImage> uninitialised(std::int64_t width, std::int64_t height);

    int width() const { return m_width; }
    int height() const { return m_height; }

    std::uint32_t* row(int y) { return words() + offset(y); }
    const std::uint32_t* row(int y) const { return words() + offset(y); }

private:
    PixelImage(PixelBuffer buffer, int width, int height)
        : m_buffer(std::move(buffer)), m_width(width), m_height(height) {}

    std::ptrdiff_t offset(int y) const { return static_cast<std::ptrdiff_t>(y) * m_width; }
    std::uint32_t* words() { return reinterpret_cast<std::uint32_t*>(m_buffer.data()); }
    const std::uint32_t* words() const { return reinterpret_cast<const std::uint32_t*>(m_buffer.data()); }

    PixelBuffer m_buffer;
    int m_width;
    int m_height;
};

/// How many rows of a length are work enough for a thread.
constexpr std::int64_t minimumRowsPerBand(std::int64_t width) {
    constexpr std::int64_t pixelsWorthAThread = 65536;
    return pixelsWorthAThread / (width + 1) + 1;
}

/// The means of two rows of `width` words along the axes given, into a row of words; `above` and `below` may
/// be the same row. A last odd pixel counts as two. Rounded to nearest, halves up.
void halveRows(const std::uint32_t* above, const std::uint32_t* below, int width, bool acrossX,
               std::uint32_t* words);

/// Half as many pixels along the axes given, odd last ones counting as two: means of two or four, rounded to
/// nearest, halves up. Pixel (x, y) of the result covers the pixels from (2x, 2y) on, so positions are halved
/// exactly. Works on all cores.
std::shared_ptr<PixelImage> halved(const PixelImage& image, bool acrossX, bool acrossY);

} // namespace Imaging::Platform
