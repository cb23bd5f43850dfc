// Each loop stands here twice, in vectors for every instruction set and in plain numbers, and gives the same
// bits.

#include "Platform/Pixels/Rows/SampleMixing.h"

#include <algorithm>
#include <array>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Platform/Pixels/Rows/SampleMixing.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Imaging::Platform::HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR

void rows(const std::uint32_t* const* from, const std::int16_t* factors, std::size_t taps,
          std::int16_t* samples, std::size_t count) {
    mixRowsPlain(from, factors, taps, samples, count);
}

void columns(const std::int16_t* samples, const ColumnMix& mix, std::size_t from, std::size_t end,
             std::uint32_t* words) {
    mixColumnsPlain(samples, mix, from, end, words);
}

void squares(const Squares& from, std::size_t count, std::uint32_t* words) {
    mixSquaresPlain(from, count, words);
}

void shifted(const std::uint32_t* above, const std::uint32_t* below, std::int16_t right, std::int16_t down,
             std::uint32_t* words, std::size_t count) {
    mixShiftedPlain(above, below, right, down, words, count);
}

void halves(const std::uint32_t* above, const std::uint32_t* below, std::uint32_t* words, std::size_t count) {
    halveRowPlain(above, below, words, count);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Samples = hn::ScalableTag<std::int16_t>;
using Vector = hn::Vec<Samples>;

/// p + (q − p)·factor. The difference of two samples fits in 16 bits, and so does what is added.
template<class Tag>
hn::Vec<Tag> mixed(Tag, hn::Vec<Tag> p, hn::Vec<Tag> q, hn::Vec<Tag> factor) {
    return hn::Add(p, hn::MulFixedPoint15(hn::Sub(q, p), factor));
}

/// Bytes as samples in steps of 1/128: the largest factor of two that leaves room for the sign.
template<class Tag>
hn::Vec<Tag> load(Tag tag, const std::uint32_t* words) {
    const hn::Rebind<std::uint8_t, Tag> bytes;
    return hn::ShiftLeft<7>(
        hn::PromoteTo(tag, hn::LoadU(bytes, reinterpret_cast<const std::uint8_t*>(words))));
}

/// Back to bytes. Half a step is added first, so that halves are rounded upward.
template<class Tag>
auto rounded(Tag tag, hn::Vec<Tag> samples) {
    const hn::Rebind<std::uint8_t, Tag> bytes;
    return hn::DemoteTo(bytes, hn::ShiftRight<7>(hn::SaturatedAdd(samples, hn::Set(tag, 64))));
}

/// A vector of samples at a time, all its taps one after another, so that sums never leave the registers.
void rows(const std::uint32_t* const* from, const std::int16_t* factors, std::size_t taps,
          std::int16_t* samples, std::size_t count) {
    const Samples tag;
    const std::size_t step = hn::Lanes(tag) / 4;
    std::size_t x = 0;
    for (; x + step <= count; x += step) {
        const Vector p = load(tag, from[0] + x);
        Vector sum = p;
        for (std::size_t k = 1; k < taps; ++k) {
            const Vector difference = hn::Sub(load(tag, from[k] + x), p);
            sum = hn::Add(sum, hn::MulFixedPoint15(difference, hn::Set(tag, factors[k])));
        }
        hn::StoreU(sum, tag, samples + x * 4);
    }
    if (x == count) return;
    std::array<const std::uint32_t*, maximumTaps> rest;
    for (std::size_t k = 0; k < taps; ++k) rest[k] = from[k] + x;
    mixRowsPlain(rest.data(), factors, taps, samples + x * 4, count - x);
}

/// Two pixels at a time on every instruction set: each begins at a place of its own, so that wider vectors
/// would have to be put together of more pieces.
void columns(const std::int16_t* samples, const ColumnMix& mix, std::size_t from, std::size_t end,
             std::uint32_t* words) {
    const hn::FixedTag<std::int16_t, 8> two;
    const hn::Half<decltype(two)> one;
    const auto pixels = [&](std::size_t i, std::size_t k) HWY_ATTR {
        const std::size_t tap = k * 4;
        return hn::Combine(two,
                           hn::LoadU(one, samples + static_cast<std::size_t>(mix.first[i + 1]) * 4 + tap),
                           hn::LoadU(one, samples + static_cast<std::size_t>(mix.first[i]) * 4 + tap));
    };
    std::size_t i = from;
    for (; i + 2 <= end; i += 2) {
        const auto p = pixels(i, 0);
        auto sum = p;
        for (std::size_t k = 1; k < mix.taps; ++k) {
            const auto factor = hn::LoadU(two, mix.factors + ((k - 1) * mix.count + i) * 4);
            sum = hn::Add(sum, hn::MulFixedPoint15(hn::Sub(pixels(i, k), p), factor));
        }
        const hn::Rebind<std::uint8_t, decltype(two)> bytes;
        hn::StoreU(rounded(two, sum), bytes, reinterpret_cast<std::uint8_t*>(words + (i - from)));
    }
    mixColumnsPlain(samples, mix, i, end, words + (i - from));
}

/// A vector of the samples of a row's pixels from `words` on, mixed with the row below.
template<bool downward>
Vector between(const std::uint32_t* above, const std::uint32_t* below, Vector down) {
    const Samples tag;
    const Vector p = load(tag, above);
    if constexpr (!downward) return p;
    return mixed(tag, p, load(tag, below), down);
}

/// The factors that are 0 are told at compile time, so that moves along one axis cost half.
template<bool sideways, bool downward>
void shiftedBy(const std::uint32_t* above, const std::uint32_t* below, std::int16_t right, std::int16_t down,
               std::uint32_t* words, std::size_t count) {
    const Samples tag;
    const hn::Repartition<std::uint8_t, Samples> bytes;
    const Vector x = hn::Set(tag, right);
    const Vector y = hn::Set(tag, down);
    const std::size_t half = hn::Lanes(tag) / 4;
    const auto pixels = [&](std::size_t i) HWY_ATTR {
        const Vector p = between<downward>(above + i, below + i, y);
        if constexpr (!sideways) return rounded(tag, p);
        return rounded(tag, mixed(tag, p, between<downward>(above + i + 1, below + i + 1, y), x));
    };
    std::size_t i = 0;
    for (; i + 2 * half <= count; i += 2 * half) {
        hn::StoreU(hn::Combine(bytes, pixels(i + half), pixels(i)), bytes,
                   reinterpret_cast<std::uint8_t*>(words + i));
    }
    mixShiftedPlain(above + i, below + i, right, down, words + i, count - i);
}

void shifted(const std::uint32_t* above, const std::uint32_t* below, std::int16_t right, std::int16_t down,
             std::uint32_t* words, std::size_t count) {
    if (right != 0 && down != 0) {
        shiftedBy<true, true>(above, below, right, down, words, count);
    } else if (right != 0) {
        shiftedBy<true, false>(above, above, right, down, words, count);
    } else {
        shiftedBy<false, true>(above, down != 0 ? below : above, right, down, words, count);
    }
}

/// The factors of positions, each for the four samples of its pixel.
Vector factorsOf(const std::uint32_t* positions) {
    const hn::Repartition<std::uint64_t, Samples> wide;
    const hn::Rebind<std::uint32_t, decltype(wide)> narrow;
    const auto once = hn::PromoteTo(
        wide, hn::ShiftRight<1>(hn::And(hn::LoadU(narrow, positions), hn::Set(narrow, 0xffff))));
    const auto twice = hn::Or(once, hn::ShiftLeft<16>(once));
    return hn::BitCast(Samples(), hn::Or(twice, hn::ShiftLeft<32>(twice)));
}

/// A vector of pixels mixed from their four neighbours, given as words.
template<class Words>
Vector square(Words aboveLeft, Words aboveRight, Words belowLeft, Words belowRight,
              const std::uint32_t* right, const std::uint32_t* down) {
    const Samples tag;
    const auto promoted = [&](Words words) HWY_ATTR { return hn::ShiftLeft<7>(hn::PromoteTo(tag, words)); };
    const Vector x = factorsOf(right);
    const Vector y = factorsOf(down);
    const Vector above = mixed(tag, promoted(aboveLeft), promoted(aboveRight), x);
    const Vector below = mixed(tag, promoted(belowLeft), promoted(belowRight), x);
    return mixed(tag, above, below, y);
}

/// The neighbours lie in pairs of left and right, which are taken apart first. The last vector may go beyond
/// the count: there is room for all squares in both arrays.
void squares(const Squares& from, std::size_t count, std::uint32_t* words) {
    const hn::ScalableTag<std::uint32_t> pixels;
    const hn::Repartition<std::uint8_t, decltype(pixels)> bytes;
    const hn::Half<decltype(bytes)> half;
    const Samples tag;
    const std::size_t step = hn::Lanes(pixels);
    const auto split = [&](const std::uint64_t* pairs, auto& left, auto& right) HWY_ATTR {
        const auto first = hn::LoadU(pixels, reinterpret_cast<const std::uint32_t*>(pairs));
        const auto second = hn::LoadU(pixels, reinterpret_cast<const std::uint32_t*>(pairs + step / 2));
        left = hn::BitCast(bytes, hn::ConcatEven(pixels, second, first));
        right = hn::BitCast(bytes, hn::ConcatOdd(pixels, second, first));
    };
    for (std::size_t i = 0; i < count; i += step) {
        hn::Vec<decltype(bytes)> al = hn::Undefined(bytes);
        hn::Vec<decltype(bytes)> ar = al;
        hn::Vec<decltype(bytes)> bl = al;
        hn::Vec<decltype(bytes)> br = al;
        split(from.above + i, al, ar);
        split(from.below + i, bl, br);
        const Vector lower = square(hn::LowerHalf(half, al), hn::LowerHalf(half, ar), hn::LowerHalf(half, bl),
                                    hn::LowerHalf(half, br), from.right + i, from.down + i);
        const Vector upper =
            square(hn::UpperHalf(half, al), hn::UpperHalf(half, ar), hn::UpperHalf(half, bl),
                   hn::UpperHalf(half, br), from.right + i + step / 2, from.down + i + step / 2);
        hn::StoreU(hn::Combine(bytes, rounded(tag, upper), rounded(tag, lower)), bytes,
                   reinterpret_cast<std::uint8_t*>(words + i));
    }
}

/// Sums of four bytes fit in 16 bits, so that nothing is rounded before the end.
void halves(const std::uint32_t* above, const std::uint32_t* below, std::uint32_t* words, std::size_t count) {
    const hn::ScalableTag<std::uint32_t> pixels;
    const hn::Repartition<std::uint8_t, decltype(pixels)> bytes;
    const hn::Half<decltype(bytes)> half;
    const hn::ScalableTag<std::uint16_t> sums;
    const std::size_t step = hn::Lanes(pixels);
    const auto sumOf = [&](const std::uint32_t* row, auto& lower, auto& upper) HWY_ATTR {
        const auto first = hn::LoadU(pixels, row);
        const auto second = hn::LoadU(pixels, row + step);
        const auto left = hn::BitCast(bytes, hn::ConcatEven(pixels, second, first));
        const auto right = hn::BitCast(bytes, hn::ConcatOdd(pixels, second, first));
        lower = hn::Add(hn::PromoteTo(sums, hn::LowerHalf(half, left)),
                        hn::PromoteTo(sums, hn::LowerHalf(half, right)));
        upper = hn::Add(hn::PromoteTo(sums, hn::UpperHalf(half, left)),
                        hn::PromoteTo(sums, hn::UpperHalf(half, right)));
    };
    std::size_t x = 0;
    for (; x + step <= count; x += step) {
        auto al = hn::Undefined(sums);
        auto au = al;
        auto bl = al;
        auto bu = al;
        sumOf(above + 2 * x, al, au);
        sumOf(below + 2 * x, bl, bu);
        const auto two = hn::Set(sums, 2);
        const auto lower = hn::ShiftRight<2>(hn::Add(hn::Add(al, bl), two));
        const auto upper = hn::ShiftRight<2>(hn::Add(hn::Add(au, bu), two));
        const Samples tag;
        hn::StoreU(hn::Combine(bytes, hn::DemoteTo(half, hn::BitCast(tag, upper)),
                               hn::DemoteTo(half, hn::BitCast(tag, lower))),
                   bytes, reinterpret_cast<std::uint8_t*>(words + x));
    }
    halveRowPlain(above + 2 * x, below + 2 * x, words + x, count - x);
}

#endif

} // namespace
} // namespace Imaging::Platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Imaging::Platform {

