// Random polygons against plain means: points sampled all over, and areas.

#include "Tests/Platform/Clipper/PolygonOracle.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <string>

namespace {

using namespace PolygonOracle;
using Pixels::Random;

/// A place for polygons: its lower left corner and its side.
struct Field {
    Point corner;
    double side;
};

Point pointIn(Random& random, const Field& field) {
    return {field.corner.x + random.real(0, 1) * field.side, field.corner.y + random.real(0, 1) * field.side};
}

/// A ring that crosses itself as chance will have it.
Ring tangle(Random& random, const Field& field) {
    Ring ring(static_cast<std::size_t>(random.integer(3, 14)));
    for (Point& p : ring) p = pointIn(random, field);
    return ring;
}

/// A ring around a point that does not cross itself, spiky or smooth, either way round.
Ring star(Random& random, const Field& field) {
    const Point middle = pointIn(random, field);
    const int corners = random.integer(3, 40);
    const double least = random.real(0.05, 1);
    Ring ring;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2 * M_PI * (i + random.real(0, 0.9)) / corners;
        const double radius = field.side / 2 * random.real(least, 1);
        ring.push_back({middle.x + radius * std::cos(angle), middle.y + radius * std::sin(angle)});
    }
    if (random.integer(0, 1) == 1) std::reverse(ring.begin(), ring.end());
    return ring;
}

/// Corners on a coarse lattice, so that edges overlap, vertices lie on edges and points coincide.
Ring latticeRing(Random& random, const Field& field) {
    Ring ring(static_cast<std::size_t>(random.integer(3, 10)));
    for (Point& p : ring) {
        p = {field.corner.x + random.integer(0, 8) * field.side / 8,
             field.corner.y + random.integer(0, 8) * field.side / 8};
    }
    return ring;
}

Ring turnedRectangle(Random& random, const Field& field) {
    const Point middle = pointIn(random, field);
    const double angle = random.real(0, 7);
    const double a = field.side * random.real(0.05, 0.7);
    const double b = field.side * random.real(0.05, 0.7);
    Ring ring;
    for (const Point& p : {Point{-a, -b}, Point{a, -b}, Point{a, b}, Point{-a, b}}) {
        ring.push_back({middle.x + p.x * std::cos(angle) - p.y * std::sin(angle),
                        middle.y + p.x * std::sin(angle) + p.y * std::cos(angle)});
    }
    return ring;
}

/// Unions of lattice tangles are not exact; see `PolygonClipper.h`.
bool isExactOnLattices(gpc_op operation) {
    return operation == Imaging::Platform::GPC_INT || operation == Imaging::Platform::GPC_DIFF;
}

Ring ringOfSomeKind(Random& random, gpc_op operation, const Field& field) {
    switch (random.integer(isExactOnLattices(operation) ? 0 : 1, 4)) {
    case 0:
        return latticeRing(random, field);
    case 1:
        return tangle(random, field);
    case 2:
        return star(random, field);
    case 3:
        return turnedRectangle(random, field);
    default:
        const Point p = pointIn(random, field);
        return rectangle(p.x, p.y, field.side * random.real(0.1, 1), field.side * random.real(0.1, 1));
    }
}

Rings polygonOfSomeKind(Random& random, gpc_op operation, const Field& field) {
    Rings rings(static_cast<std::size_t>(std::max(1, random.integer(-1, 4))));
    for (Ring& ring : rings) ring = ringOfSomeKind(random, operation, field);
    return rings;
}

Field fieldOfSomeSize(Random& random) {
    const double side = std::pow(10, random.real(-3, 6));
    // Not so far from the origin that doubles themselves are coarse.
    return {{side * random.real(-100, 100), side * random.real(-100, 100)}, side};
}

/// Whether points all over the field are where the operation has them, but for those next to an edge.
testing::AssertionResult pointsAgree(Random& random, gpc_op operation, const Rings& subject,
                                     const Rings& clip, const Rings& result, const Field& field) {
    const Field around = {{field.corner.x - field.side, field.corner.y - field.side}, 3 * field.side};
    for (int i = 0; i < 150; ++i) {
        const Point p = pointIn(random, around);
        const double clearance = 1e-7 * field.side;
        if (distanceFromEdges(subject, p) < clearance || distanceFromEdges(clip, p) < clearance) continue;
        const bool expected = isInside(operation, isInside(subject, p), isInside(clip, p));
        if (isInside(result, p) == expected) continue;
        return testing::AssertionFailure() << p << " should lie " << (expected ? "inside" : "outside");
    }
    return testing::AssertionSuccess();
}

