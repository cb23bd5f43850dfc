// The colour transform with vectors, by whole multipliers where these give the same samples and by floats
// where not. Compiled once for each kind of processor; the best one runs.

#include "Imaging/Pixels/ColorTransformVectors.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Imaging/Pixels/ColorTransformVectors.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace Imaging::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// Whole multipliers, on samples in words of 16 bits

using Shorts = hn::ScalableTag<std::uint16_t>;
using ShortVector = hn::Vec<Shorts>;

/// Samples times multipliers in two parts, 2^16 · whole + fraction. Exact: the high half of a product is a
/// floor, and so is every shift.
HWY_INLINE ShortVector multiply(ShortVector samples, ShortVector whole, ShortVector fraction, int shift) {
    const auto product = hn::Add(hn::Mul(samples, whole), hn::MulHigh(samples, fraction));
    return hn::Min(hn::ShiftRightSame(product, shift), hn::Set(Shorts(), 255));
}

/// The multipliers of every second sample of one vector, in both parts, in memory.
struct WholePattern {
    static constexpr std::size_t places = hn::MaxLanes(Shorts()) + 2;

    HWY_ALIGN std::array<std::uint16_t, places> whole;
    HWY_ALIGN std::array<std::uint16_t, places> fraction;

    explicit WholePattern(const std::array<std::uint32_t, 3>& multipliers) {
        for (std::size_t i = 0; i < places; ++i) {
            whole[i] = static_cast<std::uint16_t>(multipliers[2 * i % 3] >> 16);
            fraction[i] = static_cast<std::uint16_t>(multipliers[2 * i % 3] & 0xFFFF);
        }
    }

    /// Where every second sample from a given one on begins: a place later is two samples later.
    static std::size_t place(std::size_t sample) { return 2 * sample % 3; }
};

/// One vector of samples, of which the first stands at a place in a picture's row.
HWY_INLINE void multiplyBytes(const std::uint8_t* source, const WholePattern& pattern, std::size_t sample,
                              int shift, std::uint8_t* destination) {
    const Shorts shorts;
    const hn::Repartition<std::uint8_t, Shorts> bytes;
    const std::size_t even = WholePattern::place(sample);
    const std::size_t odd = WholePattern::place(sample + 1);
    const auto pairs = hn::BitCast(shorts, hn::LoadU(bytes, source));
    const auto first = multiply(hn::And(pairs, hn::Set(shorts, 255)), hn::LoadU(shorts, &pattern.whole[even]),
                                hn::LoadU(shorts, &pattern.fraction[even]), shift);
    const auto second = multiply(hn::ShiftRight<8>(pairs), hn::LoadU(shorts, &pattern.whole[odd]),
                                 hn::LoadU(shorts, &pattern.fraction[odd]), shift);
    hn::StoreU(hn::BitCast(bytes, hn::Or(first, hn::ShiftLeft<8>(second))), bytes, destination);
}

/// Returns how many samples are done: as many as fill three vectors at a time, which hold whole pixels.
HWY_INLINE std::size_t multiplyVectors(const std::uint8_t* source, const WholeMultipliers& multipliers,
                                       std::size_t count, std::uint8_t* destination) {
    const std::size_t bytes = 2 * hn::Lanes(Shorts());
    const WholePattern pattern(multipliers.values);
    const int shift = multipliers.shift;
    std::size_t i = 0;
    for (; i + 3 * bytes <= count; i += 3 * bytes) {
        multiplyBytes(source + i, pattern, 0, shift, destination + i);
        multiplyBytes(source + i + bytes, pattern, bytes, shift, destination + i + bytes);
        multiplyBytes(source + i + 2 * bytes, pattern, 2 * bytes, shift, destination + i + 2 * bytes);
    }
    return i;
}

// Multipliers in floats, on samples in words of 32 bits

using Floats = hn::ScalableTag<float>;
using FloatVector = hn::Vec<Floats>;
using Words = hn::RebindToUnsigned<Floats>;
using WordVector = hn::Vec<Words>;

/// Samples from 0 to 255, one a word; exact, since floats hold every sample and the product is rounded once.
HWY_INLINE WordVector multiply(WordVector samples, FloatVector multipliers) {
    const Floats floats;
    const hn::RebindToSigned<Floats> integers;
    const auto product = hn::Mul(hn::ConvertTo(floats, hn::BitCast(integers, samples)), multipliers);
    // Neither a negative product nor one that is not a number is as large as 0.
    const auto clamped =
        hn::IfThenElseZero(hn::Ge(product, hn::Zero(floats)), hn::Min(product, hn::Set(floats, 255.0F)));
    return hn::BitCast(Words(), hn::ConvertTo(integers, clamped));
}

/// The multipliers of every fourth sample of one vector, in memory: a place later is four samples later.
using FloatPattern = std::array<float, hn::MaxLanes(Floats()) + 2>;

