#include "Platform/Graphics/BitmapPixels.h"

#include "Platform/Graphics/BitmapImageRep.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace Platform {

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
    CairoSurface surface =
        makePixelSurface(static_cast<std::int64_t>(pixels.width), static_cast<std::int64_t>(pixels.height));
    cairo_surface_flush(surface.get());
    std::vector<std::uint8_t> row(pixels.width * 4);
    std::vector<std::uint32_t> words(pixels.width);
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
    std::uint8_t* const data = cairo_image_surface_get_data(surface.get());
    for (std::size_t y = 0; y < pixels.height; ++y) {
        readRow(pixels, layout, y, row.data());
        packWords(row.data(), words.data(), pixels.width);
        std::copy_n(reinterpret_cast<const std::uint8_t*>(words.data()), pixels.width * 4, data + y * stride);
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

void writeSurface(cairo_surface_t* surface, std::size_t left, std::size_t top, const TargetPixels& pixels,
                  const PixelLayout& layout) {
    cairo_surface_flush(surface);
    std::vector<std::uint8_t> row(pixels.width * 4);
    std::vector<std::uint32_t> words(pixels.width);
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
    const std::uint8_t* const data = cairo_image_surface_get_data(surface);
    for (std::size_t y = 0; y < pixels.height; ++y) {
        std::copy_n(data + (top + y) * stride + left * 4, pixels.width * 4,
                    reinterpret_cast<std::uint8_t*>(words.data()));
        unpackWords(words.data(), row.data(), pixels.width);
        writeRow(pixels, layout, y, row.data());
    }
}

} // namespace Platform