namespace {

HWY_EXPORT(rows);
HWY_EXPORT(columns);
HWY_EXPORT(squares);
HWY_EXPORT(shifted);
HWY_EXPORT(halves);

// The same arithmetic on single numbers. The product of a difference and a factor fits in 32 bits.
int scaledBy(int difference, std::int16_t factor) { return (difference * factor + 16384) >> 15; }

int sampleOf(std::uint32_t word, std::size_t i) { return static_cast<int>(word >> 8 * i & 0xff) << 7; }

std::uint32_t roundedSample(int sample, std::size_t i) {
    return static_cast<std::uint32_t>(std::clamp((sample + 64) >> 7, 0, 255)) << 8 * i;
}

int mixOf(int p, int q, std::int16_t factor) { return p + scaledBy(q - p, factor); }

} // namespace

void mixRows(const std::uint32_t* const* from, const std::int16_t* factors, std::size_t taps,
             std::int16_t* samples, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(rows)(from, factors, taps, samples, count);
}

void mixColumns(const std::int16_t* samples, const ColumnMix& mix, std::size_t from, std::size_t end,
                std::uint32_t* words) {
    HWY_DYNAMIC_DISPATCH(columns)(samples, mix, from, end, words);
}

void mixSquares(const Squares& from, std::size_t count, std::uint32_t* words) {
    HWY_DYNAMIC_DISPATCH(squares)(from, count, words);
}

