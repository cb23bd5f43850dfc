#include "Imaging/Geometry.h"

#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace Imaging;
using Imaging::Platform::NSMakePoint;
using Imaging::Platform::NSMakeRect;
using Imaging::Platform::NSMakeSize;
using ImagingTests::isPoint;
using ImagingTests::isRect;
using ImagingTests::isSize;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

/// Off the origin, off the axes, without symmetry; halves are exact.
constexpr NSRect frame = NSMakeRect(-3, 5, 11, 14);

} // namespace

TEST(EqualAlmost, TakesPointsWhoseComponentsDifferByLessThanTheTolerance) {
    const NSPoint p = NSMakePoint(3, -7);
    EXPECT_TRUE(EqualPointsAlmost(p, NSMakePoint(3.25f, -7.25f), 0.5f));
    EXPECT_TRUE(EqualPointsAlmost(NSMakePoint(3.25f, -7.25f), p, 0.5f));
    EXPECT_FALSE(EqualPointsAlmost(p, NSMakePoint(3.75f, -7), 0.5f));
    EXPECT_FALSE(EqualPointsAlmost(p, NSMakePoint(3, -7.75f), 0.5f));
    EXPECT_FALSE(EqualPointsAlmost(p, NSMakePoint(2.25f, -7), 0.5f));
    EXPECT_FALSE(EqualPointsAlmost(p, NSMakePoint(3, -6.25f), 0.5f));
}

TEST(EqualAlmost, LooksAtEachComponentRatherThanAtTheDistance) {
    EXPECT_TRUE(EqualPointsAlmost(NSMakePoint(3, 8), NSMakePoint(6.75f, 11.75f), 4));
}

TEST(EqualAlmost, RefusesADifferenceEqualToTheTolerance) {
    EXPECT_FALSE(EqualPointsAlmost(NSMakePoint(3, 8), NSMakePoint(3.5f, 8), 0.5f));
    EXPECT_FALSE(EqualPointsAlmost(NSMakePoint(3, 8), NSMakePoint(3, 7.5f), 0.5f));
    EXPECT_FALSE(EqualSizesAlmost(NSMakeSize(3, 8), NSMakeSize(3.5f, 8), 0.5f));
    EXPECT_FALSE(EqualRectsAlmost(frame, NSMakeRect(-3, 5, 11, 14.5f), 0.5f));
}

TEST(EqualAlmost, FindsNothingEqualWithToleranceZero) {
    EXPECT_FALSE(EqualPointsAlmost(NSMakePoint(3, 8), NSMakePoint(3, 8), 0));
    EXPECT_FALSE(EqualSizesAlmost(NSMakeSize(3, 8), NSMakeSize(3, 8), 0));
    EXPECT_FALSE(EqualRectsAlmost(frame, frame, 0));
}

TEST(EqualAlmost, ComparesWidthsAndHeightsOfSizes) {
    EXPECT_TRUE(EqualSizesAlmost(NSMakeSize(3, 8), NSMakeSize(3.25f, 7.75f), 0.5f));
    EXPECT_FALSE(EqualSizesAlmost(NSMakeSize(3, 8), NSMakeSize(4, 8), 0.5f));
    EXPECT_FALSE(EqualSizesAlmost(NSMakeSize(3, 8), NSMakeSize(3, 7), 0.5f));
}

TEST(EqualAlmost, ComparesAllFourComponentsOfRectangles) {
    EXPECT_TRUE(EqualRectsAlmost(frame, NSMakeRect(-3.25f, 5.25f, 11.25f, 13.75f), 0.5f));
    EXPECT_FALSE(EqualRectsAlmost(frame, NSMakeRect(-4, 5, 11, 14), 0.5f));
    EXPECT_FALSE(EqualRectsAlmost(frame, NSMakeRect(-3, 6, 11, 14), 0.5f));
    EXPECT_FALSE(EqualRectsAlmost(frame, NSMakeRect(-3, 5, 10, 14), 0.5f));
    EXPECT_FALSE(EqualRectsAlmost(frame, NSMakeRect(-3, 5, 11, 13), 0.5f));
}

