#include "Platform/Graphics/BezierPath.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Image.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

using Element = NSBezierPathElement;

struct Point {
    double x;
    double y;
};

Point onCurve(NSPoint a, NSPoint b, NSPoint c, NSPoint d, double t) {
    const double u = 1 - t;
    const auto at = [&](double p0, double p1, double p2, double p3) {
        return u * u * u * p0 + 3 * u * u * t * p1 + 3 * u * t * t * p2 + t * t * t * p3;
    };
    return {at(a.x, b.x, c.x, d.x), at(a.y, b.y, c.y, d.y)};
}

/// The path as closed polygons, each curve cut into many lines.
std::vector<std::vector<Point>> sampled(const NSBezierPath& path, int steps) {
    std::vector<std::vector<Point>> polygons;
    std::array<NSPoint, 3> p;
    NSPoint from;
    for (std::size_t i = 0; i < path.elementCount(); ++i) {
        const Element kind = path.elementAtIndex(i, &p);
        if (kind == Element::MoveTo) polygons.emplace_back();
        if (kind == Element::CurveTo) {
            for (int k = 1; k <= steps; ++k) {
                polygons.back().push_back(onCurve(from, p[0], p[1], p[2], static_cast<double>(k) / steps));
            }
            from = p[2];
        } else {
            polygons.back().push_back({p[0].x, p[0].y});
            from = p[0];
        }
    }
    return polygons;
}

/// How often the polygons run around a point, counter-clockwise (Sunday, 2001).
int windingAround(const std::vector<std::vector<Point>>& polygons, Point p) {
    int winding = 0;
    for (const std::vector<Point>& polygon : polygons) {
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            const Point a = polygon[i];
            const Point b = polygon[(i + 1) % polygon.size()];
            const double side = (b.x - a.x) * (p.y - a.y) - (p.x - a.x) * (b.y - a.y);
            if (a.y <= p.y && b.y > p.y && side > 0) ++winding;
            if (a.y > p.y && b.y <= p.y && side < 0) --winding;
        }
    }
    return winding;
}

double distanceTo(const std::vector<std::vector<Point>>& polygons, Point p) {
    double nearest = std::numeric_limits<double>::infinity();
    for (const std::vector<Point>& polygon : polygons) {
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            const Point a = polygon[i];
            const Point b = polygon[(i + 1) % polygon.size()];
            const double length = (b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y);
            const double along = (p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y);
            const double t = length > 0 ? std::clamp(along / length, 0.0, 1.0) : 0;
            nearest = std::min(nearest, std::hypot(p.x - a.x - t * (b.x - a.x), p.y - a.y - t * (b.y - a.y)));
        }
    }
    return nearest;
}

NSBezierPath randomPath(Random& random, float reach, NSPoint origin) {
    const auto point = [&] {
        return NSMakePoint(origin.x + random.single(-reach, reach), origin.y + random.single(-reach, reach));
    };
    NSBezierPath path;
    const int subpaths = random.integer(1, 3);
    for (int s = 0; s < subpaths; ++s) {
        path.moveToPoint(point());
        const int elements = random.integer(2, 5);
        for (int i = 0; i < elements; ++i) {
            if (random.integer(0, 2) == 0) {
                path.lineToPoint(point());
            } else {
                path.curveToPoint(point(), point(), point());
            }
        }
        if (random.integer(0, 1) == 0) path.closePath();
    }
    return path;
}

void expectPoint(NSPoint actual, float x, float y) {
    EXPECT_EQ(actual.x, x);
    EXPECT_EQ(actual.y, y);
}

void expectRect(NSRect actual, float x, float y, float width, float height) {
    expectPoint(actual.origin, x, y);
    EXPECT_EQ(actual.size.width, width);
    EXPECT_EQ(actual.size.height, height);
}

std::string exceptionName(const std::function<void()>& action) {
    try {
        action();
    } catch (const NSException& exception) {
        return exception.name();
    }
    return "";
}

} // namespace

TEST(BezierPath, IsEmptyAtFirst) {
    const NSBezierPath path;
    EXPECT_TRUE(path.isEmpty());
    EXPECT_EQ(path.elementCount(), 0U);
    EXPECT_EQ(path.currentPoint(), std::nullopt);
    expectRect(path.bounds(), 0, 0, 0, 0);
    expectRect(path.controlPointBounds(), 0, 0, 0, 0);
    EXPECT_FALSE(path.containsPoint({0, 0}));
}