/// One vector of samples, of which the first stands at a place in a picture's row.
HWY_INLINE void multiplyBytes(const std::uint8_t* source, const FloatPattern& pattern, std::size_t sample,
                              std::uint8_t* destination) {
    const Floats floats;
    const Words words;
    const hn::Repartition<std::uint8_t, Words> bytes;
    const auto from = [&](std::size_t number) HWY_ATTR { return hn::LoadU(floats, &pattern[number % 3]); };
    const auto lowest = hn::Set(words, 255);
    const auto four = hn::BitCast(words, hn::LoadU(bytes, source));
    const auto a = multiply(hn::And(four, lowest), from(sample));
    const auto b = multiply(hn::And(hn::ShiftRight<8>(four), lowest), from(sample + 1));
    const auto c = multiply(hn::And(hn::ShiftRight<16>(four), lowest), from(sample + 2));
    const auto d = multiply(hn::ShiftRight<24>(four), from(sample + 3));
    const auto lower = hn::Or(a, hn::ShiftLeft<8>(b));
    const auto upper = hn::Or(hn::ShiftLeft<16>(c), hn::ShiftLeft<24>(d));
    hn::StoreU(hn::BitCast(bytes, hn::Or(lower, upper)), bytes, destination);
}

/// As above.
HWY_INLINE std::size_t multiplyVectors(const std::uint8_t* source, const std::array<float, 3>& multipliers,
                                       std::size_t count, std::uint8_t* destination) {
    const std::size_t bytes = 4 * hn::Lanes(Floats());
    HWY_ALIGN FloatPattern pattern;
    for (std::size_t i = 0; i < pattern.size(); ++i) pattern[i] = multipliers[i % 3];
    std::size_t i = 0;
    for (; i + 3 * bytes <= count; i += 3 * bytes) {
        multiplyBytes(source + i, pattern, 0, destination + i);
        multiplyBytes(source + i + bytes, pattern, bytes, destination + i + bytes);
        multiplyBytes(source + i + 2 * bytes, pattern, 2 * bytes, destination + i + 2 * bytes);
    }
    return i;
}

#else

template<class Multipliers>
std::size_t multiplyVectors(const std::uint8_t*, const Multipliers&, std::size_t, std::uint8_t*) {
    return 0;
}

#endif

// `count` samples, of which the first is red.

HWY_ATTR void multiplyRowByWhole(const std::uint8_t* source, const WholeMultipliers& whole,
                                 const std::array<float, 3>& floats, std::size_t count,
                                 std::uint8_t* destination) {
    for (std::size_t i = multiplyVectors(source, whole, count, destination); i < count; ++i) {
        destination[i] = Plain::multiplied(source[i], floats[i % 3]);
    }
}

HWY_ATTR void multiplyRowByFloats(const std::uint8_t* source, const std::array<float, 3>& floats,
                                  std::size_t count, std::uint8_t* destination) {
    for (std::size_t i = multiplyVectors(source, floats, count, destination); i < count; ++i) {
        destination[i] = Plain::multiplied(source[i], floats[i % 3]);
    }
}

} // namespace
} // namespace Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Imaging {

namespace {

HWY_EXPORT(multiplyRowByWhole);
HWY_EXPORT(multiplyRowByFloats);

/// The smallest whole multiplier that agrees with a multiplier for every sample after a shift by `bits`.
std::optional<std::uint32_t> wholeMultiplier(float multiplier, int bits) {
    std::uint64_t least = 0;
    std::uint64_t most = (1U << 24) - 1;
    for (std::uint64_t sample = 1; sample < 256; ++sample) {
        const std::uint64_t result = Plain::multiplied(static_cast<std::uint8_t>(sample), multiplier);
        // result · 2^bits <= sample · whole < (result + 1) · 2^bits, without the end where 255 is clamped
        least = std::max(least, ((result << bits) + sample - 1) / sample);
        if (result < 255) most = std::min(most, (((result + 1) << bits) - 1) / sample);
        if (least > most) return std::nullopt;
    }
    return static_cast<std::uint32_t>(least);
}

} // namespace

std::optional<WholeMultipliers> wholeMultipliers(const ColorTransformRecord& record) {
    for (int shift = 8; shift >= 0; --shift) {
        const auto red = wholeMultiplier(record.redMultiplier, 16 + shift);
        const auto green = wholeMultiplier(record.greenMultiplier, 16 + shift);
        const auto blue = wholeMultiplier(record.blueMultiplier, 16 + shift);
        if (red && green && blue) return WholeMultipliers{{*red, *green, *blue}, shift};
    }
    return std::nullopt;
}

void color_transform(const ColorTransformRecord& record) {
    const std::array<float, 3> floats = {record.redMultiplier, record.greenMultiplier, record.blueMultiplier};
    const std::optional<WholeMultipliers> whole = wholeMultipliers(record);
    const std::size_t count = std::size_t{3} * static_cast<std::size_t>(record.width);
    forEachRow(record, [&](std::int64_t row) {
        const std::uint8_t* const source = sourceRow(record, row);
        std::uint8_t* const destination = destinationRow(record, row);
        if (whole.has_value()) {
            HWY_DYNAMIC_DISPATCH(multiplyRowByWhole)(source, *whole, floats, count, destination);
        } else {
            HWY_DYNAMIC_DISPATCH(multiplyRowByFloats)(source, floats, count, destination);
        }
    });
}

} // namespace Imaging
#endif
