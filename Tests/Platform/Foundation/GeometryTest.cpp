#include "Platform/Foundation/Geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Imaging::Platform;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

void expectRect(NSRect rect, float x, float y, float width, float height) {
    EXPECT_EQ(rect.origin.x, x);
    EXPECT_EQ(rect.origin.y, y);
    EXPECT_EQ(rect.size.width, width);
    EXPECT_EQ(rect.size.height, height);
}

} // namespace

TEST(Geometry, EdgesAndMiddlesFollowFromOriginAndSize) {
    constexpr NSRect rect = NSMakeRect(-3, 5, 7, 11);
    EXPECT_EQ(NSMinX(rect), -3);
    EXPECT_EQ(NSMinY(rect), 5);
    EXPECT_EQ(NSMaxX(rect), 4);
    EXPECT_EQ(NSMaxY(rect), 16);
    EXPECT_EQ(NSMidX(rect), 0.5f);
    EXPECT_EQ(NSMidY(rect), 10.5f);
}

TEST(Geometry, EqualityLooksAtEveryNumber) {
    const NSRect rect = NSMakeRect(1, 2, 3, 4);
    EXPECT_TRUE(NSEqualRects(rect, NSMakeRect(1, 2, 3, 4)));
    EXPECT_FALSE(NSEqualRects(rect, NSMakeRect(9, 2, 3, 4)));
    EXPECT_FALSE(NSEqualRects(rect, NSMakeRect(1, 9, 3, 4)));
    EXPECT_FALSE(NSEqualRects(rect, NSMakeRect(1, 2, 9, 4)));
    EXPECT_FALSE(NSEqualRects(rect, NSMakeRect(1, 2, 3, 9)));
    EXPECT_TRUE(NSEqualPoints(NSMakePoint(0.0f, 1), NSMakePoint(-0.0f, 1)));
    EXPECT_FALSE(NSEqualSizes(NSMakeSize(1, 2), NSMakeSize(2, 1)));
}

TEST(Geometry, NothingEqualsWhatIsNotANumber) {
    EXPECT_FALSE(NSEqualPoints(NSMakePoint(notANumber, 1), NSMakePoint(notANumber, 1)));
    EXPECT_FALSE(NSEqualSizes(NSMakeSize(1, notANumber), NSMakeSize(1, notANumber)));
    EXPECT_FALSE(NSEqualRects(NSMakeRect(1, notANumber, 3, 4), NSMakeRect(1, notANumber, 3, 4)));
}

TEST(Geometry, RectanglesWithoutAreaAreEmpty) {
    EXPECT_FALSE(NSIsEmptyRect(NSMakeRect(3, 4, 0.5f, 0.25f)));
    EXPECT_TRUE(NSIsEmptyRect(NSMakeRect(3, 4, 0, 5)));
    EXPECT_TRUE(NSIsEmptyRect(NSMakeRect(3, 4, 5, 0)));
    EXPECT_TRUE(NSIsEmptyRect(NSMakeRect(3, 4, -5, 6)));
    EXPECT_TRUE(NSIsEmptyRect(NSMakeRect(3, 4, 5, -6)));
    EXPECT_TRUE(NSIsEmptyRect(NSMakeRect(3, 4, -5, -6)));
    EXPECT_TRUE(NSIsEmptyRect(NSMakeRect(3, 4, notANumber, 6)));
    EXPECT_TRUE(NSIsEmptyRect(NSMakeRect(3, 4, 5, notANumber)));
}

TEST(Geometry, UnionIsTheSmallestRectangleAroundBoth) {
    expectRect(NSUnionRect(NSMakeRect(2, 3, 5, 7), NSMakeRect(11, -4, 3, 2)), 2, -4, 12, 14);
    expectRect(NSUnionRect(NSMakeRect(11, -4, 3, 2), NSMakeRect(2, 3, 5, 7)), 2, -4, 12, 14);
    expectRect(NSUnionRect(NSMakeRect(2, 3, 50, 70), NSMakeRect(10, 20, 3, 2)), 2, 3, 50, 70);
}

TEST(Geometry, EmptyRectanglesAddNothingToAUnion) {
    const NSRect rect = NSMakeRect(2, 3, 5, 7);
    expectRect(NSUnionRect(rect, NSMakeRect(100, 100, 0, 9)), 2, 3, 5, 7);
    expectRect(NSUnionRect(NSMakeRect(-100, 100, -5, 9), rect), 2, 3, 5, 7);
    expectRect(NSUnionRect(rect, NSMakeRect(1, 1, notANumber, 9)), 2, 3, 5, 7);
    expectRect(NSUnionRect(NSMakeRect(8, 9, 0, 0), NSMakeRect(4, 4, -1, 3)), 0, 0, 0, 0);
}

TEST(Geometry, IntersectionIsWhatBothHaveInCommon) {
    expectRect(NSIntersectionRect(NSMakeRect(2, 3, 5, 7), NSMakeRect(4, -1, 10, 6)), 4, 3, 3, 2);
    expectRect(NSIntersectionRect(NSMakeRect(4, -1, 10, 6), NSMakeRect(2, 3, 5, 7)), 4, 3, 3, 2);
    expectRect(NSIntersectionRect(NSMakeRect(2, 3, 50, 70), NSMakeRect(10, 20, 3, 2)), 10, 20, 3, 2);
}

