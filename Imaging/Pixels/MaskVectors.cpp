// Masking with vectors, two samples a word. Compiled once for each kind of processor; the best one runs.

#include "Imaging/Pixels/MaskVectors.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Imaging/Pixels/MaskVectors.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace Imaging::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Words = hn::ScalableTag<std::uint16_t>;
using WordVector = hn::Vec<Words>;

/// One vector of samples, two a word, each word's mask in the low byte of the same word.
HWY_INLINE void maskWords(const std::uint8_t* source, WordVector masks, std::uint8_t* destination) {
    const Words words;
    const hn::Repartition<std::uint8_t, Words> bytes;
    const auto samples = hn::BitCast(words, hn::LoadU(bytes, source));
    // Both are floors, as the plain shift is:
    // (256 · s · m) / 65536 for the low byte; the product's own high byte for the high one.
    const auto low = hn::MulHigh(hn::ShiftLeft<8>(samples), masks);
    const auto high = hn::And(hn::Mul(hn::ShiftRight<8>(samples), masks), hn::Set(words, 0xFF00));
    hn::StoreU(hn::BitCast(bytes, hn::Or(low, high)), bytes, destination);
}

/// Both return how many pixels of the row are done: as many as fill vectors.
HWY_INLINE std::size_t maskVectors(GAPixel, const std::uint8_t* source, const std::uint8_t* mask,
                                   std::size_t width, std::uint8_t* destination) {
    const Words words;
    const hn::Rebind<std::uint8_t, Words> maskBytes;
    const std::size_t lanes = hn::Lanes(words);
    std::size_t x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto masks = hn::PromoteTo(words, hn::LoadU(maskBytes, mask + x));
        maskWords(source + 2 * x, masks, destination + 2 * x);
    }
    return x;
}

HWY_INLINE std::size_t maskVectors(RGBAPixel, const std::uint8_t* source, const std::uint8_t* mask,
                                   std::size_t width, std::uint8_t* destination) {
    const Words words;
    const hn::Repartition<std::uint32_t, Words> pixels;
    const hn::Rebind<std::uint8_t, decltype(pixels)> maskBytes;
    const std::size_t lanes = hn::Lanes(pixels);
    std::size_t x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto masks = hn::PromoteTo(pixels, hn::LoadU(maskBytes, mask + x));
        // Four samples are two words, both under the same mask.
        const auto twice = hn::BitCast(words, hn::Or(masks, hn::ShiftLeft<16>(masks)));
        maskWords(source + 4 * x, twice, destination + 4 * x);
    }
    return x;
}

#else

template<class Pixel>
std::size_t maskVectors(Pixel, const std::uint8_t*, const std::uint8_t*, std::size_t, std::uint8_t*) {
    return 0;
}

#endif

/// A whole row: vectors, then what is left over sample by sample, so that nothing behind the row is touched.
template<class Pixel>
HWY_INLINE void maskSamples(const std::uint8_t* source, const std::uint8_t* mask, std::size_t width,
                            std::uint8_t* destination) {
    constexpr std::size_t samples = Pixel::sampleCount;
    const std::size_t done = maskVectors(Pixel{}, source, mask, width, destination);
    for (std::size_t i = samples * done; i < samples * width; ++i) {
        destination[i] = Plain::masked(source[i], mask[i / samples]);
    }
}

// Tables of functions for each processor hold no templates.

HWY_ATTR void maskGA(const std::uint8_t* source, const std::uint8_t* mask, std::size_t width,
                     std::uint8_t* destination) {
    maskSamples<GAPixel>(source, mask, width, destination);
}

HWY_ATTR void maskRGBA(const std::uint8_t* source, const std::uint8_t* mask, std::size_t width,
                       std::uint8_t* destination) {
    maskSamples<RGBAPixel>(source, mask, width, destination);
}

} // namespace
} // namespace Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Imaging {

namespace {

HWY_EXPORT(maskGA);
HWY_EXPORT(maskRGBA);

} // namespace

template<>
void mask_worker<GAPixel>(const MaskRecord& record) {
    forEachRow(record, [&](std::int64_t row) {
        HWY_DYNAMIC_DISPATCH(maskGA)
        (sourceRow(record, row), maskRow(record, row), static_cast<std::size_t>(record.width),
         destinationRow(record, row));
    });
}

template<>
void mask_worker<RGBAPixel>(const MaskRecord& record) {
    forEachRow(record, [&](std::int64_t row) {
        HWY_DYNAMIC_DISPATCH(maskRGBA)
        (sourceRow(record, row), maskRow(record, row), static_cast<std::size_t>(record.width),
         destinationRow(record, row));
    });
}

} // namespace Imaging
#endif