TEST(EqualAlmost, FindsNothingEqualToWhatIsNotANumber) {
    EXPECT_FALSE(EqualPointsAlmost(NSMakePoint(notANumber, 8), NSMakePoint(notANumber, 8), 1));
    EXPECT_FALSE(EqualPointsAlmost(NSMakePoint(3, 8), NSMakePoint(3, 8), notANumber));
    EXPECT_FALSE(EqualPointsAlmost(NSMakePoint(infinity, 8), NSMakePoint(infinity, 8), 1));
}

TEST(Distance, IsTheLengthOfTheStraightLine) {
    EXPECT_EQ(Distance(NSMakePoint(10, 20), NSMakePoint(13, 24)), 5);
    EXPECT_EQ(Distance(NSMakePoint(13, 24), NSMakePoint(10, 20)), 5);
    EXPECT_EQ(Distance(NSMakePoint(-5, 7), NSMakePoint(7, 2)), 13);
    EXPECT_EQ(Distance(NSMakePoint(-5, 7), NSMakePoint(-5, 7)), 0);
}

TEST(Distance, IsComputedInDoublePrecision) {
    // The squares are beyond the floats on both sides.
    EXPECT_EQ(Distance(NSMakePoint(0, 0), NSMakePoint(3e30f, 4e30f)), 5e30f);
    EXPECT_NEAR(Distance(NSMakePoint(0, 0), NSMakePoint(3e-30f, 4e-30f)), 5e-30, 1e-36);
    // The difference of these floats has more digits than a float holds; in floats it would be 16777216.
    const double difference = 16777216.0 + 0.75;
    EXPECT_EQ(Distance(NSMakePoint(16777216, 4097), NSMakePoint(-0.75f, 0)),
              static_cast<float>(std::sqrt(difference * difference + 4097.0 * 4097.0)));
    EXPECT_NE(static_cast<float>(std::sqrt(difference * difference + 4097.0 * 4097.0)),
              static_cast<float>(std::sqrt(16777216.0 * 16777216.0 + 4097.0 * 4097.0)));
}

TEST(Distance, GoesThroughInfinitiesAndMissingNumbers) {
    EXPECT_EQ(Distance(NSMakePoint(-infinity, 3), NSMakePoint(2, 3)), infinity);
    EXPECT_EQ(Distance(NSMakePoint(-3e38f, -3e38f), NSMakePoint(3e38f, 3e38f)), infinity);
    EXPECT_TRUE(std::isnan(Distance(NSMakePoint(infinity, 3), NSMakePoint(infinity, 3))));
    EXPECT_TRUE(std::isnan(Distance(NSMakePoint(1, notANumber), NSMakePoint(2, 3))));
}

TEST(IsPointWithinRadius, GivesHalfAUnitOfSlack) {
    const NSPoint p = NSMakePoint(10, 20);
    EXPECT_TRUE(IsPointWithinRadius(p, NSMakePoint(10, 20.4f), 0));
    EXPECT_TRUE(IsPointWithinRadius(p, NSMakePoint(9.6f, 20), 0));
    EXPECT_FALSE(IsPointWithinRadius(p, NSMakePoint(10, 20.5f), 0));
    EXPECT_TRUE(IsPointWithinRadius(p, NSMakePoint(13, 24), 4.625f));
    EXPECT_FALSE(IsPointWithinRadius(p, NSMakePoint(13, 24), 4.5f));
    EXPECT_FALSE(IsPointWithinRadius(p, p, -0.5f));
    EXPECT_TRUE(IsPointWithinRadius(p, p, -0.25f));
}

TEST(IsPointWithinRadius, ComparesInDoublePrecision) {
    // In floats 16777216 + 0.5 is 16777216.
    EXPECT_TRUE(IsPointWithinRadius(NSMakePoint(0, 0), NSMakePoint(16777216, 0), 16777216));
}

