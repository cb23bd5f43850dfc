// Splitting and measuring curves, by hand and against the same constructions in double precision.

#include "Imaging/Bezier.h"

#include "Imaging/Matrix4.h"
#include "Platform/Foundation/Exception.h"
#include "Tests/Imaging/CurveFixtures.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace Imaging;
using namespace ImagingTests;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

testing::AssertionResult isCurve(const BezierCurve& curve, const BezierCurve& expected) {
    const ExactCurve a(curve);
    const ExactCurve b(expected);
    for (std::size_t i = 0; i < 4; ++i) {
        if (a.points[i].x == b.points[i].x && a.points[i].y == b.points[i].y) continue;
        return testing::AssertionFailure()
               << "point " << i << " is (" << a.points[i].x << ", " << a.points[i].y << ")";
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult isNear(const BezierCurve& curve, const ExactCurve& expected, double limit) {
    const ExactCurve a(curve);
    for (std::size_t i = 0; i < 4; ++i) {
        if (gap(a.points[i], expected.points[i]) <= limit) continue;
        return testing::AssertionFailure()
               << "point " << i << " is (" << a.points[i].x << ", " << a.points[i].y << ") instead of ("
               << expected.points[i].x << ", " << expected.points[i].y << ")";
    }
    return testing::AssertionSuccess();
}

/// The rule of the length in double, and the number of pieces that it takes.
double lengthByRule(const ExactCurve& curve, double tolerance, int& pieces) {
    const ExactHalves halves = exactSplit(curve, 0.5);
    const auto chord = [](const ExactCurve& c) { return gap(c.points[0], c.points[3]); };
    const double length = chord(halves.left) + chord(halves.right);
    if (tolerance > std::fabs(chord(curve) - length)) {
        ++pieces;
        return length;
    }
    return lengthByRule(halves.left, tolerance, pieces) + lengthByRule(halves.right, tolerance, pieces);
}

} // namespace

// Splitting

TEST(SplitBezier, HalvesByDeCasteljau) {
    BezierCurve left;
    BezierCurve right;
    SplitBezier({{10, 20}, {18, 60}, {50, -4}, {-6, 12}}, left, right);
    // Midpoints (14, 40), (34, 28), (22, 4); of those (24, 34), (28, 16); of those (26, 25).
    EXPECT_TRUE(isCurve(left, {{10, 20}, {14, 40}, {24, 34}, {26, 25}}));
    EXPECT_TRUE(isCurve(right, {{26, 25}, {28, 16}, {22, 4}, {-6, 12}}));
}

TEST(SplitBezier, MayWriteOverItsArgument) {
    BezierCurve curve{{10, 20}, {18, 60}, {50, -4}, {-6, 12}};
    BezierCurve other;
    SplitBezier(curve, curve, other);
    EXPECT_TRUE(isCurve(curve, {{10, 20}, {14, 40}, {24, 34}, {26, 25}}));
    EXPECT_TRUE(isCurve(other, {{26, 25}, {28, 16}, {22, 4}, {-6, 12}}));
    curve = {{10, 20}, {18, 60}, {50, -4}, {-6, 12}};
    SplitBezierAtParam(curve, other, curve, 0.5f);
    EXPECT_TRUE(isCurve(curve, {{26, 25}, {28, 16}, {22, 4}, {-6, 12}}));
}

TEST(SplitBezier, AddsBeforeItHalvesAndSoOverflows) {
    BezierCurve left;
    BezierCurve right;
    SplitBezier({{3e38f, 1}, {3e38f, 2}, {1, 3}, {1, 4}}, left, right);
    EXPECT_EQ(left.control1.x, infinity);
    EXPECT_EQ(left.control1.y, 1.5f);
}

TEST(SplitBezier, AgreesWithTheConstructionInDoubleOnRandomCurves) {
    const std::uint32_t seed = 27182;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 500; ++round) {
        const BezierCurve curve = randomCurve(random);
        const ExactHalves expected = exactSplit(ExactCurve(curve), 0.5);
        BezierCurve left;
        BezierCurve right;
        SplitBezier(curve, left, right);
        // Three sums of numbers up to 300, each off by at most half the spacing of floats there, in x and y.
        ASSERT_TRUE(isNear(left, expected.left, 3 * 300 * 1.2e-7));
        ASSERT_TRUE(isNear(right, expected.right, 3 * 300 * 1.2e-7));
    }
}

