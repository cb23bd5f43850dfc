// The plain convolution against pictures worked out by hand and against plain sums on tables.

#include "Imaging/Pixels/ConvolutionPlain.h"

#include "Tests/Imaging/Pixels/ConvolutionFixtures.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

using namespace ImagingTests;
using namespace Imaging;
using namespace Imaging::Plain;

namespace {

/// Calls a body with the pixel and sum types of a number of samples.
template<class Body>
void withPixel(int samples, const Body& body) {
    if (samples == 1) body(GPixel(), GPixelSum());
    if (samples == 2) body(GAPixel(), GAPixelSum());
    if (samples == 3) body(RGBPixel(), RGBPixelSum());
    if (samples == 4) body(RGBAPixel(), RGBAPixelSum());
}

/// Both workers of a pass, one after the other.
template<class Record>
void inTurns(Record record, void (*worker)(const Record&)) {
    for (const std::int32_t start : {1, 0}) {
        record.firstRow = start;
        record.rowStep = 2;
        worker(record);
    }
}

void rectangle(GuardedSamples& source, GuardedSamples& result, const Taps2& kernel) {
    withPixel(source.samples(), [&](auto pixel, auto sum) {
        using Pixel = decltype(pixel);
        const Convolve2Record record = rectangleRecord(source, result, kernel);
        inTurns(record, convolve2<Pixel, decltype(sum)>);
        copy_edges<Pixel>(record);
    });
}

void lines(GuardedSamples& source, GuardedSamples& result, const Taps2& kernel, bool alongRows) {
    withPixel(source.samples(), [&](auto pixel, auto sum) {
        using Pixel = decltype(pixel);
        using Sum = decltype(sum);
        inTurns(lineRecord(source, result, kernel),
                alongRows ? convolve1a<Pixel, Sum> : convolve1b<Pixel, Sum>);
    });
}

GuardedSamples grays(int width, int height, const std::vector<std::uint8_t>& values) {
    GuardedSamples picture(width, height, 1, 3);
    for (int i = 0; i < width * height; ++i) {
        picture.at(i % width, i / width, 0) = values[static_cast<std::size_t>(i)];
    }
    return picture;
}

std::vector<int> rowOf(GuardedSamples& picture, int y) {
    std::vector<int> values;
    for (int x = 0; x < picture.width(); ++x) values.push_back(picture.at(x, y, 0));
    return values;
}

const Taps2 sharpen = {3, 3, {-1, -2, -1, -2, 16, -2, -1, -2, -1}, 4};

} // namespace

TEST(ConvolutionSample, IsTheQuotientTruncatedTowardZeroAndLimited) {
    EXPECT_EQ(sampleOfSum(7, 4), 1);
    EXPECT_EQ(sampleOfSum(static_cast<std::uint32_t>(-3), 4), 0);
    EXPECT_EQ(sampleOfSum(static_cast<std::uint32_t>(-7), -4), 1);
    EXPECT_EQ(sampleOfSum(7, -4), 0);
    EXPECT_EQ(sampleOfSum(1020, 4), 255);
    EXPECT_EQ(sampleOfSum(1024, 4), 255);
    EXPECT_EQ(sampleOfSum(0x80000000U, 1), 0);
    EXPECT_EQ(sampleOfSum(0x80000000U, -1), 255); // 2^31, which 32 bits do not hold
}

TEST(PlainConvolution, KeepsAUniformPictureUnderSharpen) {
    GuardedSamples source = grays(5, 4, std::vector<std::uint8_t>(20, 93));
    GuardedSamples result(5, 4, 1, 0);
    rectangle(source, result, sharpen);
    for (int y = 0; y < 4; ++y) EXPECT_EQ(rowOf(result, y), std::vector<int>(5, 93));
}

