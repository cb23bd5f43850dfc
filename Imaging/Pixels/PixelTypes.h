#pragma once

// Internal: the pixels that workers read and write, as types to choose a worker by. Not installed.

#include <array>
#include <cstddef>
#include <cstdint>

namespace Imaging {

/// A pixel of N interleaved samples of 8 bits, in the order gray or red, green, blue and then alpha,
/// premultiplied. It lies in memory as these bytes and nothing else.
template<int N>
struct SamplePixel {
    static constexpr std::size_t sampleCount = N;
    std::array<std::uint8_t, N> samples;
};

/// The weighted sum of pixels: signed 32-bit sums that wrap, kept unsigned, since only then is wrapping
/// defined.
template<int N>
struct SampleSum {
    std::array<std::uint32_t, N> samples{};
};

using GPixel = SamplePixel<1>;
using GAPixel = SamplePixel<2>;
using RGBPixel = SamplePixel<3>;
using RGBAPixel = SamplePixel<4>;

using GPixelSum = SampleSum<1>;
using GAPixelSum = SampleSum<2>;
using RGBPixelSum = SampleSum<3>;
using RGBAPixelSum = SampleSum<4>;

static_assert(sizeof(GPixel) == 1 && sizeof(GAPixel) == 2 && sizeof(RGBPixel) == 3 && sizeof(RGBAPixel) == 4);

} // namespace Imaging
