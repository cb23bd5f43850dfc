// The routines pixel after pixel: what the vector code is compared with, and what finishes its rows.

#include "Platform/Pixels/Rows/PlainPixelRows.h"

#include "Platform/Pixels/Rows/SampleDivision.h"

#include <algorithm>
#include <cstring>

namespace Imaging::Platform {

namespace {

using std::size_t;
using std::uint32_t;
using std::uint8_t;

uint32_t wordOf(uint32_t r, uint32_t g, uint32_t b, uint32_t a) { return a << 24 | r << 16 | g << 8 | b; }

void store(uint8_t* rgba, uint8_t r, uint8_t g, uint8_t b, uint8_t a) {
    rgba[0] = r;
    rgba[1] = g;
    rgba[2] = b;
    rgba[3] = a;
}

uint8_t grayOf(const uint8_t* rgba) {
    return static_cast<uint8_t>((30u * rgba[0] + 59u * rgba[1] + 11u * rgba[2] + 50) / 100);
}

void rgbToRgba(const uint8_t* rgb, uint8_t* rgba, size_t count) {
    for (size_t i = 0; i < count; ++i, rgb += 3, rgba += 4) store(rgba, rgb[0], rgb[1], rgb[2], 255);
}

void rgbToWords(const uint8_t* rgb, uint32_t* words, size_t count) {
    for (size_t i = 0; i < count; ++i, rgb += 3) words[i] = wordOf(rgb[0], rgb[1], rgb[2], 255);
}

void grayToRgba(const uint8_t* gray, uint8_t* rgba, size_t count) {
    for (size_t i = 0; i < count; ++i, rgba += 4) store(rgba, gray[i], gray[i], gray[i], 255);
}

void grayToWords(const uint8_t* gray, uint32_t* words, size_t count) {
    for (size_t i = 0; i < count; ++i) words[i] = wordOf(gray[i], gray[i], gray[i], 255);
}

void rgbaToOpaque(const uint8_t* rgba, uint8_t* opaque, size_t count) {
    for (size_t i = 0; i < count * 4; i += 4) store(opaque + i, rgba[i], rgba[i + 1], rgba[i + 2], 255);
}

void grayAlphaToRgba(const uint8_t* grayAlpha, uint8_t* rgba, size_t count) {
    for (size_t i = 0; i < count; ++i, grayAlpha += 2, rgba += 4) {
        store(rgba, grayAlpha[0], grayAlpha[0], grayAlpha[0], grayAlpha[1]);
    }
}

void grayAlphaToWords(const uint8_t* grayAlpha, uint32_t* words, size_t count) {
    for (size_t i = 0; i < count; ++i, grayAlpha += 2) {
        words[i] = wordOf(grayAlpha[0], grayAlpha[0], grayAlpha[0], grayAlpha[1]);
    }
}

void rgbaToRgb(const uint8_t* rgba, uint8_t* rgb, size_t count) {
    for (size_t i = 0; i < count; ++i, rgba += 4, rgb += 3) {
        rgb[0] = rgba[0];
        rgb[1] = rgba[1];
        rgb[2] = rgba[2];
    }
}

void rgbaToWords(const uint8_t* rgba, uint32_t* words, size_t count) {
    for (size_t i = 0; i < count; ++i, rgba += 4) words[i] = wordOf(rgba[0], rgba[1], rgba[2], rgba[3]);
}

void wordsToRgba(const uint32_t* words, uint8_t* rgba, size_t count) {
    for (size_t i = 0; i < count; ++i, rgba += 4) {
        store(rgba, static_cast<uint8_t>(words[i] >> 16), static_cast<uint8_t>(words[i] >> 8),
              static_cast<uint8_t>(words[i]), static_cast<uint8_t>(words[i] >> 24));
    }
}

// The samples are handed over by value, so that source and target may be the same.
void rgbaToArgb(const uint8_t* rgba, uint8_t* argb, size_t count) {
    for (size_t i = 0; i < count * 4; i += 4) store(argb + i, rgba[i + 3], rgba[i], rgba[i + 1], rgba[i + 2]);
}

void argbToRgba(const uint8_t* argb, uint8_t* rgba, size_t count) {
    for (size_t i = 0; i < count * 4; i += 4) store(rgba + i, argb[i + 1], argb[i + 2], argb[i + 3], argb[i]);
}

void rgbaToGray(const uint8_t* rgba, uint8_t* gray, size_t count) {
    for (size_t i = 0; i < count; ++i, rgba += 4) gray[i] = grayOf(rgba);
}

void rgbaToGrayAlpha(const uint8_t* rgba, uint8_t* grayAlpha, size_t count) {
    for (size_t i = 0; i < count; ++i, rgba += 4, grayAlpha += 2) {
        grayAlpha[0] = grayOf(rgba);
        grayAlpha[1] = rgba[3];
    }
}

void invertColors(const uint8_t* rgba, uint8_t* inverted, size_t count) {
    const auto opposite = [](uint8_t color) { return static_cast<uint8_t>(255 - color); };
    for (size_t i = 0; i < count * 4; i += 4) {
        store(inverted + i, opposite(rgba[i]), opposite(rgba[i + 1]), opposite(rgba[i + 2]), rgba[i + 3]);
    }
}

void premultiply(const uint8_t* straight, uint8_t* rgba, size_t count) {
    for (size_t i = 0; i < count * 4; i += 4) {
        const uint32_t alpha = straight[i + 3];
        for (size_t c = i; c < i + 3; ++c) {
            rgba[c] = static_cast<uint8_t>(dividedByMaximum(straight[c] * alpha, uint8_t{}));
        }
        rgba[i + 3] = static_cast<uint8_t>(alpha);
    }
}

void unmultiply(const uint8_t* rgba, uint8_t* straight, size_t count) {
    for (size_t i = 0; i < count * 4; i += 4) {
        const uint32_t alpha = rgba[i + 3];
        for (size_t c = i; c < i + 3; ++c) {
            const uint32_t color = alpha == 0 ? 0 : (rgba[c] * 255u + alpha / 2) / alpha;
            straight[c] = static_cast<uint8_t>(std::min(color, 255u));
        }
        straight[i + 3] = static_cast<uint8_t>(alpha);
    }
}

void narrow(const uint8_t* samples, uint8_t* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        std::uint16_t sample;
        std::memcpy(&sample, samples + 2 * i, 2);
        bytes[i] = static_cast<uint8_t>((sample + 128u) / 257u);
    }
}

} // namespace

const PixelRowRoutines& plainPixelRows() {
    static constexpr PixelRowRoutines routines = {
        rgbToRgba,        rgbToWords,      grayToRgba,   grayToWords, rgbaToOpaque, grayAlphaToRgba,
        grayAlphaToWords, rgbaToRgb,       rgbaToWords,  wordsToRgba, rgbaToArgb,   argbToRgba,
        rgbaToGray,       rgbaToGrayAlpha, invertColors, premultiply, unmultiply,   narrow};
    return routines;
}

} // namespace Imaging::Platform