TEST(IsPointWithinRadius, AnswersNoWithoutNumbers) {
    EXPECT_FALSE(IsPointWithinRadius(NSMakePoint(notANumber, 0), NSMakePoint(1, 2), 5));
    EXPECT_FALSE(IsPointWithinRadius(NSMakePoint(1, 2), NSMakePoint(1, 2), notANumber));
}

TEST(RectContainsPoint, CountsTheLeftAndBottomEdgesOnly) {
    EXPECT_TRUE(RectContainsPoint(frame, NSMakePoint(-3, 5)));
    EXPECT_TRUE(RectContainsPoint(frame, NSMakePoint(-3, 12)));
    EXPECT_TRUE(RectContainsPoint(frame, NSMakePoint(2, 5)));
    EXPECT_TRUE(RectContainsPoint(frame, NSMakePoint(7.5f, 18.5f)));
    EXPECT_FALSE(RectContainsPoint(frame, NSMakePoint(8, 5)));
    EXPECT_FALSE(RectContainsPoint(frame, NSMakePoint(-3, 19)));
    EXPECT_FALSE(RectContainsPoint(frame, NSMakePoint(-3.5f, 12)));
    EXPECT_FALSE(RectContainsPoint(frame, NSMakePoint(2, 4.5f)));
    EXPECT_FALSE(RectContainsPoint(frame, NSMakePoint(9, 12)));
    EXPECT_FALSE(RectContainsPoint(frame, NSMakePoint(2, 20)));
}

TEST(RectContainsPoint, FindsNothingInRectanglesWithoutAreaOrWithNegativeExtents) {
    EXPECT_FALSE(RectContainsPoint(NSMakeRect(4, 6, 0, 5), NSMakePoint(4, 7)));
    EXPECT_FALSE(RectContainsPoint(NSMakeRect(4, 6, 5, 0), NSMakePoint(5, 6)));
    EXPECT_FALSE(RectContainsPoint(NSMakeRect(4, 6, -2, 5), NSMakePoint(3, 7)));
    EXPECT_FALSE(RectContainsPoint(NSMakeRect(4, 6, notANumber, 5), NSMakePoint(4, 7)));
}

TEST(OffsetRectByPoint, MovesTheOriginAndKeepsTheSize) {
    EXPECT_TRUE(isRect(OffsetRectByPoint(frame, NSMakePoint(7, -9)), 4, -4, 11, 14));
    const NSRect there = OffsetRectByPoint(frame, NSMakePoint(2.5f, 6));
    EXPECT_TRUE(isRect(OffsetRectByPoint(there, NSMakePoint(-2.5f, -6)), -3, 5, 11, 14));
}

TEST(FixRect, MakesNegativeExtentsPositive) {
    EXPECT_TRUE(isRect(FixRect(NSMakeRect(10, 10, -4, -6)), 6, 4, 4, 6));
    EXPECT_TRUE(isRect(FixRect(NSMakeRect(10, 20, -4, 6)), 6, 20, 4, 6));
    EXPECT_TRUE(isRect(FixRect(NSMakeRect(10, 20, 4, -6)), 10, 14, 4, 6));
    EXPECT_TRUE(isRect(FixRect(frame), -3, 5, 11, 14));
    EXPECT_TRUE(isRect(FixRect(NSMakeRect(10, 20, 0, 0)), 10, 20, 0, 0));
}

TEST(FixRect, LeavesAnExtentThatIsNotANumberAsItIs) {
    const NSRect fixed = FixRect(NSMakeRect(10, 20, notANumber, -6));
    EXPECT_EQ(fixed.origin.x, 10);
    EXPECT_TRUE(std::isnan(fixed.size.width));
    EXPECT_EQ(fixed.origin.y, 14);
    EXPECT_EQ(fixed.size.height, 6);
    const NSRect other = FixRect(NSMakeRect(10, 20, -4, notANumber));
    EXPECT_EQ(other.origin.x, 6);
    EXPECT_EQ(other.origin.y, 20);
    EXPECT_TRUE(std::isnan(other.size.height));
}

