#include "Platform/Clipper/Contours/ContourCutting.h"

#include "Tests/Platform/Clipper/PolygonOracle.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Imaging::Platform::Clipping;
using PolygonOracle::Point;
using PolygonOracle::Ring;
using PolygonOracle::Rings;

Ring ringOf(const Contour& contour) {
    Ring ring;
    for (const auto& v : contour) ring.push_back({v.x, v.y});
    return ring;
}

Contour contourOf(const Ring& ring) {
    Contour contour;
    for (const Point& p : ring) contour.push_back({p.x, p.y});
    return contour;
}

bool isIn(const Box& box, Point p) {
    return p.x > box.low.x && p.x < box.high.x && p.y > box.low.y && p.y < box.high.y;
}

TEST(ContourCutting, KeepsTheEvenOddRegionInsideTheBox) {
    Pixels::Random random(4711);
    int inside = 0;
    for (int i = 0; i < 3000; ++i) {
        SCOPED_TRACE("contour " + std::to_string(i));
        Rings rings(static_cast<std::size_t>(random.integer(1, 3)));
        Rings cut;
        const Box box = {{random.real(-60, -5), random.real(-60, -5)},
                         {random.real(5, 60), random.real(5, 60)}};
        for (Ring& ring : rings) {
            ring.resize(static_cast<std::size_t>(random.integer(3, 12)));
            for (Point& p : ring) p = {random.real(-100, 100), random.real(-100, 100)};
            cut.push_back(ringOf(cutToBox(contourOf(ring), box)));
        }
        for (int k = 0; k < 50; ++k) {
            const Point p = {random.real(box.low.x, box.high.x), random.real(box.low.y, box.high.y)};
            if (PolygonOracle::distanceFromEdges(rings, p) < 1e-9 || !isIn(box, p)) continue;
            ASSERT_EQ(PolygonOracle::isInside(cut, p), PolygonOracle::isInside(rings, p)) << p;
            inside += PolygonOracle::isInside(cut, p) ? 1 : 0;
        }
    }
    EXPECT_GT(inside, 10000);
}

TEST(ContourCutting, LeavesNothingOutsideTheBox) {
    Pixels::Random random(4712);
    const Box box = {{-30, -20}, {25, 40}};
    for (int i = 0; i < 1000; ++i) {
        Ring ring(static_cast<std::size_t>(random.integer(3, 12)));
        for (Point& p : ring) p = {random.real(-100, 100), random.real(-100, 100)};
        for (const Point& p : ringOf(cutToBox(contourOf(ring), box))) {
            ASSERT_TRUE(p.x >= -30 && p.x <= 25 && p.y >= -20 && p.y <= 40) << p;
        }
    }
}

TEST(ContourCutting, CutsEdgesAlongAnAxisExactly) {
    const Contour huge = contourOf(PolygonOracle::rectangle(-1e37, 0.1, 3e37, 0.2));
    for (const Point& p : ringOf(cutToBox(huge, {{1.0 / 3, -5}, {2.0 / 3, 5}}))) {
        EXPECT_TRUE(p.x == 1.0 / 3 || p.x == 2.0 / 3) << p;
        EXPECT_TRUE(p.y == 0.1 || p.y == 0.1 + 0.2) << p;
    }
}

TEST(ContourCutting, CutsAnEdgeAtTheSamePlaceBothWays) {
    Pixels::Random random(4713);
    const Box box = {{-1, -1}, {1, 1}};
    for (int i = 0; i < 1000; ++i) {
        const Point a = {random.real(-9, 9), random.real(-9, 9)};
        const Point b = {random.real(-9, 9), random.real(-9, 9)};
        Ring there = ringOf(cutToBox(contourOf({a, b}), box));
        Ring back = ringOf(cutToBox(contourOf({b, a}), box));
        const auto isBefore = [](Point p, Point q) { return p.x != q.x ? p.x < q.x : p.y < q.y; };
        std::sort(there.begin(), there.end(), isBefore);
        std::sort(back.begin(), back.end(), isBefore);
        ASSERT_EQ(there, back);
    }
}

TEST(ContourCutting, MeasuresAreasFarFromTheOrigin) {
    EXPECT_EQ(signedArea(contourOf(PolygonOracle::rectangle(1e15, -1e15, 2, 3))), 6);
    EXPECT_EQ(signedArea(contourOf({{1e15, 0}, {1e15, 2}, {1e15 + 2, 0}})), -2);
    EXPECT_EQ(signedArea({}), 0);
}

TEST(ContourCutting, TakesAnAreaOfRoundingAloneForNone) {
    // On one line but for the last digit of a double.
    EXPECT_EQ(signedArea(contourOf({{0, 0}, {0.1, 0.3}, {0.7, 2.1}})), 0);
}

TEST(ContourCutting, KnowsRectanglesAlongTheAxes) {
    EXPECT_TRUE(asRectangle(contourOf({{0, 0}, {0, 2}, {3, 2}, {3, 0}})).has_value());
    EXPECT_TRUE(asRectangle(contourOf({{3, 2}, {0, 2}, {0, 0}, {3, 0}})).has_value());
    EXPECT_FALSE(asRectangle(contourOf({{0, 0}, {3, 2}, {3, 0}, {0, 2}})).has_value()); // a bow tie
    EXPECT_FALSE(asRectangle(contourOf({{0, 0}, {0, 2}, {3, 2}, {3, 0.1}})).has_value());
    EXPECT_FALSE(asRectangle(contourOf({{0, 0}, {0, 2}, {3, 2}})).has_value());
}

TEST(ContourCutting, KnowsConvexTrianglesAndQuadrilaterals) {
    EXPECT_TRUE(isConvexTriangleOrQuadrilateral(contourOf({{0, 0}, {4, 1}, {2, 5}})));
    EXPECT_TRUE(isConvexTriangleOrQuadrilateral(contourOf({{0, 0}, {2, 5}, {6, 6}, {4, 1}})));
    EXPECT_FALSE(isConvexTriangleOrQuadrilateral(contourOf({{0, 0}, {4, 4}, {4, 0}, {0, 4}})));
    EXPECT_FALSE(isConvexTriangleOrQuadrilateral(contourOf({{0, 0}, {4, 0}, {1, 1}, {0, 4}})));
    EXPECT_FALSE(isConvexTriangleOrQuadrilateral(contourOf({{0, 0}, {2, 2}, {4, 4}})));
    EXPECT_FALSE(isConvexTriangleOrQuadrilateral(contourOf({{0, 0}, {2, 0}, {4, 0}, {2, 2}})));
    EXPECT_FALSE(isConvexTriangleOrQuadrilateral(contourOf({{0, 0}, {2, 0}, {3, 1}, {2, 2}, {0, 2}})));
}

} // namespace
