// Hit tests of points against segments, rectangles, curves and paths, and the search for the nearest part.
// Also tests: Imaging/Bezier.cpp

#include "Imaging/Bezier.h"

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
constexpr float untouched = -77;

/// A segment of length 50 in direction (3, 4) / 5; (-4, 3) is a step of 5 to its left.
constexpr NSPoint a{10, 20};
constexpr NSPoint b{40, 60};

float paramAlong(NSPoint point, NSPoint from, NSPoint to, float tolerance) {
    float param = untouched;
    EXPECT_TRUE(IsPointAlongWithParam(point, from, to, tolerance, &param));
    return param;
}

float missedParam(NSPoint point, NSPoint from, NSPoint to, float tolerance) {
    float param = untouched;
    EXPECT_FALSE(IsPointAlongWithParam(point, from, to, tolerance, &param));
    return param;
}

/// The search as it is defined: every piece is visited.
float searchEveryPiece(NSPoint point, const BezierCurve& curve, float precision, float best, float t0,
                       float t1, float& param) {
    if (precision > Distance(curve.start, curve.end)) {
        const float distance = Distance(point, PointAlong(curve.start, curve.end, 0.5f));
        if (!(best > distance)) return best;
        param = 0.5f * (t0 + t1);
        return distance;
    }
    BezierCurve left;
    BezierCurve right;
    SplitBezier(curve, left, right);
    const float middle = (t0 + t1) * 0.5f;
    const float first = searchEveryPiece(point, left, precision, best, t0, middle, param);
    const float better = first < best ? first : best;
    const float second = searchEveryPiece(point, right, precision, better, middle, t1, param);
    return second <= better ? second : better;
}

} // namespace

// Segments

TEST(IsPointAlongWithParam, GivesTheFractionOfTheNearestPoint) {
    EXPECT_EQ(paramAlong({17.5f, 30}, a, b, 1), 0.25f);
    EXPECT_EQ(paramAlong({13.5f, 33}, a, b, 6), 0.25f);
    EXPECT_EQ(paramAlong({21.5f, 27}, a, b, 6), 0.25f);
    EXPECT_EQ(paramAlong({13.5f, 33}, b, a, 6), 0.75f);
    EXPECT_EQ(paramAlong(a, a, b, 0.25f), 0);
    EXPECT_EQ(paramAlong(b, a, b, 0.25f), 1);
}

TEST(IsPointAlongWithParam, EndsAtTheSegmentsEnds) {
    EXPECT_EQ(paramAlong({43, 64}, a, b, 5.25f), 1);
    EXPECT_EQ(paramAlong({7, 16}, a, b, 5.25f), 0);
    EXPECT_EQ(missedParam({46, 68}, a, b, 9.75f), untouched);
    EXPECT_EQ(missedParam({4, 12}, a, b, 9.75f), untouched);
    // Beyond the end and beside it: 13 away from the end, though only 5 from the line.
    EXPECT_EQ(paramAlong({40 + 7.2f - 4, 60 + 9.6f + 3}, a, b, 13.25f), 1);
    EXPECT_EQ(missedParam({40 + 7.2f - 4, 60 + 9.6f + 3}, a, b, 12.75f), untouched);
}

TEST(IsPointAlongWithParam, RefusesADistanceEqualToTheTolerance) {
    EXPECT_EQ(missedParam({13.5f, 33}, a, b, 5), untouched);
    EXPECT_EQ(paramAlong({13.5f, 33}, a, b, std::nextafter(5.0f, 6.0f)), 0.25f);
    EXPECT_EQ(missedParam({17.5f, 30}, a, b, 0), untouched) << "on the segment, with tolerance 0";
}

TEST(IsPointAlongWithParam, GivesNoHalfUnitOfSlackOnASegmentWithLength) {
    EXPECT_EQ(missedParam({13.5f, 33}, a, b, 4.9f), untouched);
}

