// Paths of small shapes, and drawings that are made of strokes and plain fills of such paths.

#include "Imaging/PathShapes.h"

#include "Imaging/ColorFunction.h"
#include "Imaging/Geometry.h"
#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/Color.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace Imaging {

using Platform::NSAffineTransform;
using Platform::NSBezierPathElement;
using Platform::NSColor;
using Platform::NSException;
using Platform::NSGraphicsStateScope;
using Platform::NSMakeRect;

namespace {

/// What was computed in double, as the floats that points hold.
NSPoint rounded(double x, double y) { return {static_cast<float>(x), static_cast<float>(y)}; }

NSBezierPath closedTriangle(NSPoint a, NSPoint b, NSPoint c) {
    NSBezierPath triangle;
    triangle.moveToPoint(a);
    triangle.lineToPoint(b);
    triangle.lineToPoint(c);
    triangle.closePath();
    return triangle;
}

/// Wider by `step` and higher by half of it about the middle of the bounds, and half of it down.
NSAffineTransform shadowTransform(NSRect bounds, int step) {
    const double w = bounds.size.width;
    const double h = bounds.size.height;
    const NSPoint middle = rounded(bounds.origin.x + w * 0.5, bounds.origin.y + h * 0.5);
    const NSPoint lower = rounded(bounds.origin.x + w * 0.5, bounds.origin.y + h * 0.5 - step * 0.5);
    const NSPoint scale = rounded((w + step) / w, (step * 0.5 + h) / h);
    // From the last step to the first: the middle to (0, 0), the scale, and up to where the shadow's middle
    // lies.
    NSAffineTransform transform;
    transform.translateXBy(lower.x, lower.y);
    transform.scaleXBy(scale.x, scale.y);
    transform.translateXBy(-middle.x, -middle.y);
    return transform;
}

void drawKnobShadow(const NSBezierPath& path, NSRect bounds) {
    const NSGraphicsStateScope state;
    Platform::appearance().darkGray.colorWithAlphaComponent(0.2F).set();
    for (int step = 1; step <= 3; ++step) {
        NSBezierPath shadow = path;
        shadow.transformUsingAffineTransform(shadowTransform(bounds, step));
        shadow.fill();
    }
}

void drawKnobBody(const NSBezierPath& path, NSRect bounds, const ColorFunction& function) {
    const NSGraphicsStateScope state;
    path.addClip();
    const auto [x, y] = bounds.origin;
    const auto [w, h] = bounds.size;
    // Whole numbers count the rows: a float that is counted up would stop growing at 2^24.
    for (std::int64_t row = 0; static_cast<float>(row) < h; ++row) {
        const auto j = static_cast<float>(row);
        function.colorForParam(j / h).set();
        Platform::NSRectFill(NSMakeRect(x, y + j, w, 1));
    }
    for (std::int64_t column = 0; static_cast<float>(column) < w; ++column) {
        const auto k = static_cast<float>(column);
        // Darkest at the sides, which turns the rows into the inside of a round thing.
        const double alpha = std::abs(w * 0.5 - k) / w * 0.5;
        NSColor::colorWithCalibratedWhite(0, static_cast<float>(alpha)).set();
        Platform::NSRectFillUsingOperation(NSMakeRect(x + k, y, 1, h), Platform::NSCompositeSourceOver);
    }
}

void strokeHandle(NSPoint from, NSPoint to) {
    const NSGraphicsStateScope state;
    Platform::appearance().cyan.set();
    NSBezierPath::strokeLine(from, to);
}

void strokeCurve(NSPoint from, const std::array<NSPoint, 3>& points) {
    strokeHandle(from, points[0]);
    NSBezierPath curve;
    curve.moveToPoint(from);
    curve.curveToPoint(points[2], points[0], points[1]);
    curve.stroke();
    strokeHandle(points[1], points[2]);
}

} // namespace

