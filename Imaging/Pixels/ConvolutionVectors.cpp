// Weighted sums of samples with vectors: samples of equal taps are added up in 16 bits, weighed two such
// groups at a time and added in 32, and the sum is divided by one product. Compiled once for each kind of
// processor; the best one runs.

#include "Imaging/Pixels/ConvolutionVectors.h"

#include "Imaging/Pixels/ConvolutionPlain.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Imaging/Pixels/ConvolutionVectors.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace Imaging::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Where the halves that interleaving makes do not come together again in order, or there are no doubles, the
// plain loop stays.
#if HWY_TARGET != HWY_SCALAR && !HWY_HAVE_SCALABLE && HWY_HAVE_FLOAT64

using Words = hn::ScalableTag<WideSample>;
using Sums = hn::RepartitionToWide<Words>;
using Bytes = hn::Rebind<std::uint8_t, Words>;
using WordVector = hn::Vec<Words>;
using SumVector = hn::Vec<Sums>;

constexpr Words words;
constexpr Sums sums;
constexpr Bytes bytes;
constexpr std::size_t lanes = hn::MaxLanes(words);
static_assert(lanes <= wideRowPadding);

/// A quotient as one product of 32-bit floats. Added to a number whose last place is 1, less one half, it is
/// rounded down to a whole number in the lowest bits (see `exactQuotient`); seen as integers these rise with
/// the sum over its whole range, so that far too large ones stay so. Cheaper than a conversion that has to
/// saturate.
struct FloatQuotient {
    using Floats = hn::Rebind<float, Sums>;
    static constexpr float whole = 8388608; // 2^23
    static constexpr std::int32_t bitsOfWhole = 0x4B000000;
    hn::Vec<Floats> factor;

    explicit FloatQuotient(const ExactQuotient& quotient) : factor(hn::Set(Floats(), quotient.floatFactor)) {}
    HWY_INLINE SumVector of(SumVector sum) const {
        const auto rounded =
            hn::MulAdd(hn::ConvertTo(Floats(), sum), factor, hn::Set(Floats(), whole - 0.5F));
        return hn::Sub(hn::BitCast(sums, rounded), hn::Set(sums, bitsOfWhole));
    }
};

/// A quotient as one product of doubles, half a vector at a time.
struct DoubleQuotient {
    using Half = hn::Half<Sums>;
    using Doubles = hn::Rebind<double, Half>;
    hn::Vec<Doubles> factor;

    explicit DoubleQuotient(const ExactQuotient& quotient)
        : factor(hn::Set(Doubles(), quotient.doubleFactor)) {}
    HWY_INLINE SumVector of(SumVector sum) const {
        const Half half;
        const auto lower = hn::Mul(hn::PromoteTo(Doubles(), hn::LowerHalf(half, sum)), factor);
        const auto upper = hn::Mul(hn::PromoteTo(Doubles(), hn::UpperHalf(half, sum)), factor);
        return hn::Combine(sums, hn::DemoteTo(half, upper), hn::DemoteTo(half, lower));
    }
};

/// The samples of V neighbouring vectors, added up over one group.
template<std::size_t V>
HWY_INLINE void addUp(const WideSample* source, const std::ptrdiff_t* offsets, std::uint32_t count,
                      WordVector (&group)[V]) {
    const WideSample* at = source + offsets[0];
    for (std::size_t v = 0; v < V; ++v) group[v] = hn::LoadU(words, at + v * lanes);
    for (std::uint32_t i = 1; i < count; ++i) {
        at = source + offsets[i];
        for (std::size_t v = 0; v < V; ++v) group[v] = hn::Add(group[v], hn::LoadU(words, at + v * lanes));
    }
}

/// Sums of products, in the two parts in which targets add up neighbouring products.
struct PartialSums {
    SumVector one;
    SumVector other;

    // Not by initialisers: g++ does not compile implicit constructors for the target.
    HWY_INLINE void clear() { one = other = hn::Zero(sums); }
    HWY_INLINE void add(WordVector samples, WordVector taps) {
        one = hn::ReorderWidenMulAccumulate(sums, samples, taps, one, other);
    }
    HWY_INLINE void toUpperHalf() {
        one = hn::ShiftLeft<16>(one);
        other = hn::ShiftLeft<16>(other);
    }
    HWY_INLINE SumVector whole() const { return hn::RearrangeToOddPlusEven(one, other); }
};