TEST(IsPointAlongWithParam, GivesHalfAUnitOfSlackAtASegmentWithoutLengthAndLeavesTheParameter) {
    float param = untouched;
    EXPECT_TRUE(IsPointAlongWithParam({13, 24}, a, a, 4.6f, &param));
    EXPECT_EQ(param, untouched);
    EXPECT_FALSE(IsPointAlongWithParam({13, 24}, a, a, 4.5f, &param));
    EXPECT_EQ(param, untouched);
    EXPECT_TRUE(IsPointAlongWithParam(a, a, a, 0, &param));
    EXPECT_EQ(param, untouched);
}

TEST(IsPointAlongWithParam, NeedsNoParameter) {
    EXPECT_TRUE(IsPointAlongWithParam({17.5f, 30}, a, b, 1, nullptr));
    EXPECT_FALSE(IsPointAlongWithParam({27.5f, 30}, a, b, 1, nullptr));
    EXPECT_TRUE(IsPointAlong({17.5f, 30}, a, b, 1));
    EXPECT_FALSE(IsPointAlong({27.5f, 30}, a, b, 1));
    EXPECT_TRUE(IsPointAlong({13, 24}, a, a, 4.6f));
}

TEST(IsPointAlongWithParam, AnswersNoWithoutNumbers) {
    EXPECT_EQ(missedParam({notANumber, 30}, a, b, 5), untouched);
    EXPECT_EQ(missedParam({17.5f, 30}, {10, notANumber}, b, 5), untouched);
    EXPECT_EQ(missedParam({17.5f, 30}, a, {infinity, 60}, 5), untouched);
    EXPECT_EQ(missedParam({17.5f, 30}, a, b, notANumber), untouched);
    EXPECT_EQ(missedParam({infinity, 30}, a, b, 5), untouched);
}

TEST(IsPointAlongWithParam, SquaresTheLengthIn32BitFloats) {
    // The square of 1e20 is infinite, so the nearest point is the start, and an infinite product over it is
    // not a number.
    EXPECT_EQ(missedParam({1e10f, 23}, a, {1e20f, 20}, 1e9f), untouched);
    EXPECT_EQ(paramAlong({15, 23}, a, {1e20f, 20}, 6), 0);
    EXPECT_EQ(missedParam({5e19f, 20}, a, {1e20f, 20}, 5), untouched);
}

TEST(IsPointAlongWithParam, AgreesWithDenseSamplingOnRandomSegments) {
    const std::uint32_t seed = 66260;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> place(-100, 100);
    std::uniform_real_distribution<float> tolerances(1, 80);
    int hits = 0;
    for (int round = 0; round < 300; ++round) {
        const NSPoint from{place(random), place(random)};
        const NSPoint to{place(random), place(random)};
        const NSPoint point{place(random), place(random)};
        const float tolerance = tolerances(random);
        double nearest = infinity;
        double where = 0;
        for (int i = 0; i <= 10000; ++i) {
            const ExactPoint sample = mix({from.x, from.y}, {to.x, to.y}, i / 10000.0);
            if (gap(point, sample) < nearest) where = i / 10000.0;
            nearest = std::min(nearest, gap(point, sample));
        }
        if (std::fabs(nearest - tolerance) < 0.01) continue;
        float param = untouched;
        ASSERT_EQ(IsPointAlongWithParam(point, from, to, tolerance, &param), nearest < tolerance);
        ASSERT_EQ(IsPointAlong(point, from, to, tolerance), nearest < tolerance);
        if (nearest > tolerance) continue;
        ++hits;
        ASSERT_NEAR(param, where, 2e-4);
    }
    EXPECT_GT(hits, 50);
}