TEST(BezierPath, NeedsACurrentPointForLinesAndCurves) {
    NSBezierPath path;
    EXPECT_EQ(exceptionName([&] { path.lineToPoint({1, 1}); }), NSGenericException);
    EXPECT_EQ(exceptionName([&] { path.curveToPoint({1, 1}, {2, 2}, {3, 3}); }), NSGenericException);
    EXPECT_EQ(exceptionName([&] { path.relativeLineToPoint({1, 1}); }), NSGenericException);
    path.closePath();
    EXPECT_TRUE(path.isEmpty());
}

TEST(BezierPath, GivesItsElementsWithTheirPoints) {
    NSBezierPath path;
    path.moveToPoint({3, 5});
    path.lineToPoint({7, 2});
    path.relativeLineToPoint({-1, 4});
    path.curveToPoint({9, 9}, {1, 2}, {3, 4});
    path.closePath();
    ASSERT_EQ(path.elementCount(), 5U);
    std::array<NSPoint, 3> p;
    EXPECT_EQ(path.elementAtIndex(0, &p), Element::MoveTo);
    expectPoint(p[0], 3, 5);
    EXPECT_EQ(path.elementAtIndex(1, &p), Element::LineTo);
    expectPoint(p[0], 7, 2);
    EXPECT_EQ(path.elementAtIndex(2, &p), Element::LineTo);
    expectPoint(p[0], 6, 6);
    EXPECT_EQ(path.elementAtIndex(3, &p), Element::CurveTo);
    expectPoint(p[0], 1, 2);
    expectPoint(p[1], 3, 4);
    expectPoint(p[2], 9, 9);
    EXPECT_EQ(path.elementAtIndex(4, &p), Element::ClosePath);
    expectPoint(p[0], 3, 5);
    EXPECT_EQ(path.elementAtIndex(1), Element::LineTo);
    EXPECT_EQ(exceptionName([&] { path.elementAtIndex(5); }), NSRangeException);
}

TEST(BezierPath, TheCurrentPointFollowsTheElements) {
    NSBezierPath path;
    path.moveToPoint({3, 5});
    expectPoint(*path.currentPoint(), 3, 5);
    path.curveToPoint({9, 8}, {1, 2}, {3, 4});
    expectPoint(*path.currentPoint(), 9, 8);
    path.closePath();
    expectPoint(*path.currentPoint(), 3, 5);
    path.relativeLineToPoint({1, 1});
    expectPoint(*path.currentPoint(), 4, 6);
    path.closePath();
    expectPoint(*path.currentPoint(), 3, 5);
}

TEST(BezierPath, ARectangleRunsCounterClockwiseFromItsOrigin) {
    const NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(2, 3, 5, 7));
    ASSERT_EQ(path.elementCount(), 5U);
    const NSPoint corners[] = {{2, 3}, {7, 3}, {7, 10}, {2, 10}, {2, 3}};
    std::array<NSPoint, 3> p;
    for (std::size_t i = 0; i < 5; ++i) {
        path.elementAtIndex(i, &p);
        expectPoint(p[0], corners[i].x, corners[i].y);
    }
    EXPECT_EQ(path.elementAtIndex(4), Element::ClosePath);
    EXPECT_EQ(windingAround(sampled(path, 1), {4, 5}), 1);
}

TEST(BezierPath, AppendingCopiesElementsAndTheSubpathToClose) {
    NSBezierPath path;
    path.moveToPoint({0, 0});
    path.lineToPoint({1, 0});
    NSBezierPath other;
    other.moveToPoint({5, 6});
    other.lineToPoint({8, 6});
    path.appendBezierPath(other);
    path.closePath();
    expectPoint(*path.currentPoint(), 5, 6);
    EXPECT_EQ(path.elementCount(), 5U);
    path.appendBezierPath(path); // itself
    EXPECT_EQ(path.elementCount(), 10U);
    path.appendBezierPath(NSBezierPath());
    path.closePath();
    expectPoint(*path.currentPoint(), 5, 6);
    path.removeAllPoints();
    EXPECT_TRUE(path.isEmpty());
}

