#include "Imaging/PolygonClipping.h"

#include "Imaging/Bezier.h"
#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/BezierPath.h"
#include "Tests/Platform/Clipper/PolygonOracle.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Imaging;
using Imaging::Platform::NSMakeRect;
using PolygonOracle::Point;
using PolygonOracle::Ring;
using PolygonOracle::Rings;
using PolygonOracle::ringsOf;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

NSAffineTransform matrix(float m11, float m12, float m21, float m22, float tX, float tY) {
    return NSAffineTransform({m11, m12, m21, m22, tX, tY});
}

/// Points as the tests write them.
Ring pointsOf(const std::vector<NSPoint>& list) {
    Ring ring;
    for (const NSPoint p : list) ring.push_back({p.x, p.y});
    return ring;
}

Rings gathered(const NSBezierPath& path) {
    PointLists lists;
    GatherVertices(path, lists);
    Rings rings;
    for (const auto& list : lists) rings.push_back(pointsOf(list));
    return rings;
}

// AddRectToPolygon

TEST(AddRectToPolygon, AddsTheCornersInTheirOrder) {
    gpc_owned_polygon polygon;
    AddRectToPolygon(&polygon, NSMakeRect(1, 2, 10, 20));
    AddRectToPolygon(&polygon, NSMakeRect(5, 6, 1, 1));
    EXPECT_EQ(ringsOf(polygon),
              (Rings{{{1, 2}, {11, 2}, {11, 22}, {1, 22}}, {{5, 6}, {6, 6}, {6, 7}, {5, 7}}}));
    EXPECT_EQ(polygon.hole[0], 0);
    EXPECT_EQ(polygon.hole[1], 0);
}

TEST(AddRectToPolygon, KeepsNegativeExtentsAndAddsInSinglePrecision) {
    gpc_owned_polygon polygon;
    AddRectToPolygon(&polygon, NSMakeRect(0, 16777216, -3, 1));
    EXPECT_EQ(
        ringsOf(polygon),
        (Rings{{{0, 16777216}, {-3, 16777216}, {-3, 16777216}, {0, 16777216}}})); // 2^24 + 1 is no float
}

// TransformPolygon

TEST(TransformPolygon, MapsEveryVertexOfEveryContourAndKeepsHoles) {
    gpc_owned_polygon polygon;
    PolygonOracle::add(polygon, {{1, 2}, {3, 4}, {-5, 6}});
    PolygonOracle::add(polygon, {{0, 0}, {1, 0}, {0, 1}, {9, 9}}, 1);
    TransformPolygon(&polygon, matrix(2, 1, 0, -1, 10, 20));
    // x' = 2x + 10, y' = x - y + 20
    EXPECT_EQ(ringsOf(polygon),
              (Rings{{{12, 19}, {16, 19}, {0, 9}}, {{10, 20}, {12, 21}, {10, 19}, {28, 20}}}));
    EXPECT_EQ(polygon.hole[0], 0);
    EXPECT_EQ(polygon.hole[1], 1);
}

TEST(TransformPolygon, RoundsVerticesToSinglePrecisionOnTheWay) {
    gpc_owned_polygon polygon;
    PolygonOracle::add(polygon, {{0.1, 16777217}, {1, 1}, {2, 0}});
    TransformPolygon(&polygon, NSAffineTransform());
    EXPECT_EQ(ringsOf(polygon), (Rings{{{static_cast<double>(0.1F), 16777216}, {1, 1}, {2, 0}}}));
}

TEST(TransformPolygon, LeavesAnEmptyPolygonEmpty) {
    gpc_owned_polygon polygon;
    TransformPolygon(&polygon, matrix(2, 0, 0, 2, 0, 0));
    EXPECT_EQ(polygon.num_contours, 0);
}

// ClipPolygonToTransformedRect

