// Rows of any layout by way of plain RGBA, sample after sample. Layouts that are common are done by the
// vector routines, which give the same bytes.

#include "Platform/Pixels/Rows/PixelLayout.h"

#include "Platform/Pixels/Rows/PixelRows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace Imaging::Platform {

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

// Rows of neighbouring pixels, which the vector routines know. What they do not know is left to the plain
// code above.

/// Pixels that are worked on at a time where one routine follows another: few enough to stay in the nearest
/// cache.
constexpr std::size_t chunkPixels = 512;

int samplesOf(const PixelLayout& layout) {
    return layout.colorSamples() + (layout.alpha == PixelAlpha::None ? 0 : 1);
}

/// Whether pixels are meshed and nothing lies between them.
template<class Byte>
bool areClose(const PixelPlanes<Byte>& pixels, const PixelLayout& layout) {
    const int pixelBytes = samplesOf(layout) * layout.bitsPerSample / 8;
    return !pixels.planar && pixels.pixelStride == static_cast<std::size_t>(pixelBytes);
}

template<class Byte>
Byte* rowOf(const PixelPlanes<Byte>& pixels, std::size_t y) {
    return pixels.planes[0] + y * pixels.bytesPerRow;
}

/// Whether pixels are premultiplied RGBA of 8 bits as they lie.
template<class Byte>
bool areRgba(const PixelPlanes<Byte>& pixels, const PixelLayout& layout) {
    return layout.bitsPerSample == 8 && layout.color == PixelColor::RGB && layout.alpha == PixelAlpha::Last &&
           layout.premultiplied && areClose(pixels, layout);
}

bool isStraight(const PixelLayout& layout) { return layout.hasAlpha() && !layout.premultiplied; }

void readCloseColor(const std::uint8_t* bytes, PixelAlpha alpha, std::uint8_t* rgba, std::size_t count) {
    const PixelRowRoutines& rows = pixelRows();
    switch (alpha) {
    case PixelAlpha::None:
        rows.rgbToRgba(bytes, rgba, count);
        break;
    case PixelAlpha::Last:
        std::copy_n(bytes, count * 4, rgba);
        break;
    case PixelAlpha::First:
        rows.argbToRgba(bytes, rgba, count);
        break;
    case PixelAlpha::SkipLast:
        rows.rgbaToOpaque(bytes, rgba, count);
        break;
    case PixelAlpha::SkipFirst:
        rows.argbToRgba(bytes, rgba, count);
        rows.rgbaToOpaque(rgba, rgba, count);
        break;
    }
}

bool readCloseGray(const std::uint8_t* bytes, const PixelLayout& layout, std::uint8_t* rgba,
                   std::size_t count) {
    const PixelRowRoutines& rows = pixelRows();
    const bool inverted = layout.color == PixelColor::InvertedGray;
    if (layout.alpha == PixelAlpha::None) {
        rows.grayToRgba(bytes, rgba, count);
    } else if (layout.alpha == PixelAlpha::Last && !(inverted && layout.premultiplied)) {
        rows.grayAlphaToRgba(bytes, rgba, count);
    } else {
        return false;
    }
    if (inverted) rows.invertColors(rgba, rgba, count);
    return true;
}

/// Neighbouring pixels of 8 bits a sample; false when there is no routine for the layout.
bool readClose(const std::uint8_t* bytes, const PixelLayout& layout, std::uint8_t* rgba, std::size_t count) {
    if (layout.color == PixelColor::CMYK) return false;
    if (layout.color == PixelColor::RGB) {
        readCloseColor(bytes, layout.alpha, rgba, count);
    } else if (!readCloseGray(bytes, layout, rgba, count)) {
        return false;
    }
    if (isStraight(layout)) pixelRows().premultiply(rgba, rgba, count);
    return true;
}

/// The same for 16 bits a sample.
bool readCloseDeep(const std::uint8_t* bytes, const PixelLayout& layout, std::uint8_t* rgba,
                   std::size_t count) {
    std::array<std::uint8_t, chunkPixels * 5> narrow;
    const auto samples = static_cast<std::size_t>(samplesOf(layout));
    for (std::size_t x = 0; x < count; x += chunkPixels) {
        const std::size_t length = std::min(chunkPixels, count - x);
        pixelRows().narrow(bytes + x * samples * 2, narrow.data(), length * samples);
        if (!readClose(narrow.data(), layout, rgba + x * 4, length)) return false;
    }
    return true;
}

