// Cubic Bezier curves: everything is found by halving a curve until its pieces are flat or short, and given
// up where rounding keeps the pieces from getting smaller.

#include "Imaging/Bezier.h"

#include "Imaging/Matrix4.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/BezierPath.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Imaging {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

// Splitting by matrices. A curve's point at t is (t³, t², t, 1) · basis · (its four points as rows), so a
// change of the parameter is a matrix that goes before the basis, and its inverse behind brings control
// points back.

constexpr Matrix4 basis{{-1, 3, -3, 1, 3, -6, 3, 0, -3, 3, 0, 0, 1, 0, 0, 0}};

constexpr float third = 0.33333334f;
constexpr float twoThirds = 0.6666667f;
constexpr Matrix4 inverseBasis{{0, 0, 0, 1, 0, 0, third, 1, 0, third, twoThirds, 1, 1, 1, 1, 1}};

/// What gives the control points of both pieces from those of the curve.
struct Splitting {
    Matrix4 left;
    Matrix4 right;
};

Matrix4 betweenBases(const Matrix4& change) {
    return MultiplyMatrix4(MultiplyMatrix4(inverseBasis, change), basis);
}

Splitting splittingAt(float t) {
    const float u = 1 - t;
    // s becomes t · s.
    const Matrix4 before{{t * t * t, 0, 0, 0, 0, t * t, 0, 0, 0, 0, t, 0, 0, 0, 0, 1}};
    // s becomes t + u · s.
    const Matrix4 after{{u * u * u, 0, 0, 0, 3 * t * u * u, u * u, 0, 0, 3 * t * t * u, 2 * t * u, u, 0,
                         t * t * t, t * t, t, 1}};
    return {betweenBases(before), betweenBases(after)};
}

/// Worked out once, since measuring halves a curve some thousand times.
const Splitting& splittingInHalf() {
    static const Splitting splitting = splittingAt(0.5f);
    return splitting;
}

/// A row of a matrix times the curve's points, summed up from the start to the end.
NSPoint combine(const float* weights, const BezierCurve& curve) {
    const auto sum = [&](float a, float b, float c, float d) {
        return weights[0] * a + weights[1] * b + weights[2] * c + weights[3] * d;
    };
    return {sum(curve.start.x, curve.control1.x, curve.control2.x, curve.end.x),
            sum(curve.start.y, curve.control1.y, curve.control2.y, curve.end.y)};
}

BezierCurve applied(const Matrix4& matrix, const BezierCurve& curve) {
    const float* const rows = matrix.elements.data();
    return {combine(rows, curve), combine(rows + 4, curve), combine(rows + 8, curve),
            combine(rows + 12, curve)};
}

struct Halves {
    BezierCurve left;
    BezierCurve right;
};

Halves halvesByMatrix(const BezierCurve& curve) {
    const Splitting& splitting = splittingInHalf();
    return {applied(splitting.left, curve), applied(splitting.right, curve)};
}

Halves halvesByMidpoints(const BezierCurve& curve) {
    Halves halves;
    SplitBezier(curve, halves.left, halves.right);
    return halves;
}

float chord(const BezierCurve& curve) { return Distance(curve.start, curve.end); }

float chords(const Halves& halves) { return chord(halves.left) + chord(halves.right); }

/// The legs of the control polygon, measured along the axes.
double polygonLength(const BezierCurve& curve) {
    const auto leg = [](NSPoint a, NSPoint b) {
        return std::fabs(static_cast<double>(b.x) - a.x) + std::fabs(static_cast<double>(b.y) - a.y);
    };
    return leg(curve.start, curve.control1) + leg(curve.control1, curve.control2) +
           leg(curve.control2, curve.end);
}

/// Without rounding, the polygon of either half is at most 7/8 as long as the whole's: the halves' legs are
/// the whole's, weighted by no more than 1/2 + 1/4 + 1/8. So where it does not shrink, rounding (or a value
/// that is not finite) has taken over, and halving again would never end.
bool isSmaller(const BezierCurve& half, const BezierCurve& whole) {
    return polygonLength(half) < polygonLength(whole);
}

bool areSmaller(const Halves& halves, const BezierCurve& whole) {
    return isSmaller(halves.left, whole) && isSmaller(halves.right, whole);
}