TEST(IsPointNear, GivesHalfAUnitOfSlack) {
    EXPECT_TRUE(IsPointNear(a, {13, 24}, 4.625f));
    EXPECT_FALSE(IsPointNear(a, {13, 24}, 4.5f));
    EXPECT_TRUE(IsPointNear(a, a, 0));
    EXPECT_FALSE(IsPointNear(a, a, -0.5f));
    // In floats 16777216 + 0.5 is 16777216.
    EXPECT_TRUE(IsPointNear({0, 0}, {16777216, 0}, 16777216));
    EXPECT_FALSE(IsPointNear(a, {notANumber, 24}, 100));
}

// Rectangles

TEST(IsPointOnRect, AnswersYesNearEachEdgeFromBothSides) {
    const NSRect rect = Imaging::Platform::NSMakeRect(-30, 15, 80, 40);
    for (const float side : {-1.5f, 0.0f, 1.5f}) {
        EXPECT_TRUE(IsPointOnRect({-30 + side, 31}, rect, 2));
        EXPECT_TRUE(IsPointOnRect({50 + side, 31}, rect, 2));
        EXPECT_TRUE(IsPointOnRect({7, 15 + side}, rect, 2));
        EXPECT_TRUE(IsPointOnRect({7, 55 + side}, rect, 2));
    }
    for (const float side : {-2.0f, 2.0f}) {
        EXPECT_FALSE(IsPointOnRect({-30 + side, 31}, rect, 2));
        EXPECT_FALSE(IsPointOnRect({50 + side, 31}, rect, 2));
        EXPECT_FALSE(IsPointOnRect({7, 15 + side}, rect, 2));
        EXPECT_FALSE(IsPointOnRect({7, 55 + side}, rect, 2));
    }
}

TEST(IsPointOnRect, AnswersNoForTheCentreAndFarAway) {
    const NSRect rect = Imaging::Platform::NSMakeRect(-30, 15, 80, 40);
    EXPECT_FALSE(IsPointOnRect(RectMidpoint(rect), rect, 2));
    EXPECT_FALSE(IsPointOnRect({-30, 80}, rect, 2));
    EXPECT_TRUE(IsPointOnRect(RectMidpoint(rect), rect, 20.5f));
}

TEST(IsPointOnRect, RoundsTheCorners) {
    const NSRect rect = Imaging::Platform::NSMakeRect(-30, 15, 80, 40);
    EXPECT_TRUE(IsPointOnRect({53, 59}, rect, 5.25f));
    EXPECT_FALSE(IsPointOnRect({53, 59}, rect, 4.9f));
    EXPECT_FALSE(IsPointOnRect({-34, 12}, rect, 5));
}

TEST(IsPointOnRect, TakesNegativeExtentsAndNoExtent) {
    EXPECT_TRUE(IsPointOnRect({10, 31}, Imaging::Platform::NSMakeRect(50, 55, -40, -40), 1));
    EXPECT_FALSE(IsPointOnRect({30, 35}, Imaging::Platform::NSMakeRect(50, 55, -40, -40), 1));
    // A rectangle without width has two edges without length, which give half a unit of slack at their ends.
    EXPECT_TRUE(IsPointOnRect({50, 53.25f}, Imaging::Platform::NSMakeRect(50, 15, 0, 38), 0));
    EXPECT_FALSE(IsPointOnRect({50.25f, 30}, Imaging::Platform::NSMakeRect(50, 15, 0, 38), 0));
    EXPECT_TRUE(IsPointOnRect({50.25f, 15}, Imaging::Platform::NSMakeRect(50, 15, 0, 0), 0));
    EXPECT_FALSE(IsPointOnRect({50.5f, 15}, Imaging::Platform::NSMakeRect(50, 15, 0, 0), 0));
}

// Curves

TEST(IsPointAlongBezier, FollowsAKnownCurve) {
    // At t = 0.5, where the curve runs in the direction (6.75, 9), that is (3, 4) / 5.
    const BezierCurve curve = knownCurve(10);
    EXPECT_TRUE(IsPointAlongBezier({51.25f, 42.5f}, curve, 1));
    EXPECT_TRUE(IsPointAlongBezier({51.25f - 4, 42.5f + 3}, curve, 6));
    EXPECT_FALSE(IsPointAlongBezier({51.25f - 4, 42.5f + 3}, curve, 4));
    EXPECT_TRUE(IsPointAlongBezier({10, 20}, curve, 0.5f));
    EXPECT_TRUE(IsPointAlongBezier({70, 110}, curve, 0.5f));
    // The middle of the chord is far from it.
    EXPECT_FALSE(IsPointAlongBezier({40, 65}, curve, 15));
}

