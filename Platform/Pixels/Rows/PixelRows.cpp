// The routines in vector code, compiled once for each instruction set; the best one that the processor has
// is chosen at the first call. What is left of a row is done by the plain code.

#include "Platform/Pixels/Rows/PixelRows.h"

#include "Platform/Pixels/Rows/PlainPixelRows.h"

#include <bit>

// Everything between the two namespace markers is compiled once for each kind of vector unit.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Platform/Pixels/Rows/PixelRows.cpp"
#include "hwy/foreach_target.h" // IWYU pragma: keep

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace Imaging::Platform {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR // vectors of one byte, which no pixel fits in

const PixelRowRoutines& routines() { return plainPixelRows(); }

#else

namespace hn = hwy::HWY_NAMESPACE;
using std::size_t;
using std::uint32_t;
using std::uint8_t;

using Bytes = hn::ScalableTag<uint8_t>;
using Halves = hn::Repartition<std::uint16_t, Bytes>;
using Words = hn::Repartition<uint32_t, Bytes>;
using Floats = hn::Repartition<float, Bytes>;
using Integers = hn::Repartition<std::int32_t, Bytes>;
using ByteVector = hn::Vec<Bytes>;
using HalfVector = hn::Vec<Halves>;
using WordVector = hn::Vec<Words>;

// Pixels of four bytes are taken as words whose lowest byte is the first in memory.
HWY_INLINE WordVector loadPixels(const uint8_t* bytes) {
    return hn::BitCast(Words(), hn::LoadU(Bytes(), bytes));
}

HWY_INLINE void storePixels(WordVector pixels, uint8_t* bytes) {
    hn::StoreU(hn::BitCast(Bytes(), pixels), Bytes(), bytes);
}

HWY_INLINE uint8_t* bytesOf(uint32_t* words) { return reinterpret_cast<uint8_t*>(words); }

void rgbToRgba(const uint8_t* rgb, uint8_t* rgba, size_t count) {
    const Bytes d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= count; i += step) {
        ByteVector r;
        ByteVector g;
        ByteVector b;
        hn::LoadInterleaved3(d, rgb + 3 * i, r, g, b);
        hn::StoreInterleaved4(r, g, b, hn::Set(d, 255), d, rgba + 4 * i);
    }
    plainPixelRows().rgbToRgba(rgb + 3 * i, rgba + 4 * i, count - i);
}

void rgbToWords(const uint8_t* rgb, uint32_t* words, size_t count) {
    const Bytes d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= count; i += step) {
        ByteVector r;
        ByteVector g;
        ByteVector b;
        hn::LoadInterleaved3(d, rgb + 3 * i, r, g, b);
        hn::StoreInterleaved4(b, g, r, hn::Set(d, 255), d, bytesOf(words + i));
    }
    plainPixelRows().rgbToWords(rgb + 3 * i, words + i, count - i);
}

void rgbaToRgb(const uint8_t* rgba, uint8_t* rgb, size_t count) {
    const Bytes d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= count; i += step) {
        ByteVector r;
        ByteVector g;
        ByteVector b;
        ByteVector a;
        hn::LoadInterleaved4(d, rgba + 4 * i, r, g, b, a);
        hn::StoreInterleaved3(r, g, b, d, rgb + 3 * i);
    }
    plainPixelRows().rgbaToRgb(rgba + 4 * i, rgb + 3 * i, count - i);
}

/// The vectors of gray pixels, whose bytes are the same in RGBA and in words. Returns how many were done.
HWY_INLINE size_t spreadGray(const uint8_t* gray, uint8_t* pixels, size_t count) {
    const Bytes d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= count; i += step) {
        const ByteVector g = hn::LoadU(d, gray + i);
        hn::StoreInterleaved4(g, g, g, hn::Set(d, 255), d, pixels + 4 * i);
    }
    return i;
}

HWY_INLINE size_t spreadGrayAlpha(const uint8_t* grayAlpha, uint8_t* pixels, size_t count) {
    const Bytes d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= count; i += step) {
        ByteVector g;
        ByteVector a;
        hn::LoadInterleaved2(d, grayAlpha + 2 * i, g, a);
        hn::StoreInterleaved4(g, g, g, a, d, pixels + 4 * i);
    }
    return i;
}

