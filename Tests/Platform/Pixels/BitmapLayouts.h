#pragma once

// Bitmaps of every layout that there is, with samples at random.

#include "Platform/Pixels/PictureLimits.h"
#include "Tests/Support/Pixels.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace Pixels {

inline constexpr std::array<std::string_view, 7> colorSpaceNames = {
    Imaging::Platform::NSCalibratedWhiteColorSpace, Imaging::Platform::NSCalibratedBlackColorSpace,
    Imaging::Platform::NSCalibratedRGBColorSpace,   Imaging::Platform::NSDeviceWhiteColorSpace,
    Imaging::Platform::NSDeviceBlackColorSpace,     Imaging::Platform::NSDeviceRGBColorSpace,
    Imaging::Platform::NSDeviceCMYKColorSpace};

inline int colorSamplesOf(std::string_view name) {
    if (name == Imaging::Platform::NSDeviceCMYKColorSpace) return 4;
    return name.find("RGB") != std::string_view::npos ? 3 : 1;
}

inline std::string nameOf(const Imaging::Platform::NSBitmapDescription& d) {
    return std::string(d.colorSpaceName) + ", " + std::to_string(d.samplesPerPixel) + " samples of " +
           std::to_string(d.bitsPerSample) + " bits" + (d.hasAlpha ? ", alpha" : "") +
           (d.isPlanar ? ", planar" : "") + ", format " + std::to_string(d.bitmapFormat) + ", " +
           std::to_string(d.bitsPerPixel) + " bits a pixel";
}

/// Every colour space, with and without alpha and a sample to spare, planar and meshed, with and without
/// padding, in all formats and both depths.
inline std::vector<Imaging::Platform::NSBitmapDescription> allBitmapLayouts(int width, int height) {
    std::vector<Imaging::Platform::NSBitmapDescription> all;
    for (const std::string_view name : colorSpaceNames) {
        // Eight bits: alpha, planar, depth, padding, a spare sample, and two of format.
        for (unsigned choice = 0; choice < 128; ++choice) {
            Imaging::Platform::NSBitmapDescription d;
            d.pixelsWide = width;
            d.pixelsHigh = height;
            d.colorSpaceName = name;
            d.hasAlpha = (choice & 1U) != 0;
            d.isPlanar = (choice & 2U) != 0;
            d.bitsPerSample = (choice & 4U) != 0 ? 16 : 8;
            d.bitmapFormat = choice >> 5U;
            d.samplesPerPixel = colorSamplesOf(name) + (d.hasAlpha ? 1 : 0) + ((choice & 16U) != 0 ? 1 : 0);
            if (d.samplesPerPixel > 5 || (!d.hasAlpha && d.bitmapFormat != 0)) continue;
            if ((choice & 8U) != 0) {
                const int samples = d.isPlanar ? 1 : d.samplesPerPixel;
                d.bitsPerPixel = d.bitsPerSample * samples + 8;
                d.bytesPerRow = static_cast<std::size_t>(width * d.bitsPerPixel / 8 + 3);
            }
            all.push_back(d);
        }
    }
    return all;
}

/// Random samples; a premultiplied colour never exceeds its alpha.
inline void fillAtRandom(Random& random, Imaging::Platform::NSBitmapImageRep& bitmap) {
    const int maximum = bitmap.bitsPerSample() == 8 ? 255 : 65535;
    const bool alphaFirst = (bitmap.bitmapFormat() & Imaging::Platform::NSAlphaFirstBitmapFormat) != 0;
    const bool limited = bitmap.hasAlpha() && (bitmap.bitmapFormat() &
                                               Imaging::Platform::NSAlphaNonpremultipliedBitmapFormat) == 0;
    const int alphaIndex = alphaFirst ? 0 : colorSamplesOf(bitmap.colorSpaceName());
    for (std::int64_t y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (std::int64_t x = 0; x < bitmap.pixelsWide(); ++x) {
            std::array<std::uint16_t, 5> samples{};
            const int alpha = random.sample(maximum);
            for (int i = 0; i < bitmap.samplesPerPixel(); ++i) {
                const bool isAlpha = bitmap.hasAlpha() && i == alphaIndex;
                const int value = isAlpha ? alpha : random.sample(limited ? alpha : maximum);
                samples[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(value);
            }
            bitmap.setPixelAt(x, y, samples);
        }
    }
}

/// What the samples of one pixel mean: premultiplied red, green, blue and alpha from 0 to 1.
inline Color meaningOf(const Imaging::Platform::NSBitmapImageRep& bitmap, std::int64_t x, std::int64_t y) {
    const double maximum = bitmap.bitsPerSample() == 8 ? 255 : 65535;
    const auto pixel = bitmap.pixelAt(x, y);
    const bool alphaFirst =
        bitmap.hasAlpha() && (bitmap.bitmapFormat() & Imaging::Platform::NSAlphaFirstBitmapFormat) != 0;
    const bool straight =
        (bitmap.bitmapFormat() & Imaging::Platform::NSAlphaNonpremultipliedBitmapFormat) != 0;
    const std::string_view space = bitmap.colorSpaceName();
    const auto colors = static_cast<std::size_t>(colorSamplesOf(space));
    const std::size_t first = alphaFirst ? 1 : 0;
    const double alpha = bitmap.hasAlpha() ? pixel[alphaFirst ? 0 : colors] / maximum : 1;
    // Premultiplied samples are parts of alpha, and so is what they leave.
    const double whole = straight ? 1 : alpha;
    const auto sample = [&](std::size_t i) { return pixel[first + i] / maximum; };
    Color color{0, 0, 0, alpha};
    for (std::size_t i = 0; i < 3; ++i) {
        if (colors == 4) {
            color[i] = whole > 0 ? (whole - sample(i)) * (whole - sample(3)) / whole : 0;
        } else if (colors == 3) {
            color[i] = sample(i);
        } else {
            const bool isBlack = space.find("Black") != std::string_view::npos;
            color[i] = isBlack ? whole - sample(0) : sample(0);
        }
        if (straight) color[i] *= alpha;
    }
    return color;
}

/// Sets the picture limits for a scope.
class LimitScope {
public:
    explicit LimitScope(const Imaging::Platform::PictureLimits& limits)
        : m_before(Imaging::Platform::pictureLimits()) {
        Imaging::Platform::setPictureLimits(limits);
    }
    ~LimitScope() { Imaging::Platform::setPictureLimits(m_before); }
    LimitScope(const LimitScope&) = delete;
    LimitScope& operator=(const LimitScope&) = delete;

private:
    Imaging::Platform::PictureLimits m_before;
};

} // namespace Pixels