TEST(IsPointAlongBezier, AgreesWithDenseSamplingOnRandomArches) {
    const std::uint32_t seed = 29979;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> aside(-60, 60);
    std::uniform_real_distribution<double> parameter(0, 1);
    std::uniform_real_distribution<float> tolerances(3, 50);
    int hits = 0;
    int misses = 0;
    for (int round = 0; round < 300; ++round) {
        const BezierCurve curve = randomArch(random);
        const ExactPoint on = exactPointAt(ExactCurve(curve), parameter(random));
        const NSPoint point{static_cast<float>(on.x) + aside(random),
                            static_cast<float>(on.y) + aside(random)};
        const float tolerance = tolerances(random);
        const double distance = exactDistance(ExactCurve(curve), point);
        // A flat piece of length c bulges by up to sqrt(c / 200), and the pieces are shorter than 400.
        if (std::fabs(distance - tolerance) < 1.5) continue;
        ASSERT_EQ(IsPointAlongBezier(point, curve, tolerance), distance < tolerance) << "round " << round;
        ++(distance < tolerance ? hits : misses);
    }
    EXPECT_GT(hits, 50);
    EXPECT_GT(misses, 50);
}

TEST(IsPointAlongBezier, StandsForTheChordOfAFlatPiece) {
    // The middle lies 0.5 from that of the chord, (40, 60), to its left in the direction (-4, 3) / 5, so that
    // the halves' chords of 50.0025 are together 0.005 longer than the chord: flat. The control points lie
    // 2/3 from the chord.
    const float x = -0.8f * 2 / 3;
    const float y = 0.6f * 2 / 3;
    const BezierCurve curve{{10, 20}, {30 + x, 140.0f / 3 + y}, {50 + x, 220.0f / 3 + y}, {70, 100}};
    const NSPoint onCurve{40 - 0.4f, 60 + 0.3f};
    EXPECT_LT(exactDistance(ExactCurve(curve), onCurve), 0.01);
    EXPECT_FALSE(IsPointAlongBezier(onCurve, curve, 0.45f));
    EXPECT_TRUE(IsPointAlongBezier(onCurve, curve, 0.55f));
    EXPECT_TRUE(IsPointAlongBezier({40, 60}, curve, 0.05f)) << "on the chord";
}

TEST(IsPointAlongBezier, HitsASymmetricSAlongItsChordOnly) {
    EXPECT_TRUE(IsPointAlongBezier({30, 20}, symmetricS, 1));
    const ExactPoint hump = exactPointAt(ExactCurve(symmetricS), 0.2113);
    EXPECT_GT(hump.y, 45.9);
    EXPECT_FALSE(
        IsPointAlongBezier({static_cast<float>(hump.x), static_cast<float>(hump.y)}, symmetricS, 20));
}

TEST(IsPointAlongBezier, GivesHalfAUnitOfSlackAtAPoint) {
    const BezierCurve point{a, a, a, a};
    EXPECT_TRUE(IsPointAlongBezier({13, 24}, point, 4.6f));
    EXPECT_FALSE(IsPointAlongBezier({13, 24}, point, 4.5f));
}

TEST(IsPointAlongBezier, FollowsAClosedLoop) {
    const BezierCurve loop{{10, 20}, {60, 80}, {-40, 80}, {10, 20}};
    EXPECT_TRUE(IsPointAlongBezier({10, 65}, loop, 1)) << "the top of the loop";
    EXPECT_FALSE(IsPointAlongBezier({10, 45}, loop, 5)) << "inside";
}

