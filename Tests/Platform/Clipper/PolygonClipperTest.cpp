// Also tests: Platform/Clipper/Contours/ContourGrid.cpp

#include "Platform/Clipper/PolygonClipper.h"

#include "Tests/Platform/Clipper/PolygonOracle.h"
#include "Tests/Support/Pixels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

using namespace PolygonOracle;
using Imaging::Platform::GPC_DIFF;
using Imaging::Platform::GPC_INT;
using Imaging::Platform::GPC_UNION;
using Imaging::Platform::GPC_XOR;
using testing::UnorderedElementsAre;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// The rectangle that stands for no clip: minus a quarter of the largest 32-bit float, and half of it wide.
Ring noClip() {
    const double quarter = 8.507059e37;
    return rectangle(-quarter, -quarter, 2 * quarter, 2 * quarter);
}

Ring reversed(Ring ring) {
    std::reverse(ring.begin(), ring.end());
    return ring;
}

// The records

TEST(GpcPolygon, HoldsCopiesOfTheContoursThatAreAdded) {
    std::vector<gpc_vertex> vertices = {{1, 2}, {3, 4}, {5, 6}};
    const Imaging::Platform::gpc_vertex_list list = {3, vertices.data()};
    gpc_owned_polygon polygon;
    gpc_add_contour(&polygon, &list, 0);
    vertices[1] = {9, 9};
    gpc_add_contour(&polygon, &list, 1);
    ASSERT_EQ(polygon.num_contours, 2);
    EXPECT_EQ(polygon.hole[0], 0);
    EXPECT_EQ(polygon.hole[1], 1);
    EXPECT_EQ(ringOf(polygon, 0), (Ring{{1, 2}, {3, 4}, {5, 6}}));
    EXPECT_EQ(ringOf(polygon, 1), (Ring{{1, 2}, {9, 9}, {5, 6}}));
}

TEST(GpcPolygon, TakesContoursWithoutVertices) {
    const Imaging::Platform::gpc_vertex_list none = {0, nullptr};
    gpc_owned_polygon polygon;
    gpc_add_contour(&polygon, &none, 0);
    ASSERT_EQ(polygon.num_contours, 1);
    EXPECT_EQ(polygon.contour[0].num_vertices, 0);
    EXPECT_TRUE(common(ringsOf(polygon), {rectangle(0, 0, 1, 1)}).empty());
}

TEST(GpcPolygon, IsEmptyAfterItWasFreedAndMayBeFreedAgain) {
    gpc_polygon polygon{};
    add(polygon, rectangle(0, 0, 1, 1));
    gpc_free_polygon(&polygon);
    EXPECT_EQ(polygon.num_contours, 0);
    EXPECT_EQ(polygon.hole, nullptr);
    EXPECT_EQ(polygon.contour, nullptr);
    gpc_free_polygon(&polygon);
    add(polygon, rectangle(0, 0, 1, 1));
    EXPECT_EQ(polygon.num_contours, 1);
    gpc_free_polygon(&polygon);
}

TEST(GpcPolygon, MayBeBuiltByHandFromMalloc) {
    gpc_polygon polygon{};
    polygon.num_contours = 1;
    polygon.hole = static_cast<int*>(std::calloc(1, sizeof(int)));
    polygon.contour = static_cast<Imaging::Platform::gpc_vertex_list*>(
        std::malloc(sizeof(Imaging::Platform::gpc_vertex_list)));
    auto* const vertices = static_cast<gpc_vertex*>(std::malloc(3 * sizeof(gpc_vertex)));
    polygon.contour[0] = {3, vertices};
    vertices[0] = {0, 0};
    vertices[1] = {1, 0};
    vertices[2] = {0, 1};
    for (int i = 0; i < 20; ++i) add(polygon, rectangle(i, i, 1, 1));
    EXPECT_EQ(polygon.num_contours, 21);
    EXPECT_EQ(ringOf(polygon, 20), rectangle(19, 19, 1, 1));
    gpc_free_polygon(&polygon);
}

TEST(GpcPolygon, IsHandedOverByItsOwner) {
    gpc_owned_polygon owner;
    add(owner, rectangle(0, 0, 1, 1));
    gpc_polygon taken{};
    owner.moveTo(&taken);
    EXPECT_EQ(owner.num_contours, 0);
    EXPECT_EQ(owner.contour, nullptr);
    EXPECT_EQ(taken.num_contours, 1);
    gpc_free_polygon(&taken);
}

