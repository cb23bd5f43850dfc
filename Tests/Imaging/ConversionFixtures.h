#pragma once

// Bitmaps of every layout and the conversions of pictures, for the tests of both.

#include "Imaging/BitmapFormats.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace ImagingTests {

using Imaging::bitmapRepresentationWithABGRFormat;
using Imaging::bitmapRepresentationWithAlphaFormat;
using Imaging::bitmapRepresentationWithCanonicalFormat;
using Imaging::bitmapRepresentationWithMaskFormat;
using Imaging::bitmapRepresentationWithRGBAFormat;
using Imaging::Platform::NSBitmapDescription;
using Imaging::Platform::NSBitmapImageRep;

using Bitmap = std::shared_ptr<NSBitmapImageRep>;
using Conversion = Bitmap (*)(const NSImage&);

inline constexpr auto white = Imaging::Platform::NSCalibratedWhiteColorSpace;
inline constexpr auto black = Imaging::Platform::NSCalibratedBlackColorSpace;
inline constexpr auto rgb = Imaging::Platform::NSCalibratedRGBColorSpace;
inline constexpr auto deviceWhite = Imaging::Platform::NSDeviceWhiteColorSpace;
inline constexpr auto deviceBlack = Imaging::Platform::NSDeviceBlackColorSpace;
inline constexpr auto deviceRGB = Imaging::Platform::NSDeviceRGBColorSpace;

inline constexpr std::array<Conversion, 5> allConversions = {
    bitmapRepresentationWithCanonicalFormat, bitmapRepresentationWithAlphaFormat,
    bitmapRepresentationWithRGBAFormat, bitmapRepresentationWithMaskFormat,
    bitmapRepresentationWithABGRFormat};

inline constexpr int width = 7;
inline constexpr int height = 5;

/// A bitmap of random samples, colour never more than alpha, with rows that are longer than they need be.
inline Bitmap someBitmap(std::string_view space, int samples, bool alpha, int bits = 8, bool planar = false) {
    NSBitmapDescription description;
    description.pixelsWide = width;
    description.pixelsHigh = height;
    description.bitsPerSample = bits;
    description.samplesPerPixel = samples;
    description.hasAlpha = alpha;
    description.isPlanar = planar;
    description.colorSpaceName = space;
    description.bytesPerRow = static_cast<std::size_t>(width * (planar ? 1 : samples) * bits / 8 + 6);
    auto bitmap = NSBitmapImageRep::bitmapWithDescription(description);
    static Pixels::Random random(20260501);
    const int maximum = bits == 8 ? 255 : 65535;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::array<std::uint16_t, 5> pixel{};
            const int alphaSample = alpha ? random.sample(maximum) : maximum;
            for (int i = 0; i < samples; ++i) {
                const bool isAlpha = alpha && i == samples - 1;
                pixel[static_cast<std::size_t>(i)] =
                    static_cast<std::uint16_t>(isAlpha ? alphaSample : random.sample(alphaSample));
            }
            bitmap->setPixelAt(x, y, pixel);
        }
    }
    return bitmap;
}

inline std::shared_ptr<WatchedPicture> pictureOf(const std::vector<Bitmap>& bitmaps, float w = width,
                                                 float h = height) {
    auto picture = std::make_shared<WatchedPicture>(NSMakeSize(w, h));
    for (const Bitmap& bitmap : bitmaps) picture->addRepresentation(bitmap);
    return picture;
}

using Pixel = std::array<std::uint16_t, 5>;

/// Whether each pixel of the result is what a function makes of the source's.
inline testing::AssertionResult isMadeOf(const Bitmap& result, const Bitmap& source,
                                         const std::function<Pixel(const Pixel&)>& make) {
    if (result == nullptr) return testing::AssertionFailure() << "there is no result";
    if (result->pixelsWide() != width || result->pixelsHigh() != height) {
        return testing::AssertionFailure() << "the size is another";
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Pixel actual = result->pixelAt(x, y);
            const Pixel expected = make(source->pixelAt(x, y));
            if (actual == expected) continue;
            return testing::AssertionFailure()
                   << "(" << x << ", " << y << "): " << testing::PrintToString(actual) << " instead of "
                   << testing::PrintToString(expected);
        }
    }
    return testing::AssertionSuccess();
}

inline std::uint16_t eight(std::uint16_t sixteen) {
    return static_cast<std::uint16_t>(std::lround(sixteen / 257.0));
}

inline std::uint16_t gray(std::uint16_t r, std::uint16_t g, std::uint16_t b) {
    return static_cast<std::uint16_t>((30 * r + 59 * g + 11 * b + 50) / 100);
}

inline Pixel same(const Pixel& p) { return p; }

/// A form of a picture that is no bitmap, and has fewer pixels than any.
class Vectors : public Imaging::Platform::NSImageRep {
public:
    Vectors() : NSImageRep(1, 1) {}
};

/// The layout's number, or -1 where there is no bitmap.
inline int formatOf(const Bitmap& bitmap) {
    return bitmap == nullptr ? -1 : Imaging::imgBitmapFormat(*bitmap);
}

} // namespace ImagingTests
