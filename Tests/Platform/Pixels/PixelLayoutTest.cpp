#include "Platform/Pixels/Rows/PixelLayout.h"

#include "Tests/Platform/Pixels/PixelMemory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

/// A pixel's colour and alpha from 0 to 1, colour premultiplied.
using Exact = std::array<double, 4>;

/// What stored samples mean, in real numbers.
Exact meaningOf(const PixelLayout& layout, const std::vector<double>& samples) {
    const std::size_t first = layout.alphaStandsFirst() ? 1 : 0;
    const auto colors = static_cast<std::size_t>(layout.colorSamples());
    const double alpha = layout.hasAlpha() ? samples[first == 1 ? 0 : colors] : 1;
    // Where colour is premultiplied, all of an ink or of the light is alpha.
    const double whole = layout.premultiplied ? alpha : 1;
    const auto light = [&](std::size_t i) { return std::max(0.0, whole - samples[first + i]); };
    Exact exact{0, 0, 0, alpha};
    for (std::size_t i = 0; i < 3; ++i) {
        switch (layout.color) {
        case PixelColor::Gray:
            exact[i] = samples[first];
            break;
        case PixelColor::InvertedGray:
            exact[i] = light(0);
            break;
        case PixelColor::RGB:
            exact[i] = samples[first + i];
            break;
        case PixelColor::CMYK:
            exact[i] = whole > 0 ? light(i) * light(3) / whole : 0;
            break;
        }
        if (!layout.premultiplied) exact[i] *= alpha;
    }
    return exact;
}

/// A straight division of integers, rounded to nearest with ties upward.
std::uint64_t roundedQuotient(std::uint64_t dividend, std::uint64_t divisor) {
    return (2 * dividend + divisor) / (2 * divisor);
}

/// A stored sample in the range of another depth.
template<class Sample>
double atDepth(unsigned value, int bits) {
    if (bits == 8) return sizeof(Sample) == 1 ? value : value * 257.0;
    return sizeof(Sample) == 2 ? value : static_cast<double>(roundedQuotient(value * 255ULL, 65535));
}

template<class Sample>
void expectReadAsMeant(Random& random, const PixelLayout& layout, bool planar) {
    Memory memory(layout, 13, 4, planar);
    fillAtRandom(random, layout, memory);
    constexpr double maximum = std::numeric_limits<Sample>::max();
    // Each sample is brought to the depth asked for; then every product is rounded once.
    const double roundings = (layout.premultiplied ? 0 : 1) + (layout.color == PixelColor::CMYK ? 1 : 0);
    std::vector<Sample> row(13 * 4);
    for (std::size_t y = 0; y < 4; ++y) {
        readRow(memory.source(), layout, y, row.data());
        for (std::size_t x = 0; x < 13; ++x) {
            std::vector<double> samples;
            for (int i = 0; i < samplesOf(layout); ++i) {
                const unsigned value = memory.sample(x, y, static_cast<std::size_t>(i));
                samples.push_back(atDepth<Sample>(value, layout.bitsPerSample) / maximum);
            }
            const Exact exact = meaningOf(layout, samples);
            for (std::size_t i = 0; i < 4; ++i) {
                ASSERT_NEAR(row[x * 4 + i], exact[i] * maximum, (i == 3 ? 0 : 0.5 * roundings) + 1e-6)
                    << nameOf(layout) << (planar ? ", planar" : "") << ", column " << x << ", sample " << i;
            }
        }
    }
}

} // namespace

TEST(PixelLayout, ReadsEveryLayoutAsItsSamplesAreMeant) {
    Random random(51);
    for (const PixelLayout& layout : allLayouts()) {
        for (const bool planar : {false, true}) {
            expectReadAsMeant<std::uint8_t>(random, layout, planar);
            expectReadAsMeant<std::uint16_t>(random, layout, planar);
        }
    }
}