TEST(BezierPath, CopiesAreIndependentAndKeepTheAttributes) {
    NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 1, 1));
    path.setLineWidth(3.5F);
    path.setMiterLimit(4);
    path.setLineCapStyle(NSLineCapStyle::Round);
    path.setLineJoinStyle(NSLineJoinStyle::Bevel);
    path.setWindingRule(NSWindingRule::EvenOdd);
    const NSBezierPath copy = path;
    path.lineToPoint({9, 9});
    path.setLineWidth(1);
    EXPECT_EQ(copy.elementCount(), 5U);
    EXPECT_EQ(copy.lineWidth(), 3.5F);
    EXPECT_EQ(copy.miterLimit(), 4);
    EXPECT_EQ(copy.lineCapStyle(), NSLineCapStyle::Round);
    EXPECT_EQ(copy.lineJoinStyle(), NSLineJoinStyle::Bevel);
    EXPECT_EQ(copy.windingRule(), NSWindingRule::EvenOdd);
}

TEST(BezierPath, BoundsOfCurvesAreThoseOfTheirPoints) {
    Random random(31);
    for (int round = 0; round < 300; ++round) {
        const NSBezierPath path = randomPath(random, 50, {20, -70});
        double lowX = 1e9;
        double lowY = 1e9;
        double highX = -1e9;
        double highY = -1e9;
        for (const std::vector<Point>& polygon : sampled(path, 4000)) {
            for (const Point p : polygon) {
                lowX = std::min(lowX, p.x);
                lowY = std::min(lowY, p.y);
                highX = std::max(highX, p.x);
                highY = std::max(highY, p.y);
            }
        }
        const NSRect bounds = path.bounds();
        ASSERT_NEAR(NSMinX(bounds), lowX, 1e-4) << round;
        ASSERT_NEAR(NSMinY(bounds), lowY, 1e-4) << round;
        ASSERT_NEAR(NSMaxX(bounds), highX, 1e-4) << round;
        ASSERT_NEAR(NSMaxY(bounds), highY, 1e-4) << round;
    }
}

TEST(BezierPath, BoundsOfAKnownCurveAreWhereItsDerivativeIsZero) {
    // y(t) = 3·40·t·(1 − t): 30 at t = ½. x(t) is the straight run from 10 to 40.
    NSBezierPath path;
    path.moveToPoint({10, 5});
    path.curveToPoint({40, 5}, {20, 45}, {30, 45});
    expectRect(path.bounds(), 10, 5, 30, 30);
    expectRect(path.controlPointBounds(), 10, 5, 30, 40);
}

TEST(BezierPath, BoundsOfCurvesThatAreReallyLinesOrPointsAreExact) {
    NSBezierPath line;
    line.moveToPoint({1, 2});
    line.curveToPoint({4, 8}, {2, 4}, {3, 6});
    expectRect(line.bounds(), 1, 2, 3, 6);
    NSBezierPath point;
    point.moveToPoint({1, 2});
    point.curveToPoint({1, 2}, {1, 2}, {1, 2});
    expectRect(point.bounds(), 1, 2, 0, 0);
    NSBezierPath parabola; // no cubic term: y(t) = 4·t·(1 − t)·3 with control points at two thirds
    parabola.moveToPoint({0, 0});
    parabola.curveToPoint({3, 0}, {1, 4}, {2, 4});
    expectRect(parabola.bounds(), 0, 0, 3, 3);
}

TEST(BezierPath, AnOvalTouchesTheSidesAndStaysCloseToTheEllipse) {
    const NSRect rect = NSMakeRect(10, -20, 60, 40);
    const NSBezierPath path = NSBezierPath::bezierPathWithOvalInRect(rect);
    expectRect(path.bounds(), 10, -20, 60, 40);
    std::array<NSPoint, 3> p;
    path.elementAtIndex(0, &p);
    expectPoint(p[0], 70, 0);
    path.elementAtIndex(1, &p);
    expectPoint(p[2], 40, 20); // counter-clockwise: the top comes next
    double furthest = 0;
    const std::vector<std::vector<Point>> polygons = sampled(path, 1000);
    for (const Point q : polygons.front()) {
        furthest = std::max(furthest, std::abs(std::hypot((q.x - 40) / 30, q.y / 20) - 1));
    }
    EXPECT_LT(furthest, 0.0003);
    EXPECT_GT(furthest, 0.0001) << "the sampling must see the known error of four cubics";
}

