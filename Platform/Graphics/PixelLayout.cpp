#include "Platform/Graphics/PixelLayout.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace Platform {

namespace {

template<class Sample>
constexpr std::uint32_t maximumOf = std::numeric_limits<Sample>::max();

template<class Sample>
Sample product(std::uint32_t a, std::uint32_t b) {
    return static_cast<Sample>(dividedByMaximum(a * b, Sample{}));
}

/// dividend / divisor, rounded to nearest. The dividend is a product of two samples.
template<class Sample>
Sample quotient(std::uint32_t dividend, std::uint32_t divisor) {
    return static_cast<Sample>((std::uint64_t{dividend} + divisor / 2) / divisor);
}

template<class Stored>
Stored loadSample(const std::uint8_t* bytes) {
    Stored value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

template<class Stored>
void storeSample(std::uint8_t* bytes, Stored value) {
    std::memcpy(bytes, &value, sizeof value);
}

std::uint8_t convertSample(std::uint8_t value, std::uint8_t) { return value; }
std::uint16_t convertSample(std::uint16_t value, std::uint16_t) { return value; }
std::uint16_t convertSample(std::uint8_t value, std::uint16_t) {
    return static_cast<std::uint16_t>(value * 257);
}
std::uint8_t convertSample(std::uint16_t value, std::uint8_t) {
    return static_cast<std::uint8_t>((value + 128u) / 257u);
}

/// Hands out the samples of one row, whatever their layout.
template<class Stored, class Sample>
class SampleReader {
public:
    SampleReader(const SourcePixels& pixels, std::size_t y)
        : m_pixels(pixels), m_offset(y * pixels.bytesPerRow) {}

    Sample operator()(std::size_t x, int sample) const {
        const std::size_t at = m_offset + x * m_pixels.pixelStride;
        const auto index = static_cast<std::size_t>(sample);
        const std::uint8_t* bytes =
            m_pixels.planar ? m_pixels.planes[index] + at : m_pixels.planes[0] + at + index * sizeof(Stored);
        return convertSample(loadSample<Stored>(bytes), Sample{});
    }

private:
    const SourcePixels& m_pixels;
    std::size_t m_offset;
};

/// Reads the colour samples that begin at `first` as RGB. `whole` is what stands for all of a colour: the
/// pixel's alpha where the samples are premultiplied. Premultiplied inks are stored as i·a, so what they
/// leave of the light is a − i·a.
template<class Sample, class Reader>
void readColor(const Reader& read, PixelColor color, std::size_t x, int first, std::uint32_t whole,
               Sample* rgb) {
    const auto left = [&](int i) { return whole - std::min<std::uint32_t>(read(x, first + i), whole); };
    switch (color) {
    case PixelColor::Gray:
        rgb[0] = rgb[1] = rgb[2] = read(x, first);
        break;
    case PixelColor::InvertedGray:
        rgb[0] = rgb[1] = rgb[2] = static_cast<Sample>(left(0));
        break;
    case PixelColor::RGB:
        for (int i = 0; i < 3; ++i) rgb[i] = read(x, first + i);
        break;
    case PixelColor::CMYK:
        for (int i = 0; i < 3; ++i) rgb[i] = whole == 0 ? 0 : quotient<Sample>(left(i) * left(3), whole);
        break;
    }
}

template<class Stored, class Sample>
void readRowOf(const SourcePixels& pixels, const PixelLayout& layout, std::size_t y, Sample* rgba) {
    const SampleReader<Stored, Sample> read(pixels, y);
    const int first = layout.alphaStandsFirst() ? 1 : 0;
    const int alphaIndex = layout.alpha == PixelAlpha::First ? 0 : layout.colorSamples();
    for (std::size_t x = 0; x < pixels.width; ++x, rgba += 4) {
        rgba[3] = layout.hasAlpha() ? read(x, alphaIndex) : static_cast<Sample>(maximumOf<Sample>);
        const std::uint32_t whole = layout.premultiplied ? rgba[3] : maximumOf<Sample>;
        readColor<Sample>(read, layout.color, x, first, whole, rgba);
        if (layout.premultiplied) continue;
        for (int i = 0; i < 3; ++i) rgba[i] = product<Sample>(rgba[i], rgba[3]);
    }
}

template<class Sample>
Sample grayOf(const Sample* rgba) {
    const std::uint32_t sum = 30u * rgba[0] + 59u * rgba[1] + 11u * rgba[2];
    return static_cast<Sample>((sum + 50) / 100);
}

template<class Sample>
Sample unmultiplied(std::uint32_t value, std::uint32_t alpha) {
    if (alpha == 0) return 0;
    const std::uint64_t scaled = (std::uint64_t{value} * maximumOf<Sample> + alpha / 2) / alpha;
    return static_cast<Sample>(std::min<std::uint64_t>(scaled, maximumOf<Sample>));
}

/// The colour samples of one pixel as the layout wants them; returns how many there are.
template<class Sample>
int layOutColor(const PixelLayout& layout, const Sample* rgba, Sample* samples) {
    int count = 3;
    if (layout.color == PixelColor::RGB) {
        std::copy(rgba, rgba + 3, samples);
    } else {
        samples[0] = grayOf(rgba);
        count = 1;
    }
    const bool unmultiply = layout.hasAlpha() && !layout.premultiplied;
    const std::uint32_t whole = layout.hasAlpha() && layout.premultiplied ? rgba[3] : maximumOf<Sample>;
    for (int i = 0; i < count; ++i) {
        if (unmultiply) samples[i] = unmultiplied<Sample>(samples[i], rgba[3]);
        if (layout.color == PixelColor::InvertedGray) {
            samples[i] = static_cast<Sample>(whole - std::min<std::uint32_t>(samples[i], whole));
        }
    }
    return count;
}

template<class Stored, class Sample>
void writeRowOf(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y, const Sample* rgba) {
    std::uint8_t* out = pixels.planes[0] + y * pixels.bytesPerRow;
    const int first = layout.alphaStandsFirst() ? 1 : 0;
    for (std::size_t x = 0; x < pixels.width; ++x, rgba += 4, out += pixels.pixelStride) {
        Sample color[3];
        const int count = layOutColor(layout, rgba, color);
        for (int i = 0; i < count; ++i) {
            storeSample(out + static_cast<std::size_t>(first + i) * sizeof(Stored),
                        convertSample(color[i], Stored{}));
        }
        if (layout.alpha == PixelAlpha::None) continue;
        const std::size_t alphaIndex = layout.alphaStandsFirst() ? 0 : static_cast<std::size_t>(count);
        storeSample(out + alphaIndex * sizeof(Stored), convertSample(rgba[3], Stored{}));
    }
}

} // namespace

template<class Sample>
void readRow(const SourcePixels& pixels, const PixelLayout& layout, std::size_t y, Sample* rgba) {
    if (layout.bitsPerSample == 16) {
        readRowOf<std::uint16_t>(pixels, layout, y, rgba);
    } else {
        readRowOf<std::uint8_t>(pixels, layout, y, rgba);
    }
}

template<class Sample>
void writeRow(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y, const Sample* rgba) {
    if (layout.bitsPerSample == 16) {
        writeRowOf<std::uint16_t>(pixels, layout, y, rgba);
    } else {
        writeRowOf<std::uint8_t>(pixels, layout, y, rgba);
    }
}

template void readRow(const SourcePixels&, const PixelLayout&, std::size_t, std::uint8_t*);
template void readRow(const SourcePixels&, const PixelLayout&, std::size_t, std::uint16_t*);
template void writeRow(const TargetPixels&, const PixelLayout&, std::size_t, const std::uint8_t*);
template void writeRow(const TargetPixels&, const PixelLayout&, std::size_t, const std::uint16_t*);

void packWords(const std::uint8_t* rgba, std::uint32_t* words, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, rgba += 4) {
        words[i] = std::uint32_t{rgba[3]} << 24 | std::uint32_t{rgba[0]} << 16 | std::uint32_t{rgba[1]} << 8 |
                   std::uint32_t{rgba[2]};
    }
}

void unpackWords(const std::uint32_t* words, std::uint8_t* rgba, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, rgba += 4) {
        rgba[0] = static_cast<std::uint8_t>(words[i] >> 16);
        rgba[1] = static_cast<std::uint8_t>(words[i] >> 8);
        rgba[2] = static_cast<std::uint8_t>(words[i]);
        rgba[3] = static_cast<std::uint8_t>(words[i] >> 24);
    }
}

void readWords(const SourcePixels& pixels, const PixelLayout& layout, std::size_t y, std::uint32_t* words) {
    std::vector<std::uint8_t> row(pixels.width * 4);
    readRow(pixels, layout, y, row.data());
    packWords(row.data(), words, pixels.width);
}

void writeWords(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y,
                const std::uint32_t* words) {
    std::vector<std::uint8_t> row(pixels.width * 4);
    unpackWords(words, row.data(), pixels.width);
    writeRow(pixels, layout, y, row.data());
}

} // namespace Platform
