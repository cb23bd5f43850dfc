#include "Platform/Foundation/AffineTransform.h"

#include "Platform/Foundation/Exception.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>

using namespace Imaging::Platform;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

void expectEntries(const NSAffineTransform& transform, float m11, float m12, float m21, float m22, float tX,
                   float tY) {
    const NSAffineTransformStruct m = transform.transformStruct();
    EXPECT_EQ(m.m11, m11);
    EXPECT_EQ(m.m12, m12);
    EXPECT_EQ(m.m21, m21);
    EXPECT_EQ(m.m22, m22);
    EXPECT_EQ(m.tX, tX);
    EXPECT_EQ(m.tY, tY);
}

void expectBitEqual(const NSAffineTransform& left, const NSAffineTransform& right) {
    using Bits = std::array<std::uint32_t, 6>;
    EXPECT_EQ(std::bit_cast<Bits>(left.transformStruct()), std::bit_cast<Bits>(right.transformStruct()));
}

void expectPoint(NSPoint point, float x, float y) {
    EXPECT_EQ(point.x, x);
    EXPECT_EQ(point.y, y);
}

/// Off the origin, off the axes, without symmetry, and invertible; all entries are exact.
const NSAffineTransform slanted({2, 0.5f, -0.25f, 3, 7, -11});

} // namespace

TEST(AffineTransform, BeginsAsTheIdentity) {
    expectEntries(NSAffineTransform(), 1, 0, 0, 1, 0, 0);
    expectPoint(NSAffineTransform().transformPoint(NSMakePoint(-3, 8)), -3, 8);
}

TEST(AffineTransform, MapsAPointByRowsOfTheMatrix) {
    // x = 2 * 3 - 0.25 * 8 + 7, y = 0.5 * 3 + 3 * 8 - 11
    expectPoint(slanted.transformPoint(NSMakePoint(3, 8)), 11, 14.5f);
}

TEST(AffineTransform, MapsASizeWithoutTheTranslation) {
    const NSSize size = slanted.transformSize(NSMakeSize(3, 8));
    EXPECT_EQ(size.width, 4);
    EXPECT_EQ(size.height, 25.5f);
}

TEST(AffineTransform, TranslatesBeforeWhatItDidAlready) {
    NSAffineTransform transform = slanted;
    transform.translateXBy(4, -2);
    // The origin goes to (4, -2) first: 2 * 4 + 0.25 * 2 + 7 and 0.5 * 4 - 3 * 2 - 11.
    expectEntries(transform, 2, 0.5f, -0.25f, 3, 15.5f, -15);
}

TEST(AffineTransform, ScalesBeforeWhatItDidAlready) {
    NSAffineTransform transform = slanted;
    transform.scaleXBy(3, -4);
    expectEntries(transform, 6, 1.5f, 1, -12, 7, -11);
    transform.scaleBy(0.5f);
    expectEntries(transform, 3, 0.75f, 0.5f, -6, 7, -11);
}

TEST(AffineTransform, TurnsBeforeWhatItDidAlready) {
    NSAffineTransform transform = slanted;
    transform.rotateByDegrees(90);
    // (1, 0) turns to (0, 1), which was mapped to (-0.25, 3); (0, 1) turns to (-1, 0).
    expectEntries(transform, -0.25f, 3, -2, -0.5f, 7, -11);
}

TEST(AffineTransform, TurnsCounterClockwise) {
    NSAffineTransform transform;
    transform.rotateByDegrees(30);
    const NSPoint point = transform.transformPoint(NSMakePoint(2, 0));
    EXPECT_FLOAT_EQ(point.x, static_cast<float>(std::sqrt(3.0)));
    EXPECT_FLOAT_EQ(point.y, 1);
}

TEST(AffineTransform, QuarterTurnsAreExact) {
    constexpr float sines[] = {0, 1, 0, -1};
    for (int quarter = -9; quarter <= 9; ++quarter) {
        NSAffineTransform transform;
        transform.rotateByDegrees(static_cast<float>(90 * quarter));
        const float sine = sines[((quarter % 4) + 4) % 4];
        const float cosine = sines[((quarter % 4) + 5) % 4];
        SCOPED_TRACE(quarter);
        expectEntries(transform, cosine, sine, -sine, cosine, 0, 0);
    }
}

TEST(AffineTransform, FullTurnsGiveTheIdentityBitForBit) {
    for (const float angle : {0.0f, 360.0f, -360.0f, 720.0f, -3600.0f, 360.0f * 1000}) {
        NSAffineTransform transform;
        transform.rotateByDegrees(angle);
        SCOPED_TRACE(angle);
        expectBitEqual(transform, NSAffineTransform());
        NSAffineTransform other = slanted;
        other.rotateByDegrees(angle);
        expectBitEqual(other, slanted);
    }
}

TEST(AffineTransform, FourQuarterTurnsGiveBackEveryEntry) {
    NSAffineTransform transform = slanted;
    for (int i = 0; i < 4; ++i) transform.rotateByDegrees(90);
    expectBitEqual(transform, slanted);
}

TEST(AffineTransform, DegreesAndRadiansAgree) {
    for (const double angle : {-150.0, 1.0, 37.0, 100.0, 359.0}) {
        NSAffineTransform degrees;
        NSAffineTransform radians;
        degrees.rotateByDegrees(static_cast<float>(angle));
        radians.rotateByRadians(static_cast<float>(angle * std::numbers::pi / 180));
        EXPECT_NEAR(degrees.transformStruct().m11, radians.transformStruct().m11, 1e-6);
        EXPECT_NEAR(degrees.transformStruct().m12, radians.transformStruct().m12, 1e-6);
        EXPECT_NEAR(degrees.transformStruct().m21, -std::sin(angle * std::numbers::pi / 180), 1e-6);
    }
}