TEST(PixelLayout, WritingWhatWasReadGivesTheSameBytesAndTouchesNoPadding) {
    Random random(52);
    for (const PixelLayout& layout : allLayouts()) {
        if (layout.color == PixelColor::CMYK || (layout.hasAlpha() && !layout.premultiplied)) continue;
        Memory memory(layout, 11, 3, false);
        fillAtRandom(random, layout, memory);
        // A sample that is skipped is written as what alpha would be: 255 or 65535.
        if (layout.alpha == PixelAlpha::SkipFirst || layout.alpha == PixelAlpha::SkipLast) {
            const std::size_t skipped =
                layout.alphaStandsFirst() ? 0 : static_cast<std::size_t>(layout.colorSamples());
            for (std::size_t i = 0; i < 33; ++i) memory.setSample(i % 11, i / 11, skipped, 0xFFFF);
        }
        Memory copy(layout, 11, 3, false);
        for (std::size_t y = 0; y < 3; ++y) {
            if (layout.bitsPerSample == 8) {
                std::vector<std::uint8_t> row(44);
                readRow(memory.source(), layout, y, row.data());
                writeRow(copy.pixels, layout, y, row.data());
            } else {
                std::vector<std::uint16_t> row(44);
                readRow(memory.source(), layout, y, row.data());
                writeRow(copy.pixels, layout, y, row.data());
            }
        }
        EXPECT_EQ(copy.bytes(), memory.bytes()) << nameOf(layout);
    }
}

TEST(PixelLayout, AWiderDepthThereAndBackGivesTheSameEightBits) {
    Random random(53);
    const PixelLayout layout{PixelColor::RGB, PixelAlpha::Last, true, 8};
    Memory memory(layout, 64, 1, false);
    fillAtRandom(random, layout, memory);
    std::vector<std::uint16_t> row(256);
    readRow(memory.source(), layout, 0, row.data());
    for (std::size_t i = 0; i < 256; ++i) EXPECT_EQ(row[i], memory.sample(i / 4, 0, i % 4) * 257);
    Memory copy(layout, 64, 1, false);
    writeRow(copy.pixels, layout, 0, row.data());
    EXPECT_EQ(copy.bytes(), memory.bytes());
}

TEST(PixelLayout, SixteenBitsBecomeEightRoundingToNearest) {
    const PixelLayout layout{PixelColor::Gray, PixelAlpha::None, true, 16};
    Memory memory(layout, 65536, 1, false);
    for (unsigned v = 0; v < 65536; ++v) memory.setSample(v, 0, 0, v);
    std::vector<std::uint8_t> row(65536 * 4);
    readRow(memory.source(), layout, 0, row.data());
    for (std::size_t v = 0; v < 65536; ++v) {
        ASSERT_EQ(row[v * 4], roundedQuotient(v * 255, 65535)) << v;
        ASSERT_EQ(row[v * 4 + 3], 255);
    }
}

TEST(PixelLayout, PremultipliesRoundingToNearestForEveryPairOfBytes) {
    const PixelLayout layout{PixelColor::Gray, PixelAlpha::Last, false, 8};
    Memory memory(layout, 65536, 1, false);
    for (unsigned i = 0; i < 65536; ++i) {
        memory.setSample(i, 0, 0, i / 256);
        memory.setSample(i, 0, 1, i % 256);
    }
    std::vector<std::uint8_t> row(65536 * 4);
    readRow(memory.source(), layout, 0, row.data());
    for (std::size_t i = 0; i < 65536; ++i) {
        ASSERT_EQ(row[i * 4], roundedQuotient((i / 256) * (i % 256), 255)) << i / 256 << " times " << i % 256;
    }
}

TEST(PixelLayout, UnmultipliesRoundingToNearestForEveryPairOfBytes) {
    const PixelLayout layout{PixelColor::Gray, PixelAlpha::First, false, 8};
    Memory memory(layout, 256, 1, false);
    for (unsigned alpha = 0; alpha < 256; ++alpha) {
        std::vector<std::uint8_t> row;
        for (unsigned color = 0; color < 256; ++color) {
            for (const unsigned v : {color, color, color, alpha}) row.push_back(static_cast<std::uint8_t>(v));
        }
        writeRow(memory.pixels, layout, 0, row.data());
        for (unsigned color = 0; color < 256; ++color) {
            const std::uint64_t expected =
                alpha == 0 ? 0 : std::min<std::uint64_t>(255, roundedQuotient(color * 255U, alpha));
            ASSERT_EQ(memory.sample(color, 0, 1), expected) << color << " over " << alpha;
            ASSERT_EQ(memory.sample(color, 0, 0), alpha);
        }
    }
}

TEST(PixelLayout, SixteenBitProductsAreRoundedToNearestAtTheExtremes) {
    const PixelLayout layout{PixelColor::Gray, PixelAlpha::Last, false, 16};
    const unsigned values[] = {0, 1, 2, 255, 256, 257, 32767, 32768, 65279, 65534, 65535};
    Memory memory(layout, 1, 1, false);
    for (const unsigned color : values) {
        for (const unsigned alpha : values) {
            memory.setSample(0, 0, 0, color);
            memory.setSample(0, 0, 1, alpha);
            std::array<std::uint16_t, 4> pixel{};
            readRow(memory.source(), layout, 0, pixel.data());
            EXPECT_EQ(pixel[0], roundedQuotient(std::uint64_t{color} * alpha, 65535))
                << color << ", " << alpha;
            EXPECT_EQ(pixel[3], alpha);
        }
    }
}