TEST(PlainConvolution, AppliesTheKernelAsItIsStored) {
    // Only the tap at the left of the middle counts, so the result is the source moved to the right.
    const Taps2 left = {3, 3, {0, 0, 0, 1, 0, 0, 0, 0, 0}, 1};
    GuardedSamples source = grays(5, 3, {1, 2, 3, 4, 5, 11, 12, 13, 14, 15, 21, 22, 23, 24, 25});
    GuardedSamples result(5, 3, 1, 2);
    rectangle(source, result, left);
    EXPECT_EQ(rowOf(result, 0), (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(rowOf(result, 1), (std::vector<int>{11, 11, 12, 13, 15}));
    EXPECT_EQ(rowOf(result, 2), (std::vector<int>{21, 22, 23, 24, 25}));
}

TEST(PlainConvolution, PairsRowsWithHalfTheWidthAndColumnsWithHalfTheHeight) {
    // 5 wide, 1 + 1 + 1 high would be square; here hx = 2 and hy = 1: rows 2 to H - 3 are computed, and W - 2
    // pixels in each, written from column 2 on; the last of them has no column left.
    const Taps2 wide = {5, 3, {0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 1};
    std::vector<std::uint8_t> values;
    for (int i = 0; i < 36; ++i) values.push_back(static_cast<std::uint8_t>(100 + i));
    GuardedSamples source = grays(6, 6, values);
    GuardedSamples result(6, 6, 1, 5);
    withPixel(1, [&](auto, auto) { convolve2<GPixel, GPixelSum>(rectangleRecord(source, result, wide)); });
    for (const int y : {0, 1, 4, 5}) EXPECT_EQ(rowOf(result, y), std::vector<int>(6, 0)) << y;
    // The tap is the left one of the middle row: column j + (1 - 2), where j counts from column 2; j = 0
    // reads left of the row, which is the nearest edge pixel.
    EXPECT_EQ(rowOf(result, 2), (std::vector<int>{0, 0, 112, 112, 113, 114}));
    EXPECT_EQ(rowOf(result, 3), (std::vector<int>{0, 0, 118, 118, 119, 120}));
    EXPECT_TRUE(result.guardsAreIntact());
}

TEST(PlainConvolution, WritesZeroWithAKernelOfNoHeight) {
    const Taps2 flat = {3, 0, {}, 1};
    GuardedSamples source = grays(4, 4, std::vector<std::uint8_t>(16, 50));
    GuardedSamples result = grays(4, 4, std::vector<std::uint8_t>(16, 77));
    convolve2<GPixel, GPixelSum>(rectangleRecord(source, result, flat));
    EXPECT_EQ(rowOf(result, 0), (std::vector<int>{77, 77, 77, 77}));
    EXPECT_EQ(rowOf(result, 1), (std::vector<int>{77, 0, 0, 0}));
    EXPECT_EQ(rowOf(result, 2), (std::vector<int>{77, 0, 0, 0}));
}

TEST(PlainConvolution, BlursRowsAndCopiesTheirEnds) {
    const Taps2 row = {3, 1, {1, 2, 1}, 4};
    GuardedSamples source = grays(5, 1, {0, 100, 200, 40, 7});
    GuardedSamples result(5, 1, 1, 1);
    lines(source, result, row, true);
    EXPECT_EQ(rowOf(result, 0), (std::vector<int>{0, 100, 135, 71, 7})); // 540 / 4, 287 / 4
}

TEST(PlainConvolution, BlursColumnsAndCopiesTheirEnds) {
    const Taps2 column = {3, 1, {1, 2, 1}, 4};
    GuardedSamples source = grays(1, 5, {0, 100, 200, 40, 7});
    GuardedSamples result(1, 5, 1, 4);
    lines(source, result, column, false);
    std::vector<int> values;
    for (int y = 0; y < 5; ++y) values.push_back(result.at(0, y, 0));
    EXPECT_EQ(values, (std::vector<int>{0, 100, 135, 71, 7}));
}

TEST(PlainConvolution, TouchesOnlyItsOwnLines) {
    const Taps2 row = {3, 1, {1, 2, 1}, 4};
    GuardedSamples source = grays(3, 3, std::vector<std::uint8_t>(9, 80));
    GuardedSamples rows(3, 3, 1, 0);
    Convolve1Record record = lineRecord(source, rows, row);
    record.firstRow = 1;
    record.rowStep = 2;
    convolve1a<GPixel, GPixelSum>(record);
    EXPECT_EQ(rowOf(rows, 0), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(rowOf(rows, 1), (std::vector<int>{80, 80, 80}));
    EXPECT_EQ(rowOf(rows, 2), (std::vector<int>{0, 0, 0}));
    GuardedSamples columns(3, 3, 1, 0);
    record.destination = columns.data();
    record.destinationBytesPerRow = columns.bytesPerRow();
    convolve1b<GPixel, GPixelSum>(record);
    for (int y = 0; y < 3; ++y) EXPECT_EQ(rowOf(columns, y), (std::vector<int>{0, 80, 0}));
}

TEST(PlainConvolution, CopiesTheEdgesOfPicturesSmallerThanTheKernel) {
    GuardedSamples source = grays(2, 3, {1, 2, 3, 4, 5, 6});
    GuardedSamples result(2, 3, 1, 7);
    copy_edges<GPixel>(rectangleRecord(source, result, {9, 11, {}, 1}));
    EXPECT_TRUE(areEqual(result, source));
}

TEST(PlainConvolution, LeavesTheInnerPixelsToTheWorkersWhenItCopiesEdges) {
    GuardedSamples source = grays(5, 5, std::vector<std::uint8_t>(25, 9));
    GuardedSamples result(5, 5, 1, 7);
    copy_edges<GPixel>(rectangleRecord(source, result, {5, 3, {}, 1}));
    EXPECT_EQ(rowOf(result, 0), (std::vector<int>{9, 9, 9, 9, 9}));
    for (const int y : {1, 2, 3}) EXPECT_EQ(rowOf(result, y), (std::vector<int>{9, 9, 0, 9, 9}));
    EXPECT_EQ(rowOf(result, 4), (std::vector<int>{9, 9, 9, 9, 9}));
}

TEST(PlainConvolution, GivesWhatTheArithmeticSaysInTwoDimensions) {
    Pixels::Random random(20261204);
    for (int round = 0; round < 400; ++round) {
        const int samples = random.integer(1, 4);
        GuardedSamples source(random.integer(1, 14), random.integer(1, 14), samples,
                              static_cast<std::size_t>(random.integer(0, 9)));
        GuardedSamples result(source.width(), source.height(), samples,
                              static_cast<std::size_t>(random.integer(0, 9)));
        GuardedSamples expected(source.width(), source.height(), samples, 0);
        source.fillAtRandom(random);
        const Taps2 kernel = someKernel(random, random.integer(1, 9), random.integer(1, 9));
        rectangle(source, result, kernel);
        referenceRectangle(source, expected, kernel);
        ASSERT_TRUE(areEqual(result, expected)) << described(source, kernel);
    }
}

TEST(PlainConvolution, GivesWhatTheArithmeticSaysAlongLines) {
    Pixels::Random random(20261205);
    for (int round = 0; round < 400; ++round) {
        const int samples = random.integer(1, 4);
        GuardedSamples source(random.integer(1, 20), random.integer(1, 20), samples,
                              static_cast<std::size_t>(random.integer(0, 9)));
        GuardedSamples result(source.width(), source.height(), samples,
                              static_cast<std::size_t>(random.integer(0, 9)));
        GuardedSamples expected(source.width(), source.height(), samples, 0);
        source.fillAtRandom(random);
        const Taps2 kernel = someKernel(random, random.integer(1, 25), 1);
        const bool alongRows = random.integer(0, 1) == 0;
        lines(source, result, kernel, alongRows);
        referenceLines(source, expected, kernel, alongRows);
        ASSERT_TRUE(areEqual(result, expected)) << described(source, kernel);
    }
}