void grayToRgba(const uint8_t* gray, uint8_t* rgba, size_t count) {
    const size_t done = spreadGray(gray, rgba, count);
    plainPixelRows().grayToRgba(gray + done, rgba + 4 * done, count - done);
}

void grayToWords(const uint8_t* gray, uint32_t* words, size_t count) {
    const size_t done = spreadGray(gray, bytesOf(words), count);
    plainPixelRows().grayToWords(gray + done, words + done, count - done);
}

void grayAlphaToRgba(const uint8_t* grayAlpha, uint8_t* rgba, size_t count) {
    const size_t done = spreadGrayAlpha(grayAlpha, rgba, count);
    plainPixelRows().grayAlphaToRgba(grayAlpha + 2 * done, rgba + 4 * done, count - done);
}

void grayAlphaToWords(const uint8_t* grayAlpha, uint32_t* words, size_t count) {
    const size_t done = spreadGrayAlpha(grayAlpha, bytesOf(words), count);
    plainPixelRows().grayAlphaToWords(grayAlpha + 2 * done, words + done, count - done);
}

// What is done to each pixel of four bytes by itself.

struct MakeOpaque {
    HWY_INLINE WordVector operator()(WordVector rgba) const {
        return hn::Or(rgba, hn::Set(Words(), 0xFF000000u));
    }
};

struct InvertColors {
    HWY_INLINE WordVector operator()(WordVector rgba) const {
        return hn::Xor(rgba, hn::Set(Words(), 0x00FFFFFFu));
    }
};

struct SwapRedAndBlue {
    HWY_INLINE WordVector operator()(WordVector pixels) const {
        const WordVector mask = hn::Set(Words(), 0x00FF00FFu);
        return hn::Or(hn::AndNot(mask, pixels), hn::RotateRight<16>(hn::And(mask, pixels)));
    }
};

struct AlphaToFront {
    HWY_INLINE WordVector operator()(WordVector rgba) const { return hn::RotateRight<24>(rgba); }
};

struct AlphaToBack {
    HWY_INLINE WordVector operator()(WordVector argb) const { return hn::RotateRight<8>(argb); }
};

/// product / 255 rounded to nearest for products of two bytes: with t = product + 128 that is
/// (t + t / 256) / 256.
HWY_INLINE HalfVector dividedBy255(HalfVector product) {
    const HalfVector t = hn::Add(product, hn::Set(Halves(), 128));
    return hn::ShiftRight<8>(hn::Add(t, hn::ShiftRight<8>(t)));
}

struct Premultiply {
    HWY_INLINE WordVector operator()(WordVector straight) const {
        const Words d;
        const Halves h;
        const WordVector low = hn::Set(d, 0x00FF00FFu);
        const WordVector a = hn::ShiftRight<24>(straight);
        const HalfVector alpha = hn::BitCast(h, hn::Or(a, hn::ShiftLeft<16>(a)));
        const WordVector redBlue = hn::And(straight, low);
        // In alpha's place stands 255, of which alpha parts are alpha.
        const WordVector green =
            hn::Or(hn::And(hn::ShiftRight<8>(straight), hn::Set(d, 0xFFu)), hn::Set(d, 0x00FF0000u));
        const HalfVector rb = dividedBy255(hn::Mul(hn::BitCast(h, redBlue), alpha));
        const HalfVector ga = dividedBy255(hn::Mul(hn::BitCast(h, green), alpha));
        return hn::Or(hn::BitCast(d, rb), hn::ShiftLeft<8>(hn::BitCast(d, ga)));
    }
};

