#include "Imaging/Bounds.h"
#include "Platform/Graphics/BezierPath.h"

#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

using namespace ImagingTests;
using Imaging::isEqualToAffineTransform;

namespace {

/// (x, y) becomes (30 - y, 7 + x).
const NSAffineTransform turned = matrix(0, 1, -1, 0, 30, 7);

} // namespace

TEST(Bounds, KeepTheRectangleAndTheTransform) {
    const IMGBounds bounds = IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), turned);
    EXPECT_TRUE(isRect(bounds.rectangle(), 3, 5, 11, 13));
    ASSERT_TRUE(bounds.transform().has_value());
    EXPECT_TRUE(isTransform(*bounds.transform(), turned));
}

TEST(Bounds, TakeAnotherRectangleOrTransform) {
    IMGBounds bounds = IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), turned);
    bounds.setRectangle(NSMakeRect(-2, 4, 6, 8));
    EXPECT_TRUE(isRect(bounds.rectangle(), -2, 4, 6, 8));
    EXPECT_TRUE(isTransform(*bounds.transform(), turned));
    bounds.setTransform(moved(9, 1));
    EXPECT_TRUE(isRect(bounds.rectangle(), -2, 4, 6, 8));
    EXPECT_TRUE(isTransform(*bounds.transform(), moved(9, 1)));
}

TEST(Bounds, DoNotFollowChangesOfTheTransformThatTheyWereGiven) {
    NSAffineTransform given = turned;
    IMGBounds bounds = IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), given);
    given.scaleBy(5);
    EXPECT_TRUE(isTransform(*bounds.transform(), turned));
    given = moved(2, 3);
    bounds.setTransform(given);
    given.scaleBy(5);
    EXPECT_TRUE(isTransform(*bounds.transform(), moved(2, 3)));
}

TEST(Bounds, DoNotFollowChangesOfTheTransformThatTheyHandOut) {
    const IMGBounds bounds = IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), turned);
    NSAffineTransform handedOut = *bounds.transform();
    handedOut.rotateByDegrees(31);
    EXPECT_TRUE(isTransform(*bounds.transform(), turned));
    EXPECT_TRUE(isPoint(bounds.bottomLeft(), 25, 10));
}

TEST(Bounds, MapAPointByAConcatenatedTransformFirst) {
    IMGBounds bounds = IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), turned);
    bounds.concatTransform(matrix(2, 0, 0, 3, 1, 4));
    // (x, y) becomes (2x + 1, 3y + 4) and then (30 - (3y + 4), 7 + (2x + 1)) = (26 - 3y, 8 + 2x).
    EXPECT_TRUE(isTransform(*bounds.transform(), matrix(0, 2, -3, 0, 26, 8)));
    EXPECT_TRUE(isPoint(bounds.bottomLeft(), 26 - 15, 8 + 6));
    EXPECT_TRUE(isRect(bounds.rectangle(), 3, 5, 11, 13));
}

TEST(Bounds, WithoutATransformStayWithoutOne) {
    IMGBounds bounds = IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), turned);
    bounds.setTransform(std::nullopt);
    EXPECT_FALSE(bounds.transform().has_value());
    bounds.concatTransform(turned);
    EXPECT_FALSE(bounds.transform().has_value());
    EXPECT_FALSE(IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), std::nullopt).transform().has_value());
}

TEST(Bounds, WithoutATransformHaveTheirCornersAtTheZeroPoint) {
    const IMGBounds bounds = IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), std::nullopt);
    EXPECT_TRUE(isPoint(bounds.bottomLeft(), 0, 0));
    EXPECT_TRUE(isPoint(bounds.topRight(), 0, 0));
    EXPECT_TRUE(isRect(bounds.bezierPath().bounds(), 3, 5, 11, 13));
}

TEST(Bounds, NameTheirCornersByTheUntransformedRectangle) {
    const IMGBounds plain = IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), NSAffineTransform());
    EXPECT_TRUE(isPoint(plain.bottomLeft(), 3, 5));
    EXPECT_TRUE(isPoint(plain.bottomRight(), 14, 5));
    EXPECT_TRUE(isPoint(plain.topLeft(), 3, 18));
    EXPECT_TRUE(isPoint(plain.topRight(), 14, 18));

    const IMGBounds quarterTurned = IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), turned);
    EXPECT_TRUE(isPoint(quarterTurned.bottomLeft(), 25, 10));
    EXPECT_TRUE(isPoint(quarterTurned.bottomRight(), 25, 21));
    EXPECT_TRUE(isPoint(quarterTurned.topLeft(), 12, 10));
    EXPECT_TRUE(isPoint(quarterTurned.topRight(), 12, 21));
}

