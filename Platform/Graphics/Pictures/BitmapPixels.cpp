// Bitmaps described as pixel layouts, and pixels carried from one layout to another row by row, large
// pictures on all cores.

#include "Platform/Graphics/Pictures/BitmapPixels.h"

#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Pixels/Rows/ParallelRows.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

namespace Imaging::Platform {

namespace {

template<class Pixels, class Bitmap>
Pixels pixelsOf(Bitmap& bitmap) {
    Pixels pixels;
    for (std::size_t i = 0; i < pixels.planes.size(); ++i) pixels.planes[i] = bitmap.bitmapDataPlanes()[i];
    pixels.planar = bitmap.isPlanar();
    pixels.pixelStride = static_cast<std::size_t>(bitmap.bitsPerPixel()) / 8;
    pixels.bytesPerRow = bitmap.bytesPerRow();
    pixels.width = static_cast<std::size_t>(bitmap.pixelsWide());
    pixels.height = static_cast<std::size_t>(bitmap.pixelsHigh());
    return pixels;
}

PixelColor pixelColor(std::string_view colorSpaceName) {
    if (colorSpaceName == NSCalibratedWhiteColorSpace || colorSpaceName == NSDeviceWhiteColorSpace) {
        return PixelColor::Gray;
    }
    if (colorSpaceName == NSCalibratedBlackColorSpace || colorSpaceName == NSDeviceBlackColorSpace) {
        return PixelColor::InvertedGray;
    }
    return colorSpaceName == NSDeviceCMYKColorSpace ? PixelColor::CMYK : PixelColor::RGB;
}

/// Calls `body(y)` for every row, of large pictures on all cores at once: a band of fewer than half a million
/// pixels is done before another thread has begun.
template<class Body>
void forEachRow(std::size_t width, std::size_t height, const Body& body) {
    constexpr std::size_t pixelsPerBand = std::size_t{1} << 19;
    const std::size_t minimumRows = pixelsPerBand / std::max<std::size_t>(1, width) + 1;
    forEachRowBand(static_cast<std::int64_t>(height), static_cast<std::int64_t>(minimumRows),
                   [&](std::int64_t first, std::int64_t end) {
                       for (std::int64_t y = first; y < end; ++y) body(static_cast<std::size_t>(y));
                   });
}

/// Sets the pixels of a row from column `first` on to 0.
void clearColumns(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y, std::size_t first) {
    const auto samples = static_cast<std::size_t>(layout.colorSamples()) +
                         static_cast<std::size_t>(layout.alpha == PixelAlpha::None ? 0 : 1);
    const std::size_t planes = pixels.planar ? samples : 1;
    for (std::size_t i = 0; i < planes; ++i) {
        std::uint8_t* const row = pixels.planes[i] + y * pixels.bytesPerRow;
        std::fill_n(row + first * pixels.pixelStride, (pixels.width - first) * pixels.pixelStride,
                    std::uint8_t{0});
    }
}

} // namespace

PixelLayout pixelLayout(const NSBitmapImageRep& bitmap) {
    PixelLayout layout;
    layout.color = pixelColor(bitmap.colorSpaceName());
    layout.bitsPerSample = bitmap.bitsPerSample();
    layout.premultiplied = (bitmap.bitmapFormat() & NSAlphaNonpremultipliedBitmapFormat) == 0;
    if (bitmap.hasAlpha()) {
        const bool first = (bitmap.bitmapFormat() & NSAlphaFirstBitmapFormat) != 0;
        layout.alpha = first ? PixelAlpha::First : PixelAlpha::Last;
    }
    return layout;
}

SourcePixels sourcePixels(const NSBitmapImageRep& bitmap) { return pixelsOf<SourcePixels>(bitmap); }

TargetPixels targetPixels(NSBitmapImageRep& bitmap) { return pixelsOf<TargetPixels>(bitmap); }

CairoSurface pixelSurfaceOf(const SourcePixels& pixels, const PixelLayout& layout) {
    std::shared_ptr<PixelImage> words = PixelImage::uninitialised(static_cast<std::int64_t>(pixels.width),
                                                                  static_cast<std::int64_t>(pixels.height));
    forEachRow(pixels.width, pixels.height,
               [&](std::size_t y) { readWords(pixels, layout, y, words->row(static_cast<int>(y))); });
    return surfaceOver(std::move(words));
}

void writeSurface(cairo_surface_t* surface, std::size_t left, std::size_t top, const TargetPixels& pixels,
                  const PixelLayout& layout) {
    cairo_surface_flush(surface);
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
    const std::uint8_t* const data = cairo_image_surface_get_data(surface) + left * 4;
    forEachRow(pixels.width, pixels.height, [&](std::size_t y) {
        writeWords(pixels, layout, y, reinterpret_cast<const std::uint32_t*>(data + (top + y) * stride));
    });
}

void carryPixels(const SourcePixels& source, const PixelLayout& sourceLayout, const TargetPixels& target,
                 const PixelLayout& targetLayout) {
    const std::size_t width = std::min(source.width, target.width);
    // Rows are counted from the top, but the pictures share their lower left corner.
    const std::size_t above = target.height - std::min(source.height, target.height);
    const std::size_t cut = source.height - std::min(source.height, target.height);
    forEachRow(target.width, target.height, [&](std::size_t y) {
        if (y < above) {
            clearColumns(target, targetLayout, y, 0);
            return;
        }
        carryRow(source, sourceLayout, y - above + cut, target, targetLayout, y);
        clearColumns(target, targetLayout, y, width);
    });
}

} // namespace Imaging::Platform