struct Unmultiply {
    HWY_INLINE WordVector operator()(WordVector rgba) const {
        const Words d;
        const Integers integers;
        const Floats floats;
        const WordVector alpha = hn::ShiftRight<24>(rgba);
        const auto divisor = hn::ConvertTo(floats, hn::BitCast(integers, hn::Max(alpha, hn::Set(d, 1u))));
        // Too large by 2^-20, many times what is lost by rounding, so that no quotient comes out below a
        // whole number that it should reach; the next whole number is farther away, by at least 2^-16.
        const auto reciprocal = hn::Div(hn::Set(floats, 1.0F + 0x1p-20F), divisor);
        const WordVector half = hn::ShiftRight<1>(alpha);
        const WordVector r = quotient(hn::And(rgba, hn::Set(d, 0xFFu)), half, reciprocal);
        const WordVector g = quotient(hn::And(hn::ShiftRight<8>(rgba), hn::Set(d, 0xFFu)), half, reciprocal);
        const WordVector b = quotient(hn::And(hn::ShiftRight<16>(rgba), hn::Set(d, 0xFFu)), half, reciprocal);
        const WordVector color = hn::Or(r, hn::Or(hn::ShiftLeft<8>(g), hn::ShiftLeft<16>(b)));
        const auto transparent = hn::Eq(alpha, hn::Zero(d));
        return hn::Or(hn::IfThenZeroElse(transparent, color), hn::ShiftLeft<24>(alpha));
    }

private:
    static HWY_INLINE WordVector quotient(WordVector color, WordVector half, hn::Vec<Floats> reciprocal) {
        const Words d;
        const Integers integers;
        const WordVector dividend = hn::Add(hn::Sub(hn::ShiftLeft<8>(color), color), half);
        const auto quotient = hn::Mul(hn::ConvertTo(Floats(), hn::BitCast(integers, dividend)), reciprocal);
        return hn::Min(hn::BitCast(d, hn::ConvertTo(integers, quotient)), hn::Set(d, 255u));
    }
};

/// The vectors of a row. Returns how many pixels were done.
template<class Change>
HWY_INLINE size_t changePixels(const uint8_t* from, uint8_t* to, size_t count, const Change& change) {
    const size_t step = hn::Lanes(Words());
    size_t i = 0;
    for (; i + step <= count; i += step) storePixels(change(loadPixels(from + 4 * i)), to + 4 * i);
    return i;
}

void rgbaToOpaque(const uint8_t* rgba, uint8_t* opaque, size_t count) {
    const size_t done = changePixels(rgba, opaque, count, MakeOpaque());
    plainPixelRows().rgbaToOpaque(rgba + 4 * done, opaque + 4 * done, count - done);
}

void invertColors(const uint8_t* rgba, uint8_t* inverted, size_t count) {
    const size_t done = changePixels(rgba, inverted, count, InvertColors());
    plainPixelRows().invertColors(rgba + 4 * done, inverted + 4 * done, count - done);
}

void rgbaToWords(const uint8_t* rgba, uint32_t* words, size_t count) {
    const size_t done = changePixels(rgba, bytesOf(words), count, SwapRedAndBlue());
    plainPixelRows().rgbaToWords(rgba + 4 * done, words + done, count - done);
}

void wordsToRgba(const uint32_t* words, uint8_t* rgba, size_t count) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(words);
    const size_t done = changePixels(bytes, rgba, count, SwapRedAndBlue());
    plainPixelRows().wordsToRgba(words + done, rgba + 4 * done, count - done);
}

void rgbaToArgb(const uint8_t* rgba, uint8_t* argb, size_t count) {
    const size_t done = changePixels(rgba, argb, count, AlphaToFront());
    plainPixelRows().rgbaToArgb(rgba + 4 * done, argb + 4 * done, count - done);
}

void argbToRgba(const uint8_t* argb, uint8_t* rgba, size_t count) {
    const size_t done = changePixels(argb, rgba, count, AlphaToBack());
    plainPixelRows().argbToRgba(argb + 4 * done, rgba + 4 * done, count - done);
}

void premultiply(const uint8_t* straight, uint8_t* rgba, size_t count) {
    const size_t done = changePixels(straight, rgba, count, Premultiply());
    plainPixelRows().premultiply(straight + 4 * done, rgba + 4 * done, count - done);
}

void unmultiply(const uint8_t* rgba, uint8_t* straight, size_t count) {
    const size_t done = changePixels(rgba, straight, count, Unmultiply());
    plainPixelRows().unmultiply(rgba + 4 * done, straight + 4 * done, count - done);
}

/// Gray of the bytes in the lower or the upper halves. sum / 100 is sum · ⌈2^22 / 100⌉ / 2^22 for sums below
/// 2^15.
HWY_INLINE HalfVector grayOfHalves(HalfVector r, HalfVector g, HalfVector b) {
    const Halves h;
    const HalfVector colors = hn::Add(hn::Mul(r, hn::Set(h, 30)), hn::Mul(g, hn::Set(h, 59)));
    const HalfVector sum = hn::Add(hn::Add(colors, hn::Mul(b, hn::Set(h, 11))), hn::Set(h, 50));
    return hn::ShiftRight<6>(hn::MulHigh(sum, hn::Set(h, 41944)));
}