TEST(Bounds, UnderAQuarterTurnAboutTheOriginAreExact) {
    NSAffineTransform quarter;
    quarter.rotateByDegrees(90);
    const IMGBounds bounds = IMGBounds::boundsWithRect(NSMakeRect(0, 0, 100, 50), quarter);
    EXPECT_TRUE(isPoint(bounds.bottomLeft(), 0, 0));
    EXPECT_TRUE(isPoint(bounds.bottomRight(), 0, 100));
    EXPECT_TRUE(isPoint(bounds.topLeft(), -50, 0));
    EXPECT_TRUE(isPoint(bounds.topRight(), -50, 100));
    EXPECT_TRUE(isRect(bounds.boundingRect(), -50, 0, 50, 100));
}

TEST(Bounds, HaveABoundingRectangleAroundTheTransformedCorners) {
    EXPECT_TRUE(
        isRect(IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), turned).boundingRect(), 12, 10, 13, 11));
    // A shear: (x, y) becomes (x + 2y, y + 0.5x), so the corners are (13, 6.5), (24, 12), (39, 19.5), (50,
    // 25).
    const IMGBounds sheared =
        IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), matrix(1, 0.5F, 2, 1, 0, 0));
    EXPECT_TRUE(isRect(sheared.boundingRect(), 13, 6.5F, 37, 18.5F));
}

TEST(Bounds, AtAnObliqueAngleHaveTheRectangleAroundAllFourCorners) {
    // A turn by the angle of the 3-4-5 triangle: (x, y) becomes (0.6x - 0.8y, 0.8x + 0.6y) + (100, 40).
    const IMGBounds bounds =
        IMGBounds::boundsWithRect(NSMakeRect(10, 20, 50, 25), matrix(0.6F, 0.8F, -0.8F, 0.6F, 100, 40));
    // The corners are (90, 60), (120, 100), (70, 75) and (100, 115).
    const NSRect around = bounds.boundingRect();
    EXPECT_NEAR(around.origin.x, 70, 1e-4);
    EXPECT_NEAR(around.origin.y, 60, 1e-4);
    EXPECT_NEAR(around.size.width, 50, 1e-4);
    EXPECT_NEAR(around.size.height, 55, 1e-4);
}

TEST(Bounds, AtNegativeCoordinatesAloneReachUpToZero) {
    const IMGBounds both = IMGBounds::boundsWithRect(NSMakeRect(-30, -20, 10, 10), NSAffineTransform());
    EXPECT_TRUE(isRect(both.boundingRect(), -30, -20, 30, 20));
    const IMGBounds left = IMGBounds::boundsWithRect(NSMakeRect(-30, 4, 10, 7), NSAffineTransform());
    EXPECT_TRUE(isRect(left.boundingRect(), -30, 4, 30, 7));
    const IMGBounds below = IMGBounds::boundsWithRect(NSMakeRect(6, -20, 10, 7), NSAffineTransform());
    EXPECT_TRUE(isRect(below.boundingRect(), 6, -20, 10, 20));
}

TEST(Bounds, ReachUpToTheSmallestNormalFloatAndNotToZero) {
    // Which shows only in extents that are hardly larger themselves.
    constexpr float smallest = 1.1754944e-38F;
    static_assert(smallest == std::numeric_limits<float>::min());
    const NSRect tiny = NSMakeRect(-4 * smallest, -8 * smallest, 2 * smallest, smallest);
    const NSRect around = IMGBounds::boundsWithRect(tiny, NSAffineTransform()).boundingRect();
    EXPECT_EQ(around.size.width, 5 * smallest);
    EXPECT_EQ(around.size.height, 9 * smallest);
}

TEST(Bounds, ThatTouchOrCrossZeroAreExact) {
    const IMGBounds touching = IMGBounds::boundsWithRect(NSMakeRect(-30, -20, 30, 20), NSAffineTransform());
    EXPECT_TRUE(isRect(touching.boundingRect(), -30, -20, 30, 20));
    const IMGBounds crossing = IMGBounds::boundsWithRect(NSMakeRect(-30, -20, 37, 25), NSAffineTransform());
    EXPECT_TRUE(isRect(crossing.boundingRect(), -30, -20, 37, 25));
}

TEST(Bounds, HaveAPathOfTheirExactShape) {
    const Imaging::Platform::NSBezierPath path =
        IMGBounds::boundsWithRect(NSMakeRect(3, 5, 11, 13), turned).bezierPath();
    ASSERT_EQ(path.elementCount(), 5U);
    const std::array<NSPoint, 4> expected = {NSMakePoint(25, 10), NSMakePoint(25, 21), NSMakePoint(12, 21),
                                             NSMakePoint(12, 10)};
    std::array<NSPoint, 3> points;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        path.elementAtIndex(i, &points);
        EXPECT_TRUE(isPoint(points[0], expected[i].x, expected[i].y)) << "corner " << i;
    }
    EXPECT_EQ(path.elementAtIndex(4), Imaging::Platform::NSBezierPathElement::ClosePath);
}

