// The hue adjustment with vectors: bytes are sorted and put in place as bytes, only the arithmetic between is
// done in doubles. Compiled once for each kind of processor; the best one runs.

#include "Imaging/Pixels/HueAdjustVectors.h"

#include <algorithm>
#include <array>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Imaging/Pixels/HueAdjustVectors.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace Imaging::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Samples are compared and chosen as bytes; only the arithmetic between them is done in doubles, of which a
// vector holds an eighth as many.
using Bytes = hn::ScalableTag<std::uint8_t>;
using Doubles = hn::ScalableTag<double>;
using Integers = hn::Rebind<std::int32_t, Doubles>;
using FewBytes = hn::Rebind<std::uint8_t, Doubles>;
using ByteVector = hn::Vec<Bytes>;
using DoubleVector = hn::Vec<Doubles>;

constexpr std::size_t mostPixels = hn::MaxLanes(Bytes());

/// The sextant number of pixels that stay as they are.
constexpr int unchanged = 6;

/// What a block of pixels is computed from and what comes of it, a byte a pixel.
struct Block {
    using Row = std::array<std::uint8_t, mostPixels>;

    HWY_ALIGN Row largest;    ///< sample
    HWY_ALIGN Row range;      ///< largest − smallest sample
    HWY_ALIGN Row minuend;    ///< hue = (minuend − subtrahend) / range + base
    HWY_ALIGN Row subtrahend; ///<
    HWY_ALIGN Row base;       ///<
    HWY_ALIGN Row sextant;    ///< after the shift, or `unchanged`
    HWY_ALIGN Row smallest;   ///< the new smallest sample
    HWY_ALIGN Row middle;     ///< the new sample between
};

HWY_INLINE hn::Vec<Integers> integersAt(const std::uint8_t* bytes) {
    return hn::PromoteTo(Integers(), hn::LoadU(FewBytes(), bytes));
}

HWY_INLINE DoubleVector doublesAt(const std::uint8_t* bytes) {
    return hn::PromoteTo(Doubles(), integersAt(bytes));
}

/// Conversions to integers truncate toward zero, as those of the plain worker do.
HWY_INLINE void storeTruncated(DoubleVector values, std::uint8_t* bytes) {
    hn::StoreU(hn::DemoteTo(FewBytes(), hn::DemoteTo(Integers(), values)), FewBytes(), bytes);
}

/// The arithmetic for one vector of doubles at pixel `i` of a block: each operation of the plain worker in
/// its order. Where the range is 0 the hue is 0 / 0, which no sextant holds.
HWY_INLINE void turnHues(DoubleVector shift, Block& block, std::size_t i) {
    const Doubles d;
    const auto one = hn::Set(d, 1.0);
    const auto turn = hn::Set(d, 6.0);
    const auto largest = doublesAt(&block.largest[i]);
    const auto range = doublesAt(&block.range[i]);
    const auto difference =
        hn::PromoteTo(d, hn::Sub(integersAt(&block.minuend[i]), integersAt(&block.subtrahend[i])));
    const auto hue = hn::Add(hn::Div(difference, range), doublesAt(&block.base[i]));

    auto x = hn::Add(shift, hue);
    x = hn::IfThenElse(hn::Ge(x, turn), hn::Sub(x, turn), x);
    x = hn::IfThenElse(hn::Lt(x, hn::Zero(d)), hn::Add(x, turn), x);
    const auto inside = hn::And(hn::Ge(x, hn::Zero(d)), hn::Lt(x, turn));
    const auto sextant = hn::Floor(x);
    const auto fraction = hn::Sub(x, sextant);

    // In odd sextants the middle sample falls, in even ones it rises. The lowest bit of a small whole number
    // is that of its sum with 2^52.
    const hn::RebindToUnsigned<Doubles> words;
    const auto bits = hn::BitCast(words, hn::Add(sextant, hn::Set(d, 4503599627370496.0)));
    const auto odd = hn::RebindMask(d, hn::TestBit(bits, hn::Set(words, 1)));
    const auto share = hn::IfThenElse(odd, fraction, hn::Sub(one, fraction));
    const auto saturation = hn::Div(range, largest);
    const auto smallest = hn::Mul(hn::Sub(one, saturation), largest);
    const auto middle = hn::Mul(hn::Sub(one, hn::Mul(saturation, share)), largest);
    storeTruncated(hn::IfThenElse(inside, sextant, hn::Set(d, unchanged)), &block.sextant[i]);
    storeTruncated(hn::IfThenElseZero(inside, smallest), &block.smallest[i]);
    storeTruncated(hn::IfThenElseZero(inside, middle), &block.middle[i]);
}

