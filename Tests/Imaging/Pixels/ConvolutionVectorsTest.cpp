// The vector code and whole convolutions against plain sums, on every target that the machine supports.
// Also tests: Imaging/Pixels/ConvolutionPasses.cpp

#include "Imaging/Pixels/ConvolutionVectors.h"

#include "Imaging/Kernel.h"
#include "Imaging/Pixels/ConvolutionPasses.h"
#include "Tests/Imaging/PixelOperationFixtures.h"
#include "Tests/Imaging/Pixels/ConvolutionFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

using namespace ImagingTests;
using namespace Imaging;

namespace {

void checkRectangle(Pixels::Random& random, int width, int height, int samples, const Taps2& kernel) {
    GuardedSamples source(width, height, samples, static_cast<std::size_t>(random.integer(0, 70)));
    GuardedSamples result(width, height, samples, static_cast<std::size_t>(random.integer(0, 70)));
    GuardedSamples expected(width, height, samples, 0);
    source.fillAtRandom(random);
    convolveRectangle(rectangleRecord(source, result, kernel), samples);
    referenceRectangle(source, expected, kernel);
    ASSERT_TRUE(areEqual(result, expected)) << described(source, kernel);
}

void checkSeparable(Pixels::Random& random, int width, int height, int samples, const Taps2& kernel) {
    GuardedSamples source(width, height, samples, static_cast<std::size_t>(random.integer(0, 70)));
    GuardedSamples between(width, height, samples, 0);
    GuardedSamples result(width, height, samples, static_cast<std::size_t>(random.integer(0, 70)));
    GuardedSamples expected(width, height, samples, 0);
    source.fillAtRandom(random);
    convolveSeparably(lineRecord(source, result, kernel), samples);
    referenceLines(source, between, kernel, true);
    referenceLines(between, expected, kernel, false);
    ASSERT_TRUE(areEqual(result, expected)) << described(source, kernel);
}

Taps2 tapsOf(const IMGKernel& kernel) {
    return {static_cast<int>(kernel.size().width),
            static_cast<int>(kernel.size().height),
            {kernel.dataAsIntArray(), kernel.dataAsIntArray() + kernel.tapCount()},
            kernel.divisor()};
}

/// Sums of one tap are the samples themselves times it, so a single tap of 1 shows every quotient.
int vectorQuotient(std::int32_t sum, std::int32_t divisor) {
    const std::int32_t taps[] = {sum};
    const ConvolutionPlan plan = convolutionPlan(taps, divisor);
    std::vector<std::ptrdiff_t> offsets(plan.order.size(), 0);
    std::vector<WideSample> ones(64 + wideRowPadding, 1);
    std::uint8_t results[64];
    convolveSamples(plan, offsets.data(), ones.data(), results, 64);
    for (const std::uint8_t result : results) EXPECT_EQ(result, results[0]);
    return results[0];
}

} // namespace

TEST(ExactQuotients, HoldAtEveryMultipleOfTheDivisorAndBesideIt) {
    onEveryTarget([] {
        for (const std::int32_t divisor :
             {1,     2,     3,     4,       7,         100, 4083, 4093, 4095,  4096,   8191,
              16384, 40000, 65536, 1000003, INT32_MAX, -1,  -2,   -3,   -4095, -70000, INT32_MIN}) {
            for (const std::int64_t n :
                 {-257, -256, -3, -2, -1, 0, 1, 2, 3, 4, 17, 127, 128, 254, 255, 256, 257}) {
                for (const std::int64_t beside : {-1, 0, 1}) {
                    const std::int64_t sum = n * divisor + beside;
                    if (sum < INT32_MIN || sum > INT32_MAX) continue;
                    ASSERT_EQ(vectorQuotient(static_cast<std::int32_t>(sum), divisor),
                              limitedQuotient(sum, divisor))
                        << sum << " / " << divisor;
                }
            }
        }
    });
}

TEST(ExactQuotients, HoldAtTheEndsOfTheRange) {
    onEveryTarget([] {
        for (const std::int32_t divisor : {1, 2, 4095, 100000, INT32_MAX, -1, -2, -4095, INT32_MIN}) {
            for (const std::int32_t sum : {INT32_MIN, INT32_MIN + 1, -1, 0, 1, INT32_MAX - 1, INT32_MAX}) {
                ASSERT_EQ(vectorQuotient(sum, divisor), limitedQuotient(sum, divisor))
                    << sum << " / " << divisor;
            }
        }
    });
}

