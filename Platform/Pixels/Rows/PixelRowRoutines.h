#pragma once

// Internal: what can be done with rows of 8-bit pixels to bring them from one form into another. Not
// installed.

#include <cstddef>
#include <cstdint>

namespace Imaging::Platform {

/// The routines for `count` neighbouring pixels without padding between them. RGBA stands for four bytes a
/// pixel in that order in memory, words for native 32-bit 0xAARRGGBB; colours are taken as they are, whether
/// premultiplied or not, unless a routine says otherwise. Pointers need no alignment (words that of their
/// type). Source and target may be the same where the pixels are equally large and must not overlap
/// otherwise; bytes behind the target's last pixel are not touched. Any thread; nothing is allocated or
/// thrown.
struct PixelRowRoutines {
    /// Alpha becomes 255.
    void (*rgbToRgba)(const std::uint8_t* rgb, std::uint8_t* rgba, std::size_t count);
    void (*rgbToWords)(const std::uint8_t* rgb, std::uint32_t* words, std::size_t count);
    void (*grayToRgba)(const std::uint8_t* gray, std::uint8_t* rgba, std::size_t count);
    void (*grayToWords)(const std::uint8_t* gray, std::uint32_t* words, std::size_t count);
    void (*rgbaToOpaque)(const std::uint8_t* rgba, std::uint8_t* opaque, std::size_t count);

    /// Two bytes a pixel, gray and alpha.
    void (*grayAlphaToRgba)(const std::uint8_t* grayAlpha, std::uint8_t* rgba, std::size_t count);
    void (*grayAlphaToWords)(const std::uint8_t* grayAlpha, std::uint32_t* words, std::size_t count);

    /// Alpha is left out.
    void (*rgbaToRgb)(const std::uint8_t* rgba, std::uint8_t* rgb, std::size_t count);

    /// The same samples in another order.
    void (*rgbaToWords)(const std::uint8_t* rgba, std::uint32_t* words, std::size_t count);
    void (*wordsToRgba)(const std::uint32_t* words, std::uint8_t* rgba, std::size_t count);
    void (*rgbaToArgb)(const std::uint8_t* rgba, std::uint8_t* argb, std::size_t count);
    void (*argbToRgba)(const std::uint8_t* argb, std::uint8_t* rgba, std::size_t count);

    /// Gray is (30·R + 59·G + 11·B + 50) / 100 of whole numbers, which rounds to nearest.
    void (*rgbaToGray)(const std::uint8_t* rgba, std::uint8_t* gray, std::size_t count);
    void (*rgbaToGrayAlpha)(const std::uint8_t* rgba, std::uint8_t* grayAlpha, std::size_t count);

    /// Colour becomes 255 − colour; alpha stays.
    void (*invertColors)(const std::uint8_t* rgba, std::uint8_t* inverted, std::size_t count);

    /// Colour becomes (colour · alpha + 127) / 255, rounded to nearest without ties.
    void (*premultiply)(const std::uint8_t* straight, std::uint8_t* rgba, std::size_t count);

    /// Colour becomes (colour · 255 + alpha / 2) / alpha, at most 255, and 0 where alpha is 0.
    void (*unmultiply)(const std::uint8_t* rgba, std::uint8_t* straight, std::size_t count);

    /// 16-bit samples in the machine's byte order become (sample + 128) / 257, rounded to nearest without
    /// ties. `count` is that of the samples.
    void (*narrow)(const std::uint8_t* samples, std::uint8_t* bytes, std::size_t count);
};

} // namespace Imaging::Platform