/// The first part, on bytes: which samples are what.
HWY_INLINE ByteVector prepare(ByteVector r, ByteVector g, ByteVector b, Block& block) {
    const Bytes d;
    const auto largest = hn::Max(b, hn::Max(g, r));
    const auto range = hn::Sub(largest, hn::Min(hn::Min(r, g), b));
    const auto redIsLargest = hn::Eq(largest, r);
    const auto greenIsLargest = hn::Eq(largest, g);
    const auto choose = [&](ByteVector forRed, ByteVector forGreen, ByteVector forBlue) HWY_ATTR {
        return hn::IfThenElse(redIsLargest, forRed, hn::IfThenElse(greenIsLargest, forGreen, forBlue));
    };
    hn::StoreU(largest, d, block.largest.data());
    hn::StoreU(range, d, block.range.data());
    hn::StoreU(choose(g, b, r), d, block.minuend.data());
    hn::StoreU(choose(b, r, g), d, block.subtrahend.data());
    hn::StoreU(choose(hn::Zero(d), hn::Set(d, 2), hn::Set(d, 4)), d, block.base.data());
    return largest;
}

/// The last part, on bytes: the samples of each sextant in their places.
HWY_INLINE void place(const Block& block, ByteVector largest, ByteVector& r, ByteVector& g, ByteVector& b) {
    const Bytes d;
    const auto sextant = hn::LoadU(d, block.sextant.data());
    const auto smallest = hn::LoadU(d, block.smallest.data());
    const auto middle = hn::LoadU(d, block.middle.data());
    const auto in = [&](int number)
                        HWY_ATTR { return hn::Eq(sextant, hn::Set(d, static_cast<std::uint8_t>(number))); };
    const auto put = [&](hn::Mask<Bytes> where, ByteVector newR, ByteVector newG, ByteVector newB) HWY_ATTR {
        r = hn::IfThenElse(where, newR, r);
        g = hn::IfThenElse(where, newG, g);
        b = hn::IfThenElse(where, newB, b);
    };
    put(in(0), largest, middle, smallest);
    put(in(1), middle, largest, smallest);
    put(in(2), smallest, largest, middle);
    put(in(3), smallest, middle, largest);
    put(in(4), middle, smallest, largest);
    put(in(5), largest, smallest, middle);
}

/// As many pixels as a vector has bytes.
template<class Pixel>
HWY_INLINE void adjustBlock(const std::uint8_t* source, DoubleVector shift, std::uint8_t* destination) {
    constexpr std::size_t samples = Pixel::sampleCount;
    const Bytes d;
    ByteVector r;
    ByteVector g;
    ByteVector b;
    ByteVector a = hn::Zero(d);
    if constexpr (samples == 3) hn::LoadInterleaved3(d, source, r, g, b);
    if constexpr (samples == 4) hn::LoadInterleaved4(d, source, r, g, b, a);
    Block block;
    const auto largest = prepare(r, g, b, block);
    for (std::size_t i = 0; i < hn::Lanes(d); i += hn::Lanes(Doubles())) turnHues(shift, block, i);
    place(block, largest, r, g, b);
    if constexpr (samples == 3) hn::StoreInterleaved3(r, g, b, d, destination);
    if constexpr (samples == 4) hn::StoreInterleaved4(r, g, b, a, d, destination);
}

template<class Pixel>
HWY_INLINE void adjustRow(const std::uint8_t* source, float hueShift, std::size_t width,
                          std::uint8_t* destination) {
    constexpr std::size_t samples = Pixel::sampleCount;
    const auto shift = hn::Set(Doubles(), double{hueShift});
    const std::size_t pixels = hn::Lanes(Bytes());
    std::size_t x = 0;
    for (; x + pixels <= width; x += pixels) {
        adjustBlock<Pixel>(source + x * samples, shift, destination + x * samples);
    }
    if (x == width) return;
    // What is left over goes through a block of its own, so that nothing beyond the row is touched.
    std::array<std::uint8_t, samples * mostPixels> rest{};
    std::copy_n(source + x * samples, (width - x) * samples, rest.begin());
    adjustBlock<Pixel>(rest.data(), shift, rest.data());
    std::copy_n(rest.begin(), (width - x) * samples, destination + x * samples);
}

HWY_ATTR void adjustRowRGB(const std::uint8_t* source, float hueShift, std::size_t width,
                           std::uint8_t* destination) {
    adjustRow<RGBPixel>(source, hueShift, width, destination);
}

HWY_ATTR void adjustRowRGBA(const std::uint8_t* source, float hueShift, std::size_t width,
                            std::uint8_t* destination) {
    adjustRow<RGBAPixel>(source, hueShift, width, destination);
}

} // namespace
} // namespace Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Imaging {

namespace {

HWY_EXPORT(adjustRowRGB);
HWY_EXPORT(adjustRowRGBA);

} // namespace

void hue_adjust_rgb(const HueAdjustRecord& record) {
    forEachRow(record, [&](std::int64_t row) {
        HWY_DYNAMIC_DISPATCH(adjustRowRGB)
        (sourceRow(record, row), record.hueShift, static_cast<std::size_t>(record.width),
         destinationRow(record, row));
    });
}

void hue_adjust_rgba(const HueAdjustRecord& record) {
    forEachRow(record, [&](std::int64_t row) {
        HWY_DYNAMIC_DISPATCH(adjustRowRGBA)
        (sourceRow(record, row), record.hueShift, static_cast<std::size_t>(record.width),
         destinationRow(record, row));
    });
}

} // namespace Imaging
#endif