TEST(ExactQuotients, HoldForEverySumOfAGaussianKernel) {
    // All sums from below 0 to above 255 times the divisor, in the arithmetic that the vector code uses: one
    // float product and a rounded addition, fused or not.
    for (const std::int32_t divisor : {4, 4083, 4092, 4093, 4095, 4096}) {
        const ExactQuotient quotient = exactQuotient(divisor, std::int64_t{255} * 2 * divisor);
        ASSERT_TRUE(quotient.inFloat);
        for (std::int32_t sum = -2 * divisor; sum < 258 * divisor; ++sum) {
            const float whole = 8388607.5F;
            const float product = static_cast<float>(sum) * quotient.floatFactor;
            const float rounded = product + whole;
            const float fused = std::fma(static_cast<float>(sum), quotient.floatFactor, whole);
            for (const float one : {rounded, fused}) {
                const int bits = std::bit_cast<std::int32_t>(one) - 0x4B000000;
                ASSERT_EQ(std::clamp(bits, 0, 255), limitedQuotient(sum, divisor)) << sum << " / " << divisor;
            }
        }
    }
}

TEST(ExactQuotients, UseDoublesWhereFloatsAreTooCoarse) {
    EXPECT_TRUE(exactQuotient(4095, 4095 * 255).inFloat);
    EXPECT_TRUE(exactQuotient(-3, 255 * 100).inFloat);
    EXPECT_FALSE(exactQuotient(1000003, 255).inFloat);
    EXPECT_FALSE(exactQuotient(INT32_MAX, 255).inFloat);
    EXPECT_FALSE(exactQuotient(1, std::int64_t{1} << 31).inFloat); // quotients of more than 23 bits
    EXPECT_FALSE(exactQuotient(-255, std::int64_t{1} << 31).inFloat);
    EXPECT_TRUE(exactQuotient(1, 255 * 16000).inFloat);
}

TEST(ConvolutionPlan, AddsUpSamplesOfEqualTapsAndLeavesOutZeros) {
    const std::int32_t taps[] = {5, 9, 0, 9, 5};
    const ConvolutionPlan plan = convolutionPlan(taps, 28);
    ASSERT_EQ(plan.pairs.size(), 1U);
    EXPECT_EQ(plan.pairs[0].taps, (9U << 16) | 5U);
    EXPECT_EQ(plan.pairs[0].firstCount, 2U);
    EXPECT_EQ(plan.pairs[0].secondCount, 2U);
    EXPECT_EQ(plan.order, (std::vector<std::uint32_t>{0, 4, 1, 3}));
    EXPECT_EQ(plan.highPairs, 0U);
}

TEST(ConvolutionPlan, SplitsTapsBeyondSixteenBits) {
    const std::int32_t taps[] = {65536 * 3 - 2};
    const ConvolutionPlan plan = convolutionPlan(taps, 1);
    ASSERT_EQ(plan.pairs.size(), 2U);
    EXPECT_EQ(plan.highPairs, 1U);
    EXPECT_EQ(plan.pairs[0].taps, 3U);
    EXPECT_EQ(plan.pairs[1].taps, 0xFFFEU);
}

TEST(ConvolutionPlan, KeepsGroupsWithinSixteenBits) {
    const std::vector<std::int32_t> taps(300, 7);
    const ConvolutionPlan plan = convolutionPlan(taps, 2100);
    ASSERT_EQ(plan.pairs.size(), 2U);
    EXPECT_EQ(plan.pairs[0].firstCount, 128U);
    EXPECT_EQ(plan.pairs[0].secondCount, 128U);
    EXPECT_EQ(plan.pairs[1].firstCount, 44U);
    EXPECT_EQ(plan.pairs[1].secondCount, 0U);
}

TEST(ConvolutionRows, ConvertEveryLengthAndNothingBehind) {
    onEveryTarget([] {
        for (std::size_t count = 1; count <= 255; ++count) {
            std::vector<std::uint8_t> bytes(count);
            for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(255 - 3 * i);
            std::vector<WideSample> wide(count + wideRowPadding, -1);
            widenSamples(bytes.data(), wide.data(), count);
            for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(wide[i], bytes[i]);
            std::vector<std::uint8_t> back(count + 64, 0xC7);
            narrowSamples(wide.data(), back.data(), count);
            ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), back.begin())) << count;
            ASSERT_EQ(std::count(back.begin() + static_cast<std::ptrdiff_t>(count), back.end(), 0xC7), 64);
        }
    });
}