/// The distance of a point from the smallest upright rectangle around the curve's points, which holds the
/// whole curve. It is computed by the steps of `Distance`, each of which is monotone, and averages of floats
/// do not leave the range of their operands: no piece's middle comes out closer than this, not by rounding
/// either.
float distanceFromBox(NSPoint point, const BezierCurve& curve) {
    const auto [lowX, highX] = std::minmax({curve.start.x, curve.control1.x, curve.control2.x, curve.end.x});
    const auto [lowY, highY] = std::minmax({curve.start.y, curve.control1.y, curve.control2.y, curve.end.y});
    return Distance(point,
                    {std::min(std::max(point.x, lowX), highX), std::min(std::max(point.y, lowY), highY)});
}

/// The search for the piece, not longer than the precision, whose chord's middle is nearest to a point.
struct NearestPieceSearch {
    NSPoint point;
    float precision;
    float best;
    float* param;

    bool isShort(const BezierCurve& piece, const Halves& halves) const {
        return precision > chord(piece) || !areSmaller(halves, piece);
    }

    float distanceOfMiddle(const BezierCurve& piece) const {
        return Distance(point, Midpoint(piece.start, piece.end));
    }

    /// The distance of the piece that is reached by taking the half whose box is nearer each time.
    float distanceOfSomePiece(BezierCurve piece) const {
        Halves halves = halvesByMidpoints(piece);
        while (!isShort(piece, halves)) {
            const bool isLeft = distanceFromBox(point, halves.left) <= distanceFromBox(point, halves.right);
            piece = isLeft ? halves.left : halves.right;
            halves = halvesByMidpoints(piece);
        }
        return distanceOfMiddle(piece);
    }

    /// Keeps the nearest piece of a curve that covers t0 to t1, unless the one known is nearer than its box.
    void visit(const BezierCurve& piece, float t0, float t1) {
        if (!(best > distanceFromBox(point, piece))) return;
        const Halves halves = halvesByMidpoints(piece);
        const float middle = 0.5f * (t0 + t1);
        if (!isShort(piece, halves)) {
            visit(halves.left, t0, middle);
            visit(halves.right, middle, t1);
            return;
        }
        const float distance = distanceOfMiddle(piece);
        if (!(best > distance)) return;
        best = distance;
        if (param != nullptr) *param = middle;
    }
};

/// In x and in y, each by itself.
bool isNearby(NSPoint a, NSPoint b, float limit) {
    return std::fabs(a.x - b.x) < limit && std::fabs(a.y - b.y) < limit;
}

} // namespace

void SplitBezier(BezierCurve curve, BezierCurve& left, BezierCurve& right) {
    const auto middle = [](NSPoint p, NSPoint q) { return DividePoint(AddPoint(p, q), 2); };
    const NSPoint a = middle(curve.start, curve.control1);
    const NSPoint b = middle(curve.control1, curve.control2);
    const NSPoint c = middle(curve.control2, curve.end);
    const NSPoint d = middle(a, b);
    const NSPoint e = middle(b, c);
    const NSPoint m = middle(d, e);
    left = {curve.start, a, d, m};
    right = {m, e, c, curve.end};
}

void SplitBezierAtParam(BezierCurve curve, BezierCurve& left, BezierCurve& right, float t) {
    const Splitting splitting = splittingAt(t);
    left = applied(splitting.left, curve);
    right = applied(splitting.right, curve);
}

float BezierCurveLength(const BezierCurve& curve, float tolerance) {
    const Halves halves = halvesByMatrix(curve);
    const float length = chords(halves);
    const double excess = std::fabs(static_cast<double>(chord(curve)) - length);
    if (tolerance > excess || excess == 0 || !areSmaller(halves, curve)) return length;
    return BezierCurveLength(halves.left, tolerance) + BezierCurveLength(halves.right, tolerance);
}

NSPoint PointAtPositionAlongBezierCurve(const BezierCurve& curve, float position, float tolerance) {
    if (position < 0) throw Platform::NSException("invalid parameter", "position < 0");
    BezierCurve piece = curve;
    while (true) {
        const Halves halves = halvesByMatrix(piece);
        const float length = BezierCurveLength(halves.left, tolerance);
        if (tolerance > std::fabs(static_cast<double>(length) - position)) return halves.left.end;
        const bool isBeyond = position > length;
        const BezierCurve& next = isBeyond ? halves.right : halves.left;
        if (!isSmaller(next, piece)) return piece.end;
        if (isBeyond) position -= length;
        piece = next;
    }
}