TEST(SplitBezierAtParam, SplitsAtAQuarterByHand) {
    BezierCurve left;
    BezierCurve right;
    SplitBezierAtParam({{16, 32}, {80, 96}, {-48, 160}, {-112, 32}}, left, right, 0.25f);
    // A quarter of the way: (32, 48), (48, 112), (-64, 128); then (36, 64), (20, 116); then (32, 77).
    EXPECT_TRUE(isNear(left, ExactCurve(BezierCurve{{16, 32}, {32, 48}, {36, 64}, {32, 77}}), 1e-4));
    EXPECT_TRUE(isNear(right, ExactCurve(BezierCurve{{32, 77}, {20, 116}, {-64, 128}, {-112, 32}}), 1e-4));
}

TEST(SplitBezierAtParam, AgreesWithDeCasteljauInDoubleAtAnyParameter) {
    const std::uint32_t seed = 31415;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> parameter(0, 1);
    for (int round = 0; round < 1000; ++round) {
        const BezierCurve curve = randomCurve(random);
        const float t = parameter(random);
        const ExactHalves expected = exactSplit(ExactCurve(curve), t);
        BezierCurve left;
        BezierCurve right;
        SplitBezierAtParam(curve, left, right, t);
        // Entries of up to 6 cancel in the products, on points of up to 300.
        ASSERT_TRUE(isNear(left, expected.left, 300 * 40 * 6e-8)) << "at " << t;
        ASSERT_TRUE(isNear(right, expected.right, 300 * 40 * 6e-8)) << "at " << t;
    }
}

TEST(SplitBezierAtParam, LeavesOnePieceWholeAtEachEnd) {
    const BezierCurve curve{{10, 20}, {18, 60}, {50, -4}, {-6, 12}};
    BezierCurve left;
    BezierCurve right;
    SplitBezierAtParam(curve, left, right, 0);
    EXPECT_TRUE(isNear(left, ExactCurve(BezierCurve{{10, 20}, {10, 20}, {10, 20}, {10, 20}}), 1e-4));
    EXPECT_TRUE(isNear(right, ExactCurve(curve), 1e-4));
    SplitBezierAtParam(curve, left, right, 1);
    EXPECT_TRUE(isNear(left, ExactCurve(curve), 1e-4));
    EXPECT_TRUE(isNear(right, ExactCurve(BezierCurve{{-6, 12}, {-6, 12}, {-6, 12}, {-6, 12}}), 1e-4));
}

TEST(SplitBezierAtParam, ContinuesThePolynomialOutsideTheCurve) {
    const BezierCurve curve{{10, 20}, {18, 60}, {50, -4}, {-6, 12}};
    for (const float t : {-0.5f, 1.5f, 3.0f}) {
        BezierCurve left;
        BezierCurve right;
        SplitBezierAtParam(curve, left, right, t);
        const ExactHalves expected = exactSplit(ExactCurve(curve), t);
        EXPECT_TRUE(isNear(left, expected.left, 0.02)) << t;
        EXPECT_TRUE(isNear(right, expected.right, 0.02)) << t;
    }
}