TEST(MidRect, IsTheMeanOfEachComponent) {
    EXPECT_TRUE(isRect(MidRect(frame, NSMakeRect(9, -8, 4, 31)), 3, -1.5f, 7.5f, 22.5f));
    EXPECT_TRUE(isRect(MidRect(NSMakeRect(9, -8, 4, 31), frame), 3, -1.5f, 7.5f, 22.5f));
    EXPECT_TRUE(isRect(MidRect(frame, frame), -3, 5, 11, 14));
}

TEST(MidRect, AddsBeforeItHalves) {
    // So that large rectangles overflow.
    EXPECT_EQ(MidRect(NSMakeRect(3e38f, 0, 1, 1), NSMakeRect(3e38f, 0, 1, 1)).origin.x, infinity);
}

TEST(FitRect, FitsTheAspectIntoTheRectangle) {
    EXPECT_TRUE(isRect(FitRect(NSMakeRect(0, 0, 200, 100), 1), 50, 0, 100, 100));
    EXPECT_TRUE(isRect(FitRect(NSMakeRect(0, 0, 200, 100), 4), 0, 25, 200, 50));
    EXPECT_TRUE(isRect(FitRect(NSMakeRect(0, 0, 200, 100), 2), 0, 0, 200, 100));
}

TEST(FitRect, CentresInARectangleOffTheOrigin) {
    EXPECT_TRUE(isRect(FitRect(NSMakeRect(-30, 17, 90, 40), 0.75f), 0, 17, 30, 40));
    EXPECT_TRUE(isRect(FitRect(NSMakeRect(-30, 17, 90, 40), 5), -30, 28, 90, 18));
    EXPECT_TRUE(isRect(FitRect(NSMakeRect(13, -7, 20, 90), 0.5f), 13, 18, 20, 40));
}

TEST(FitRect, FormsTheHalfDifferenceInDoublePrecision) {
    // The width is 85.33333587646484375. Its difference to 512 has more digits than a float, in which the
    // origin would be 0.3333282.
    const NSRect fitted = FitRect(NSMakeRect(-213, 3, 512, 256), 0.33333334f);
    EXPECT_EQ(fitted.size.width, 85.33333587646484375f);
    EXPECT_EQ(fitted.origin.x, static_cast<float>(256 - 85.33333587646484375 / 2 - 213));
    // 256 / 3 is 85.3333358764648 in floats too.
    EXPECT_EQ(FitRect(NSMakeRect(3, -213, 256, 512), 3).origin.y, fitted.origin.x);
}

TEST(FitRect, KeepsTheWidthWhenTheAspectIsTheRectanglesOwn) {
    // In floats 1 / 41 times 41 is a little less than 1.
    EXPECT_EQ(1.0f / 41 * 41, 0.99999994f);
    const NSRect fitted = FitRect(NSMakeRect(7, -9, 1, 41), 1.0f / 41);
    EXPECT_EQ(fitted.origin.x, 7);
    EXPECT_EQ(fitted.size.width, 1);
}

TEST(FitRect, TakesARectangleWithoutHeightAsInfinitelyWide) {
    EXPECT_TRUE(isRect(FitRect(NSMakeRect(10, 20, 30, 0), 2), 25, 20, 0, 0));
}

TEST(FitRect, GivesNoHeightToAnInfiniteAspect) {
    EXPECT_TRUE(isRect(FitRect(NSMakeRect(10, 20, 30, 40), infinity), 10, 40, 30, 0));
}

TEST(FitRect, LetsAnAspectThatIsNotANumberThrough) {
    const NSRect fitted = FitRect(NSMakeRect(10, 20, 30, 40), notANumber);
    EXPECT_EQ(fitted.origin.x, 10);
    EXPECT_EQ(fitted.size.width, 30);
    EXPECT_TRUE(std::isnan(fitted.origin.y));
    EXPECT_TRUE(std::isnan(fitted.size.height));
    // 0 / 0 is not a number, so the width is kept: 0 / 2.
    EXPECT_TRUE(isRect(FitRect(NSMakeRect(10, 20, 0, 0), 2), 10, 20, 0, 0));
}