TEST(GpcPolygonClip, OverwritesTheResultAndLeavesTheOperands) {
    gpc_owned_polygon a;
    gpc_owned_polygon b;
    add(a, rectangle(0, 0, 4, 4));
    add(b, rectangle(2, 2, 4, 4));
    gpc_polygon result = {17, nullptr, nullptr};
    gpc_polygon_clip(GPC_INT, &a, &b, &result);
    EXPECT_EQ(ringsOf(result), Rings{rectangle(2, 2, 2, 2)});
    EXPECT_EQ(ringsOf(a), Rings{rectangle(0, 0, 4, 4)});
    EXPECT_EQ(ringsOf(b), Rings{rectangle(2, 2, 4, 4)});
    gpc_free_polygon(&result);
}

// Rectangles

TEST(GpcPolygonClip, GivesRectanglesTheExactCoordinatesOfTheOperands) {
    const Ring a = {{0.1, 0.2}, {0.7, 0.2}, {0.7, 0.9}, {0.1, 0.9}};
    const Ring b = {{0.3, -1.0 / 3}, {12.0 / 7, -1.0 / 3}, {12.0 / 7, 0.6}, {0.3, 0.6}};
    const Rings expected = {{{0.3, 0.2}, {0.7, 0.2}, {0.7, 0.6}, {0.3, 0.6}}};
    EXPECT_EQ(common({a}, {b}), expected);
    EXPECT_EQ(common({b}, {a}), expected);
    EXPECT_EQ(common({reversed(a)}, {b}), expected);
    EXPECT_EQ(common({reversed(a)}, {reversed(b)}), expected);
}

TEST(GpcPolygonClip, GivesNothingOfRectanglesThatMissOrOnlyTouch) {
    const Ring a = rectangle(0, 0, 4, 4);
    for (const Ring& b : {rectangle(5, 0, 4, 4), rectangle(4, 0, 4, 4), rectangle(4, 4, 4, 4),
                          rectangle(0, -9, 4, 9), rectangle(1, 1, 0, 2), rectangle(1, 1, 2, 0)}) {
        gpc_owned_polygon result;
        combine(GPC_INT, {a}, {b}, result);
        EXPECT_EQ(result.num_contours, 0);
        EXPECT_EQ(result.hole, nullptr);
        EXPECT_EQ(result.contour, nullptr);
    }
}

TEST(GpcPolygonClip, CutsAConvexQuadrilateralByARectangleInDoubles) {
    // A diamond around (0, 0) of radius 1, cut at x = 0.1, x = 0.9 and y = -0.2: the edges are |x| + |y| = 1.
    const Ring diamond = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    const Rings result = common({diamond}, {{{0.1, -0.2}, {0.9, -0.2}, {0.9, 5}, {0.1, 5}}});
    ASSERT_EQ(result.size(), 1U);
    EXPECT_GT(signedArea(result), 0);
    // Left of x = 0.9, right of 0.1: heights from -0.2 to 1 - x, but from x - 1 where that is above -0.2.
    // The area above 0 is the integral of 1 - x; below it that of min(0.2, 1 - x).
    const double above = (0.9 * 0.9 - 0.1 * 0.1) / 2;
    const double below = 0.7 * 0.2 + (0.2 * 0.2 - 0.1 * 0.1) / 2;
    EXPECT_NEAR(static_cast<double>(signedArea(result)), above + below, 1e-15);
    for (const Point& p : result[0]) {
        const bool isOnEdge = p.x == 0.1 || p.x == 0.9 || p.y == -0.2;
        EXPECT_TRUE(isOnEdge || p == (Point{1, 0})) << p;
    }
}

TEST(GpcPolygonClip, LeavesAnExactTriangleInsideARectangle) {
    const Ring triangle = {{0.1, 0.2}, {1.0 / 3, 0.25}, {0.2, 0.7}};
    EXPECT_EQ(common({triangle}, {noClip()}), Rings{triangle});
    EXPECT_EQ(common({noClip()}, {triangle}), Rings{triangle});
    const Rings turned = common({reversed(triangle)}, {noClip()});
    ASSERT_EQ(turned.size(), 1U);
    EXPECT_EQ(turned[0], triangle);
}

// Shapes by hand