TEST(ClipPolygonToTransformedRect, LeavesWhatBothHaveInCommon) {
    gpc_owned_polygon polygon;
    AddRectToPolygon(&polygon, NSMakeRect(0, 0, 10, 10));
    ClipPolygonToTransformedRect(&polygon, NSMakeRect(1, 1, 2, 3), matrix(3, 0, 0, 2, 1, 4));
    // The rectangle becomes (4, 6) to (10, 12).
    ASSERT_EQ(polygon.num_contours, 1);
    EXPECT_EQ(polygon.contour[0].num_vertices, 4);
    EXPECT_EQ(PolygonOracle::signedArea(ringsOf(polygon)), 6 * 4);
    for (const Point& p : PolygonOracle::ringOf(polygon, 0)) {
        EXPECT_TRUE((p.x == 4 || p.x == 10) && (p.y == 6 || p.y == 10)) << p;
    }
}

TEST(ClipPolygonToTransformedRect, LeavesAnEmptyPolygonOfARectangleThatItDoesNotMeet) {
    for (const NSRect rect : {NSMakeRect(20, 0, 5, 5), NSMakeRect(10, 0, 5, 5), NSMakeRect(3, 3, 0, 4)}) {
        gpc_owned_polygon polygon;
        AddRectToPolygon(&polygon, NSMakeRect(0, 0, 10, 10));
        ClipPolygonToTransformedRect(&polygon, rect, NSAffineTransform());
        EXPECT_EQ(polygon.num_contours, 0);
        EXPECT_EQ(polygon.contour, nullptr);
        EXPECT_EQ(polygon.hole, nullptr);
    }
}

TEST(ClipPolygonToTransformedRect, TakesATurnedRectangleOutOfNoClipWithItsExactCorners) {
    gpc_owned_polygon polygon;
    AddRectToPolygon(&polygon, NSMakeRect(-8.5070587e37F, -8.5070587e37F, 1.7014117e38F, 1.7014117e38F));
    NSAffineTransform turn;
    turn.rotateByDegrees(30);
    const NSRect rect = NSMakeRect(1, 2, 10, 20);
    gpc_owned_polygon expected;
    AddRectToPolygon(&expected, rect);
    TransformPolygon(&expected, turn);
    ClipPolygonToTransformedRect(&polygon, rect, turn);
    EXPECT_EQ(ringsOf(polygon), ringsOf(expected));
}

TEST(ClipPolygonToTransformedRect, CutsAnEmptyPolygonToAnEmptyOne) {
    gpc_owned_polygon polygon;
    ClipPolygonToTransformedRect(&polygon, NSMakeRect(0, 0, 9, 9), NSAffineTransform());
    EXPECT_EQ(polygon.num_contours, 0);
}

TEST(ClipPolygonToTransformedRect, LeavesNothingUnderATransformThatIsNotFinite) {
    for (const float bad : {nan, infinity, -infinity}) {
        gpc_owned_polygon polygon;
        AddRectToPolygon(&polygon, NSMakeRect(0, 0, 10, 10));
        ClipPolygonToTransformedRect(&polygon, NSMakeRect(0, 0, 9, 9), matrix(1, 0, 0, 1, bad, 0));
        EXPECT_EQ(polygon.num_contours, 0);
    }
}

TEST(ClipPolygonToTransformedRect, NarrowsStepByStepAsOracleAreasSay) {
    Pixels::Random random(77);
    for (int i = 0; i < 300; ++i) {
        gpc_owned_polygon polygon;
        AddRectToPolygon(&polygon, NSMakeRect(0, 0, 100, 100));
        NSAffineTransform transform;
        for (int step = 0; step < 3; ++step) {
            const Rings before = ringsOf(polygon);
            transform.translateXBy(random.single(-10, 10), random.single(-10, 10));
            transform.rotateByDegrees(random.single(0, 360));
            const NSRect rect = NSMakeRect(random.single(-80, 0), random.single(-80, 0), 100, 120);
            ClipPolygonToTransformedRect(&polygon, rect, transform);
            gpc_owned_polygon limit;
            AddRectToPolygon(&limit, rect);
            TransformPolygon(&limit, transform);
            const auto expected =
                PolygonOracle::StripAreas(Imaging::Platform::GPC_INT, before, ringsOf(limit)).area();
            EXPECT_NEAR(static_cast<double>(PolygonOracle::signedArea(ringsOf(polygon))),
                        static_cast<double>(expected), 1e-4);
        }
    }
}

// GatherVertices