void mixShifted(const std::uint32_t* above, const std::uint32_t* below, std::int16_t right, std::int16_t down,
                std::uint32_t* words, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(shifted)(above, below, right, down, words, count);
}

void halveRow(const std::uint32_t* above, const std::uint32_t* below, std::uint32_t* words,
              std::size_t count) {
    HWY_DYNAMIC_DISPATCH(halves)(above, below, words, count);
}

void mixRowsPlain(const std::uint32_t* const* from, const std::int16_t* factors, std::size_t taps,
                  std::int16_t* samples, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
        for (std::size_t i = 0; i < 4; ++i) {
            const int p = sampleOf(from[0][x], i);
            int sum = p;
            for (std::size_t k = 1; k < taps; ++k) sum += scaledBy(sampleOf(from[k][x], i) - p, factors[k]);
            samples[x * 4 + i] = static_cast<std::int16_t>(sum);
        }
    }
}

void mixColumnsPlain(const std::int16_t* samples, const ColumnMix& mix, std::size_t from, std::size_t end,
                     std::uint32_t* words) {
    for (std::size_t x = from; x < end; ++x) {
        const std::int16_t* const pixels = samples + static_cast<std::size_t>(mix.first[x]) * 4;
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const int p = pixels[i];
            int sum = p;
            for (std::size_t k = 1; k < mix.taps; ++k) {
                sum += scaledBy(pixels[k * 4 + i] - p, mix.factors[((k - 1) * mix.count + x) * 4]);
            }
            word |= roundedSample(sum, i);
        }
        words[x - from] = word;
    }
}

