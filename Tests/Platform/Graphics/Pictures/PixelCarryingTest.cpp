// Rows brought over by the quick ways against the plain ones, and pictures carried from layout to layout.
// Also tests: Platform/Graphics/Pictures/BitmapPixels.cpp

#include "Platform/Graphics/Pictures/BitmapPixels.h"
#include "Platform/Pixels/Rows/PixelLayout.h"
#include "Tests/Platform/Pixels/PixelMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

/// Widths that end in and behind vectors and the stretches that rows are worked on in.
constexpr std::size_t widths[] = {1, 2, 3, 7, 15, 16, 17, 31, 33, 63, 64, 65, 130, 511, 512, 513, 1100};

/// The same samples with other bytes around them.
void copySamples(const PixelLayout& layout, Memory& from, Memory& to) {
    const auto samples = static_cast<std::size_t>(samplesOf(layout));
    for (std::size_t y = 0; y < to.pixels.height; ++y) {
        for (std::size_t x = 0; x < to.pixels.width; ++x) {
            for (std::size_t i = 0; i < samples; ++i) to.setSample(x, y, i, from.sample(x, y, i));
        }
    }
}

template<class Sample>
std::vector<Sample> rowRead(const SourcePixels& pixels, const PixelLayout& layout, std::size_t y) {
    std::vector<Sample> row(pixels.width * 4);
    readRow(pixels, layout, y, row.data());
    return row;
}

/// Premultiplied samples, of which any number may come.
template<class Sample>
std::vector<Sample> randomRow(Random& random, std::size_t width) {
    constexpr int maximum = std::numeric_limits<Sample>::max();
    std::vector<Sample> row(width * 4);
    for (std::size_t i = 0; i < row.size(); i += 4) {
        const int alpha = random.sample(maximum);
        for (std::size_t c = 0; c < 3; ++c) row[i + c] = static_cast<Sample>(random.sample(alpha));
        row[i + 3] = static_cast<Sample>(alpha);
    }
    return row;
}

template<class Sample>
void expectWrittenAlike(Random& random, const PixelLayout& layout, std::size_t width) {
    const std::vector<Sample> row = randomRow<Sample>(random, width);
    Memory apart(layout, width, 2, false);
    Memory close(layout, width, 2, false, 0);
    writeRow(apart.pixels, layout, 1, row.data());
    writeRow(close.pixels, layout, 1, row.data());
    Memory expected(layout, width, 2, false, 0);
    copySamples(layout, apart, expected);
    ASSERT_EQ(close.bytes(), expected.bytes()) << nameOf(layout) << ", " << width << " pixels";
}

/// What a carried row is made of: read, and written, with nothing left out of a spare sample.
template<class Sample>
void carryPlainly(const SourcePixels& source, const PixelLayout& sourceLayout, std::size_t sourceY,
                  const TargetPixels& target, const PixelLayout& targetLayout, std::size_t targetY) {
    std::vector<Sample> row = rowRead<Sample>(source, sourceLayout, sourceY);
    if (!targetLayout.hasAlpha()) {
        for (std::size_t i = 3; i < row.size(); i += 4) row[i] = std::numeric_limits<Sample>::max();
    }
    TargetPixels narrower = target;
    narrower.width = std::min(source.width, target.width);
    writeRow(narrower, targetLayout, targetY, row.data());
}

void carryPlainly(const SourcePixels& source, const PixelLayout& sourceLayout, std::size_t sourceY,
                  const TargetPixels& target, const PixelLayout& targetLayout, std::size_t targetY) {
    if (targetLayout.bitsPerSample == 16) {
        carryPlainly<std::uint16_t>(source, sourceLayout, sourceY, target, targetLayout, targetY);
    } else {
        carryPlainly<std::uint8_t>(source, sourceLayout, sourceY, target, targetLayout, targetY);
    }
}

std::vector<PixelLayout> carriedLayouts() {
    std::vector<PixelLayout> layouts = allLayouts();
    layouts.erase(std::remove_if(layouts.begin(), layouts.end(),
                                 [](const PixelLayout& layout) {
                                     return layout.color == PixelColor::CMYK || !layout.premultiplied;
                                 }),
                  layouts.end());
    return layouts;
}

struct Size {
    std::size_t width;
    std::size_t height;
};

