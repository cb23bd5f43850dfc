// Paths are lists of elements. Bounds come from the zeros of a curve's derivative; whether a point lies
// inside Cairo tells.

#include "Platform/Graphics/BezierPath.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Cairo/CairoPaths.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Imaging::Platform {

namespace {

/// Where the control points of a quarter circle of radius 1 stand, measured along the tangents from its
/// ends: the value for which the curve passes through the circle at the middle of the quarter,
/// 4/3 · (sqrt(2) − 1).
constexpr float quarterCircleControl = 0.5522847498f;

/// Rounded once, from the double in which extents are found.
NSRect rectFromExtents(double minX, double minY, double maxX, double maxY) {
    const auto x = static_cast<float>(minX);
    const auto y = static_cast<float>(minY);
    return NSMakeRect(x, y, static_cast<float>(maxX) - x, static_cast<float>(maxY) - y);
}

/// The range of one coordinate along a path.
struct Extent {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void include(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }

    /// A cubic's extremes lie at its ends and where its derivative a·t² + b·t + c is zero.
    void includeCurve(double p0, double p1, double p2, double p3) {
        include(p0);
        include(p3);
        const double a = p3 - 3 * p2 + 3 * p1 - p0;
        const double b = 2 * (p2 - 2 * p1 + p0);
        const double c = p1 - p0;
        const auto includeAt = [&](double t) {
            if (!(t > 0 && t < 1)) return;
            const double u = 1 - t;
            include(u * u * u * p0 + 3 * u * u * t * p1 + 3 * u * t * t * p2 + t * t * t * p3);
        };
        const double root = std::sqrt(b * b - 4 * a * c);
        // The form that does not cancel: q holds the root of larger magnitude.
        const double q = -0.5 * (b + std::copysign(root, b));
        includeAt(q / a);
        includeAt(c / q);
    }
};

} // namespace

NSBezierPath NSBezierPath::bezierPathWithRect(NSRect rect) {
    NSBezierPath path;
    path.appendBezierPathWithRect(rect);
    return path;
}

NSBezierPath NSBezierPath::bezierPathWithOvalInRect(NSRect rect) {
    const float rx = rect.size.width / 2;
    const float ry = rect.size.height / 2;
    const float cx = rect.origin.x + rx;
    const float cy = rect.origin.y + ry;
    const float kx = rx * quarterCircleControl;
    const float ky = ry * quarterCircleControl;
    NSBezierPath path;
    path.moveToPoint({cx + rx, cy});
    path.curveToPoint({cx, cy + ry}, {cx + rx, cy + ky}, {cx + kx, cy + ry});
    path.curveToPoint({cx - rx, cy}, {cx - kx, cy + ry}, {cx - rx, cy + ky});
    path.curveToPoint({cx, cy - ry}, {cx - rx, cy - ky}, {cx - kx, cy - ry});
    path.curveToPoint({cx + rx, cy}, {cx + kx, cy - ry}, {cx + rx, cy - ky});
    path.closePath();
    return path;
}

void NSBezierPath::strokeLine(NSPoint from, NSPoint to) {
    NSBezierPath line;
    line.moveToPoint(from);
    line.lineToPoint(to);
    line.stroke();
}

void NSBezierPath::moveToPoint(NSPoint point) {
    m_subpath_start = point;
    m_elements.push_back({NSBezierPathElement::MoveTo, {point}});
}

void NSBezierPath::needCurrentPoint() const {
    if (m_elements.empty()) throw NSException(NSGenericException, "the path has no current point");
}

void NSBezierPath::lineToPoint(NSPoint point) {
    needCurrentPoint();
    m_elements.push_back({NSBezierPathElement::LineTo, {point}});
}

void NSBezierPath::curveToPoint(NSPoint end, NSPoint controlPoint1, NSPoint controlPoint2) {
    needCurrentPoint();
    m_elements.push_back({NSBezierPathElement::CurveTo, {controlPoint1, controlPoint2, end}});
}

void NSBezierPath::relativeLineToPoint(NSPoint delta) {
    needCurrentPoint();
    const NSPoint from = *currentPoint();
    lineToPoint({from.x + delta.x, from.y + delta.y});
}