HWY_INLINE ByteVector grayOfBytes(ByteVector r, ByteVector g, ByteVector b) {
    const Halves h;
    const HalfVector low = hn::Set(h, 0xFF);
    const HalfVector r2 = hn::BitCast(h, r);
    const HalfVector g2 = hn::BitCast(h, g);
    const HalfVector b2 = hn::BitCast(h, b);
    const HalfVector even = grayOfHalves(hn::And(r2, low), hn::And(g2, low), hn::And(b2, low));
    const HalfVector odd = grayOfHalves(hn::ShiftRight<8>(r2), hn::ShiftRight<8>(g2), hn::ShiftRight<8>(b2));
    return hn::BitCast(Bytes(), hn::Or(even, hn::ShiftLeft<8>(odd)));
}

void rgbaToGray(const uint8_t* rgba, uint8_t* gray, size_t count) {
    const Bytes d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= count; i += step) {
        ByteVector r;
        ByteVector g;
        ByteVector b;
        ByteVector a;
        hn::LoadInterleaved4(d, rgba + 4 * i, r, g, b, a);
        hn::StoreU(grayOfBytes(r, g, b), d, gray + i);
    }
    plainPixelRows().rgbaToGray(rgba + 4 * i, gray + i, count - i);
}

void rgbaToGrayAlpha(const uint8_t* rgba, uint8_t* grayAlpha, size_t count) {
    const Bytes d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= count; i += step) {
        ByteVector r;
        ByteVector g;
        ByteVector b;
        ByteVector a;
        hn::LoadInterleaved4(d, rgba + 4 * i, r, g, b, a);
        hn::StoreInterleaved2(grayOfBytes(r, g, b), a, d, grayAlpha + 2 * i);
    }
    plainPixelRows().rgbaToGrayAlpha(rgba + 4 * i, grayAlpha + 2 * i, count - i);
}

/// (sample + 128) / 257: the sum may stop at 65535, of which the quotient is 255 already, and a quotient by
/// 257 is a product with ⌈2^24 / 257⌉, divided by 2^24.
HWY_INLINE HalfVector narrowed(HalfVector samples) {
    const Halves h;
    const HalfVector sum = hn::SaturatedAdd(samples, hn::Set(h, 128));
    return hn::ShiftRight<8>(hn::MulHigh(sum, hn::Set(h, 65281)));
}

void narrow(const uint8_t* samples, uint8_t* bytes, size_t count) {
    const Halves h;
    const hn::Rebind<uint8_t, Halves> narrower;
    const hn::RebindToSigned<Halves> nonNegative; // what bytes can be made of
    const size_t step = hn::Lanes(h);
    size_t i = 0;
    for (; i + step <= count; i += step) {
        const HalfVector wide = hn::BitCast(h, hn::LoadU(Bytes(), samples + 2 * i));
        hn::StoreU(hn::DemoteTo(narrower, hn::BitCast(nonNegative, narrowed(wide))), narrower, bytes + i);
    }
    plainPixelRows().narrow(samples + 2 * i, bytes + i, count - i);
}

const PixelRowRoutines& routines() {
    // In the order of the declarations.
    static constexpr PixelRowRoutines all = {
        rgbToRgba,        rgbToWords,      grayToRgba,   grayToWords, rgbaToOpaque, grayAlphaToRgba,
        grayAlphaToWords, rgbaToRgb,       rgbaToWords,  wordsToRgba, rgbaToArgb,   argbToRgba,
        rgbaToGray,       rgbaToGrayAlpha, invertColors, premultiply, unmultiply,   narrow};
    return all;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Imaging::Platform
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Imaging::Platform {

HWY_EXPORT(routines);

const PixelRowRoutines& pixelRows() {
    if constexpr (std::endian::native != std::endian::little) return plainPixelRows();
    return HWY_DYNAMIC_DISPATCH(routines)();
}

} // namespace Imaging::Platform
#endif