TEST(GpcPolygonClip, CutsATriangleByATriangle) {
    // Half squares whose diagonals cross at (2, 2): in common is (0,0) (4,0) (2,2).
    const Rings result = common({{{0, 0}, {4, 0}, {4, 4}}}, {{{0, 0}, {4, 0}, {0, 4}}});
    ASSERT_EQ(result.size(), 1U);
    EXPECT_THAT(result[0], UnorderedElementsAre(Point{0, 0}, Point{4, 0}, Point{2, 2}));
    EXPECT_EQ(signedArea(result), 4);
}

TEST(GpcPolygonClip, TakesABowTieByTheEvenOddRule) {
    const Ring bowTie = {{0, 0}, {2, 2}, {2, 0}, {0, 2}};
    const Rings result = common({bowTie}, {rectangle(-5, -5, 10, 10)});
    EXPECT_EQ(signedArea(result), 2);
    EXPECT_TRUE(isInside(result, {0.25, 1}));
    EXPECT_TRUE(isInside(result, {1.75, 1}));
    EXPECT_FALSE(isInside(result, {1, 0.25}));
    EXPECT_FALSE(isInside(result, {1, 1.75}));
}

TEST(GpcPolygonClip, LeavesTheMiddleOfAPentagramOut) {
    Ring pentagram;
    for (int i = 0; i < 5; ++i) {
        const double angle = M_PI / 2 + i * 4 * M_PI / 5;
        pentagram.push_back({std::cos(angle), std::sin(angle)});
    }
    const Rings result = common({pentagram}, {rectangle(-5, -5, 10, 10)});
    // The inner pentagon's radius is cos 72° / cos 36°. Each tip is a triangle on one of its sides; together
    // the tips are the ten-cornered outline without the pentagon.
    const double inner = std::cos(0.4 * M_PI) / std::cos(0.2 * M_PI);
    const double outline = 5 * inner * std::sin(0.2 * M_PI);
    const double pentagon = 2.5 * inner * inner * std::sin(0.4 * M_PI);
    EXPECT_NEAR(static_cast<double>(signedArea(result)), outline - pentagon, 1e-8);
    EXPECT_FALSE(isInside(result, {0, 0}));
    EXPECT_TRUE(isInside(result, {0, 0.8}));
}

TEST(GpcPolygonClip, CountsContoursThatCoverEachOtherTwiceAsOutside) {
    const Rings subject = {rectangle(0, 0, 4, 4), rectangle(2, 0, 4, 4)};
    const Rings result = common(subject, {{{-9, -9}, {20, -9}, {20, 20}, {5, 30}, {-9, 20}}});
    EXPECT_EQ(signedArea(result), 16);
    EXPECT_FALSE(isInside(result, {3, 2}));
}

TEST(GpcPolygonClip, FlagsHolesAndTurnsThemClockwise) {
    // Both rings run the same way; what makes the inner one a hole is that it lies in the other.
    for (const bool innerFirst : {false, true}) {
        Rings subject = {rectangle(0, 0, 10, 10), rectangle(3, 3, 4, 4)};
        if (innerFirst) std::swap(subject[0], subject[1]);
        gpc_owned_polygon result;
        combine(GPC_INT, subject, {rectangle(-1, -1, 20, 20)}, result);
        ASSERT_EQ(result.num_contours, 2);
        const int hole = result.hole[0] != 0 ? 0 : 1;
        EXPECT_NE(result.hole[hole], 0);
        EXPECT_EQ(result.hole[1 - hole], 0);
        EXPECT_EQ(signedArea(ringOf(result, hole)), -16);
        EXPECT_EQ(signedArea(ringOf(result, 1 - hole)), 100);
        EXPECT_THAT(ringOf(result, hole),
                    UnorderedElementsAre(Point{3, 3}, Point{7, 3}, Point{7, 7}, Point{3, 7}));
    }
}

TEST(GpcPolygonClip, DoesNotAskTheOperandsForTheirHoleFlags) {
    gpc_owned_polygon subject;
    add(subject, rectangle(0, 0, 10, 10), 1);
    gpc_owned_polygon clip;
    add(clip, {{0, 0}, {20, 0}, {0, 20}, {-20, 0}});
    gpc_owned_polygon result;
    gpc_polygon_clip(GPC_INT, &subject, &clip, &result);
    ASSERT_EQ(result.num_contours, 1);
    EXPECT_EQ(result.hole[0], 0);
    EXPECT_EQ(signedArea(ringsOf(result)), 100);
}