TEST(IsPointAlongBezier, EndsWithoutNumbersAndFarAway) {
    EXPECT_FALSE(IsPointAlongBezier({500, 3}, {a, {notANumber, 3}, {4, 5}, b}, 5));
    EXPECT_FALSE(IsPointAlongBezier({notANumber, 3}, knownCurve(10), 5));
    EXPECT_FALSE(IsPointAlongBezier(a, knownCurve(10), notANumber));
    EXPECT_FALSE(IsPointAlongBezier({500, 3}, {a, {infinity, 3}, {4, 5}, b}, 5));
    // A curve that cannot be halved is its chord; here the chord has the point.
    EXPECT_TRUE(IsPointAlongBezier({17.5f, 30}, {a, {notANumber, 3}, {4, 5}, b}, 5));
    EXPECT_TRUE(IsPointAlongBezier({17.5f, 30}, {a, {infinity, 3}, {4, 5}, b}, 5));
    const BezierCurve far{{1e7f, 2e7f}, {1e7f + 30, 2e7f + 90}, {1e7f + 90, 2e7f - 60}, {1e7f + 100, 2e7f}};
    EXPECT_TRUE(IsPointAlongBezier({1e7f + 100, 2e7f}, far, 2));
    EXPECT_FALSE(IsPointAlongBezier({1e7f + 50, 2e7f + 500}, far, 20));
    const BezierCurve huge{{-2e30f, 1e30f}, {0, 3e30f}, {1e30f, -3e30f}, {2e30f, 1e30f}};
    EXPECT_FALSE(IsPointAlongBezier({10, 20}, huge, 20));
}

// The nearest parameter

TEST(FindParamAlongBezierForPoint, GivesTheMiddleOfTheNearestPiece) {
    // Pieces of 75, whose middles are at a quarter and three quarters of the way.
    float param = untouched;
    EXPECT_TRUE(FindParamAlongBezierForPoint({28.5f, 53}, straightCurve, 100, 6, &param));
    EXPECT_EQ(param, 0.25f);
    EXPECT_TRUE(FindParamAlongBezierForPoint({73.5f, 113}, straightCurve, 100, 6, &param));
    EXPECT_EQ(param, 0.75f);
    EXPECT_TRUE(FindParamAlongBezierForPoint({55, 80}, straightCurve, 151, 6, &param));
    EXPECT_EQ(param, 0.5f);
}

TEST(FindParamAlongBezierForPoint, RefusesADistanceEqualToTheTolerance) {
    float param = untouched;
    EXPECT_FALSE(FindParamAlongBezierForPoint({28.5f, 53}, straightCurve, 100, 5, &param));
    EXPECT_EQ(param, untouched);
    EXPECT_TRUE(
        FindParamAlongBezierForPoint({28.5f, 53}, straightCurve, 100, std::nextafter(5.0f, 6.0f), &param));
    EXPECT_EQ(param, 0.25f);
}

TEST(FindParamAlongBezierForPoint, HalvesAPieceAsLongAsThePrecision) {
    // Pieces of 37.5, of which the first two are equally near: the first counts.
    float param = untouched;
    EXPECT_TRUE(FindParamAlongBezierForPoint({32.5f, 50}, straightCurve, 75, 40, &param));
    EXPECT_EQ(param, 0.125f);
    EXPECT_TRUE(FindParamAlongBezierForPoint({32.5f, 50}, straightCurve, 75.25f, 40, &param));
    EXPECT_EQ(param, 0.25f);
}

TEST(FindParamAlongBezierForPoint, KeepsTheFirstOfEquallyNearPieces) {
    float param = untouched;
    EXPECT_TRUE(FindParamAlongBezierForPoint({55, 80}, straightCurve, 100, 50, &param));
    EXPECT_EQ(param, 0.25f);
}