NSBezierPath bezierPathWithRoundedRect(NSRect rect, float radius) {
    // Both control points of a corner are the corner itself.
    const float r = radius;
    const auto [x, y] = rect.origin;
    const float right = Platform::NSMaxX(rect);
    const float top = Platform::NSMaxY(rect);
    NSBezierPath path;
    path.moveToPoint({x + r, y});
    path.lineToPoint({right - r, y});
    path.curveToPoint({right, y + r}, {right, y}, {right, y});
    path.lineToPoint({right, top - r});
    path.curveToPoint({right - r, top}, {right, top}, {right, top});
    path.lineToPoint({x + r, top});
    path.curveToPoint({x, top - r}, {x, top}, {x, top});
    path.lineToPoint({x, y + r});
    path.curveToPoint({x + r, y}, {x, y}, {x, y});
    return path;
}

NSBezierPath bezierPathWithDiamondInRect(NSRect rect) {
    const double x = rect.origin.x;
    const double y = rect.origin.y;
    const double w = rect.size.width;
    const double h = rect.size.height;
    NSBezierPath path;
    path.moveToPoint(rounded(x, y + h * 0.5));
    path.lineToPoint(rounded(x + w * 0.5, y + h));
    path.lineToPoint(rounded(x + w, y + h * 0.5));
    path.lineToPoint(rounded(x + w * 0.5, y));
    path.closePath();
    return path;
}

void strokeArrowFromPoint(NSPoint from, NSPoint to) {
    constexpr float back = 7.071068F; // 10 / sqrt(2)
    constexpr float aside = 3.535534F;
    const float length = Distance(from, to);
    // The direction, whose parts are no numbers where the points are one: then nothing of the head is drawn.
    const float ux = (to.x - from.x) / length;
    const float uy = (to.y - from.y) / length;
    NSBezierPath::strokeLine(from, to);
    const NSBezierPath head =
        closedTriangle(to, {to.x - aside * uy - back * ux, to.y + aside * ux - back * uy},
                       {to.x - back * ux + aside * uy, to.y - back * uy - aside * ux});
    head.stroke();
    head.fill();
}

void appendArrowAtAngle(NSBezierPath& path, float angle, float size, float arrowAngle) {
    const auto tip = path.currentPoint();
    if (!tip.has_value()) {
        throw NSException(Platform::NSGenericException, "an arrow needs a path with a current point");
    }
    const double back = -static_cast<float>(size / std::numbers::sqrt2);
    const auto corner = [&](double direction) {
        return rounded(tip->x + std::cos(direction) * back, tip->y + std::sin(direction) * back);
    };
    path.appendBezierPath(closedTriangle(*tip, corner(angle - arrowAngle), corner(angle + arrowAngle)));
}

void drawAsKnob(const NSBezierPath& path, const ColorFunction& function) {
    const NSRect bounds = path.bounds();
    // Of what is not finite nothing would be drawn, but without end.
    if (!std::isfinite(bounds.size.width) || !std::isfinite(bounds.size.height)) return;
    drawKnobShadow(path, bounds);
    drawKnobBody(path, bounds, function);
    const NSGraphicsStateScope state;
    Platform::appearance().darkGray.set();
    path.stroke();
}

void strokeDebug(const NSBezierPath& path) {
    const NSGraphicsStateScope state;
    const NSColor odd = Platform::appearance().purple;
    NSPoint current;
    std::array<NSPoint, 3> points;
    for (std::size_t i = 0; i < path.elementCount(); ++i) {
        (i % 2 == 0 ? NSColor::blackColor() : odd).set();
        const NSBezierPathElement kind = path.elementAtIndex(i, &points);
        if (kind == NSBezierPathElement::CurveTo) {
            strokeCurve(current, points);
        } else if (kind != NSBezierPathElement::MoveTo) {
            NSBezierPath::strokeLine(current, points[0]); // for a close-path, the subpath's start
        }
        current = points[kind == NSBezierPathElement::CurveTo ? 2 : 0];
        drawTinyX(current);
    }
}

void drawTinyX(NSPoint point) {
    const auto [x, y] = point;
    NSBezierPath::strokeLine({x + 2, y + 2}, {x - 2, y - 2});
    NSBezierPath::strokeLine({x - 2, y + 2}, {x + 2, y - 2});
}

} // namespace Imaging