TEST(SplitBezierAtParam, EqualsTheHalvingAtOneHalfUpToRounding) {
    std::mt19937 random(16180);
    for (int round = 0; round < 200; ++round) {
        const BezierCurve curve = randomCurve(random);
        BezierCurve left, right, leftHalf, rightHalf;
        SplitBezierAtParam(curve, left, right, 0.5f);
        SplitBezier(curve, leftHalf, rightHalf);
        ASSERT_TRUE(isNear(left, ExactCurve(leftHalf), 2e-4));
        ASSERT_TRUE(isNear(right, ExactCurve(rightHalf), 2e-4));
    }
}

TEST(SplitBezierAtParam, MultipliesTheMatricesIn32BitFloats) {
    // The products as they are written down, third as the float above it, so that every bit is known.
    const Matrix4 basis{{-1, 3, -3, 1, 3, -6, 3, 0, -3, 3, 0, 0, 1, 0, 0, 0}};
    const Matrix4 inverse{{0, 0, 0, 1, 0, 0, 0.33333334f, 1, 0, 0.33333334f, 0.6666667f, 1, 1, 1, 1, 1}};
    const float t = 0.3f;
    const float u = 1 - t;
    const Matrix4 before{{t * t * t, 0, 0, 0, 0, t * t, 0, 0, 0, 0, t, 0, 0, 0, 0, 1}};
    const Matrix4 after{{u * u * u, 0, 0, 0, 3 * t * u * u, u * u, 0, 0, 3 * t * t * u, 2 * t * u, u, 0,
                         t * t * t, t * t, t, 1}};
    // The points as a matrix of which two columns are used.
    const Matrix4 points{{10, 20, 0, 0, 18, 60, 0, 0, 50, -4, 0, 0, -6, 12, 0, 0}};
    BezierCurve left;
    BezierCurve right;
    SplitBezierAtParam({{10, 20}, {18, 60}, {50, -4}, {-6, 12}}, left, right, t);
    const auto curveOf = [&](const Matrix4& change) {
        const auto e =
            MultiplyMatrix4(MultiplyMatrix4(MultiplyMatrix4(inverse, change), basis), points).elements;
        return BezierCurve{{e[0], e[1]}, {e[4], e[5]}, {e[8], e[9]}, {e[12], e[13]}};
    };
    EXPECT_TRUE(isCurve(left, curveOf(before)));
    EXPECT_TRUE(isCurve(right, curveOf(after)));
}

// Lengths

TEST(BezierCurveLength, OfAStraightCurveIsItsChord) {
    EXPECT_EQ(BezierCurveLength(straightCurve, 0.001f), 150);
    // The control points may lie anywhere on the chord.
    EXPECT_NEAR(BezierCurveLength({{10, 20}, {28, 44}, {40, 60}, {100, 140}}, 0.001f), 150, 1e-3);
}

TEST(BezierCurveLength, IsTheChordsOfTheHalvesWhenTheyAreNearTheChord) {
    // The middle is (16, 23): chords of 15 and 15, against 18.
    const BezierCurve curve{{7, 11}, {11, 27}, {21, 27}, {25, 11}};
    EXPECT_EQ(BezierCurveLength(curve, 13), 30);
    EXPECT_EQ(BezierCurveLength(curve, std::nextafter(12.0f, 13.0f)), 30);
}

TEST(BezierCurveLength, GoesOnWhenTheDifferenceEqualsTheTolerance) {
    const BezierCurve curve{{7, 11}, {11, 27}, {21, 27}, {25, 11}};
    const float length = BezierCurveLength(curve, 12);
    EXPECT_GT(length, 30.5f);
    EXPECT_LT(length, exactLength(ExactCurve(curve)) + 1e-4);
}

TEST(BezierCurveLength, IsThatOfACurveWithAKnownOne) {
    EXPECT_NEAR(BezierCurveLength(knownCurve(1), 1e-5f), 12, 0.002);
    EXPECT_NEAR(BezierCurveLength(knownCurve(10), 1e-4f), 120, 0.01);
    EXPECT_NEAR(BezierCurveLength(knownCurve(50), 1.0f / 1024), 600, 0.1);
}

