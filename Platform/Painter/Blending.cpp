// The formulas in vector code for every instruction set, and in plain numbers for the tests. Rows that are
// too short for a vector go through one that is filled up.

#include "Platform/Painter/Blending.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Platform/Painter/Blending.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Platform/Painter/BlendFormulas-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Imaging::Platform::HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR

void blend(const Blend& blend, const std::uint32_t* source, const std::uint8_t* coverage,
           std::uint32_t* target, std::size_t count) {
    blendRowPlain(blend, source, coverage, target, count);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Samples = hn::ScalableTag<std::int16_t>;
using Vector = hn::Vec<Samples>;
using Bytes = hn::Rebind<std::uint8_t, Samples>;

/// What the formulas need, on vectors. Sums saturate, so that sources with more colour than alpha end at
/// white.
struct VectorMath {
    using Number = Vector;

    Vector add(Vector a, Vector b) const { return hn::SaturatedAdd(a, b); }
    Vector subtract(Vector a, Vector b) const { return hn::SaturatedSub(a, b); }
    Vector scaled(Vector value, Vector factor) const { return hn::MulFixedPoint15(value, factor); }
    Vector part(Vector alpha) const { return add(alpha, scaled(alpha, hn::Set(Samples(), 128))); }
    Vector rest(Vector factor) const { return subtract(hn::Set(Samples(), Blend::one), factor); }
    Vector smaller(Vector a, Vector b) const { return hn::Min(a, b); }
    Vector larger(Vector a, Vector b) const { return hn::Max(a, b); }
    Vector zero() const { return hn::Zero(Samples()); }
    Vector full() const { return hn::Set(Samples(), 255 << 7); }
};

/// Each pixel's alpha in the place of all its four samples.
Vector alphaOf(Vector pixels) {
    static constexpr std::array<std::uint8_t, 16> places = {6,  7,  6,  7,  6,  7,  6,  7,
                                                            14, 15, 14, 15, 14, 15, 14, 15};
    const hn::Repartition<std::uint8_t, Samples> bytes;
    return hn::BitCast(
        Samples(), hn::TableLookupBytes(hn::BitCast(bytes, pixels), hn::LoadDup128(bytes, places.data())));
}

/// Bytes as samples in steps of 1/128, and back, rounded to nearest.
Vector load(const std::uint32_t* words) {
    return hn::ShiftLeft<7>(
        hn::PromoteTo(Samples(), hn::LoadU(Bytes(), reinterpret_cast<const std::uint8_t*>(words))));
}

void store(Vector samples, std::uint32_t* words) {
    const Vector rounded = hn::ShiftRight<7>(hn::SaturatedAdd(samples, hn::Set(Samples(), 64)));
    hn::StoreU(hn::DemoteTo(Bytes(), rounded), Bytes(), reinterpret_cast<std::uint8_t*>(words));
}

/// One vector's worth of pixels. `coverage` holds each pixel's byte four times.
template<NSCompositingOperation operation, bool covered>
HWY_INLINE void blendVector(Vector fraction, Vector opaque, const std::uint32_t* source,
                            const std::uint32_t* coverage, std::uint32_t* target) {
    const VectorMath math;
    const Vector s = math.scaled(load(source), fraction);
    const Vector d = hn::Or(load(target), opaque);
    Vector result = blended<operation>(math, s, alphaOf(s), d, alphaOf(d));
    if constexpr (covered) {
        result = hn::Add(d, math.scaled(hn::Sub(result, d), math.part(load(coverage))));
    }
    store(result, target);
}

template<NSCompositingOperation operation, bool covered>
void blendPixels(const Blend& blend, const std::uint32_t* source, const std::uint8_t* coverage,
                 std::uint32_t* target, std::size_t count) {
    const std::size_t step = hn::Lanes(Samples()) / 4;
    const Vector fraction = hn::Set(Samples(), blend.fraction);
    const hn::Repartition<std::uint64_t, Samples> quads;
    const Vector opaque = hn::BitCast(
        Samples(), hn::Set(quads, blend.opaqueTarget ? std::uint64_t{255 << 7} << 48 : std::uint64_t{0}));
    std::array<std::uint32_t, HWY_MAX_BYTES / 4> cover{};
    const auto spread = [&](std::size_t first, std::size_t pixels) {
        for (std::size_t i = 0; i < pixels; ++i) cover[i] = coverage[first + i] * 0x01010101U;
    };
    std::size_t x = 0;
    for (; x + step <= count; x += step) {
        if constexpr (covered) spread(x, step);
        blendVector<operation, covered>(fraction, opaque, source + x, cover.data(), target + x);
    }
    if (x == count) return;
    std::array<std::uint32_t, HWY_MAX_BYTES / 4> lastSource{};
    std::array<std::uint32_t, HWY_MAX_BYTES / 4> lastTarget{};
    std::copy(source + x, source + count, lastSource.begin());
    std::copy(target + x, target + count, lastTarget.begin());
    if constexpr (covered) spread(x, count - x);
    blendVector<operation, covered>(fraction, opaque, lastSource.data(), cover.data(), lastTarget.data());
    std::copy_n(lastTarget.begin(), count - x, target + x);
}

struct BlendPixels {
    const Blend& blend;
    const std::uint32_t* source;
    const std::uint8_t* coverage;
    std::uint32_t* target;
    std::size_t count;

    template<NSCompositingOperation operation>
    void run() const {
        if (coverage != nullptr) {
            blendPixels<operation, true>(blend, source, coverage, target, count);
        } else {
            blendPixels<operation, false>(blend, source, coverage, target, count);
        }
    }
};

void blend(const Blend& blend, const std::uint32_t* source, const std::uint8_t* coverage,
           std::uint32_t* target, std::size_t count) {
    withOperation(blend.operation, BlendPixels{blend, source, coverage, target, count});
}

#endif

} // namespace
} // namespace Imaging::Platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Imaging::Platform {