TEST(PixelLayout, StraightColourSurvivesBothWaysWhereAlphaIsFull) {
    const PixelLayout layout{PixelColor::RGB, PixelAlpha::Last, false, 16};
    Random random(54);
    Memory memory(layout, 50, 1, false);
    fillAtRandom(random, layout, memory);
    for (std::size_t x = 0; x < 50; ++x) memory.setSample(x, 0, 3, 65535);
    std::vector<std::uint16_t> row(200);
    readRow(memory.source(), layout, 0, row.data());
    Memory copy(layout, 50, 1, false);
    writeRow(copy.pixels, layout, 0, row.data());
    EXPECT_EQ(copy.bytes(), memory.bytes());
}

TEST(PixelLayout, ColourBecomesGrayByFixedWeightsRoundedToNearest) {
    const PixelLayout eight{PixelColor::Gray, PixelAlpha::None, true, 8};
    const PixelLayout sixteen{PixelColor::Gray, PixelAlpha::None, true, 16};
    Memory narrow(eight, 1, 1, false);
    Memory wide(sixteen, 1, 1, false);
    Random random(55);
    for (int round = 0; round < 2000; ++round) {
        std::array<std::uint8_t, 4> bytes{};
        std::array<std::uint16_t, 4> words{};
        for (std::size_t i = 0; i < 3; ++i) {
            bytes[i] = static_cast<std::uint8_t>(random.sample());
            words[i] = static_cast<std::uint16_t>(random.sample(65535));
        }
        bytes[3] = 255;
        words[3] = 65535;
        writeRow(narrow.pixels, eight, 0, bytes.data());
        writeRow(wide.pixels, sixteen, 0, words.data());
        ASSERT_EQ(narrow.sample(0, 0, 0),
                  roundedQuotient(30U * bytes[0] + 59U * bytes[1] + 11U * bytes[2], 100));
        ASSERT_EQ(wide.sample(0, 0, 0),
                  roundedQuotient(30U * words[0] + 59U * words[1] + 11U * words[2], 100));
    }
}

TEST(PixelLayout, InvertedGrayIsWrittenAsWhatIsMissing) {
    const PixelLayout opaque{PixelColor::InvertedGray, PixelAlpha::None, true, 8};
    const PixelLayout premultiplied{PixelColor::InvertedGray, PixelAlpha::Last, true, 8};
    const PixelLayout straight{PixelColor::InvertedGray, PixelAlpha::Last, false, 8};
    const std::array<std::uint8_t, 4> pixel{30, 30, 30, 60}; // half of the light, under an alpha of 60
    const auto written = [&pixel](const PixelLayout& layout) {
        Memory memory(layout, 1, 1, false);
        writeRow(memory.pixels, layout, 0, pixel.data());
        return memory.sample(0, 0, 0);
    };
    EXPECT_EQ(written(opaque), 225U);       // as it looks on black: 255 - 30
    EXPECT_EQ(written(premultiplied), 30U); // 60 - 30
    EXPECT_EQ(written(straight), 127U);     // 30 / 60 is 128 of 255, the rest is missing
}

TEST(PixelLayout, ALayoutWithoutAlphaGetsTheColourAsItLooksOnBlack) {
    const PixelLayout layout{PixelColor::RGB, PixelAlpha::SkipFirst, true, 8};
    Memory memory(layout, 1, 1, false);
    const std::array<std::uint8_t, 4> pixel{10, 20, 30, 40};
    writeRow(memory.pixels, layout, 0, pixel.data());
    EXPECT_EQ(memory.sample(0, 0, 1), 10U);
    EXPECT_EQ(memory.sample(0, 0, 2), 20U);
    EXPECT_EQ(memory.sample(0, 0, 3), 30U);
}

TEST(PixelLayout, PacksWordsAsCairoHoldsThem) {
    const std::array<std::uint8_t, 8> rgba{1, 2, 3, 4, 255, 254, 253, 252};
    std::array<std::uint32_t, 2> words{};
    packWords(rgba.data(), words.data(), 2);
    EXPECT_EQ(words[0], 0x04010203U);
    EXPECT_EQ(words[1], 0xFCFFFEFDU);
    std::array<std::uint8_t, 8> back{};
    unpackWords(words.data(), back.data(), 2);
    EXPECT_EQ(back, rgba);
}