TEST(Geometry, RectanglesThatOnlyTouchShareNothing) {
    const NSRect rect = NSMakeRect(2, 3, 5, 7);
    for (const NSRect neighbour : {NSMakeRect(7, 3, 5, 7), NSMakeRect(-3, 3, 5, 7), NSMakeRect(2, 10, 5, 7),
                                   NSMakeRect(2, -4, 5, 7), NSMakeRect(7, 10, 1, 1)}) {
        expectRect(NSIntersectionRect(rect, neighbour), 0, 0, 0, 0);
        EXPECT_FALSE(NSIntersectsRect(rect, neighbour));
    }
    EXPECT_TRUE(NSIntersectsRect(rect, NSMakeRect(6.5f, 9.5f, 1, 1)));
}

TEST(Geometry, EmptyAndNegativeRectanglesIntersectNothing) {
    const NSRect rect = NSMakeRect(2, 3, 5, 7);
    expectRect(NSIntersectionRect(rect, NSMakeRect(3, 4, 0, 2)), 0, 0, 0, 0);
    expectRect(NSIntersectionRect(NSMakeRect(6, 9, -3, -3), rect), 0, 0, 0, 0);
    expectRect(NSIntersectionRect(NSMakeRect(3, 4, 1, notANumber), rect), 0, 0, 0, 0);
    EXPECT_FALSE(NSIntersectsRect(rect, NSMakeRect(3, 4, 2, 0)));
    EXPECT_FALSE(NSIntersectsRect(rect, NSMakeRect(20, 3, 5, 7)));
}

TEST(Geometry, InsetMovesOppositeEdgesTowardsEachOther) {
    expectRect(NSInsetRect(NSMakeRect(2, 3, 15, 17), 1, 4), 3, 7, 13, 9);
    expectRect(NSInsetRect(NSMakeRect(2, 3, 15, 17), -1, -4), 1, -1, 17, 25);
}

TEST(Geometry, InsetBeyondTheMiddleGivesANegativeExtent) {
    expectRect(NSInsetRect(NSMakeRect(2, 3, 5, 7), 4, 5), 6, 8, -3, -3);
}

TEST(Geometry, InsetAndItsOppositeGoThereAndBack) {
    const NSRect rect = NSMakeRect(-2.5f, 3.25f, 15, 17);
    EXPECT_TRUE(NSEqualRects(NSInsetRect(NSInsetRect(rect, 1.5f, -2.75f), -1.5f, 2.75f), rect));
}

TEST(Geometry, OffsetMovesTheOriginOnly) {
    expectRect(NSOffsetRect(NSMakeRect(2, 3, 5, 7), -10, 0.5f), -8, 3.5f, 5, 7);
    expectRect(NSOffsetRect(NSMakeRect(2, 3, -5, 0), 1, 1), 3, 4, -5, 0);
}

TEST(Geometry, IntegralRectGrowsToWholeCoordinates) {
    expectRect(NSIntegralRect(NSMakeRect(1.25f, -2.5f, 3.5f, 1.25f)), 1, -3, 4, 2);
    expectRect(NSIntegralRect(NSMakeRect(-3, 4, 5, 6)), -3, 4, 5, 6);
    expectRect(NSIntegralRect(NSMakeRect(1.5f, 2.5f, 0, 4)), 0, 0, 0, 0);
    expectRect(NSIntegralRect(NSMakeRect(1.5f, 2.5f, notANumber, 4)), 0, 0, 0, 0);
}

TEST(Geometry, LeftAndBottomEdgesBelongToARectangle) {
    const NSRect rect = NSMakeRect(2, 3, 5, 7);
    EXPECT_TRUE(NSPointInRect(NSMakePoint(2, 3), rect));
    EXPECT_TRUE(NSPointInRect(NSMakePoint(std::nextafter(7.0f, 0.0f), std::nextafter(10.0f, 0.0f)), rect));
    EXPECT_FALSE(NSPointInRect(NSMakePoint(7, 5), rect));
    EXPECT_FALSE(NSPointInRect(NSMakePoint(5, 10), rect));
    EXPECT_FALSE(NSPointInRect(NSMakePoint(std::nextafter(2.0f, 0.0f), 5), rect));
    EXPECT_FALSE(NSPointInRect(NSMakePoint(5, std::nextafter(3.0f, 0.0f)), rect));
    EXPECT_FALSE(NSPointInRect(NSMakePoint(notANumber, 5), rect));
    EXPECT_FALSE(NSPointInRect(NSMakePoint(2, 3), NSMakeRect(2, 3, 0, 0)));
}

TEST(Geometry, ARectangleContainsThoseWithinItsEdges) {
    const NSRect outer = NSMakeRect(2, 3, 5, 7);
    EXPECT_TRUE(NSContainsRect(outer, outer));
    EXPECT_TRUE(NSContainsRect(outer, NSMakeRect(3, 4, 4, 6)));
    EXPECT_FALSE(NSContainsRect(outer, NSMakeRect(1, 4, 3, 3)));
    EXPECT_FALSE(NSContainsRect(outer, NSMakeRect(3, 4, 4.5f, 3)));
    EXPECT_FALSE(NSContainsRect(outer, NSMakeRect(3, 2, 3, 3)));
    EXPECT_FALSE(NSContainsRect(outer, NSMakeRect(3, 4, 3, 6.5f)));
    EXPECT_FALSE(NSContainsRect(outer, NSMakeRect(3, 4, 0, 3)));
    EXPECT_FALSE(NSContainsRect(outer, NSMakeRect(notANumber, 4, 1, 1)));
}

TEST(Geometry, AnInfiniteRectangleContainsAndMeetsAll) {
    const NSRect plane = NSMakeRect(-1e30f, -1e30f, infinity, infinity);
    const NSRect rect = NSMakeRect(-7, 9, 2, 3);
    EXPECT_TRUE(NSContainsRect(plane, rect));
    expectRect(NSIntersectionRect(plane, rect), -7, 9, 2, 3);
}