TEST(FitRect, HasTheAspectAndTouchesTwoSidesOnRandomRectangles) {
    const std::uint32_t seed = 4711;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> place(-500, 500);
    std::uniform_real_distribution<float> extent(1, 800);
    std::uniform_real_distribution<float> ratio(0.1f, 9);
    for (int round = 0; round < 500; ++round) {
        const NSRect r = NSMakeRect(place(random), place(random), extent(random), extent(random));
        const float aspect = ratio(random);
        const NSRect fitted = FitRect(r, aspect);
        ASSERT_NEAR(fitted.size.width / fitted.size.height, aspect, 1e-5f * aspect);
        ASSERT_NEAR(NSMidX(fitted), NSMidX(r), 1e-3);
        ASSERT_NEAR(NSMidY(fitted), NSMidY(r), 1e-3);
        ASSERT_TRUE(fitted.size.width == r.size.width || fitted.size.height == r.size.height);
        ASSERT_LE(fitted.size.width, r.size.width * 1.000001f);
        ASSERT_LE(fitted.size.height, r.size.height * 1.000001f);
    }
}

TEST(RectFromPoints, SpansTwoCornersInAnyOrder) {
    const NSPoint low = NSMakePoint(-3, 5);
    const NSPoint high = NSMakePoint(8, 19);
    EXPECT_TRUE(isRect(RectFromPoints(low, high), -3, 5, 11, 14));
    EXPECT_TRUE(isRect(RectFromPoints(high, low), -3, 5, 11, 14));
    EXPECT_TRUE(isRect(RectFromPoints(NSMakePoint(-3, 19), NSMakePoint(8, 5)), -3, 5, 11, 14));
    EXPECT_TRUE(isRect(RectFromPoints(NSMakePoint(8, 5), NSMakePoint(-3, 19)), -3, 5, 11, 14));
    EXPECT_TRUE(isRect(RectFromPoints(high, high), 8, 19, 0, 0));
}

TEST(RectFromPointAndSize, KeepsBothAsTheyAre) {
    EXPECT_TRUE(isRect(RectFromPointAndSize(NSMakePoint(7, -2), NSMakeSize(-4, 9)), 7, -2, -4, 9));
}

TEST(RectFromSize, LiesAtTheOriginWithTheSizeAsItIs) {
    EXPECT_TRUE(isRect(Imaging::RectFromSize(NSMakeSize(-4, 9)), 0, 0, -4, 9));
    EXPECT_TRUE(isRect(Imaging::RectFromSize(NSMakeSize(640, 480.5F)), 0, 0, 640, 480.5F));
}

TEST(PointAlong, InterpolatesAndGoesOnBeyondTheEnds) {
    const NSPoint p = NSMakePoint(10, 20);
    const NSPoint q = NSMakePoint(18, -12);
    EXPECT_TRUE(isPoint(PointAlong(p, q, 0), 10, 20));
    EXPECT_TRUE(isPoint(PointAlong(p, q, 1), 18, -12));
    EXPECT_TRUE(isPoint(PointAlong(p, q, 0.25f), 12, 12));
    EXPECT_TRUE(isPoint(PointAlong(p, q, 2), 26, -44));
    EXPECT_TRUE(isPoint(PointAlong(p, q, -0.5f), 6, 36));
}

TEST(PointAlong, StartsFromTheFirstPoint) {
    // p + (q - p) · t loses a q that is small against p; (1 - t) · p + t · q would not.
    EXPECT_TRUE(isPoint(PointAlong(NSMakePoint(16777216, 3), NSMakePoint(-1, 3), 1), 0, 3));
}

TEST(Midpoint, LiesHalfWay) {
    EXPECT_TRUE(isPoint(Midpoint(NSMakePoint(10, 20), NSMakePoint(17, -12)), 13.5f, 4));
    EXPECT_TRUE(isPoint(Midpoint(NSMakePoint(3e38f, 1), NSMakePoint(3e38f, 2)), 3e38f, 1.5f));
}