TEST(GpcPolygonClip, OpensAHoleThatTheClipReaches) {
    const Rings frame = {rectangle(0, 0, 10, 10), rectangle(2, 2, 6, 6)};
    gpc_owned_polygon result;
    combine(GPC_INT, frame, {rectangle(0, 0, 5, 10)}, result);
    ASSERT_EQ(result.num_contours, 1);
    EXPECT_EQ(result.hole[0], 0);
    EXPECT_EQ(signedArea(ringsOf(result)), 50 - 18);
}

TEST(GpcPolygonClip, KeepsAnIslandInAHole) {
    const Rings subject = {rectangle(0, 0, 9, 9), rectangle(1, 1, 7, 7), rectangle(3, 3, 3, 3)};
    gpc_owned_polygon result;
    combine(GPC_INT, subject, {rectangle(-1, -1, 20, 20)}, result);
    ASSERT_EQ(result.num_contours, 3);
    int holes = 0;
    for (int i = 0; i < 3; ++i) holes += result.hole[i] != 0 ? 1 : 0;
    EXPECT_EQ(holes, 1);
    EXPECT_EQ(signedArea(ringsOf(result)), 81 - 49 + 9);
}

TEST(GpcPolygonClip, TakesARepeatedFirstVertexAsTheSameContour) {
    Ring closed = {{0, 0}, {6, 0}, {6, 6}, {3, 9}, {0, 6}};
    closed.push_back(closed.front());
    const Rings result = common({closed}, {rectangle(-1, -1, 20, 20)});
    ASSERT_EQ(result.size(), 1U);
    EXPECT_THAT(result[0],
                UnorderedElementsAre(Point{0, 0}, Point{6, 0}, Point{6, 6}, Point{3, 9}, Point{0, 6}));
}

TEST(GpcPolygonClip, DropsContoursWithoutArea) {
    const Rings flat = {{{0, 0}, {5, 5}, {9, 9}}, {{1, 1}, {1, 1}, {1, 1}}, {{2, 2}, {3, 3}}};
    EXPECT_TRUE(common(flat, {rectangle(-1, -1, 20, 20)}).empty());
    Rings withOne = flat;
    withOne.push_back({{0, 0}, {4, 1}, {4, 4}, {1, 4}, {-0.5, 2}});
    EXPECT_EQ(common(withOne, {rectangle(-1, -1, 20, 20)}).size(), 1U);
}

TEST(GpcPolygonClip, GivesNothingOfEmptyOperands) {
    const Ring some = {{0, 0}, {4, 1}, {4, 4}, {1, 4}, {-0.5, 2}};
    EXPECT_TRUE(common({}, {some}).empty());
    EXPECT_TRUE(common({some}, {}).empty());
    EXPECT_TRUE(common({}, {}).empty());
    EXPECT_TRUE(combined(GPC_UNION, {}, {}).empty());
    EXPECT_TRUE(combined(GPC_DIFF, {}, {some}).empty());
}

TEST(GpcPolygonClip, SubtractsUnitesAndTakesWhatIsInOne) {
    const Rings a = {rectangle(0, 0, 4, 4)};
    const Rings b = {rectangle(2, 2, 4, 4)};
    EXPECT_EQ(signedArea(combined(GPC_DIFF, a, b)), 12);
    EXPECT_EQ(signedArea(combined(GPC_DIFF, b, a)), 12);
    EXPECT_EQ(signedArea(combined(GPC_UNION, a, b)), 28);
    EXPECT_EQ(signedArea(combined(GPC_XOR, a, b)), 24);
    EXPECT_EQ(combined(GPC_UNION, a, {rectangle(4, 0, 3, 4)}).size(), 1U); // neighbours grow together
    EXPECT_EQ(signedArea(combined(GPC_UNION, a, {})), 16);
    EXPECT_EQ(signedArea(combined(GPC_DIFF, a, {})), 16);
}

// Sizes

TEST(GpcPolygonClip, LeavesSmallPolygonsAsTheyAreInsideTheRectangleOfNoClip) {
    Pixels::Random random(11);
    for (double size = 1e-3; size < 3e37; size *= 10) {
        // A pentagon that is neither symmetric nor on a grid, away from the origin.
        Ring pentagon;
        for (int i = 0; i < 5; ++i) {
            const double angle = i * 2 * M_PI / 5 + random.real(0, 0.5);
            const double radius = size * random.real(0.6, 1);
            pentagon.push_back({radius * std::cos(angle) + size / 3, radius * std::sin(angle) - size / 7});
        }
        const Rings result = common({noClip()}, {pentagon});
        ASSERT_EQ(result.size(), 1U) << size;
        EXPECT_EQ(result[0].size(), 5U) << size;
        for (const Point& p : pentagon) EXPECT_THAT(result[0], testing::Contains(p)) << size;
        EXPECT_GT(signedArea(result), 0) << size;
    }
}