/// Sums of V vectors of samples, in two halves each.
template<std::size_t V>
struct Accumulators {
    PartialSums lower[V];
    PartialSums upper[V];

    HWY_INLINE void clear() {
        for (std::size_t v = 0; v < V; ++v) {
            lower[v].clear();
            upper[v].clear();
        }
    }
    HWY_INLINE void toUpperHalf() {
        for (std::size_t v = 0; v < V; ++v) {
            lower[v].toUpperHalf();
            upper[v].toUpperHalf();
        }
    }
    HWY_INLINE void add(const WordVector (&first)[V], const WordVector (&second)[V], WordVector taps) {
        for (std::size_t v = 0; v < V; ++v) {
            lower[v].add(hn::InterleaveLower(words, first[v], second[v]), taps);
            upper[v].add(hn::InterleaveUpper(words, first[v], second[v]), taps);
        }
    }
};

/// The samples of V neighbouring vectors as quotients that are limited to 16 bits with a sign, not yet to 8.
template<std::size_t V, class Quotient>
HWY_INLINE void convolveVectors(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets,
                                const Quotient& quotient, const WideSample* source,
                                WordVector (&quotients)[V]) {
    Accumulators<V> all;
    all.clear();
    const ConvolutionPlan::Pair* const begin = plan.pairs.data();
    const ConvolutionPlan::Pair* const end = begin + plan.pairs.size();
    const ConvolutionPlan::Pair* const low = begin + plan.highPairs;
    for (const ConvolutionPlan::Pair* pair = begin; pair != end; ++pair) {
        if (HWY_UNLIKELY(pair == low && low != begin)) all.toUpperHalf();
        WordVector first[V];
        WordVector second[V];
        if (HWY_LIKELY(pair->firstCount == 2 && pair->secondCount == 2)) {
            addUp<V>(source, offsets, 2, first); // most pairs of a symmetric row, without a loop
            addUp<V>(source, offsets + 2, 2, second);
            offsets += 4;
        } else {
            addUp<V>(source, offsets, pair->firstCount, first);
            offsets += pair->firstCount;
            for (std::size_t v = 0; v < V; ++v) second[v] = hn::Zero(words);
            if (pair->secondCount > 0) addUp<V>(source, offsets, pair->secondCount, second);
            offsets += pair->secondCount;
        }
        all.add(first, second, hn::BitCast(words, hn::Set(sums, static_cast<std::int32_t>(pair->taps))));
    }
    if (HWY_UNLIKELY(low == end && low != begin)) all.toUpperHalf();
    for (std::size_t v = 0; v < V; ++v) {
        quotients[v] =
            hn::ReorderDemote2To(words, quotient.of(all.lower[v].whole()), quotient.of(all.upper[v].whole()));
    }
}

HWY_INLINE void storeSamples(WordVector quotients, std::uint8_t* destination) {
    hn::StoreU(hn::DemoteTo(bytes, quotients), bytes, destination); // which limits them
}

HWY_INLINE void storeSamples(WordVector quotients, WideSample* destination) {
    const WordVector positive = hn::Max(quotients, hn::Zero(words));
    hn::StoreU(hn::Min(positive, hn::Set(words, 255)), words, destination);
}

template<class Quotient, class Sample>
HWY_INLINE void convolveWith(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets,
                             const WideSample* HWY_RESTRICT source, Sample* HWY_RESTRICT destination,
                             std::size_t count) {
    const Quotient quotient(plan.quotient);
    std::size_t i = 0;
    for (; i + 2 * lanes <= count; i += 2 * lanes) {
        WordVector two[2];
        convolveVectors<2>(plan, offsets, quotient, source + i, two);
        storeSamples(two[0], destination + i);
        storeSamples(two[1], destination + i + lanes);
    }
    for (; i < count; i += lanes) {
        WordVector one[1];
        convolveVectors<1>(plan, offsets, quotient, source + i, one);
        if (i + lanes <= count) {
            storeSamples(one[0], destination + i);
        } else {
            HWY_ALIGN Sample last[lanes];
            storeSamples(one[0], last);
            std::memcpy(destination + i, last, (count - i) * sizeof(Sample));
        }
    }
}

