// Arithmetic on points, rectangles and transforms: each function is one formula in the precision that its
// header states, and nothing here keeps any state.

#include "Imaging/Geometry.h"

#include "Platform/Graphics/Image.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace Imaging {

namespace {

bool equalAlmost(float a, float b, float tolerance) { return std::fabs(a - b) < tolerance; }

/// The middle of a side, rounded once.
float halfWay(float origin, float extent) {
    return static_cast<float>(origin + static_cast<double>(extent) * 0.5);
}

/// Where a shorter side begins that is centred on a longer one.
float centred(float origin, float extent, float shorterExtent) {
    return static_cast<float>(origin + (static_cast<double>(extent) - shorterExtent) * 0.5);
}

void makePositive(float& origin, float& extent) {
    if (!(extent < 0)) return;
    origin += extent;
    extent = -extent;
}

float scaleFactor(float from, float to) { return from == 0 && to == 0 ? 1 : to / from; }

/// Six decimals with a point, which the C library's formatting gives in some locales only.
std::string sixDecimals(float value) {
    // The largest float has 39 digits before the point.
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), static_cast<double>(value),
                                   std::chars_format::fixed, 6);
    return {text.data(), end.ptr};
}

} // namespace

bool EqualPointsAlmost(NSPoint p, NSPoint q, float tolerance) {
    return equalAlmost(p.x, q.x, tolerance) && equalAlmost(p.y, q.y, tolerance);
}

bool EqualSizesAlmost(NSSize a, NSSize b, float tolerance) {
    return equalAlmost(a.width, b.width, tolerance) && equalAlmost(a.height, b.height, tolerance);
}

bool EqualRectsAlmost(NSRect r, NSRect s, float tolerance) {
    return EqualPointsAlmost(r.origin, s.origin, tolerance) && EqualSizesAlmost(r.size, s.size, tolerance);
}

float Distance(NSPoint p, NSPoint q) {
    const double dx = static_cast<double>(p.x) - q.x;
    const double dy = static_cast<double>(p.y) - q.y;
    return static_cast<float>(std::sqrt(dx * dx + dy * dy));
}

bool IsPointWithinRadius(NSPoint p, NSPoint q, float radius) { return radius + 0.5 > Distance(p, q); }

bool RectContainsPoint(NSRect r, NSPoint p) { return Platform::NSPointInRect(p, r); }

NSRect OffsetRectByPoint(NSRect r, NSPoint p) { return Platform::NSOffsetRect(r, p.x, p.y); }

NSRect FixRect(NSRect r) {
    makePositive(r.origin.x, r.size.width);
    makePositive(r.origin.y, r.size.height);
    return r;
}

NSRect MidRect(NSRect r, NSRect s) {
    return {{(r.origin.x + s.origin.x) * 0.5f, (r.origin.y + s.origin.y) * 0.5f},
            {(r.size.width + s.size.width) * 0.5f, (r.size.height + s.size.height) * 0.5f}};
}

NSRect FitRect(NSRect r, float aspect) {
    if (r.size.width / r.size.height > aspect) {
        const float width = aspect * r.size.height;
        return {{centred(r.origin.x, r.size.width, width), r.origin.y}, {width, r.size.height}};
    }
    const float height = r.size.width / aspect;
    return {{r.origin.x, centred(r.origin.y, r.size.height, height)}, {r.size.width, height}};
}

NSRect RectFromPoints(NSPoint p, NSPoint q) {
    return {{std::min(p.x, q.x), std::min(p.y, q.y)}, {std::fabs(q.x - p.x), std::fabs(q.y - p.y)}};
}

NSRect RectFromPointAndSize(NSPoint p, NSSize z) { return {p, z}; }

NSRect RectFromSize(NSSize z) { return {Platform::NSZeroPoint, z}; }

NSPoint RectTopLeft(NSRect r) { return {NSMinX(r), NSMaxY(r)}; }