TEST(BezierCurveLength, IsTheSameBackwards) {
    const BezierCurve curve = knownCurve(10);
    EXPECT_NEAR(BezierCurveLength({curve.end, curve.control2, curve.control1, curve.start}, 0.001f),
                BezierCurveLength(curve, 0.001f), 1e-3);
}

TEST(BezierCurveLength, AgreesWithNumericIntegrationOnRandomArches) {
    const std::uint32_t seed = 141421;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 200; ++round) {
        const BezierCurve curve = randomArch(random);
        const double expected = exactLength(ExactCurve(curve));
        for (const float tolerance : {0.1f, 0.01f, 1.0f / 1024}) {
            int pieces = 0;
            lengthByRule(ExactCurve(curve), tolerance, pieces);
            const float length = BezierCurveLength(curve, tolerance);
            // A piece lacks about a third of what its halves' chords exceed its own by.
            ASSERT_NEAR(length, expected, pieces * tolerance * 0.5 + 2e-3) << "round " << round;
            ASSERT_LT(length, expected + 2e-3) << "round " << round;
        }
    }
}

TEST(BezierCurveLength, FollowsTheRuleInDoubleOnRandomCurves) {
    const std::uint32_t seed = 57721;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    int equalRules = 0;
    constexpr int rounds = 300;
    for (int round = 0; round < rounds; ++round) {
        const BezierCurve curve = randomCurve(random);
        int pieces = 0;
        const double byRule = lengthByRule(ExactCurve(curve), 0.01, pieces);
        const float length = BezierCurveLength(curve, 0.01f);
        ASSERT_GE(length, Distance(curve.start, curve.end) - 1e-2f);
        ASSERT_LE(length, exactLength(ExactCurve(curve)) + 2e-3);
        // Rounding decides otherwise about a piece now and then.
        if (std::fabs(length - byRule) < 2e-3) ++equalRules;
    }
    EXPECT_GE(equalRules, rounds * 95 / 100);
}

TEST(BezierCurveLength, TakesASymmetricSAsStraight) {
    EXPECT_EQ(BezierCurveLength(symmetricS, 0.001f), 90);
    EXPECT_GT(exactLength(ExactCurve(symmetricS)), 120);
}

TEST(BezierCurveLength, TakesALoopThatCrossesItsOwnEndsAsAPoint) {
    // The middle is the start and the end again: (10 + 3 * 40 - 3 * 20 + 10) / 8 = 10.
    EXPECT_EQ(BezierCurveLength({{10, 20}, {40, 60}, {-20, -20}, {10, 20}}, 0.001f), 0);
}

TEST(BezierCurveLength, OfAPointIsZero) {
    EXPECT_EQ(BezierCurveLength({{10, 20}, {10, 20}, {10, 20}, {10, 20}}, 0.001f), 0);
    EXPECT_EQ(BezierCurveLength({{10, 20}, {10, 20}, {10, 20}, {10, 20}}, 0), 0);
}

TEST(BezierCurveLength, EndsWithToleranceZeroWhenTheChordsAgree) {
    EXPECT_EQ(BezierCurveLength(straightCurve, 0), 150);
    // Down there rounding makes the pieces a little rough.
    EXPECT_NEAR(BezierCurveLength(knownCurve(10), 0), 120, 1);
}

TEST(BezierCurveLength, EndsWithTolerancesThatNothingMeets) {
    EXPECT_NEAR(BezierCurveLength(knownCurve(1), -1), 12, 0.1);
    EXPECT_NEAR(BezierCurveLength(knownCurve(1), notANumber), 12, 0.1);
    EXPECT_EQ(BezierCurveLength(straightCurve, notANumber), 150);
}