/// Whether some outer contour reaches at least as far as a hole in every direction.
bool liesInAnOuterContour(const Rings& rings, const Ring& hole) {
    const auto reach = [](const Ring& ring) {
        std::array<double, 4> box = {HUGE_VAL, HUGE_VAL, HUGE_VAL, HUGE_VAL};
        for (const Point& p : ring) {
            box = {std::min(box[0], p.x), std::min(box[1], p.y), std::min(box[2], -p.x),
                   std::min(box[3], -p.y)};
        }
        return box;
    };
    const std::array<double, 4> inner = reach(hole);
    return std::any_of(rings.begin(), rings.end(), [&](const Ring& ring) {
        const std::array<double, 4> outer = reach(ring);
        return signedArea(ring) > 0 && std::equal(outer.begin(), outer.end(), inner.begin(),
                                                  [](double o, double i) { return o <= i; });
    });
}

testing::AssertionResult isWellFormed(const gpc_polygon& polygon) {
    const Rings rings = ringsOf(polygon);
    for (int i = 0; i < polygon.num_contours; ++i) {
        const Ring& ring = rings[static_cast<std::size_t>(i)];
        const Real area = signedArea(ring);
        const testing::AssertionResult failure = testing::AssertionFailure() << "contour " << i;
        if (ring.size() < 3 || area == 0) return testing::AssertionResult(failure) << " has no area";
        if ((polygon.hole[i] != 0) != (area < 0)) {
            return testing::AssertionResult(failure) << " runs the wrong way round";
        }
        if (ring.front() == ring.back()) return testing::AssertionResult(failure) << " repeats a vertex";
        if (area < 0 && !liesInAnOuterContour(rings, ring)) {
            return testing::AssertionResult(failure) << " is a hole in nothing";
        }
    }
    return testing::AssertionSuccess();
}

struct Totals {
    double worstArea = 0;
    double worstOverlap = 0;
};

void checkOnce(Random& random, gpc_op operation, const Field& field, Totals& totals) {
    const Rings subject = polygonOfSomeKind(random, operation, field);
    const Rings clip = polygonOfSomeKind(random, operation, field);
    gpc_owned_polygon result;
    combine(operation, subject, clip, result);
    const Rings rings = ringsOf(result);
    ASSERT_TRUE(isWellFormed(result));
    ASSERT_TRUE(pointsAgree(random, operation, subject, clip, rings, field));
    const auto ofField = [&](Real area) { return static_cast<double>(area / field.side / field.side); };
    const Real area = signedArea(rings);
    const Real expected = StripAreas(operation, subject, clip).area();
    totals.worstArea = std::max(totals.worstArea, std::fabs(ofField(area - expected)));
    // Contours that covered each other would count twice in the one and not at all in the other.
    const Real evenOdd = StripAreas(Imaging::Platform::GPC_UNION, rings, {}).area();
    totals.worstOverlap = std::max(totals.worstOverlap, std::fabs(ofField(area - evenOdd)));
}

class ClippingOracle : public testing::TestWithParam<gpc_op> {};

TEST_P(ClippingOracle, AgreesOnRandomPolygonsPointByPointAndInArea) {
    Random random(20240501);
    Totals totals;
    for (int i = 0; i < 2500; ++i) {
        SCOPED_TRACE("polygon " + std::to_string(i));
        ASSERT_NO_FATAL_FAILURE(checkOnce(random, GetParam(), fieldOfSomeSize(random), totals));
    }
    std::cout << "largest error of an area: " << totals.worstArea << " of the field" << std::endl;
    EXPECT_LT(totals.worstArea, 1e-7);
    EXPECT_LT(totals.worstOverlap, 1e-7);
}

std::string nameOfOperation(const testing::TestParamInfo<gpc_op>& operation) {
    const std::array<const char*, 4> names = {"Difference", "Intersection", "Xor", "Union"};
    return names.at(operation.param);
}

INSTANTIATE_TEST_SUITE_P(Operations, ClippingOracle,
                         testing::Values(Imaging::Platform::GPC_INT, Imaging::Platform::GPC_DIFF,
                                         Imaging::Platform::GPC_XOR, Imaging::Platform::GPC_UNION),
                         nameOfOperation);

} // namespace
