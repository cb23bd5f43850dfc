// Whole-number arithmetic on samples, written once for 8 and 16 bits.

#include "Platform/Codecs/Support/SampleConversion.h"

#include <algorithm>
#include <limits>

namespace Imaging::Platform {

namespace {

template<class Sample>
constexpr std::uint32_t largest = std::numeric_limits<Sample>::max();

/// Products of two 16-bit samples and what is added for rounding fit in 32 bits: 65535 * 65535 + 32767.
template<class Sample>
Sample product(std::uint32_t a, std::uint32_t b) {
    return static_cast<Sample>((a * b + largest<Sample> / 2) / largest<Sample>);
}

template<class Sample>
Sample quotient(std::uint32_t color, std::uint32_t alpha) {
    if (alpha == 0) return 0;
    const std::uint32_t straight = (color * largest<Sample> + alpha / 2) / alpha;
    return static_cast<Sample>(std::min(straight, largest<Sample>));
}

/// Calls `visit` with the row's samples, typed.
template<class Visit>
void withSamples(const PictureHeader& header, std::uint8_t* row, Visit visit) {
    if (header.bitsPerSample == 16) {
        visit(static_cast<std::uint16_t*>(static_cast<void*>(row)));
    } else {
        visit(row);
    }
}

template<class Visit>
void withSamples(const PictureHeader& header, const std::uint8_t* row, Visit visit) {
    if (header.bitsPerSample == 16) {
        visit(static_cast<const std::uint16_t*>(static_cast<const void*>(row)));
    } else {
        visit(row);
    }
}

/// Replaces each colour sample by `change(sample, alpha)`. The count of colours is a constant to the
/// compiler.
template<int colors, class Sample, class Change>
void changeColors(Sample* pixel, std::size_t width, Change change) {
    for (std::size_t x = 0; x < width; ++x, pixel += colors + 1) {
        for (int i = 0; i < colors; ++i) pixel[i] = change(pixel[i], pixel[colors]);
    }
}

template<class Sample, class Change>
void changeColors(const PictureHeader& header, Sample* row, Change change) {
    if (header.colorSamples() == 3) {
        changeColors<3>(row, header.width, change);
    } else {
        changeColors<1>(row, header.width, change);
    }
}

} // namespace

void premultiplyRow(const PictureHeader& header, std::uint8_t* row) {
    if (!header.hasAlpha) return;
    withSamples(header, row, [&]<class Sample>(Sample* samples) {
        changeColors(header, samples,
                     [](Sample color, Sample alpha) { return product<Sample>(color, alpha); });
    });
}

void unpremultiplyRow(const PictureHeader& header, std::uint8_t* row) {
    if (!header.hasAlpha) return;
    withSamples(header, row, [&]<class Sample>(Sample* samples) {
        changeColors(header, samples,
                     [](Sample color, Sample alpha) { return quotient<Sample>(color, alpha); });
    });
}

void invertGrayRow(const PictureHeader& header, std::uint8_t* row, bool premultiplied) {
    withSamples(header, row, [&]<class Sample>(Sample* samples) {
        constexpr auto max = static_cast<Sample>(largest<Sample>);
        if (!header.hasAlpha) {
            std::transform(samples, samples + header.width, samples,
                           [](Sample c) { return static_cast<Sample>(max - c); });
        } else if (premultiplied) {
            changeColors<1>(samples, header.width,
                            [](Sample c, Sample a) { return static_cast<Sample>(a - std::min(c, a)); });
        } else {
            changeColors<1>(samples, header.width,
                            [](Sample c, Sample) { return static_cast<Sample>(max - c); });
        }
    });
}

void copyOpaqueBytes(const PictureHeader& header, const std::uint8_t* row, std::uint8_t* to) {
    const int colors = header.colorSamples();
    const int samplesPerPixel = header.samplesPerPixel();
    withSamples(header, row, [&]<class Sample>(const Sample* from) {
        for (std::size_t x = 0; x < header.width; ++x, from += samplesPerPixel) {
            for (int i = 0; i < colors; ++i) {
                const std::uint32_t value = from[i];
                *to++ = static_cast<std::uint8_t>(sizeof(Sample) == 1 ? value : (value + 128) / 257);
            }
        }
    });
}

void convertInks(const PictureHeader& header, const std::uint8_t* inks, bool inverted, std::uint8_t* to) {
    const int alphas = header.hasAlpha ? 1 : 0;
    withSamples(header, to, [&]<class Sample>(Sample* rgb) {
        const auto* from = static_cast<const Sample*>(static_cast<const void*>(inks));
        const std::uint32_t flip = inverted ? 0 : largest<Sample>;
        for (std::size_t x = 0; x < header.width; ++x, from += 4 + alphas, rgb += 3 + alphas) {
            const std::uint32_t black = from[3] ^ flip; // max - c, all bits of max being set
            for (int i = 0; i < 3; ++i) rgb[i] = product<Sample>(from[i] ^ flip, black);
            if (alphas != 0) rgb[3] = from[4];
        }
    });
}

} // namespace Imaging::Platform
