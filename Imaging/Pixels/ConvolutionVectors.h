#pragma once

// Internal: convolution with vectors, as weighted sums of rows of samples. Not installed.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Imaging {

/// How the quotient of a sum by the divisor is found with one multiplication, exactly.
struct ExactQuotient {
    std::int32_t divisor;
    /// Whether 32-bit floats give the exact sample for every sum that can occur; doubles always do, for all.
    bool inFloat;
    float floatFactor;
    double doubleFactor;
};

/// Finds factors a little beyond 1 / divisor such that the product with a sum, rounded down and limited to
/// 0 … 255, is the sample of the quotient for every 32-bit sum: a product is above n (not equal to it, so
/// that rounding the product less one half to the nearest integer gives n too) where the quotient reaches n,
/// and below n before. Since products rise with the quotient, it is enough to try the multiples of the
/// divisor up to the 256th and the sums next to them, and that is done. `divisor` is not 0; `largestSum` is a
/// bound of the sums' magnitudes, which in floats must not be too large for the divisor.
ExactQuotient exactQuotient(std::int32_t divisor, std::int64_t largestSum);

/// A kernel in the order in which vector code works it out: samples of equal taps are added up first (which
/// halves the products of a symmetric kernel), then two such groups at a time are weighed in 16 bits and
/// added in 32. Read-only, so threads share one.
struct ConvolutionPlan {
    /// Two groups of samples and their taps, the first one in the lower half. The second group may be empty.
    struct Pair {
        std::uint32_t taps;
        std::uint32_t firstCount;
        std::uint32_t secondCount;
    };

    std::vector<Pair> pairs;
    /// How many pairs at the front weigh by the upper halves of taps beyond 16 bits.
    std::size_t highPairs = 0;
    /// The numbers of the taps: for each pair in turn those of its first group, then those of its second.
    std::vector<std::uint32_t> order;
    ExactQuotient quotient;
};

/// Throws std::bad_alloc.
ConvolutionPlan convolutionPlan(std::span<const std::int32_t> taps, std::int32_t divisor);

/// Samples from 0 to 255 in 16 bits, as they are weighed. Samples of different colours never mix, so in a row
/// of RGB the taps of a row stand 3 samples apart: one routine serves every layout and both directions.
using WideSample = std::int16_t;

/// How many samples behind the last one asked for may be read, and behind a row of wide samples be written.
inline constexpr std::size_t wideRowPadding = 64;

/// Copies samples from bytes; exactly `count` are read, up to the padding more are written.
void widenSamples(const std::uint8_t* source, WideSample* destination, std::size_t count);

/// Copies samples to bytes, exactly `count` of them.
void narrowSamples(const WideSample* source, std::uint8_t* destination, std::size_t count);

/// Sets destination[i] to the sample of the sum over all taps of tap · source[i + offset], for i from 0 to
/// `count` - 1. The offsets are in samples and in the plan's order. Source and destination must not overlap.
void convolveSamples(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets, const WideSample* source,
                     WideSample* destination, std::size_t count);

/// The same to bytes, of which exactly `count` are written.
void convolveSamples(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets, const WideSample* source,
                     std::uint8_t* destination, std::size_t count);

} // namespace Imaging