bool readFast(const SourcePixels& pixels, const PixelLayout& layout, std::size_t y, std::uint8_t* rgba) {
    if (!areClose(pixels, layout)) return false;
    const std::uint8_t* const bytes = rowOf(pixels, y);
    return layout.bitsPerSample == 16 ? readCloseDeep(bytes, layout, rgba, pixels.width)
                                      : readClose(bytes, layout, rgba, pixels.width);
}

bool readFast(const SourcePixels&, const PixelLayout&, std::size_t, std::uint16_t*) { return false; }

void writeCloseColor(std::uint8_t* bytes, const PixelLayout& layout, const std::uint8_t* rgba,
                     std::size_t count) {
    const PixelRowRoutines& rows = pixelRows();
    if (layout.alpha == PixelAlpha::None) {
        rows.rgbaToRgb(rgba, bytes, count);
        return;
    }
    if (isStraight(layout)) {
        rows.unmultiply(rgba, bytes, count);
        rgba = bytes;
    }
    if (layout.alphaStandsFirst()) {
        rows.rgbaToArgb(rgba, bytes, count);
    } else if (rgba != bytes) {
        std::copy_n(rgba, count * 4, bytes);
    }
}

bool writeFast(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y,
               const std::uint8_t* rgba) {
    if (layout.bitsPerSample != 8 || !areClose(pixels, layout)) return false;
    std::uint8_t* const bytes = rowOf(pixels, y);
    if (layout.color == PixelColor::RGB) {
        writeCloseColor(bytes, layout, rgba, pixels.width);
    } else if (layout.color == PixelColor::Gray && layout.alpha == PixelAlpha::None) {
        pixelRows().rgbaToGray(rgba, bytes, pixels.width);
    } else if (layout.color == PixelColor::Gray && !layout.alphaStandsFirst() && !isStraight(layout)) {
        pixelRows().rgbaToGrayAlpha(rgba, bytes, pixels.width);
    } else {
        return false;
    }
    return true;
}

bool writeFast(const TargetPixels&, const PixelLayout&, std::size_t, const std::uint16_t*) { return false; }

/// Straight to words, where one routine does it.
bool readCloseWords(const std::uint8_t* bytes, const PixelLayout& layout, std::uint32_t* words,
                    std::size_t count) {
    const PixelRowRoutines& rows = pixelRows();
    const bool withAlpha = layout.alpha == PixelAlpha::Last && layout.premultiplied;
    if (layout.bitsPerSample != 8 || !(layout.alpha == PixelAlpha::None || withAlpha)) return false;
    if (layout.color == PixelColor::RGB) {
        (withAlpha ? rows.rgbaToWords : rows.rgbToWords)(bytes, words, count);
    } else if (layout.color == PixelColor::Gray) {
        (withAlpha ? rows.grayAlphaToWords : rows.grayToWords)(bytes, words, count);
    } else {
        return false;
    }
    return true;
}

/// A row of pixels of their own.
template<class Byte>
PixelPlanes<Byte> singleRow(Byte* bytes, std::size_t pixelStride, std::size_t width) {
    PixelPlanes<Byte> row;
    row.planes[0] = bytes;
    row.pixelStride = pixelStride;
    row.bytesPerRow = width * pixelStride;
    row.width = width;
    row.height = 1;
    return row;
}

/// Writes a row of any target, planar ones by way of meshed pixels.
template<class Sample>
void writeAnyRow(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y, const Sample* rgba) {
    if (!pixels.planar) {
        writeRow(pixels, layout, y, rgba);
        return;
    }
    const auto samples = static_cast<std::size_t>(samplesOf(layout));
    const auto sampleBytes = static_cast<std::size_t>(layout.bitsPerSample / 8);
    std::array<std::uint8_t, chunkPixels * 4 * sizeof(std::uint16_t)> meshed;
    writeRow(singleRow(meshed.data(), samples * sampleBytes, pixels.width), layout, 0, rgba);
    for (std::size_t i = 0; i < pixels.width * samples; ++i) {
        std::uint8_t* const plane = pixels.planes[i % samples] + y * pixels.bytesPerRow;
        std::copy_n(&meshed[i * sampleBytes], sampleBytes, plane + i / samples * pixels.pixelStride);
    }
}