void NSBezierPath::closePath() {
    if (m_elements.empty()) return;
    m_elements.push_back({NSBezierPathElement::ClosePath, {m_subpath_start}});
}

void NSBezierPath::appendBezierPathWithRect(NSRect rect) {
    moveToPoint(rect.origin);
    lineToPoint({NSMaxX(rect), NSMinY(rect)});
    lineToPoint({NSMaxX(rect), NSMaxY(rect)});
    lineToPoint({NSMinX(rect), NSMaxY(rect)});
    closePath();
}

// A copy first: a path may be appended to itself.
void NSBezierPath::appendBezierPath(const NSBezierPath& path) {
    if (path.isEmpty()) return;
    const std::vector<PathElement> added = path.m_elements;
    m_elements.insert(m_elements.end(), added.begin(), added.end());
    m_subpath_start = path.m_subpath_start;
}

void NSBezierPath::removeAllPoints() {
    m_elements.clear();
    m_subpath_start = NSZeroPoint;
}

NSBezierPathElement NSBezierPath::elementAtIndex(std::size_t index, std::array<NSPoint, 3>* points) const {
    if (index >= m_elements.size()) throw NSException(NSRangeException, "path element index out of range");
    const PathElement& element = m_elements[index];
    if (points != nullptr) *points = element.points;
    return element.kind;
}

std::optional<NSPoint> NSBezierPath::currentPoint() const {
    if (m_elements.empty()) return std::nullopt;
    const PathElement& last = m_elements.back();
    return last.points[last.kind == NSBezierPathElement::CurveTo ? 2 : 0];
}

// Points that an element does not use are zero and must not count.
NSRect NSBezierPath::controlPointBounds() const {
    if (m_elements.empty()) return NSZeroRect;
    NSPoint low = m_elements.front().points[0];
    NSPoint high = low;
    for (const PathElement& element : m_elements) {
        const std::size_t count = element.kind == NSBezierPathElement::CurveTo ? 3 : 1;
        for (std::size_t i = 0; i < count; ++i) {
            const NSPoint p = element.points[i];
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        }
    }
    return rectFromExtents(low.x, low.y, high.x, high.y);
}

NSRect NSBezierPath::bounds() const {
    if (m_elements.empty()) return NSZeroRect;
    Extent x;
    Extent y;
    NSPoint from = m_elements.front().points[0];
    for (const PathElement& element : m_elements) {
        const std::array<NSPoint, 3>& p = element.points;
        if (element.kind == NSBezierPathElement::CurveTo) {
            x.includeCurve(from.x, p[0].x, p[1].x, p[2].x);
            y.includeCurve(from.y, p[0].y, p[1].y, p[2].y);
            from = p[2];
        } else {
            x.include(p[0].x);
            y.include(p[0].y);
            from = p[0];
        }
    }
    return rectFromExtents(x.low, y.low, x.high, y.high);
}

void NSBezierPath::transformUsingAffineTransform(const NSAffineTransform& transform) {
    for (PathElement& element : m_elements) {
        for (NSPoint& point : element.points) point = transform.transformPoint(point);
    }
    m_subpath_start = transform.transformPoint(m_subpath_start);
}

bool NSBezierPath::containsPoint(NSPoint point) const {
    const NSRect box = controlPointBounds();
    const auto isLength = [](float length) { return length > 0 && std::isfinite(length); };
    if (!isLength(box.size.width) || !isLength(box.size.height)) return false;
    if (!(point.x >= NSMinX(box) && point.x <= NSMaxX(box) && point.y >= NSMinY(box) &&
          point.y <= NSMaxY(box))) {
        return false;
    }
    // Cairo measures in steps of 1/256 of a unit, so a path of any size is brought to one that suits it.
    constexpr double side = 65536;
    const CairoContext measure = measuringContext();
    cairo_scale(measure.get(), side / box.size.width, side / box.size.height);
    cairo_translate(measure.get(), -box.origin.x, -box.origin.y);
    setFillRule(measure.get(), m_winding_rule);
    appendPath(measure.get(), m_elements);
    return cairo_in_fill(measure.get(), point.x, point.y) != 0;
}

} // namespace Imaging::Platform