TEST(ConvolutionRows, GiveEveryLengthAndNothingBehind) {
    Pixels::Random random(20261206);
    std::vector<WideSample> source(300 + 2 * wideRowPadding);
    for (WideSample& sample : source) sample = static_cast<WideSample>(random.sample());
    onEveryTarget([&] {
        for (std::size_t count = 1; count <= 255; ++count) {
            const Taps2 kernel = someKernel(random, 5, 1);
            const ConvolutionPlan plan = convolutionPlan(kernel.taps, kernel.divisor);
            const std::vector<std::ptrdiff_t> offsets(plan.order.begin(), plan.order.end());
            std::vector<std::uint8_t> narrow(count + 64, 0xC7);
            std::vector<WideSample> wide(count + wideRowPadding, -1);
            convolveSamples(plan, offsets.data(), source.data(), narrow.data(), count);
            convolveSamples(plan, offsets.data(), source.data(), wide.data(), count);
            for (std::size_t i = 0; i < count; ++i) {
                std::int64_t sum = 0;
                for (std::size_t k = 0; k < 5; ++k) sum += std::int64_t{kernel.taps[k]} * source[i + k];
                ASSERT_EQ(narrow[i], limitedQuotient(sum, kernel.divisor)) << i << " of " << count;
                ASSERT_EQ(wide[i], narrow[i]) << i << " of " << count;
            }
            ASSERT_EQ(std::count(narrow.begin() + static_cast<std::ptrdiff_t>(count), narrow.end(), 0xC7),
                      64);
        }
    });
}

TEST(ConvolutionPasses, GiveWhatTheArithmeticSaysInTwoDimensions) {
    Pixels::Random random(20261207);
    onEveryTarget([&] {
        for (int round = 0; round < 150; ++round) {
            const int samples = random.integer(1, 4);
            const Taps2 kernel = someKernel(random, random.integer(1, 9), random.integer(2, 9));
            checkRectangle(random, random.integer(1, 90), random.integer(1, 40), samples, kernel);
        }
    });
}

TEST(ConvolutionPasses, GiveWhatTheArithmeticSaysForASeparableKernel) {
    Pixels::Random random(20261208);
    onEveryTarget([&] {
        for (int round = 0; round < 150; ++round) {
            const int samples = random.integer(1, 4);
            const Taps2 kernel = someKernel(random, random.integer(1, 30), 1);
            checkSeparable(random, random.integer(1, 150), random.integer(1, 60), samples, kernel);
        }
    });
}

TEST(ConvolutionPasses, TreatPicturesOfOneRowOrColumn) {
    Pixels::Random random(20261209);
    onEveryTarget([&] {
        for (int length = 1; length <= 70; ++length) {
            const int samples = 1 + length % 4;
            const Taps2 row = someKernel(random, random.integer(2, 9), 1);
            checkSeparable(random, length, 1, samples, row);
            checkSeparable(random, 1, length, samples, row);
            const Taps2 square = someKernel(random, 3, 3);
            checkRectangle(random, length, 1, samples, square);
            checkRectangle(random, 1, length, samples, square);
        }
    });
}

TEST(ConvolutionPasses, TreatKernelsLongerThanThePicture) {
    Pixels::Random random(20261210);
    onEveryTarget([&] {
        checkSeparable(random, 40, 30, 3, someKernel(random, 501, 1));
        checkSeparable(random, 700, 3, 1, someKernel(random, 501, 1)); // rows are filtered, columns are not
        checkSeparable(random, 3, 700, 4, someKernel(random, 501, 1));
        checkRectangle(random, 40, 30, 3, someKernel(random, 91, 85));
        checkRectangle(random, 9, 200, 2, someKernel(random, 3, 25)); // no columns, only edges
        checkRectangle(random, 200, 9, 2, someKernel(random, 25, 3)); // no rows
    });
}

TEST(ConvolutionPasses, TreatPicturesOfManyBlocksAndBands) {
    // Wider than the blocks of columns under long kernels, and higher than many bands of rows.
    Pixels::Random random(20261211);
    onEveryTarget([&] {
        checkSeparable(random, 1700, 140, 3, tapsOf(*IMGKernel::kernelSeparableGaussianWithSigma(30)));
        checkSeparable(random, 2500, 20, 1, tapsOf(*IMGKernel::kernelSeparableGaussianWithSigma(2)));
        checkRectangle(random, 130, 301, 4, tapsOf(*IMGKernel::kernelSharpen()));
        checkRectangle(random, 3000, 45, 1, tapsOf(*IMGKernel::kernelGaussianWithSigma(6)));
    });
}