TEST(BezierCurveLength, EndsWhereFloatsAreCoarserThanTheTolerance) {
    // At 10 million floats are 1 apart.
    const BezierCurve far{{1e7f, 2e7f}, {1e7f + 30, 2e7f + 90}, {1e7f + 90, 2e7f - 60}, {1e7f + 100, 2e7f}};
    const float length = BezierCurveLength(far, 0.001f);
    EXPECT_GT(length, 100);
    EXPECT_LT(length, 400);
    const BezierCurve huge{{-2e38f, 1e38f}, {0, 3e38f}, {1e38f, -3e38f}, {2e38f, 1e38f}};
    EXPECT_GT(BezierCurveLength(huge, 1e30f), 3e38f);
}

TEST(BezierCurveLength, IsNotANumberOfPointsThatAreNone) {
    EXPECT_TRUE(std::isnan(BezierCurveLength({{10, 20}, {notANumber, 3}, {4, 5}, {6, 7}}, 0.001f)));
    EXPECT_FALSE(std::isfinite(BezierCurveLength({{10, 20}, {18, 60}, {4, 5}, {infinity, 7}}, 0.001f)));
}

// Positions

TEST(PointAtPositionAlongBezierCurve, RefusesANegativePosition) {
    try {
        PointAtPositionAlongBezierCurve(knownCurve(10), -1, 0.001f);
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "invalid parameter");
        EXPECT_EQ(exception.reason(), "position < 0");
    }
    EXPECT_THROW(PointAtPositionAlongBezierCurve(knownCurve(10), -infinity, 1), NSException);
    EXPECT_THROW(PointAtPositionAlongBezierCurve(straightCurve, -1e-30f, 1000), NSException);
}

TEST(PointAtPositionAlongBezierCurve, TakesNegativeZeroAsTheStart) {
    EXPECT_LT(gap(PointAtPositionAlongBezierCurve(knownCurve(10), -0.0f, 0.01f), {10, 20}), 0.011);
}

TEST(PointAtPositionAlongBezierCurve, IsTheSplitPointWithinTheTolerance) {
    // The middle is (7 + 9, 11 + 12): the halves' chords are 15, and with this tolerance their lengths.
    const BezierCurve curve{{7, 11}, {11, 27}, {21, 27}, {25, 11}};
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(curve, 2, 100), 16, 23));
    // A straight half of length 75, so a tolerance of 5 takes 70.5 but not 70.
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(straightCurve, 70.5f, 5), 55, 80));
    EXPECT_FALSE(isPoint(PointAtPositionAlongBezierCurve(straightCurve, 70, 5), 55, 80));
    EXPECT_FALSE(isPoint(PointAtPositionAlongBezierCurve(straightCurve, 80, 5), 55, 80));
}

TEST(PointAtPositionAlongBezierCurve, HalvesTowardThePosition) {
    // 75 + 37.5 + 18.75 = 131.25, at 7/8 of the way.
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(straightCurve, 131, 0.5f), 88.75f, 125));
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(straightCurve, 18.5f, 0.5f), 21.25f, 35));
}

TEST(PointAtPositionAlongBezierCurve, LiesWhereTheKnownLengthIs) {
    for (const float scale : {1.0f, 10.0f, 50.0f}) {
        for (int i = 1; i < 40; ++i) {
            const float position = 12 * scale * static_cast<float>(i) / 40;
            const NSPoint point = PointAtPositionAlongBezierCurve(knownCurve(scale), position, 1e-4f * scale);
            EXPECT_LT(gap(point, knownPointAtLength(scale, position)), 2e-3 * scale) << scale << ", " << i;
        }
    }
}

TEST(PointAtPositionAlongBezierCurve, MeasuresTheWayOnRandomArches) {
    const std::uint32_t seed = 60221;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> part(0.01f, 0.99f);
    for (int round = 0; round < 100; ++round) {
        const BezierCurve curve = randomArch(random);
        const ExactCurve exact(curve);
        const double position = exactLength(exact) * part(random);
        double low = 0;
        double high = 1;
        for (int i = 0; i < 40; ++i) {
            const double middle = (low + high) / 2;
            (exactLength(exact, middle) < position ? low : high) = middle;
        }
        const NSPoint point = PointAtPositionAlongBezierCurve(curve, static_cast<float>(position), 0.001f);
        ASSERT_LT(gap(point, exactPointAt(exact, low)), 0.1) << "round " << round;
    }
}

