#include "Imaging/Pixels/ColorTransformPlain.h"

#include "Imaging/Pixels/PixelWorkers.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Imaging {

namespace {

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

} // namespace Imaging

namespace Imaging::Plain {

namespace {

/// The hue in sextants of a pixel whose samples are not all equal.
double hueOf(double r, double g, double b, double largest, double range) {
    if (largest == r) return (g - b) / range;
    if (largest == g) return (b - r) / range + 2;
    return (r - g) / range + 4;
}

template<int samples>
void adjustHues(const HueAdjustRecord& record) {
    forEachRow(record, [&](std::size_t row) {
        const std::uint8_t* from = record.source + row * record.sourceRowLength;
        std::uint8_t* to = record.destination + row * record.destinationRowLength;
        for (std::int32_t x = 0; x < record.width; ++x, from += samples, to += samples) {
            adjustHue(record.hueShift, from, to);
            if constexpr (samples == 4) to[3] = from[3];
        }
    });
}

} // namespace

void color_transform(const ColorTransformRecord& record) {
    forEachRow(record, [&](std::size_t row) {
        const std::uint8_t* from = record.source + row * record.sourceRowLength;
        std::uint8_t* to = record.destination + row * record.destinationRowLength;
        for (std::int32_t x = 0; x < record.width; ++x, from += 3, to += 3) {
            to[0] = multiplied(from[0], record.redMultiplier);
            to[1] = multiplied(from[1], record.greenMultiplier);
            to[2] = multiplied(from[2], record.blueMultiplier);
        }
    });
}

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

void hue_adjust_rgb(const HueAdjustRecord& record) { adjustHues<3>(record); }

void hue_adjust_rgba(const HueAdjustRecord& record) { adjustHues<4>(record); }

} // namespace Imaging::Plain