TEST(GatherVertices, GivesARectangleAsFivePointsTheLastOfWhichIsTheFirst) {
    EXPECT_EQ(gathered(NSBezierPath::bezierPathWithRect(NSMakeRect(1, 2, 3, 4))),
              (Rings{{{1, 2}, {4, 2}, {4, 6}, {1, 6}, {1, 2}}}));
}

TEST(GatherVertices, GivesACurveAsTheMoveAndTwentyPointsWithoutItsEnd) {
    NSBezierPath path;
    path.moveToPoint({10, 20});
    path.curveToPoint({40, 30}, {10, 60}, {50, 70});
    const BezierCurve curve = {{10, 20}, {10, 60}, {50, 70}, {40, 30}};
    Ring expected = {{10, 20}};
    for (int k = 0; k < 20; ++k) {
        const NSPoint p = PointAlongBezierCurve(curve, static_cast<float>(k) / 20, 1.0F / 1024);
        expected.push_back({p.x, p.y});
    }
    const Rings lists = gathered(path);
    ASSERT_EQ(lists.size(), 1U);
    ASSERT_EQ(lists[0].size(), 21U);
    EXPECT_EQ(lists[0], expected);
    EXPECT_NEAR(lists[0][1].x, 10, 0.01); // the first of the twenty repeats the start
    EXPECT_NEAR(lists[0][1].y, 20, 0.01);
}

TEST(GatherVertices, SpacesTheTwentyPointsOfACurveByItsLength) {
    // A straight line as a curve: 0, 5, 10, … 95 % of it.
    NSBezierPath path;
    path.moveToPoint({0, 0});
    path.curveToPoint({200, 0}, {0, 0}, {200, 0});
    const Rings lists = gathered(path);
    ASSERT_EQ(lists.size(), 1U);
    ASSERT_EQ(lists[0].size(), 21U);
    for (std::size_t k = 0; k < 20; ++k) {
        EXPECT_NEAR(lists[0][k + 1].x, 10.0 * static_cast<double>(k), 1e-4);
        EXPECT_EQ(lists[0][k + 1].y, 0);
    }
}

TEST(GatherVertices, JoinsTheNextLineToTheLastPointOfACurveNotItsEnd) {
    NSBezierPath path;
    path.moveToPoint({0, 0});
    path.curveToPoint({200, 0}, {0, 0}, {200, 0});
    path.lineToPoint({300, 50});
    const Rings lists = gathered(path);
    ASSERT_EQ(lists[0].size(), 22U);
    EXPECT_NEAR(lists[0][20].x, 190, 1e-3);
    EXPECT_EQ(lists[0][21], (Point{300, 50}));
}

TEST(GatherVertices, StartsACurveAfterAnotherAtItsEnd) {
    NSBezierPath path;
    path.moveToPoint({0, 0});
    path.curveToPoint({100, 0}, {0, 0}, {100, 0});
    path.curveToPoint({100, 100}, {100, 0}, {100, 100});
    const Rings lists = gathered(path);
    ASSERT_EQ(lists[0].size(), 41U);
    EXPECT_EQ(lists[0][21], (Point{100, 0}));
    EXPECT_NEAR(lists[0][40].y, 95, 1e-3);
}

TEST(GatherVertices, KeepsTwoMovesInARowInOneList) {
    NSBezierPath path;
    path.moveToPoint({1, 1});
    path.moveToPoint({5, 5});
    path.lineToPoint({6, 7});
    EXPECT_EQ(gathered(path), (Rings{{{1, 1}, {5, 5}, {6, 7}}}));
}

TEST(GatherVertices, EndsAListAtAMoveOnlyWhereItHoldsMoreThanOnePoint) {
    NSBezierPath path;
    path.moveToPoint({1, 1});
    path.moveToPoint({2, 2}); // two points now
    path.moveToPoint({3, 3}); // so this begins another list
    path.lineToPoint({4, 4});
    EXPECT_EQ(gathered(path), (Rings{{{1, 1}, {2, 2}}, {{3, 3}, {4, 4}}}));
}