TEST(BezierPath, TransformsEveryPointAndTheSubpathsStart) {
    NSBezierPath path;
    path.moveToPoint({3, 5});
    path.curveToPoint({9, 8}, {1, 2}, {3, 4});
    path.closePath();
    path.transformUsingAffineTransform(NSAffineTransform({2, 0.5F, -1, 3, 10, 20}));
    const auto mapped = [](float x, float y) { return NSMakePoint(2 * x - y + 10, 0.5F * x + 3 * y + 20); };
    std::array<NSPoint, 3> p;
    path.elementAtIndex(0, &p);
    expectPoint(p[0], mapped(3, 5).x, mapped(3, 5).y);
    path.elementAtIndex(1, &p);
    expectPoint(p[0], mapped(1, 2).x, mapped(1, 2).y);
    expectPoint(p[1], mapped(3, 4).x, mapped(3, 4).y);
    expectPoint(p[2], mapped(9, 8).x, mapped(9, 8).y);
    path.lineToPoint({0, 0});
    path.closePath();
    expectPoint(*path.currentPoint(), mapped(3, 5).x, mapped(3, 5).y);
}

TEST(BezierPath, ContainsPointsByItsWindingRuleAtAnySizeAndPlace) {
    Random random(32);
    int inside = 0;
    for (const float reach : {0.01F, 1.0F, 300.0F, 4e5F, 1e9F}) {
        for (int round = 0; round < 40; ++round) {
            const NSPoint origin = NSMakePoint(reach * random.single(-3, 3), reach * random.single(-3, 3));
            NSBezierPath path = randomPath(random, reach, origin);
            const auto polygons = sampled(path, 500);
            for (int k = 0; k < 20; ++k) {
                const NSPoint p = NSMakePoint(origin.x + random.single(-reach, reach),
                                              origin.y + random.single(-reach, reach));
                if (distanceTo(polygons, {p.x, p.y}) < reach * 1e-3) continue; // too near to tell
                const int winding = windingAround(polygons, {p.x, p.y});
                inside += winding != 0;
                path.setWindingRule(NSWindingRule::NonZero);
                ASSERT_EQ(path.containsPoint(p), winding != 0) << "reach " << reach << ", round " << round;
                path.setWindingRule(NSWindingRule::EvenOdd);
                ASSERT_EQ(path.containsPoint(p), winding % 2 != 0)
                    << "reach " << reach << ", round " << round;
            }
        }
    }
    EXPECT_GT(inside, 500);
}

TEST(BezierPath, ContainsNothingWhereItHasNoAreaOrNoFiniteCoordinates) {
    EXPECT_FALSE(NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 0, 5)).containsPoint({0, 2}));
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_FALSE(NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, infinity, 5)).containsPoint({1, 1}));
    EXPECT_FALSE(NSBezierPath::bezierPathWithRect(NSMakeRect(std::nanf(""), 0, 5, 5)).containsPoint({1, 1}));
    const NSBezierPath square = NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 5, 5));
    EXPECT_FALSE(square.containsPoint({std::nanf(""), 1}));
    EXPECT_FALSE(square.containsPoint({infinity, 1}));
    EXPECT_FALSE(square.containsPoint({3e38F, 1}));
    EXPECT_TRUE(square.containsPoint({1, 1}));
}

TEST(BezierPath, DrawsNothingWithoutAContext) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    const NSBezierPath square = NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 5, 5));
    square.fill();
    square.stroke();
    square.addClip();

    // Neither paint nor clip waits for the next context.
    NSImage picture(NSMakeSize(8, 8));
    const NSImageFocus focus(picture);
    NSColor::whiteColor().set();
    NSRectFill(NSMakeRect(6, 0, 2, 8));
    const auto bitmap = NSBitmapImageRep::bitmapWithFocusedViewRect(NSMakeRect(0, 0, 8, 8));
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->pixelAt(2, 6)[3], 0);
    EXPECT_EQ(bitmap->pixelAt(7, 0)[3], 255);
}

TEST(BezierPath, StrokesALineOfWidthOneAtOnce) {
    Canvas canvas(10, 6);
    NSColor::whiteColor().set();
    NSBezierPath::strokeLine({2, 2.5F}, {7, 2.5F});
    Grid expected(10, 6);
    for (int x = 2; x < 7; ++x) expected.at(x, 3) = white;
    EXPECT_TRUE(areAlike(canvas.pixels(), expected));
}