namespace {

HWY_EXPORT(blend);

// The same arithmetic on single numbers, with the rounding and saturation that vectors have.
std::int16_t saturated(int value) { return static_cast<std::int16_t>(std::clamp(value, -32768, 32767)); }

struct PlainMath {
    using Number = std::int16_t;

    Number add(Number a, Number b) const { return saturated(a + b); }
    Number subtract(Number a, Number b) const { return saturated(a - b); }
    Number scaled(Number value, Number factor) const { return saturated((value * factor + 16384) >> 15); }
    Number part(Number alpha) const { return add(alpha, scaled(alpha, 128)); }
    Number rest(Number factor) const { return subtract(Blend::one, factor); }
    Number smaller(Number a, Number b) const { return std::min(a, b); }
    Number larger(Number a, Number b) const { return std::max(a, b); }
    Number zero() const { return 0; }
    Number full() const { return 255 << 7; }
};

using Pixel = std::array<std::int16_t, 4>; // blue, green, red and alpha in steps of 1/128

Pixel unpacked(std::uint32_t word) {
    Pixel pixel;
    for (std::size_t i = 0; i < 4; ++i) pixel[i] = static_cast<std::int16_t>((word >> 8 * i & 0xff) << 7);
    return pixel;
}

std::uint32_t packed(const Pixel& pixel) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const int rounded = saturated(pixel[i] + 64) >> 7;
        word |= static_cast<std::uint32_t>(std::clamp(rounded, 0, 255)) << 8 * i;
    }
    return word;
}

/// A pixel at a time. A coverage below 0 stands for none being given.
struct BlendPlain {
    const Blend& blend;
    const std::uint32_t* source;
    const std::uint8_t* coverage;
    std::uint32_t* target;
    std::size_t count;

    template<NSCompositingOperation operation>
    void run() const {
        for (std::size_t x = 0; x < count; ++x) {
            target[x] = pixel<operation>(source[x], coverage != nullptr ? coverage[x] : -1, target[x]);
        }
    }

private:
    template<NSCompositingOperation operation>
    std::uint32_t pixel(std::uint32_t sourceWord, int cover, std::uint32_t targetWord) const {
        const PlainMath math;
        Pixel s = unpacked(sourceWord);
        for (std::int16_t& sample : s) sample = math.scaled(sample, blend.fraction);
        const Pixel d = unpacked(targetWord | (blend.opaqueTarget ? 0xff000000 : 0));
        Pixel result;
        for (std::size_t i = 0; i < 4; ++i) {
            result[i] = HWY_NAMESPACE::blended<operation>(math, s[i], s[3], d[i], d[3]);
            if (cover < 0) continue;
            const auto change = static_cast<std::int16_t>(result[i] - d[i]);
            const std::int16_t part = math.part(static_cast<std::int16_t>(cover << 7));
            result[i] = static_cast<std::int16_t>(d[i] + math.scaled(change, part));
        }
        return packed(result);
    }
};

} // namespace

std::int16_t blendFraction(double fraction) {
    const double clamped = fraction > 0 ? std::min(fraction, 1.0) : 0.0;
    return static_cast<std::int16_t>(std::lround(clamped * Blend::one));
}

void blendRow(const Blend& blend, const std::uint32_t* source, const std::uint8_t* coverage,
              std::uint32_t* target, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(blend)(blend, source, coverage, target, count);
}

void blendRowPlain(const Blend& blend, const std::uint32_t* source, const std::uint8_t* coverage,
                   std::uint32_t* target, std::size_t count) {
    HWY_NAMESPACE::withOperation(blend.operation, BlendPlain{blend, source, coverage, target, count});
}

} // namespace Imaging::Platform
#endif