TEST(GatherVertices, DropsASinglePointAtTheEnd) {
    NSBezierPath path;
    path.moveToPoint({1, 1});
    EXPECT_TRUE(gathered(path).empty());
    path.lineToPoint({2, 2});
    path.moveToPoint({3, 3});
    EXPECT_EQ(gathered(path), (Rings{{{1, 1}, {2, 2}}}));
}

TEST(GatherVertices, ClosesToTheLatestMove) {
    NSBezierPath path;
    path.moveToPoint({1, 1});
    path.moveToPoint({5, 5});
    path.lineToPoint({6, 7});
    path.closePath();
    EXPECT_EQ(gathered(path), (Rings{{{1, 1}, {5, 5}, {6, 7}, {5, 5}}}));
}

TEST(GatherVertices, GoesOnInTheSameListAfterAClose) {
    NSBezierPath path;
    path.moveToPoint({0, 0});
    path.lineToPoint({4, 0});
    path.closePath();
    path.lineToPoint({0, 9});
    EXPECT_EQ(gathered(path), (Rings{{{0, 0}, {4, 0}, {0, 0}, {0, 9}}}));
}

TEST(GatherVertices, StartsACurveAfterACloseWhereThePenWasBefore) {
    NSBezierPath path;
    path.moveToPoint({0, 0});
    path.lineToPoint({100, 0});
    path.closePath();
    path.curveToPoint({100, 200}, {100, 0}, {100, 200});
    const Rings lists = gathered(path);
    ASSERT_EQ(lists[0].size(), 23U);
    EXPECT_EQ(lists[0][2], (Point{0, 0}));
    EXPECT_EQ(lists[0][3], (Point{100, 0})); // not the start that the close went to
    EXPECT_NEAR(lists[0][22].y, 190, 1e-3);
}

TEST(GatherVertices, AddsTheStartAgainForASecondClose) {
    NSBezierPath path;
    path.moveToPoint({7, 8});
    path.closePath();
    path.closePath();
    EXPECT_EQ(gathered(path), (Rings{{{7, 8}, {7, 8}, {7, 8}}}));
}

TEST(GatherVertices, AppendsToTheListsThatThereAre) {
    PointLists lists = {{{9, 9}}};
    GatherVertices(NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 1, 1)), lists);
    GatherVertices(NSBezierPath(), lists);
    ASSERT_EQ(lists.size(), 2U);
    EXPECT_EQ(pointsOf(lists[0]), (Ring{{9, 9}}));
    EXPECT_EQ(lists[1].size(), 5U);
}

// ConvertBezierPathToPolygon

TEST(ConvertBezierPathToPolygon, MakesAContourOfEachList) {
    NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(0.1F, 2, 3, 4));
    path.moveToPoint({9, 9});
    path.lineToPoint({10, 9});
    gpc_owned_polygon polygon;
    ConvertBezierPathToPolygon(path, &polygon);
    const double x = 0.1F;
    const double right = 0.1F + 3.0F;
    EXPECT_EQ(ringsOf(polygon), (Rings{{{x, 2}, {right, 2}, {right, 6}, {x, 6}, {x, 2}}, {{9, 9}, {10, 9}}}));
    EXPECT_EQ(polygon.hole[0], 0);
    EXPECT_EQ(polygon.hole[1], 0);
}

TEST(ConvertBezierPathToPolygon, OverwritesWhatTheRecordHeld) {
    gpc_owned_polygon kept;
    AddRectToPolygon(&kept, NSMakeRect(0, 0, 5, 5));
    gpc_polygon record = kept; // the arrays stay with the other record
    ConvertBezierPathToPolygon(NSBezierPath::bezierPathWithRect(NSMakeRect(1, 1, 1, 1)), &record);
    EXPECT_EQ(record.num_contours, 1);
    EXPECT_EQ(ringsOf(record)[0].size(), 5U);
    EXPECT_EQ(ringsOf(kept)[0].size(), 4U);
    gpc_free_polygon(&record);
}

TEST(ConvertBezierPathToPolygon, MakesAnEmptyPolygonOfAnEmptyPath) {
    gpc_owned_polygon polygon;
    ConvertBezierPathToPolygon(NSBezierPath(), &polygon);
    EXPECT_EQ(polygon.num_contours, 0);
    EXPECT_EQ(polygon.contour, nullptr);
}

} // namespace