TEST(PointArithmetic, AddsAndSubtractsComponents) {
    const NSPoint p = NSMakePoint(10, -20);
    const NSPoint q = NSMakePoint(2.5f, 7);
    EXPECT_TRUE(isPoint(AddPoint(p, q), 12.5f, -13));
    EXPECT_TRUE(isPoint(OffsetPoint(p, q), 12.5f, -13));
    EXPECT_TRUE(isPoint(SubtractPoint(p, q), 7.5f, -27));
    EXPECT_TRUE(isPoint(SubtractPoint(q, p), -7.5f, 27));
    EXPECT_TRUE(isPoint(SubtractPoint(AddPoint(p, q), q), 10, -20));
}

TEST(PointArithmetic, MultipliesAndDividesComponents) {
    const NSPoint p = NSMakePoint(10, -20);
    EXPECT_TRUE(isPoint(MultiplyPoint(p, -1.5f), -15, 30));
    EXPECT_TRUE(isPoint(DividePoint(p, -4), -2.5f, 5));
    EXPECT_TRUE(isPoint(DividePoint(MultiplyPoint(p, 8), 8), 10, -20));
}

TEST(PointArithmetic, DoesNotCheckADivisionByZero) {
    const NSPoint p = DividePoint(NSMakePoint(10, -20), 0);
    EXPECT_TRUE(isPoint(p, infinity, -infinity));
    EXPECT_TRUE(std::isnan(DividePoint(NSMakePoint(0, 1), 0).x));
}

TEST(PointArithmetic, TurnsSizesIntoPointsAndBack) {
    EXPECT_TRUE(isPoint(SizeToPoint(NSMakeSize(7, -3)), 7, -3));
    EXPECT_TRUE(isSize(PointToSize(NSMakePoint(7, -3)), 7, -3));
    EXPECT_TRUE(isSize(PointToSize(SizeToPoint(NSMakeSize(2.5f, 9))), 2.5f, 9));
}

TEST(RectPoints, AreTheCornersMidpointsAndCentreWithYUpward) {
    EXPECT_TRUE(isPoint(RectTopLeft(frame), -3, 19));
    EXPECT_TRUE(isPoint(RectTopMidpoint(frame), 2.5f, 19));
    EXPECT_TRUE(isPoint(RectTopRight(frame), 8, 19));
    EXPECT_TRUE(isPoint(RectMidpointLeft(frame), -3, 12));
    EXPECT_TRUE(isPoint(RectMidpoint(frame), 2.5f, 12));
    EXPECT_TRUE(isPoint(RectMidpointRight(frame), 8, 12));
    EXPECT_TRUE(isPoint(RectBottomLeft(frame), -3, 5));
    EXPECT_TRUE(isPoint(RectBottomMidpoint(frame), 2.5f, 5));
    EXPECT_TRUE(isPoint(RectBottomRight(frame), 8, 5));
}

TEST(RectPoints, FollowNegativeExtents) {
    const NSRect r = NSMakeRect(10, 20, -4, -6);
    EXPECT_TRUE(isPoint(RectTopRight(r), 6, 14));
    EXPECT_TRUE(isPoint(RectMidpoint(r), 8, 17));
}

TEST(RectPoints, AreHalvedInDoublePrecision) {
    // Half of the smallest float is 0 in floats (ties go to even), which leaves the origin; as a double it
    // tips the sum to the next float.
    const float smallest = std::numeric_limits<float>::denorm_min();
    const NSRect tiny = NSMakeRect(smallest, smallest, smallest, smallest);
    // 1.5 times the smallest float lies between one and two of them, and ties go to even.
    const float twice = 2 * smallest;
    EXPECT_TRUE(isPoint(RectMidpoint(tiny), twice, twice));
    EXPECT_EQ(RectTopMidpoint(tiny).x, twice);
    EXPECT_EQ(RectBottomMidpoint(tiny).x, twice);
    EXPECT_EQ(RectMidpointLeft(tiny).y, twice);
    EXPECT_EQ(RectMidpointRight(tiny).y, twice);
}
