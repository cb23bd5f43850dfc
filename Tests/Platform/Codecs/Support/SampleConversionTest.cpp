#include "Platform/Codecs/Support/SampleConversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace Imaging::Platform {

namespace {

using Row8 = std::vector<std::uint8_t>;
using Row16 = std::vector<std::uint16_t>;

PictureHeader shape(std::size_t width, int bits, SampleColor color, bool hasAlpha) {
    PictureHeader header;
    header.width = static_cast<std::uint32_t>(width);
    header.height = 1;
    header.bitsPerSample = bits;
    header.color = color;
    header.hasAlpha = hasAlpha;
    return header;
}

std::uint8_t* bytes(Row16& row) { return static_cast<std::uint8_t*>(static_cast<void*>(row.data())); }

/// Every colour with every alpha, one pixel each.
Row8 allPairs() {
    Row8 row;
    for (int alpha = 0; alpha < 256; ++alpha) {
        for (int color = 0; color < 256; ++color) {
            row.push_back(static_cast<std::uint8_t>(color));
            row.push_back(static_cast<std::uint8_t>(alpha));
        }
    }
    return row;
}

TEST(SampleConversion, PremultipliesEveryPairOfBytesRoundedToNearest) {
    Row8 row = allPairs();
    premultiplyRow(shape(65536, 8, SampleColor::White, true), row.data());
    for (std::size_t i = 0; i < 65536; ++i) {
        const auto alpha = static_cast<double>(i / 256);
        const auto color = static_cast<double>(i % 256);
        ASSERT_EQ(row[2 * i], std::lround(color * alpha / 255)) << color << " " << alpha;
        ASSERT_EQ(row[2 * i + 1], alpha);
    }
}

TEST(SampleConversion, UnpremultipliesEveryPairOfBytesRoundedToNearestAndClamped) {
    Row8 row = allPairs();
    unpremultiplyRow(shape(65536, 8, SampleColor::White, true), row.data());
    for (std::size_t i = 0; i < 65536; ++i) {
        const auto alpha = static_cast<double>(i / 256);
        const auto color = static_cast<double>(i % 256);
        const long expected = alpha == 0 ? 0 : std::min(255L, std::lround(color * 255 / alpha));
        ASSERT_EQ(row[2 * i], expected) << color << " " << alpha;
    }
}

TEST(SampleConversion, PremultipliesSixteenBitsExactlyUpToTheLargestProduct) {
    Row16 row = {65535, 65535, 65535, 65535, 65535, 65534, 1, 32768, 40000, 12345, 3, 32767};
    premultiplyRow(shape(3, 16, SampleColor::RGB, true), bytes(row));
    // 65534 * 65535 / 65535; 40000 * 32767 / 65535 = 19999.69...; 12345 * 32767 / 65535 = 6172.41; 3
    // -> 1.49998
    const Row16 expected = {65535, 65535, 65535, 65535, 32768, 32767, 1, 32768, 20000, 6172, 1, 32767};
    EXPECT_EQ(row, expected);
}

TEST(SampleConversion, GivesTheSameBackAfterUnpremultiplyingAndPremultiplying) {
    for (int alpha = 0; alpha < 256; ++alpha) {
        Row8 row;
        for (int color = 0; color <= alpha; ++color) {
            row.push_back(static_cast<std::uint8_t>(color));
            row.push_back(static_cast<std::uint8_t>(alpha));
        }
        const Row8 before = row;
        const PictureHeader header = shape(row.size() / 2, 8, SampleColor::White, true);
        unpremultiplyRow(header, row.data());
        premultiplyRow(header, row.data());
        ASSERT_EQ(row, before) << alpha;
    }
}

TEST(SampleConversion, GivesSixteenBitsBackAfterUnpremultiplyingAndPremultiplying) {
    for (const int alpha : {1, 2, 3, 255, 256, 257, 32767, 32768, 65533, 65534, 65535}) {
        Row16 row;
        for (int color = 0; color <= alpha; color += 1 + alpha / 997) {
            row.push_back(static_cast<std::uint16_t>(color));
            row.push_back(static_cast<std::uint16_t>(alpha));
        }
        const Row16 before = row;
        const PictureHeader header = shape(row.size() / 2, 16, SampleColor::White, true);
        unpremultiplyRow(header, bytes(row));
        premultiplyRow(header, bytes(row));
        ASSERT_EQ(row, before) << alpha;
    }
}

TEST(SampleConversion, LeavesRowsWithoutAlphaAlone) {
    Row8 row = {1, 2, 3, 4, 5, 6};
    premultiplyRow(shape(2, 8, SampleColor::RGB, false), row.data());
    unpremultiplyRow(shape(2, 8, SampleColor::RGB, false), row.data());
    EXPECT_EQ(row, (Row8{1, 2, 3, 4, 5, 6}));
}

TEST(SampleConversion, InvertsGray) {
    Row8 plain = {0, 100, 255};
    invertGrayRow(shape(3, 8, SampleColor::Black, false), plain.data(), true);
    EXPECT_EQ(plain, (Row8{255, 155, 0}));
    Row8 straight = {0, 9, 255, 200};
    invertGrayRow(shape(2, 8, SampleColor::Black, true), straight.data(), false);
    EXPECT_EQ(straight, (Row8{255, 9, 0, 200}));
    Row16 wide = {0, 65535, 1000};
    invertGrayRow(shape(3, 16, SampleColor::Black, false), bytes(wide), true);
    EXPECT_EQ(wide, (Row16{65535, 0, 64535}));
}

TEST(SampleConversion, InvertsPremultipliedGrayWithinItsAlpha) {
    // The last colour is more than its alpha, which no proper picture has.
    Row8 row = {0, 100, 30, 100, 100, 100, 0, 0, 9, 5};
    invertGrayRow(shape(5, 8, SampleColor::Black, true), row.data(), true);
    EXPECT_EQ(row, (Row8{100, 100, 70, 100, 0, 100, 0, 0, 0, 5}));
}

TEST(SampleConversion, ReducesEverySixteenBitSampleToTheNearestByte) {
    Row16 row(65536);
    std::iota(row.begin(), row.end(), std::uint16_t{0});
    Row8 reduced(65536);
    copyOpaqueBytes(shape(65536, 16, SampleColor::White, false), bytes(row), reduced.data());
    for (std::size_t i = 0; i < row.size(); ++i) {
        ASSERT_EQ(reduced[i], std::lround(static_cast<double>(i) * 255 / 65535)) << i;
    }
}

TEST(SampleConversion, LeavesAlphaOutOfOpaqueBytes) {
    const Row8 row = {1, 2, 3, 200, 4, 5, 6, 100};
    Row8 opaque(6);
    copyOpaqueBytes(shape(2, 8, SampleColor::RGB, true), row.data(), opaque.data());
    EXPECT_EQ(opaque, (Row8{1, 2, 3, 4, 5, 6}));
}

TEST(SampleConversion, MultipliesPaperLeftByEachInkWithPaperLeftByBlack) {
    // cyan, magenta, yellow, black
    const Row8 inks = {0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 255, 55, 155, 255, 51};
    Row8 rgb(12);
    convertInks(shape(4, 8, SampleColor::RGB, false), inks.data(), false, rgb.data());
    // 200 * 204 / 255 = 160; 100 * 204 / 255 = 80
    EXPECT_EQ(rgb, (Row8{255, 255, 255, 0, 255, 255, 0, 0, 0, 160, 80, 0}));
}

TEST(SampleConversion, TakesInvertedInksAsPaperLeft) {
    const Row8 inks = {200, 100, 0, 204};
    Row8 rgb(3);
    convertInks(shape(1, 8, SampleColor::RGB, false), inks.data(), true, rgb.data());
    EXPECT_EQ(rgb, (Row8{160, 80, 0}));
}

TEST(SampleConversion, ConvertsInksOfSixteenBitsWithAlpha) {
    Row16 inks = {0, 65535, 32768, 0, 777};
    Row16 rgb(4);
    convertInks(shape(1, 16, SampleColor::RGB, true), bytes(inks), false, bytes(rgb));
    EXPECT_EQ(rgb, (Row16{65535, 0, 32767, 777}));
}

} // namespace

} // namespace Imaging::Platform
