// The hue adjustment one pixel after another, in double precision: what the vector code is compared with.

#include "Imaging/Pixels/HueAdjustPlain.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace Imaging::Plain {

namespace {

/// The hue in sextants of a pixel whose samples are not all equal.
double hueOf(double r, double g, double b, double largest, double range) {
    if (largest == r) return (g - b) / range;
    if (largest == g) return (b - r) / range + 2;
    return (r - g) / range + 4;
}

/// Both workers: of pixels of four samples the last one is alpha.
template<class Pixel>
void adjustHues(const HueAdjustRecord& record) {
    constexpr std::size_t samples = Pixel::sampleCount;
    forEachRow(record, [&](std::int64_t row) {
        const std::uint8_t* from = sourceRow(record, row);
        std::uint8_t* to = destinationRow(record, row);
        for (std::int32_t x = 0; x < record.width; ++x, from += samples, to += samples) {
            adjustHue(record.hueShift, from, to);
            if constexpr (samples == 4) to[3] = from[3];
        }
    });
}

} // namespace

void adjustHue(double hueShift, const std::uint8_t* source, std::uint8_t* destination) {
    const double r = source[0];
    const double g = source[1];
    const double b = source[2];
    const double largest = std::max(b, std::max(g, r));
    const double range = largest - std::min(std::min(r, g), b);
    std::copy_n(source, 3, destination);
    if (range == 0) return; // black or gray

    const double saturation = range / largest;
    double x = hueShift + hueOf(r, g, b, largest, range);
    if (x >= 6) x -= 6;
    if (x < 0) x += 6;
    if (!(x >= 0 && x < 6)) return; // one turn is all that is undone

    // The largest sample and the smallest, p, stay; the one between falls (q) in odd sextants and rises (t)
    // in even ones.
    const double sextant = std::floor(x);
    const double fraction = x - sextant;
    const auto byte = [](double value) { return static_cast<std::uint8_t>(value); };
    const std::uint8_t v = byte(largest);
    const std::uint8_t p = byte((1 - saturation) * largest);
    const std::uint8_t q = byte((1 - saturation * fraction) * largest);
    const std::uint8_t t = byte((1 - (1 - fraction) * saturation) * largest);
    const std::array<std::array<std::uint8_t, 3>, 6> turned = {
        {{v, t, p}, {q, v, p}, {p, v, t}, {p, q, v}, {t, p, v}, {v, p, q}}};
    std::copy_n(turned[static_cast<std::size_t>(sextant)].begin(), 3, destination);
}

void hue_adjust_rgb(const HueAdjustRecord& record) { adjustHues<RGBPixel>(record); }

void hue_adjust_rgba(const HueAdjustRecord& record) { adjustHues<RGBAPixel>(record); }

} // namespace Imaging::Plain
