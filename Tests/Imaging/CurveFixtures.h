#pragma once

// Curves for the tests of the Bezier functions, and what is known of a curve by plain arithmetic in double.

#include "Imaging/Geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace ImagingTests {

using Imaging::BezierCurve;
using Imaging::Platform::NSPoint;

struct ExactPoint {
    double x;
    double y;
};

struct ExactCurve {
    std::array<ExactPoint, 4> points;

    explicit ExactCurve(const std::array<ExactPoint, 4>& p) : points(p) {}
    explicit ExactCurve(const BezierCurve& c)
        : points{{{c.start.x, c.start.y},
                  {c.control1.x, c.control1.y},
                  {c.control2.x, c.control2.y},
                  {c.end.x, c.end.y}}} {}
};

inline double gap(ExactPoint a, ExactPoint b) { return std::hypot(a.x - b.x, a.y - b.y); }
inline double gap(NSPoint a, ExactPoint b) { return gap(ExactPoint{a.x, a.y}, b); }

inline ExactPoint mix(ExactPoint a, ExactPoint b, double t) {
    return {a.x * (1 - t) + b.x * t, a.y * (1 - t) + b.y * t};
}

struct ExactHalves {
    ExactCurve left;
    ExactCurve right;
};

/// De Casteljau's construction.
inline ExactHalves exactSplit(const ExactCurve& curve, double t) {
    const auto& p = curve.points;
    const ExactPoint a = mix(p[0], p[1], t);
    const ExactPoint b = mix(p[1], p[2], t);
    const ExactPoint c = mix(p[2], p[3], t);
    const ExactPoint d = mix(a, b, t);
    const ExactPoint e = mix(b, c, t);
    const ExactPoint m = mix(d, e, t);
    return {ExactCurve({p[0], a, d, m}), ExactCurve({m, e, c, p[3]})};
}

/// By the Bernstein polynomials.
inline ExactPoint exactPointAt(const ExactCurve& curve, double t) {
    const double u = 1 - t;
    const std::array<double, 4> weights{u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
    ExactPoint sum{0, 0};
    for (std::size_t i = 0; i < 4; ++i) {
        sum.x += weights[i] * curve.points[i].x;
        sum.y += weights[i] * curve.points[i].y;
    }
    return sum;
}

inline double exactSpeedAt(const ExactCurve& curve, double t) {
    const double u = 1 - t;
    const std::array<double, 3> weights{3 * u * u, 6 * u * t, 3 * t * t};
    double x = 0;
    double y = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        x += weights[i] * (curve.points[i + 1].x - curve.points[i].x);
        y += weights[i] * (curve.points[i + 1].y - curve.points[i].y);
    }
    return std::hypot(x, y);
}

/// The arc length from the start to t, by Simpson's rule on 1000 intervals.
inline double exactLength(const ExactCurve& curve, double t = 1) {
    constexpr int intervals = 1000;
    double sum = 0;
    for (int i = 0; i < intervals; ++i) {
        const double a = t * i / intervals;
        const double b = t * (i + 1) / intervals;
        sum += (b - a) / 6 *
               (exactSpeedAt(curve, a) + 4 * exactSpeedAt(curve, (a + b) / 2) + exactSpeedAt(curve, b));
    }
    return sum;
}

/// The smallest distance of a point from 20,000 points of the curve.
inline double exactDistance(const ExactCurve& curve, NSPoint point) {
    constexpr int samples = 20000;
    double nearest = std::numeric_limits<double>::infinity();
    for (int i = 0; i <= samples; ++i) {
        nearest = std::min(nearest, gap(point, exactPointAt(curve, static_cast<double>(i) / samples)));
    }
    return nearest;
}

/// A cubic whose speed is a polynomial: x' = 9 - 9t², y' = 18t, so the speed is 9 + 9t² and the arc length up
/// to t is 9t + 3t³, in all 12. It begins at (10, 20); lengths and places grow with the scale.
inline BezierCurve knownCurve(float scale) {
    return {
        {10, 20}, {10 + 3 * scale, 20}, {10 + 6 * scale, 20 + 3 * scale}, {10 + 6 * scale, 20 + 9 * scale}};
}

inline double knownLength(double scale, double t) { return scale * (9 * t + 3 * t * t * t); }

inline ExactPoint knownPointAtLength(double scale, double length) {
    double low = 0;
    double high = 1;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (knownLength(scale, middle) < length ? low : high) = middle;
    }
    return {10 + scale * (9 * low - 3 * low * low * low), 20 + scale * 9 * low * low};
}

/// Its ends and control points lie on one line, at thirds: (10, 20) to (100, 140), length 150.
inline constexpr BezierCurve straightCurve{{10, 20}, {40, 60}, {70, 100}, {100, 140}};

/// Symmetric about its middle (55, 20), which lies on the chord from (10, 20) to (100, 20); the humps reach
/// about 26 above and below.
inline constexpr BezierCurve symmetricS{{10, 20}, {40, 110}, {70, -70}, {100, 20}};

inline BezierCurve randomCurve(std::mt19937& random, float reach = 300) {
    std::uniform_real_distribution<float> place(-reach, reach);
    const auto point = [&] { return NSPoint{place(random), place(random)}; };
    return {point(), point(), point(), point()};
}

/// A curve that bends to one side only, anywhere and in any direction, so that no chord of a piece can lie
/// on it by accident.
inline BezierCurve randomArch(std::mt19937& random) {
    std::uniform_real_distribution<double> unit(0, 1);
    const auto between = [&](double low, double high) { return low + (high - low) * unit(random); };
    const double length = between(50, 400);
    // In a frame with the chord on the x axis; the control polygon turns right at both corners.
    double ax = 0, ay = 0, bx = 0, by = 0;
    do {
        ax = length * between(0.05, 0.6);
        ay = length * between(0.1, 0.7);
        bx = length * between(0.4, 0.95);
        by = length * between(0.1, 0.7);
    } while (!(ax < bx && ax * (by - ay) - ay * (bx - ax) < 0 &&
               (bx - ax) * (0 - by) - (by - ay) * (length - bx) < 0));
    const double angle = between(0, 6.28);
    const double originX = between(-300, 300);
    const double originY = between(-300, 300);
    const auto placed = [&](double x, double y) {
        return NSPoint{static_cast<float>(originX + x * std::cos(angle) - y * std::sin(angle)),
                       static_cast<float>(originY + x * std::sin(angle) + y * std::cos(angle))};
    };
    return {placed(0, 0), placed(ax, ay), placed(bx, by), placed(length, 0)};
}

} // namespace ImagingTests