TEST(PointAtPositionAlongBezierCurve, IsTheEndBeyondTheLength) {
    const BezierCurve curve = knownCurve(10);
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(curve, 121, 0.001f), 70, 110));
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(curve, 1e9f, 0.001f), 70, 110));
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(curve, infinity, 0.001f), 70, 110));
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(symmetricS, 200, 0.001f), 100, 20));
    const BezierCurve far{{1e7f, 2e7f}, {1e7f + 30, 2e7f + 90}, {1e7f + 90, 2e7f - 60}, {1e7f + 100, 2e7f}};
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(far, 1e6f, 0.001f), 1e7f + 100, 2e7f));
}

TEST(PointAtPositionAlongBezierCurve, TakesAPositionThatIsNotANumberToTheStart) {
    EXPECT_LT(gap(PointAtPositionAlongBezierCurve(knownCurve(10), notANumber, 0.01f), {10, 20}), 1e-4);
    EXPECT_LT(gap(PointAtPositionAlongBezierCurve(straightCurve, notANumber, 0.01f), {10, 20}), 1e-4);
}

TEST(PointAtPositionAlongBezierCurve, EndsWithTolerancesThatNothingMeets) {
    for (const float tolerance : {0.0f, -1.0f, notANumber}) {
        EXPECT_LT(gap(PointAtPositionAlongBezierCurve(straightCurve, 60, tolerance), {46, 68}), 1e-3);
        // Lengths that are measured down to the rounding of the points are too long by its roughness.
        EXPECT_LT(gap(PointAtPositionAlongBezierCurve(knownCurve(1), 4.875f, tolerance), {14.125, 22.25}),
                  0.2);
    }
}

TEST(PointAtPositionAlongBezierCurve, OfAPointIsThePoint) {
    const BezierCurve point{{10, 20}, {10, 20}, {10, 20}, {10, 20}};
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(point, 0, 0.001f), 10, 20));
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(point, 5, 0.001f), 10, 20));
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(point, notANumber, 0.001f), 10, 20));
}

TEST(PointAtPositionAlongBezierCurve, IsTheEndOfACurveWithoutALength) {
    const BezierCurve missing{{10, 20}, {notANumber, 3}, {4, 5}, {6, 7}};
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(missing, 5, 0.001f), 6, 7));
    const BezierCurve infinite{{10, 20}, {18, infinity}, {4, 5}, {6, 7}};
    EXPECT_TRUE(isPoint(PointAtPositionAlongBezierCurve(infinite, 5, 0.001f), 6, 7));
}

// Fractions

TEST(PointAlongBezierCurve, TakesFractionsOfTheLengthRatherThanTheParameter) {
    // Half of 120; the parameter 0.5 has length 48.75 and the point (51.25, 42.5).
    const NSPoint point = PointAlongBezierCurve(knownCurve(10), 0.5f, 0.001f);
    EXPECT_LT(gap(point, knownPointAtLength(10, 60)), 0.05);
    EXPECT_GT(gap(point, {51.25, 42.5}), 5);
    for (int i = 1; i < 20; ++i) {
        const float fraction = static_cast<float>(i) / 20;
        EXPECT_LT(gap(PointAlongBezierCurve(knownCurve(10), fraction, 1.0f / 1024),
                      knownPointAtLength(10, 120.0 * fraction)),
                  0.05)
            << fraction;
    }
}

TEST(PointAlongBezierCurve, BeginsAndEndsAtTheEnds) {
    EXPECT_LT(gap(PointAlongBezierCurve(knownCurve(10), 0, 0.001f), {10, 20}), 0.0011);
    EXPECT_LT(gap(PointAlongBezierCurve(knownCurve(10), 1, 0.001f), {70, 110}), 0.05);
}