TEST(GpcPolygonClip, KeepsHolesInsideTheRectangleOfNoClip) {
    gpc_owned_polygon result;
    combine(GPC_INT, {noClip()},
            {rectangle(0.001, 0.001, 0.003, 0.003), rectangle(0.002, 0.002, 0.001, 0.001)}, result);
    ASSERT_EQ(result.num_contours, 2);
    EXPECT_NEAR(static_cast<double>(signedArea(ringsOf(result))), 8e-6, 1e-18);
}

TEST(GpcPolygonClip, CutsAHugeRectangleWithAHoleBySomethingSmall) {
    // All the plane but for the square from 0 to 1.
    const Rings result =
        common({noClip(), rectangle(0, 0, 1, 1)}, {{{-1, -1}, {2, -1}, {3, 0.5}, {2, 2}, {-1, 2}}});
    EXPECT_NEAR(static_cast<double>(signedArea(result)), 9 + 1.5 - 1, 1e-8);
    EXPECT_FALSE(isInside(result, {0.5, 0.5}));
    EXPECT_TRUE(isInside(result, {-0.5, 0.5}));
}

TEST(GpcPolygonClip, HasDetailsOfAThousandMillionthOfTheCommonExtent) {
    // A step of 1e-5 in an edge of a polygon 2000 wide, which the clip reaches beyond on every side.
    const double step = 1e-5;
    const Ring stepped = {{0, 0}, {2000, 0}, {2000, 1000 + step}, {700, 1000 + step}, {700, 1000}, {0, 1000}};
    const Rings result = common({stepped}, {rectangle(-5e30, -5e30, 1e31, 1e31)});
    ASSERT_EQ(result.size(), 1U);
    EXPECT_THAT(result[0], testing::UnorderedElementsAreArray(stepped));
}

TEST(GpcPolygonClip, ScalesEachAxisByItself) {
    const Ring thin = {{0, 0}, {1e30, 0}, {1e30, 1e-3}, {5e29, 2e-3}, {0, 1e-3}};
    const Rings result = common({thin}, {{{-1e30, -1}, {7.5e29, -1}, {7.5e29, 1}, {0, 2}, {-1e30, 1}}});
    EXPECT_NEAR(static_cast<double>(signedArea(result) / 1e27L), 0.75 + 0.25 + 0.1875, 1e-8);
}

TEST(GpcPolygonClip, GivesNothingOfCoordinatesThatAreNotFiniteOrBeyondItsRange) {
    for (const double bad : {nan, infinity, -infinity, 1.01e150, -1e300}) {
        for (const gpc_op operation : {GPC_INT, GPC_UNION, GPC_DIFF, GPC_XOR}) {
            const Rings good = {rectangle(0, 0, 4, 4)};
            const Rings wrongX = {{{0, 0}, {bad, 0}, {4, 4}, {0, 4}}};
            const Rings wrongY = {{{0, 0}, {4, 0}, {4, bad}, {0, 4}}};
            EXPECT_TRUE(combined(operation, good, wrongX).empty()) << bad;
            EXPECT_TRUE(combined(operation, wrongX, good).empty()) << bad;
            EXPECT_TRUE(combined(operation, wrongY, good).empty()) << bad;
        }
    }
}

TEST(GpcPolygonClip, TakesCoordinatesUpToTheEndOfItsRange) {
    const Ring huge = {{-1e150, -1e150}, {1e150, -1e150}, {1e150, 1e150}, {0, 5e149}, {-1e150, 1e150}};
    const Rings small = common({huge}, {rectangle(1, 1, 2, 3)});
    ASSERT_EQ(small.size(), 1U);
    EXPECT_THAT(small[0], testing::UnorderedElementsAreArray(rectangle(1, 1, 2, 3)));
    EXPECT_EQ(common({huge}, {huge}).size(), 1U);
}

TEST(GpcPolygonClip, GivesNothingOfExtentsTooSmallForAnArea) {
    const double tiny = std::numeric_limits<double>::denorm_min();
    const Ring dot = {{0, 0}, {tiny, 0}, {2 * tiny, tiny}, {tiny, 2 * tiny}, {0, tiny}};
    EXPECT_TRUE(common({dot}, {dot}).empty());
}

} // namespace