template<class Sample>
HWY_INLINE void convolveTo(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets,
                           const WideSample* source, Sample* destination, std::size_t count) {
    if (plan.quotient.inFloat) {
        convolveWith<FloatQuotient>(plan, offsets, source, destination, count);
    } else {
        convolveWith<DoubleQuotient>(plan, offsets, source, destination, count);
    }
}

HWY_ATTR void widen(const std::uint8_t* source, WideSample* destination, std::size_t count) {
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        hn::StoreU(hn::PromoteTo(words, hn::LoadU(bytes, source + i)), words, destination + i);
    }
    for (; i < count; ++i) destination[i] = source[i];
}

HWY_ATTR void narrow(const WideSample* source, std::uint8_t* destination, std::size_t count) {
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) storeSamples(hn::LoadU(words, source + i), destination + i);
    for (; i < count; ++i) destination[i] = static_cast<std::uint8_t>(source[i]);
}

#else

/// The sum for one sample, where there is no vector code.
HWY_INLINE std::uint32_t plainSum(const ConvolutionPlan& plan, const std::ptrdiff_t* offset,
                                  const WideSample* source) {
    std::uint32_t sum = 0;
    const auto group = [&](std::uint32_t count, std::uint32_t taps) {
        const auto tap = static_cast<std::uint32_t>(static_cast<std::int16_t>(taps & 0xFFFFU));
        for (; count > 0; --count) sum += tap * static_cast<std::uint32_t>(source[*offset++]);
    };
    for (std::size_t i = 0; i < plan.pairs.size(); ++i) {
        if (i == plan.highPairs) sum <<= 16;
        group(plan.pairs[i].firstCount, plan.pairs[i].taps);
        group(plan.pairs[i].secondCount, plan.pairs[i].taps >> 16);
    }
    return plan.pairs.size() == plan.highPairs ? sum << 16 : sum;
}

template<class Sample>
HWY_INLINE void convolveTo(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets,
                           const WideSample* source, Sample* destination, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        destination[i] = Plain::sampleOfSum(plainSum(plan, offsets, source + i), plan.quotient.divisor);
    }
}

HWY_ATTR void widen(const std::uint8_t* source, WideSample* destination, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) destination[i] = source[i];
}

HWY_ATTR void narrow(const WideSample* source, std::uint8_t* destination, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) destination[i] = static_cast<std::uint8_t>(source[i]);
}

#endif

HWY_ATTR void convolveWide(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets,
                           const WideSample* source, WideSample* destination, std::size_t count) {
    convolveTo(plan, offsets, source, destination, count);
}

HWY_ATTR void convolveNarrow(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets,
                             const WideSample* source, std::uint8_t* destination, std::size_t count) {
    convolveTo(plan, offsets, source, destination, count);
}

} // namespace
} // namespace Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Imaging {