NSPoint PointAlongBezierCurve(const BezierCurve& curve, float fraction, float tolerance) {
    const float limit = tolerance / 10;
    if (isNearby(curve.start, curve.control1, limit) && isNearby(curve.control2, curve.end, limit)) {
        return PointAlong(curve.start, curve.end, fraction);
    }
    return PointAtPositionAlongBezierCurve(curve, BezierCurveLength(curve, tolerance) * fraction, tolerance);
}

bool IsPointAlongWithParam(NSPoint point, NSPoint a, NSPoint b, float tolerance, float* param) {
    const float length = Distance(a, b);
    if (length == 0) return IsPointNear(point, a, tolerance);
    const NSPoint toPoint = SubtractPoint(point, a);
    const NSPoint toEnd = SubtractPoint(b, a);
    const float u = (toPoint.x * toEnd.x + toPoint.y * toEnd.y) / (length * length);
    const NSPoint nearest = PointAlong(a, b, std::clamp(u, 0.0f, 1.0f));
    if (!(tolerance > Distance(nearest, point))) return false;
    if (param != nullptr) *param = Distance(nearest, a) / length;
    return true;
}

bool IsPointAlong(NSPoint point, NSPoint a, NSPoint b, float tolerance) {
    return IsPointAlongWithParam(point, a, b, tolerance, nullptr);
}

bool IsPointNear(NSPoint point, NSPoint other, float tolerance) {
    return IsPointWithinRadius(point, other, tolerance);
}

bool IsPointOnRect(NSPoint point, NSRect rect, float tolerance) {
    const std::array corners{RectBottomLeft(rect), RectTopLeft(rect), RectTopRight(rect),
                             RectBottomRight(rect), RectBottomLeft(rect)};
    for (std::size_t i = 0; i + 1 < corners.size(); ++i) {
        if (IsPointAlong(point, corners[i], corners[i + 1], tolerance)) return true;
    }
    return false;
}

bool IsPointAlongBezier(NSPoint point, const BezierCurve& curve, float tolerance) {
    const Halves halves = halvesByMidpoints(curve);
    const float flatness = chords(halves) - chord(curve);
    if (flatness < 0.01 || !areSmaller(halves, curve)) {
        return IsPointAlongWithParam(point, curve.start, curve.end, tolerance, nullptr);
    }
    return IsPointAlongBezier(point, halves.left, tolerance) ||
           IsPointAlongBezier(point, halves.right, tolerance);
}

float FindParamAlongBezierForPointSub(NSPoint point, const BezierCurve& curve, float precision, float best,
                                      float t0, float t1, float* param) {
    NearestPieceSearch search{point, precision, best, param};
    // A first guess, just above the distance of a piece that the search will meet, leaves little to visit and
    // changes nothing: the first of the nearest pieces is the last to be accepted all the same.
    const float guess = search.distanceOfSomePiece(curve);
    if (guess < best) search.best = std::nextafter(guess, infinity);
    search.visit(curve, t0, t1);
    return search.best;
}

bool FindParamAlongBezierForPoint(NSPoint point, const BezierCurve& curve, float precision, float tolerance,
                                  float* param) {
    return tolerance > FindParamAlongBezierForPointSub(point, curve, precision, tolerance, 0, 1, param);
}

bool intersectsPoint(const NSBezierPath& path, NSPoint point, int* element, float* param, float distance) {
    NSPoint current = Platform::NSZeroPoint;
    for (std::size_t i = 0; i < path.elementCount(); ++i) {
        std::array<NSPoint, 3> points;
        bool isHit = false;
        switch (path.elementAtIndex(i, &points)) {
        case Platform::NSBezierPathElement::MoveTo:
        case Platform::NSBezierPathElement::ClosePath:
            if (param != nullptr) *param = 0;
            current = points[0];
            break;
        case Platform::NSBezierPathElement::LineTo:
            isHit = IsPointAlongWithParam(point, current, points[0], distance, param);
            current = points[0];
            break;
        case Platform::NSBezierPathElement::CurveTo: {
            const BezierCurve curve{current, points[0], points[1], points[2]};
            isHit = IsPointAlongBezier(point, curve, distance);
            if (isHit && param != nullptr) FindParamAlongBezierForPoint(point, curve, 1, distance, param);
            current = points[2];
            break;
        }
        }
        if (!isHit) continue;
        if (element != nullptr) *element = static_cast<int>(i);
        return true;
    }
    return false;
}

} // namespace Imaging