TEST(FindParamAlongBezierForPoint, ComparesMiddlesOfPiecesRatherThanThePieces) {
    // On the curve, but 37.5 from the middles.
    float param = untouched;
    EXPECT_FALSE(FindParamAlongBezierForPoint({55, 80}, straightCurve, 100, 30, &param));
    EXPECT_EQ(param, untouched);
}

TEST(FindParamAlongBezierForPoint, ComparesAClosedLoopByItsStart) {
    const BezierCurve loop{{10, 20}, {60, 80}, {-40, 80}, {10, 20}};
    float param = untouched;
    EXPECT_FALSE(FindParamAlongBezierForPoint({10, 65}, loop, 1, 5, &param));
    EXPECT_EQ(param, untouched);
    EXPECT_TRUE(FindParamAlongBezierForPoint({13, 24}, loop, 1, 6, &param));
    EXPECT_EQ(param, 0.5f);
}

TEST(FindParamAlongBezierForPoint, NeedsNoParameter) {
    EXPECT_TRUE(FindParamAlongBezierForPoint({28.5f, 53}, straightCurve, 100, 6, nullptr));
    EXPECT_FALSE(FindParamAlongBezierForPoint({28.5f, 53}, straightCurve, 100, 4, nullptr));
}

TEST(FindParamAlongBezierForPoint, FindsTheParameterOfAKnownCurve) {
    float param = untouched;
    EXPECT_TRUE(FindParamAlongBezierForPoint({51.25f - 4, 42.5f + 3}, knownCurve(10), 0.1f, 6, &param));
    EXPECT_NEAR(param, 0.5, 0.002);
}

TEST(FindParamAlongBezierForPoint, AgreesWithDenseSamplingOnRandomArches) {
    const std::uint32_t seed = 13806;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> place(-300, 300);
    for (int round = 0; round < 200; ++round) {
        const BezierCurve curve = randomArch(random);
        const NSPoint point{place(random), place(random)};
        const double distance = exactDistance(ExactCurve(curve), point);
        float param = untouched;
        ASSERT_TRUE(FindParamAlongBezierForPoint(point, curve, 1, 10000, &param));
        // Middles of pieces shorter than 1 are less than 1 apart along the curve.
        ASSERT_NEAR(gap(point, exactPointAt(ExactCurve(curve), param)), distance, 0.75) << "round " << round;
        const auto limit = static_cast<float>(distance);
        ASSERT_TRUE(FindParamAlongBezierForPoint(point, curve, 1, limit + 0.75f, nullptr));
        ASSERT_FALSE(FindParamAlongBezierForPoint(point, curve, 1, limit - 0.25f, nullptr));
    }
}

TEST(FindParamAlongBezierForPointSub, EqualsTheSearchOfEveryPieceBitForBit) {
    const std::uint32_t seed = 86602;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> place(-400, 400);
    std::uniform_real_distribution<float> bests(1, 500);
    for (int round = 0; round < 1000; ++round) {
        const BezierCurve curve = randomCurve(random);
        const NSPoint point{place(random), place(random)};
        const float best = bests(random);
        const float precision = round % 2 == 0 ? 1.0f : 7.5f;
        float expectedParam = untouched;
        const float expected = searchEveryPiece(point, curve, precision, best, 0, 1, expectedParam);
        float param = untouched;
        ASSERT_EQ(FindParamAlongBezierForPointSub(point, curve, precision, best, 0, 1, &param), expected);
        ASSERT_EQ(param, expectedParam) << "round " << round;
        ASSERT_EQ(FindParamAlongBezierForPoint(point, curve, precision, best, nullptr), best > expected);
    }
}