namespace {

HWY_EXPORT(convolveWide);
HWY_EXPORT(convolveNarrow);
HWY_EXPORT(widen);
HWY_EXPORT(narrow);

/// More samples than these might not add up in 16 bits with a sign.
constexpr std::size_t largestGroup = 128;

/// Whether the products with a factor, truncated, are the quotients wherever those change.
template<class Real>
bool isExact(Real factor, std::int32_t divisor) {
    const std::int64_t magnitude = divisor < 0 ? -std::int64_t{divisor} : std::int64_t{divisor};
    const std::int64_t sign = divisor < 0 ? -1 : 1;
    const std::int64_t last = divisor < 0 ? std::int64_t{1} << 31 : (std::int64_t{1} << 31) - 1;
    const auto product = [&](std::int64_t sum) { return static_cast<Real>(sign * sum) * factor; };
    for (std::int64_t q = 1; q <= 256 && q * magnitude <= last; ++q) {
        if (!(product(q * magnitude) > static_cast<Real>(q))) return false;
        if (!(product(q * magnitude - 1) < static_cast<Real>(q))) return false;
    }
    const std::int64_t largest = last / magnitude;
    return largest >= 256 || product(last) < static_cast<Real>(largest + 1);
}

/// A factor a few steps beyond the reciprocal that is exact, if there is one.
template<class Real>
std::optional<Real> exactFactor(std::int32_t divisor) {
    Real factor = 1 / static_cast<Real>(divisor);
    const Real away =
        divisor < 0 ? -std::numeric_limits<Real>::infinity() : std::numeric_limits<Real>::infinity();
    for (int step = 0; step < 8; ++step) {
        if (isExact(factor, divisor)) return factor;
        factor = std::nextafter(factor, away);
    }
    return std::nullopt;
}

/// 16 bits of a tap, and the tap's number.
struct HalfTap {
    std::int16_t value;
    std::uint32_t number;
};

/// Adds the groups of one half of the taps to a plan, two by two.
void addPairs(ConvolutionPlan& plan, std::vector<HalfTap>& taps) {
    std::stable_sort(taps.begin(), taps.end(),
                     [](const HalfTap& a, const HalfTap& b) { return a.value < b.value; });
    bool second = false;
    for (std::size_t i = 0; i < taps.size();) {
        std::size_t end = i + 1;
        while (end < taps.size() && taps[end].value == taps[i].value && end - i < largestGroup) ++end;
        const auto word = static_cast<std::uint16_t>(taps[i].value);
        const auto count = static_cast<std::uint32_t>(end - i);
        if (second) {
            plan.pairs.back().taps |= std::uint32_t{word} << 16;
            plan.pairs.back().secondCount = count;
        } else {
            plan.pairs.push_back({word, count, 0});
        }
        second = !second;
        for (; i < end; ++i) plan.order.push_back(taps[i].number);
    }
}

} // namespace

ExactQuotient exactQuotient(std::int32_t divisor, std::int64_t largestSum) {
    const std::optional<float> single = exactFactor<float>(divisor);
    // In double precision every sum is exact, and the quotients before and at a multiple are at least 2^-39
    // of themselves apart, so that the reciprocal or the number after it always serves.
    const double twice = exactFactor<double>(divisor).value();
    // Below -2^23 a quotient in floats would leave the numbers whose last place is 1 for those below zero,
    // whose bits, seen as integers, fall.
    const bool isSmall = largestSum >> 22 < std::abs(std::int64_t{divisor});
    return {divisor, single.has_value() && isSmall, single.value_or(0), twice};
}

ConvolutionPlan convolutionPlan(std::span<const std::int32_t> taps, std::int32_t divisor) {
    ConvolutionPlan plan;
    std::int64_t magnitudes = 0; // taps are less than 2^32 in number, so their sum stays below 2^63
    for (const std::int32_t tap : taps) magnitudes += std::abs(std::int64_t{tap});
    constexpr std::int64_t most = std::int64_t{1} << 31; // sums wrap
    plan.quotient = exactQuotient(divisor, std::min(std::min(magnitudes, most) * 255, most));
    std::vector<HalfTap> high;
    std::vector<HalfTap> low;
    for (std::uint32_t i = 0; i < taps.size(); ++i) {
        // tap = low + 65536 · high, both in 16 bits with a sign; a high half of 2^15 wraps, as the sums do.
        const auto lowHalf = static_cast<std::int16_t>(taps[i] & 0xFFFF);
        const auto highHalf = static_cast<std::int16_t>((std::int64_t{taps[i]} - lowHalf) / 65536);
        if (lowHalf != 0) low.push_back({lowHalf, i});
        if (highHalf != 0) high.push_back({highHalf, i});
    }
    addPairs(plan, high);
    plan.highPairs = plan.pairs.size();
    addPairs(plan, low);
    return plan;
}

void widenSamples(const std::uint8_t* source, WideSample* destination, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(widen)(source, destination, count);
}

void narrowSamples(const WideSample* source, std::uint8_t* destination, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(narrow)(source, destination, count);
}

void convolveSamples(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets, const WideSample* source,
                     WideSample* destination, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(convolveWide)(plan, offsets, source, destination, count);
}

void convolveSamples(const ConvolutionPlan& plan, const std::ptrdiff_t* offsets, const WideSample* source,
                     std::uint8_t* destination, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(convolveNarrow)(plan, offsets, source, destination, count);
}

} // namespace Imaging
#endif