TEST(AffineTransform, AnglesThatAreNotFiniteGiveNoNumbers) {
    for (const float angle : {notANumber, infinity, -infinity}) {
        NSAffineTransform transform;
        transform.rotateByDegrees(angle);
        EXPECT_TRUE(std::isnan(transform.transformStruct().m11));
        EXPECT_TRUE(std::isnan(transform.transformStruct().m21));
        EXPECT_FALSE(transform.isInvertible());
    }
}

TEST(AffineTransform, PrependedActsFirstAndAppendedLast) {
    const NSAffineTransform other({0, 2, -3, 0, 5, 1});
    const NSPoint point = NSMakePoint(4, -6);

    NSAffineTransform prepended = slanted;
    prepended.prependTransform(other);
    // other: (18 + 5, 8 + 1) = (23, 9); slanted: (46 - 2.25 + 7, 11.5 + 27 - 11)
    expectPoint(prepended.transformPoint(point), 50.75f, 27.5f);

    NSAffineTransform appended = slanted;
    appended.appendTransform(other);
    // slanted: (8 + 1.5 + 7, 2 - 18 - 11) = (16.5, -27); other: (81 + 5, 33 + 1)
    expectPoint(appended.transformPoint(point), 86, 34);
}

TEST(AffineTransform, PrependingOneIsAppendingTheOther) {
    const NSAffineTransform other({0, 2, -3, 0, 5, 1});
    NSAffineTransform prepended = slanted;
    prepended.prependTransform(other);
    NSAffineTransform appended = other;
    appended.appendTransform(slanted);
    EXPECT_TRUE(prepended.isEqual(appended));
    EXPECT_FALSE(prepended.isEqual(slanted));
}

TEST(AffineTransform, CanBeAppendedToItself) {
    NSAffineTransform transform({2, 0, 0, 4, 3, -5});
    transform.appendTransform(transform);
    expectEntries(transform, 4, 0, 0, 16, 9, -25);
}

TEST(AffineTransform, InvertsExactlyWhereTheNumbersAllowIt) {
    NSAffineTransform transform({4, 0, 0, -0.5f, 3, 8});
    transform.invert();
    expectEntries(transform, 0.25f, 0, 0, -2, -0.75f, 16);
}

TEST(AffineTransform, InversesGoThereAndBack) {
    const std::uint32_t seed = std::random_device()();
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> entry(-4, 4);
    SCOPED_TRACE(seed);
    for (int i = 0; i < 1000; ++i) {
        NSAffineTransformStruct m{entry(random), entry(random), entry(random),
                                  entry(random), entry(random), entry(random)};
        // Far from singular, so that a float's precision is enough.
        if (std::fabs(m.m11 * m.m22 - m.m12 * m.m21) < 0.5f) continue;
        NSAffineTransform inverse(m);
        inverse.invert();
        const NSPoint point = NSMakePoint(entry(random), entry(random));
        const NSPoint back = inverse.transformPoint(NSAffineTransform(m).transformPoint(point));
        EXPECT_NEAR(back.x, point.x, 1e-4);
        EXPECT_NEAR(back.y, point.y, 1e-4);
    }
}

TEST(AffineTransform, RefusesToInvertASingularOne) {
    for (const NSAffineTransformStruct& m :
         {NSAffineTransformStruct{0, 0, 0, 0, 1, 2}, NSAffineTransformStruct{1, 2, 2, 4, 0, 0},
          NSAffineTransformStruct{notANumber, 0, 0, 1, 0, 0},
          NSAffineTransformStruct{1, 0, 0, 1, infinity, 0},
          NSAffineTransformStruct{1, 0, 0, 1, 0, notANumber},
          NSAffineTransformStruct{infinity, 0, 0, 1, 0, 0}}) {
        NSAffineTransform transform(m);
        EXPECT_FALSE(transform.isInvertible());
        EXPECT_THROW(transform.invert(), NSException);
    }
    EXPECT_TRUE(slanted.isInvertible());
}

TEST(AffineTransform, InvertsTinyAndHugeScales) {
    NSAffineTransform transform({0x1p-100f, 0, 0, 0x1p100f, 0, 0});
    ASSERT_TRUE(transform.isInvertible());
    transform.invert();
    expectEntries(transform, 0x1p100f, 0, 0, 0x1p-100f, 0, 0);
}

TEST(AffineTransform, RoundsEachEntryOnce) {
    // 1 + 2^-24 - 1 is 0 when the product of floats is rounded in between.
    NSAffineTransform transform({1 + 0x1p-12f, 0, 0, 1, -1 - 0x1p-11f, 0});
    const NSPoint point = transform.transformPoint(NSMakePoint(1 + 0x1p-12f, 0));
    EXPECT_EQ(point.x, 0x1p-24f);
}

TEST(AffineTransform, EqualityIsByValueOfEveryEntry) {
    EXPECT_TRUE(NSAffineTransform({1, 0, 0, 1, 0, 0}).isEqual(NSAffineTransform({1, -0.0f, 0, 1, -0.0f, 0})));
    const float entries[] = {2, 0.5f, -0.25f, 3, 7, -11};
    for (int changed = 0; changed < 6; ++changed) {
        float e[6];
        for (int i = 0; i < 6; ++i) e[i] = i == changed ? std::nextafter(entries[i], 100.0f) : entries[i];
        EXPECT_FALSE(slanted.isEqual(NSAffineTransform({e[0], e[1], e[2], e[3], e[4], e[5]})));
        for (int i = 0; i < 6; ++i) e[i] = i == changed ? notANumber : entries[i];
        const NSAffineTransform unordered({e[0], e[1], e[2], e[3], e[4], e[5]});
        EXPECT_FALSE(unordered.isEqual(unordered));
    }
}