NSPoint RectTopMidpoint(NSRect r) { return {halfWay(r.origin.x, r.size.width), NSMaxY(r)}; }

NSPoint RectTopRight(NSRect r) { return {NSMaxX(r), NSMaxY(r)}; }

NSPoint RectMidpointLeft(NSRect r) { return {NSMinX(r), halfWay(r.origin.y, r.size.height)}; }

NSPoint RectMidpoint(NSRect r) {
    return {halfWay(r.origin.x, r.size.width), halfWay(r.origin.y, r.size.height)};
}

NSPoint RectMidpointRight(NSRect r) { return {NSMaxX(r), halfWay(r.origin.y, r.size.height)}; }

NSPoint RectBottomLeft(NSRect r) { return r.origin; }

NSPoint RectBottomMidpoint(NSRect r) { return {halfWay(r.origin.x, r.size.width), NSMinY(r)}; }

NSPoint RectBottomRight(NSRect r) { return {NSMaxX(r), NSMinY(r)}; }

NSPoint PointAlong(NSPoint p, NSPoint q, float t) { return {p.x + (q.x - p.x) * t, p.y + (q.y - p.y) * t}; }

NSPoint Midpoint(NSPoint p, NSPoint q) { return PointAlong(p, q, 0.5f); }

NSPoint AddPoint(NSPoint p, NSPoint q) { return {p.x + q.x, p.y + q.y}; }

NSPoint OffsetPoint(NSPoint p, NSPoint q) { return AddPoint(p, q); }

NSPoint SubtractPoint(NSPoint p, NSPoint q) { return {p.x - q.x, p.y - q.y}; }

NSPoint MultiplyPoint(NSPoint p, float k) { return {p.x * k, p.y * k}; }

NSPoint DividePoint(NSPoint p, float k) { return {p.x / k, p.y / k}; }

NSPoint SizeToPoint(NSSize z) { return {z.width, z.height}; }

NSSize PointToSize(NSPoint p) { return {p.x, p.y}; }

NSAffineTransform transformFrom(NSRect from, NSRect to) {
    const NSPoint fromCentre = RectMidpoint(from);
    const NSPoint toCentre = RectMidpoint(to);
    NSAffineTransform transform;
    // The order is that of the documented calls, though it does not put the one centre onto the other.
    transform.translateXBy(-fromCentre.x, -fromCentre.y);
    transform.scaleXBy(scaleFactor(from.size.width, to.size.width),
                       scaleFactor(from.size.height, to.size.height));
    transform.translateXBy(toCentre.x, toCentre.y);
    return transform;
}

NSRect transformRect(const NSAffineTransform& transform, NSRect r) {
    return FixRect({transform.transformPoint(r.origin), transform.transformSize(r.size)});
}

BezierCurve transformCurve(const NSAffineTransform& transform, const BezierCurve& curve) {
    return {transform.transformPoint(curve.start), transform.transformPoint(curve.control1),
            transform.transformPoint(curve.control2), transform.transformPoint(curve.end)};
}

NSAffineTransform invertedTransform(const NSAffineTransform& transform) {
    NSAffineTransform inverse = transform;
    inverse.invert();
    return inverse;
}

std::string description(const NSAffineTransform& transform) {
    const auto m = transform.transformStruct();
    std::array<char, 9> address{};
    std::snprintf(address.data(), address.size(), "%08x",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(&transform)));
    return std::string("NSAffineTransform <0x") + address.data() + "> { m11=" + sixDecimals(m.m11) +
           " m21=" + sixDecimals(m.m21) + " m12=" + sixDecimals(m.m12) + " m22=" + sixDecimals(m.m22) +
           " tX=" + sixDecimals(m.tX) + " tY=" + sixDecimals(m.tY) + " }";
}

NSRect bounds(const NSImage& image) { return RectFromSize(image.size()); }

} // namespace Imaging
