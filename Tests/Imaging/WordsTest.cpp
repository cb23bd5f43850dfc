#include "Imaging/Words.h"

#include <gtest/gtest.h>

#include <limits>

using Imaging::inWords;
using Imaging::Platform::NSMakePoint;
using Imaging::Platform::NSMakeRect;
using Imaging::Platform::NSMakeSize;

TEST(Words, GiveNumbersSevenDigitsAndNoMore) {
    EXPECT_EQ(inWords(30.0F), "30");
    EXPECT_EQ(inWords(-0.25F), "-0.25");
    EXPECT_EQ(inWords(1.0F / 3), "0.3333333");
    EXPECT_EQ(inWords(1e20F), "1e+20");
    EXPECT_EQ(inWords(std::numeric_limits<float>::infinity()), "inf");
}

TEST(Words, TakeTheSmallestNumbersAndMinusZeroForZero) {
    EXPECT_EQ(inWords(-0.0F), "0");
    EXPECT_EQ(inWords(std::numeric_limits<float>::min()), "0");
    EXPECT_EQ(inWords(-std::numeric_limits<float>::denorm_min()), "0");
    EXPECT_EQ(inWords(2e-38F), "2e-38");
}

TEST(Words, JoinWhatIsMadeOfNumbers) {
    EXPECT_EQ(inWords(NSMakePoint(50, -25.5F)), "50,-25.5");
    EXPECT_EQ(inWords(NSMakeSize(640, 480)), "640x480");
    EXPECT_EQ(inWords(NSMakeRect(1.5F, -2, 30, 20)), "1.5,-2 30x20");
    Imaging::Platform::NSAffineTransform transform;
    transform.translateXBy(50, 25);
    transform.scaleXBy(2, -3);
    EXPECT_EQ(inWords(transform), "[2 0 0 -3 50 25]");
}