TEST(Bounds, HaveAPathThatIsNotTheirBoundingRectangle) {
    const IMGBounds diamond =
        IMGBounds::boundsWithRect(NSMakeRect(10, 20, 50, 25), matrix(0.6F, 0.8F, -0.8F, 0.6F, 100, 40));
    EXPECT_TRUE(diamond.bezierPath().containsPoint(NSMakePoint(95, 87)));
    EXPECT_FALSE(diamond.bezierPath().containsPoint(NSMakePoint(71, 61))); // a corner of the rectangle
}

TEST(TransformAndClipRecord, WithoutAClipHasTheZeroRectangle) {
    const auto record = TransformAndClipRect::transformAndClipRectWithTransform(turned);
    EXPECT_TRUE(isTransform(record.transform(), turned));
    EXPECT_FALSE(record.hasClipRect());
    EXPECT_TRUE(isRect(record.clipRect(), 0, 0, 0, 0));
}

TEST(TransformAndClipRecord, WithAClipHasItTurnedOn) {
    const auto record =
        TransformAndClipRect::transformAndClipRectWithTransform(turned, NSMakeRect(1, 2, 3, 4));
    EXPECT_TRUE(isTransform(record.transform(), turned));
    EXPECT_TRUE(record.hasClipRect());
    EXPECT_TRUE(isRect(record.clipRect(), 1, 2, 3, 4));
    EXPECT_TRUE(TransformAndClipRect::transformAndClipRectWithTransform(turned, NSMakeRect(0, 0, 0, 0))
                    .hasClipRect());
}

TEST(TransformAndClipRecord, IsMadeByItsConstructorsToo) {
    const TransformAndClipRect unclipped(turned);
    EXPECT_TRUE(isTransform(unclipped.transform(), turned));
    EXPECT_FALSE(unclipped.hasClipRect());
    EXPECT_TRUE(isRect(unclipped.clipRect(), 0, 0, 0, 0));
    const TransformAndClipRect clipped(turned, NSMakeRect(1, 2, 3, 4));
    EXPECT_TRUE(isTransform(clipped.transform(), turned));
    EXPECT_TRUE(clipped.hasClipRect());
    EXPECT_TRUE(isRect(clipped.clipRect(), 1, 2, 3, 4));
}

TEST(TransformAndClipRecord, IsNotClippedByARectangleAlone) {
    auto record = TransformAndClipRect::transformAndClipRectWithTransform(turned);
    record.setClipRect(NSMakeRect(1, 2, 3, 4));
    EXPECT_FALSE(record.hasClipRect());
    EXPECT_TRUE(isRect(record.clipRect(), 1, 2, 3, 4));
    record.setHasClipRect(true);
    EXPECT_TRUE(record.hasClipRect());
    record.setClipRect(NSMakeRect(5, 6, 7, 8));
    EXPECT_TRUE(record.hasClipRect());
    record.setHasClipRect(false);
    EXPECT_FALSE(record.hasClipRect());
    EXPECT_TRUE(isRect(record.clipRect(), 5, 6, 7, 8));
}

TEST(TransformAndClipRecord, KeepsATransformOfItsOwn) {
    NSAffineTransform given = turned;
    auto record = TransformAndClipRect::transformAndClipRectWithTransform(given);
    given.scaleBy(3);
    EXPECT_TRUE(isTransform(record.transform(), turned));
    NSAffineTransform handedOut = record.transform();
    handedOut.scaleBy(3);
    EXPECT_TRUE(isTransform(record.transform(), turned));
    record.setTransform(handedOut);
    handedOut.scaleBy(3);
    EXPECT_TRUE(isTransform(record.transform(), matrix(0, 3, -3, 0, 30, 7)));
}

TEST(TransformAndClipList, IsEmptyAtFirst) {
    const TransformAndClipList list;
    EXPECT_EQ(list.size(), 0U);
    EXPECT_TRUE(list.records().empty());
}

TEST(TransformAndClipList, GivesItsRecordsOutermostFirst) {
    const TransformAndClipList one(TransformAndClipRect::transformAndClipRectWithTransform(moved(1, 5)));
    const TransformAndClipList two = one.appending(
        TransformAndClipRect::transformAndClipRectWithTransform(moved(2, 6), NSMakeRect(1, 2, 3, 4)));
    const TransformAndClipList three =
        two.appending(TransformAndClipRect::transformAndClipRectWithTransform(moved(3, 7)));
    ASSERT_EQ(three.size(), 3U);
    const auto records = three.records();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_TRUE(isTransform(records[0]->transform(), moved(1, 5)));
    EXPECT_TRUE(isTransform(records[1]->transform(), moved(2, 6)));
    EXPECT_TRUE(isTransform(records[2]->transform(), moved(3, 7)));
    EXPECT_FALSE(records[0]->hasClipRect());
    EXPECT_TRUE(records[1]->hasClipRect());
    EXPECT_FALSE(records[2]->hasClipRect());
}