TEST(PointAlongBezierCurve, IsTheEndBeyondTheWholeAndThrowsBeforeTheStart) {
    EXPECT_TRUE(isPoint(PointAlongBezierCurve(knownCurve(10), 1.5f, 0.001f), 70, 110));
    EXPECT_THROW(PointAlongBezierCurve(knownCurve(10), -0.25f, 0.001f), NSException);
    EXPECT_LT(gap(PointAlongBezierCurve(knownCurve(10), notANumber, 0.001f), {10, 20}), 1e-4);
}

TEST(PointAlongBezierCurve, IsTheChordsPointWhenTheControlPointsAreTheEnds) {
    const BezierCurve chord{{10, 20}, {10, 20}, {18, -12}, {18, -12}};
    EXPECT_TRUE(isPoint(PointAlongBezierCurve(chord, 0.5f, 0.001f), 14, 4));
    EXPECT_TRUE(isPoint(PointAlongBezierCurve(chord, 0.25f, 0.001f), 12, 12));
}

TEST(PointAlongBezierCurve, DoesNotLimitTheFractionOfAStraightLine) {
    const BezierCurve chord{{10, 20}, {10, 20}, {18, -12}, {18, -12}};
    EXPECT_TRUE(isPoint(PointAlongBezierCurve(chord, 2, 0.001f), 26, -44));
    EXPECT_TRUE(isPoint(PointAlongBezierCurve(chord, -0.5f, 0.001f), 6, 36));
}

TEST(PointAlongBezierCurve, TakesControlPointsCloserThanATenthOfTheToleranceAsTheEnds) {
    // With tolerance 10 the limit is 1, which is too much by itself, in each of the four directions. A
    // fraction of -1 tells both ways apart, as measured positions may not be negative.
    const BezierCurve near{{10, 20}, {10.75f, 19.25f}, {47.25f, 60.75f}, {48, 60}};
    EXPECT_TRUE(isPoint(PointAlongBezierCurve(near, -1, 10), -28, -20));
    EXPECT_THROW(PointAlongBezierCurve(near, -1, 7.5f), NSException);
    EXPECT_THROW(PointAlongBezierCurve({{10, 20}, {11, 20}, {48, 60}, {48, 60}}, -1, 10), NSException);
    EXPECT_THROW(PointAlongBezierCurve({{10, 20}, {10, 19}, {48, 60}, {48, 60}}, -1, 10), NSException);
    EXPECT_THROW(PointAlongBezierCurve({{10, 20}, {10, 20}, {47, 60}, {48, 60}}, -1, 10), NSException);
    EXPECT_THROW(PointAlongBezierCurve({{10, 20}, {10, 20}, {48, 61}, {48, 60}}, -1, 10), NSException);
}

TEST(PointAlongBezierCurve, MeasuresEvenAChordWithToleranceZero) {
    const BezierCurve chord{{10, 20}, {10, 20}, {18, -12}, {18, -12}};
    EXPECT_THROW(PointAlongBezierCurve(chord, -1, 0), NSException);
    EXPECT_LT(gap(PointAlongBezierCurve(chord, 0.5f, 0), {14, 4}), 0.05);
}

TEST(PointAlongBezierCurve, RunsAlongTheChordOfASymmetricS) {
    // Its length is measured as 90, and half of that as 45 only after the first half was measured by itself.
    const NSPoint point = PointAlongBezierCurve(symmetricS, 0.5f, 0.01f);
    const double half = exactLength(ExactCurve(symmetricS)) / 2;
    EXPECT_GT(half, 60);
    // 45 along the true arc, which is before the middle.
    EXPECT_GT(gap(point, {55, 20}), 5);
    EXPECT_LT(exactDistance(ExactCurve(symmetricS), point), 0.1);
}