template<class Sample>
void carryThroughRgba(const SourcePixels& source, const PixelLayout& sourceLayout, std::size_t sourceY,
                      const TargetPixels& target, const PixelLayout& targetLayout, std::size_t targetY) {
    std::array<Sample, chunkPixels * 4> rgba;
    const std::size_t width = std::min(source.width, target.width);
    const bool keepsSpare = targetLayout.alpha != PixelAlpha::None && !targetLayout.hasAlpha();
    for (std::size_t x = 0; x < width; x += chunkPixels) {
        const std::size_t length = std::min(chunkPixels, width - x);
        readRow(columnsOf(source, x, length), sourceLayout, sourceY, rgba.data());
        for (std::size_t i = 0; keepsSpare && i < length; ++i) rgba[i * 4 + 3] = maximumOf<Sample>;
        writeAnyRow(columnsOf(target, x, length), targetLayout, targetY, rgba.data());
    }
}

} // namespace

template<class Sample>
void readRow(const SourcePixels& pixels, const PixelLayout& layout, std::size_t y, Sample* rgba) {
    if (readFast(pixels, layout, y, rgba)) return;
    if (layout.bitsPerSample == 16) {
        readRowOf<std::uint16_t>(pixels, layout, y, rgba);
    } else {
        readRowOf<std::uint8_t>(pixels, layout, y, rgba);
    }
}

template<class Sample>
void writeRow(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y, const Sample* rgba) {
    if (writeFast(pixels, layout, y, rgba)) return;
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

void readWords(const SourcePixels& pixels, const PixelLayout& layout, std::size_t y, std::uint32_t* words) {
    if (areClose(pixels, layout) && readCloseWords(rowOf(pixels, y), layout, words, pixels.width)) return;
    std::array<std::uint8_t, chunkPixels * 4> rgba;
    for (std::size_t x = 0; x < pixels.width; x += chunkPixels) {
        const std::size_t length = std::min(chunkPixels, pixels.width - x);
        readRow(columnsOf(pixels, x, length), layout, y, rgba.data());
        packWords(rgba.data(), words + x, length);
    }
}

void writeWords(const TargetPixels& pixels, const PixelLayout& layout, std::size_t y,
                const std::uint32_t* words) {
    if (areRgba(pixels, layout)) {
        unpackWords(words, rowOf(pixels, y), pixels.width);
        return;
    }
    std::array<std::uint8_t, chunkPixels * 4> rgba;
    for (std::size_t x = 0; x < pixels.width; x += chunkPixels) {
        const std::size_t length = std::min(chunkPixels, pixels.width - x);
        unpackWords(words + x, rgba.data(), length);
        writeRow(columnsOf(pixels, x, length), layout, y, rgba.data());
    }
}

void carryRow(const SourcePixels& source, const PixelLayout& sourceLayout, std::size_t sourceY,
              const TargetPixels& target, const PixelLayout& targetLayout, std::size_t targetY) {
    const std::size_t width = std::min(source.width, target.width);
    const bool keepsSpare = targetLayout.alpha != PixelAlpha::None && !targetLayout.hasAlpha();
    if (areRgba(target, targetLayout)) {
        readRow(columnsOf(source, 0, width), sourceLayout, sourceY, rowOf(target, targetY));
    } else if (areRgba(source, sourceLayout) && !target.planar && !keepsSpare &&
               targetLayout.bitsPerSample == 8) {
        writeRow(columnsOf(target, 0, width), targetLayout, targetY, rowOf(source, sourceY));
    } else if (targetLayout.bitsPerSample == 16) {
        carryThroughRgba<std::uint16_t>(source, sourceLayout, sourceY, target, targetLayout, targetY);
    } else {
        carryThroughRgba<std::uint8_t>(source, sourceLayout, sourceY, target, targetLayout, targetY);
    }
}

void packWords(const std::uint8_t* rgba, std::uint32_t* words, std::size_t count) {
    pixelRows().rgbaToWords(rgba, words, count);
}

void unpackWords(const std::uint32_t* words, std::uint8_t* rgba, std::size_t count) {
    pixelRows().wordsToRgba(words, rgba, count);
}

} // namespace Imaging::Platform