/// A picture carried from a size to another, against a reference that goes pixel row by pixel row and begins
/// with zeros.
void expectCarried(Random& random, const PixelLayout& from, Size fromSize, const PixelLayout& to, Size toSize,
                   bool planar, std::size_t gap) {
    Memory source(from, fromSize.width, fromSize.height, false, 0);
    fillAtRandom(random, from, source);
    Memory carried(to, toSize.width, toSize.height, planar, planar ? 0 : gap);
    carryPixels(source.source(), from, carried.pixels, to);

    Memory plain(to, toSize.width, toSize.height, false);
    for (std::size_t y = 0; y < toSize.height; ++y) {
        for (std::size_t x = 0; x < toSize.width; ++x) {
            for (int i = 0; i < samplesOf(to); ++i) plain.setSample(x, y, static_cast<std::size_t>(i), 0);
        }
    }
    for (std::size_t up = 1; up <= std::min(fromSize.height, toSize.height); ++up) { // from the bottom
        carryPlainly(source.source(), from, fromSize.height - up, plain.pixels, to, toSize.height - up);
    }
    for (std::size_t y = 0; y < toSize.height; ++y) {
        for (std::size_t x = 0; x < toSize.width; ++x) {
            for (std::size_t i = 0; i < static_cast<std::size_t>(samplesOf(to)); ++i) {
                ASSERT_EQ(carried.sample(x, y, i), plain.sample(x, y, i))
                    << nameOf(from) << " to " << nameOf(to) << (planar ? ", planar" : "") << " at " << x
                    << ", " << y << ", sample " << i;
            }
        }
    }
}

} // namespace

TEST(PixelCarrying, ReadsNeighbouringPixelsAsItReadsPixelsApart) {
    Random random(81);
    for (const PixelLayout& layout : allLayouts()) {
        for (const std::size_t width : widths) {
            Memory apart(layout, width, 2, false);
            fillAtRandom(random, layout, apart);
            Memory close(layout, width, 2, false, 0);
            copySamples(layout, apart, close);
            ASSERT_EQ(rowRead<std::uint8_t>(close.source(), layout, 1),
                      rowRead<std::uint8_t>(apart.source(), layout, 1))
                << nameOf(layout) << ", " << width << " pixels";
            ASSERT_EQ(rowRead<std::uint16_t>(close.source(), layout, 1),
                      rowRead<std::uint16_t>(apart.source(), layout, 1))
                << nameOf(layout) << ", " << width << " pixels";
        }
    }
}

TEST(PixelCarrying, WritesNeighbouringPixelsAsItWritesPixelsApart) {
    Random random(82);
    for (const PixelLayout& layout : allLayouts()) {
        if (layout.color == PixelColor::CMYK) continue;
        for (const std::size_t width : widths) {
            expectWrittenAlike<std::uint8_t>(random, layout, width);
            expectWrittenAlike<std::uint16_t>(random, layout, width);
        }
    }
}

TEST(PixelCarrying, ReadsWordsAsItReadsSamples) {
    Random random(83);
    for (const PixelLayout& layout : allLayouts()) {
        for (const std::size_t gap : {0, 3}) {
            for (const std::size_t width : widths) {
                Memory memory(layout, width, 2, false, gap);
                fillAtRandom(random, layout, memory);
                const std::vector<std::uint8_t> row = rowRead<std::uint8_t>(memory.source(), layout, 1);
                std::vector<std::uint32_t> words(width);
                readWords(memory.source(), layout, 1, words.data());
                for (std::size_t x = 0; x < width; ++x) {
                    const std::uint8_t* const rgba = &row[x * 4];
                    ASSERT_EQ(words[x], (std::uint32_t{rgba[3]} << 24) + (std::uint32_t{rgba[0]} << 16) +
                                            (std::uint32_t{rgba[1]} << 8) + rgba[2])
                        << nameOf(layout) << ", " << x << " of " << width;
                }
            }
        }
    }
}

TEST(PixelCarrying, WritesWordsAsItWritesSamples) {
    Random random(84);
    for (const PixelLayout& layout : allLayouts()) {
        if (layout.color == PixelColor::CMYK) continue;
        for (const std::size_t width : widths) {
            const std::vector<std::uint8_t> row = randomRow<std::uint8_t>(random, width);
            std::vector<std::uint32_t> words(width);
            for (std::size_t x = 0; x < width; ++x) {
                words[x] = (std::uint32_t{row[x * 4 + 3]} << 24) + (std::uint32_t{row[x * 4]} << 16) +
                           (std::uint32_t{row[x * 4 + 1]} << 8) + row[x * 4 + 2];
            }
            for (const std::size_t gap : {0, 3}) {
                Memory expected(layout, width, 2, false, gap);
                writeRow(expected.pixels, layout, 1, row.data());
                Memory written(layout, width, 2, false, gap);
                writeWords(written.pixels, layout, 1, words.data());
                ASSERT_EQ(written.bytes(), expected.bytes()) << nameOf(layout) << ", " << width << " pixels";
            }
        }
    }
}