TEST(TransformAndClipList, StaysAsItIsWhenALongerOneIsMade) {
    const TransformAndClipList outer(TransformAndClipRect::transformAndClipRectWithTransform(moved(1, 5)));
    const auto left = outer.appending(TransformAndClipRect::transformAndClipRectWithTransform(moved(2, 6)));
    const auto right = outer.appending(TransformAndClipRect::transformAndClipRectWithTransform(moved(3, 7)));
    EXPECT_EQ(outer.size(), 1U);
    ASSERT_EQ(left.size(), 2U);
    ASSERT_EQ(right.size(), 2U);
    EXPECT_TRUE(isTransform(left.records()[1]->transform(), moved(2, 6)));
    EXPECT_TRUE(isTransform(right.records()[1]->transform(), moved(3, 7)));
    EXPECT_EQ(left.records()[0], right.records()[0]);
}

TEST(TransformAndClipList, IsReleasedWhateverItsLength) {
    TransformAndClipList list;
    for (int i = 0; i < 1'000'000; ++i) {
        list = list.appending(TransformAndClipRect::transformAndClipRectWithTransform(moved(1, 5)));
    }
    const TransformAndClipList shorter = list;
    EXPECT_EQ(list.size(), 1'000'000U);
    list = TransformAndClipList();
    EXPECT_EQ(shorter.records().size(), 1'000'000U);
}

TEST(ExactTransformEquality, ComparesAllSixEntries) {
    const Imaging::Platform::NSAffineTransformStruct entries = {1.5F, -2, 3, 4.25F, 50, -6};
    EXPECT_TRUE(isEqualToAffineTransform(NSAffineTransform(entries), NSAffineTransform(entries)));
    float Imaging::Platform::NSAffineTransformStruct::*const members[] = {
        &Imaging::Platform::NSAffineTransformStruct::m11, &Imaging::Platform::NSAffineTransformStruct::m12,
        &Imaging::Platform::NSAffineTransformStruct::m21, &Imaging::Platform::NSAffineTransformStruct::m22,
        &Imaging::Platform::NSAffineTransformStruct::tX,  &Imaging::Platform::NSAffineTransformStruct::tY};
    for (const auto member : members) {
        Imaging::Platform::NSAffineTransformStruct other = entries;
        other.*member = std::nextafter(other.*member, 1000.0F);
        EXPECT_FALSE(isEqualToAffineTransform(NSAffineTransform(entries), NSAffineTransform(other)));
        EXPECT_FALSE(isEqualToAffineTransform(NSAffineTransform(other), NSAffineTransform(entries)));
    }
}

TEST(ExactTransformEquality, TellsTheTwoZerosApart) {
    EXPECT_FALSE(isEqualToAffineTransform(matrix(1, 0, 0, 1, 0, 0), matrix(1, -0.0F, 0, 1, 0, 0)));
    EXPECT_FALSE(isEqualToAffineTransform(matrix(1, 0, 0, 1, 0, 0), matrix(1, 0, 0, 1, 0, -0.0F)));
    EXPECT_TRUE(matrix(1, 0, 0, 1, 0, 0).isEqual(matrix(1, -0.0F, 0, 1, 0, -0.0F)));
}

TEST(ExactTransformEquality, FindsEqualBytesEqualEvenIfTheyAreNoNumbers) {
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(isEqualToAffineTransform(matrix(1, nothing, 0, 1, 0, 0), matrix(1, nothing, 0, 1, 0, 0)));
}

TEST(ExactTransformEquality, RecognisesTheIdentityByItsBits) {
    NSAffineTransform built;
    built.scaleXBy(1, 1);
    built.translateXBy(0, 0);
    EXPECT_TRUE(isEqualToAffineTransform(built, NSAffineTransform()));
    // A third of a turn three times leaves rounding behind; a whole turn at once is exact.
    NSAffineTransform inThirds;
    for (int i = 0; i < 3; ++i) inThirds.rotateByDegrees(120);
    EXPECT_FALSE(isEqualToAffineTransform(inThirds, NSAffineTransform()));
    NSAffineTransform whole;
    whole.rotateByDegrees(360);
    EXPECT_TRUE(whole.isEqual(NSAffineTransform()));
}