TEST(FindParamAlongBezierForPointSub, EqualsTheSearchOfEveryPieceAmongEquallyNearOnes) {
    // On a grid of small whole numbers, curves cross themselves and pieces lie on each other.
    const std::uint32_t seed = 70710;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> place(-3, 3);
    const auto point = [&] {
        return NSPoint{4 * static_cast<float>(place(random)), 4 * static_cast<float>(place(random))};
    };
    for (int round = 0; round < 2000; ++round) {
        const BezierCurve curve{point(), point(), point(), point()};
        const NSPoint from = point();
        const float precision = round % 2 == 0 ? 3.0f : 0.7f;
        const float best = round % 3 == 0 ? 4.0f : infinity;
        float expectedParam = untouched;
        const float expected = searchEveryPiece(from, curve, precision, best, 0, 1, expectedParam);
        float param = untouched;
        ASSERT_EQ(FindParamAlongBezierForPointSub(from, curve, precision, best, 0, 1, &param), expected);
        ASSERT_EQ(param, expectedParam) << "round " << round;
    }
}

TEST(FindParamAlongBezierForPointSub, GivesTheBestDistanceWithinTheRangeOfParameters) {
    float param = untouched;
    EXPECT_EQ(FindParamAlongBezierForPointSub({28.5f, 53}, straightCurve, 100, 60, 2, 4, &param), 5);
    EXPECT_EQ(param, 2.5f);
    EXPECT_EQ(FindParamAlongBezierForPointSub({73.5f, 113}, straightCurve, 100, 60, 2, 4, &param), 5);
    EXPECT_EQ(param, 3.5f);
}

TEST(FindParamAlongBezierForPointSub, GivesBackTheBestThatNothingBeats) {
    float param = untouched;
    EXPECT_EQ(FindParamAlongBezierForPointSub({28.5f, 53}, straightCurve, 100, 5, 0, 1, &param), 5);
    EXPECT_EQ(FindParamAlongBezierForPointSub({28.5f, 53}, straightCurve, 100, 3, 0, 1, &param), 3);
    EXPECT_EQ(FindParamAlongBezierForPointSub({28.5f, 53}, straightCurve, 100, -2, 0, 1, &param), -2);
    EXPECT_EQ(param, untouched);
    EXPECT_EQ(FindParamAlongBezierForPointSub({28.5f, 53}, straightCurve, 100, 5, 0, 1, nullptr), 5);
}

TEST(FindParamAlongBezierForPoint, EndsWithPrecisionsThatNothingMeets) {
    for (const float precision : {0.0f, -1.0f, notANumber}) {
        float param = untouched;
        EXPECT_TRUE(FindParamAlongBezierForPoint({32.5f - 4, 50 + 3}, straightCurve, precision, 6, &param));
        EXPECT_NEAR(param, 0.25, 1e-3);
    }
}

TEST(FindParamAlongBezierForPoint, EndsWithoutNumbersAndFarAway) {
    float param = untouched;
    EXPECT_FALSE(FindParamAlongBezierForPoint({500, 3}, {a, {notANumber, 3}, {4, 5}, b}, 1, 5, &param));
    EXPECT_FALSE(FindParamAlongBezierForPoint({notANumber, 3}, straightCurve, 1, 5, &param));
    EXPECT_FALSE(FindParamAlongBezierForPoint(a, straightCurve, 1, notANumber, &param));
    EXPECT_FALSE(FindParamAlongBezierForPoint({infinity, 3}, straightCurve, 1, infinity, &param));
    EXPECT_EQ(param, untouched);
    // At 100 million floats are 8 apart, so that no piece becomes shorter than 1 but the points.
    const BezierCurve far{
        {1e8f, 2e8f}, {1e8f + 300, 2e8f + 900}, {1e8f + 904, 2e8f - 600}, {1e8f + 1000, 2e8f}};
    EXPECT_TRUE(FindParamAlongBezierForPoint({1e8f + 1000, 2e8f}, far, 1, 50, &param));
    EXPECT_NEAR(param, 1, 0.05);
    const BezierCurve huge{{-2e30f, 1e30f}, {0, 3e30f}, {1e30f, -3e30f}, {2e30f, 1e30f}};
    EXPECT_FALSE(FindParamAlongBezierForPoint({10, 20}, huge, 1, 20, &param));
}