TEST(PixelCarrying, GivesWhatReadingAndWritingGive) {
    Random random(85);
    for (const PixelLayout& from : allLayouts()) {
        for (const PixelLayout& to : carriedLayouts()) {
            for (const std::size_t gap : {0, 3})
                expectCarried(random, from, {37, 3}, to, {37, 3}, false, gap);
        }
    }
}

TEST(PixelCarrying, GivesEachSampleItsPlane) {
    Random random(86);
    for (const PixelLayout& to : carriedLayouts()) {
        for (const std::size_t width : {1, 512, 1100}) {
            const PixelLayout from{PixelColor::RGB, PixelAlpha::Last, true, 8};
            expectCarried(random, from, {width, 2}, to, {width, 2}, true, 0);
        }
    }
}

TEST(PixelCarrying, KeepsTheLowerLeftCornersTogetherAndClearsTheRest) {
    Random random(87);
    const PixelLayout rgb{PixelColor::RGB, PixelAlpha::None, true, 8};
    for (const PixelLayout& to : carriedLayouts()) {
        for (const bool planar : {false, true}) {
            expectCarried(random, rgb, {5, 4}, to, {9, 7}, planar, 0);
            expectCarried(random, rgb, {9, 7}, to, {5, 4}, planar, 0);
            expectCarried(random, rgb, {9, 4}, to, {5, 7}, planar, 0);
            expectCarried(random, rgb, {5, 7}, to, {9, 4}, planar, 0);
        }
    }
}

TEST(PixelCarrying, TouchesNothingBehindTheRows) {
    Random random(88);
    const PixelLayout rgb{PixelColor::RGB, PixelAlpha::None, true, 8};
    Memory source(rgb, 5, 4, false, 0);
    fillAtRandom(random, rgb, source);
    for (const PixelLayout& to : carriedLayouts()) {
        for (const bool planar : {false, true}) {
            Memory target(to, 9, 7, planar, 0);
            carryPixels(source.source(), rgb, target.pixels, to);
            const std::size_t pixelBytes = 9 * target.pixels.pixelStride;
            for (std::size_t i = 0; i < target.bytes().size(); ++i) {
                if (i % target.pixels.bytesPerRow < pixelBytes) continue;
                ASSERT_EQ(target.bytes()[i], Memory::guard) << nameOf(to) << ", byte " << i;
            }
        }
    }
}

TEST(PixelCarrying, MakesSurfacesOfPicturesAndPicturesOfSurfaces) {
    Random random(89);
    const PixelLayout layout{PixelColor::RGB, PixelAlpha::Last, true, 8};
    for (const Size size :
         {Size{3, 2}, Size{1200, 1100}}) { // the second is split, and lies on pages of its own
        Memory memory(layout, size.width, size.height, false, 0);
        fillAtRandom(random, layout, memory);
        const CairoSurface surface = pixelSurfaceOf(memory.source(), layout);
        const unsigned char* const data = cairo_image_surface_get_data(surface.get());
        const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
        for (std::size_t y = 0; y < size.height; ++y) {
            for (std::size_t x = 0; x < size.width; ++x) {
                std::uint32_t word = 0;
                std::memcpy(&word, data + y * stride + x * 4, 4);
                ASSERT_EQ(word, (memory.sample(x, y, 3) << 24) + (memory.sample(x, y, 0) << 16) +
                                    (memory.sample(x, y, 1) << 8) + memory.sample(x, y, 2));
            }
        }
        Memory back(layout, size.width - 1, size.height - 1, false, 0);
        writeSurface(surface.get(), 1, 1, back.pixels, layout);
        Memory expected(layout, size.width - 1, size.height - 1, false, 0);
        for (std::size_t y = 1; y < size.height; ++y) {
            for (std::size_t x = 1; x < size.width; ++x) {
                for (std::size_t i = 0; i < 4; ++i) {
                    expected.setSample(x - 1, y - 1, i, memory.sample(x, y, i));
                }
            }
        }
        ASSERT_EQ(back.bytes(), expected.bytes());
    }
}