void mixSquaresPlain(const Squares& from, std::size_t count, std::uint32_t* words) {
    for (std::size_t x = 0; x < count; ++x) {
        const auto right = static_cast<std::int16_t>((from.right[x] & 0xffff) >> 1);
        const auto down = static_cast<std::int16_t>((from.down[x] & 0xffff) >> 1);
        const auto across = [&](std::uint64_t pair, std::size_t i) {
            return mixOf(sampleOf(static_cast<std::uint32_t>(pair), i),
                         sampleOf(static_cast<std::uint32_t>(pair >> 32), i), right);
        };
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            word |= roundedSample(mixOf(across(from.above[x], i), across(from.below[x], i), down), i);
        }
        words[x] = word;
    }
}

void mixShiftedPlain(const std::uint32_t* above, const std::uint32_t* below, std::int16_t right,
                     std::int16_t down, std::uint32_t* words, std::size_t count) {
    const auto between = [&](std::size_t x, std::size_t i) {
        const int p = sampleOf(above[x], i);
        return down != 0 ? mixOf(p, sampleOf(below[x], i), down) : p;
    };
    for (std::size_t x = 0; x < count; ++x) {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const int p = between(x, i);
            word |= roundedSample(right != 0 ? mixOf(p, between(x + 1, i), right) : p, i);
        }
        words[x] = word;
    }
}

void halveRowPlain(const std::uint32_t* above, const std::uint32_t* below, std::uint32_t* words,
                   std::size_t count) {
    const auto sample = [](std::uint32_t word, std::size_t i) { return word >> 8 * i & 0xff; };
    for (std::size_t x = 0; x < count; ++x) {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const std::uint32_t sum = sample(above[2 * x], i) + sample(above[2 * x + 1], i) +
                                      sample(below[2 * x], i) + sample(below[2 * x + 1], i);
            word |= (sum + 2) / 4 << 8 * i;
        }
        words[x] = word;
    }
}

void meanRow(const std::uint32_t* above, const std::uint32_t* below, std::uint32_t* words,
             std::size_t count) {
    // (a + b + 1) / 2 of each byte without a carry from one into the next; compilers make vectors of it.
    for (std::size_t x = 0; x < count; ++x) {
        words[x] = (above[x] | below[x]) - (((above[x] ^ below[x]) >> 1) & 0x7f7f7f7f);
    }
}

} // namespace Imaging::Platform
#endif
