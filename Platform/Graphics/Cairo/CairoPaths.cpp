// Paths go to Cairo as they are, but for those that reach beyond its coordinates: these become lines, which
// are cut far outside everything that can be seen.

#include "Platform/Graphics/Cairo/CairoPaths.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace Imaging::Platform {

namespace {

/// Cairo's coordinates wrap around at 2^23, and its edges lose precision long before. What reaches beyond
/// this many device units is cut off here, far outside everything that can be seen.
constexpr double farthest = 1 << 17;

/// Paths that reach further than this are left out, so that sums of coordinates stay finite and halving a
/// curve comes to an end.
constexpr double immeasurable = 1e80;

/// Curves that are cut become lines that stay this close to them, in device units.
constexpr double flatness = 0.05;

struct DevicePoint {
    double x;
    double y;
};
using DevicePoints = std::vector<DevicePoint>;

/// A subpath of lines in device space.
struct DeviceLines {
    DevicePoints points;
    bool closed = false;
};

DevicePoint devicePoint(cairo_t* context, NSPoint point) {
    DevicePoint mapped{point.x, point.y};
    cairo_user_to_device(context, &mapped.x, &mapped.y);
    return mapped;
}

/// The largest device coordinate, whatever its sign; infinite where one is not a number.
double reachOf(cairo_t* context, PathElements path) {
    double reach = 0;
    for (const PathElement& element : path) {
        const std::size_t count = element.kind == NSBezierPathElement::CurveTo ? 3 : 1;
        for (std::size_t k = 0; k < count; ++k) {
            const DevicePoint point = devicePoint(context, element.points[k]);
            if (std::isnan(point.x) || std::isnan(point.y)) return std::numeric_limits<double>::infinity();
            reach = std::max({reach, std::abs(point.x), std::abs(point.y)});
        }
    }
    return reach;
}

DevicePoint between(DevicePoint a, DevicePoint b, double t) {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
}

/// Whether a curve may be replaced by its chord: it hardly leaves it, or lies beyond one side altogether.
bool isLikeLine(const std::array<DevicePoint, 4>& c) {
    const auto bend = [](DevicePoint a, DevicePoint b, DevicePoint d) {
        return std::hypot(a.x - 2 * b.x + d.x, a.y - 2 * b.y + d.y);
    };
    // A cubic is at most 3/4 of its largest second difference away from its chord.
    if (0.75 * std::max(bend(c[0], c[1], c[2]), bend(c[1], c[2], c[3])) <= flatness) return true;
    const auto all = [&c](auto isBeyond) { return std::all_of(c.begin(), c.end(), isBeyond); };
    return all([](DevicePoint p) { return p.x < -farthest; }) ||
           all([](DevicePoint p) { return p.x > farthest; }) ||
           all([](DevicePoint p) { return p.y < -farthest; }) ||
           all([](DevicePoint p) { return p.y > farthest; });
}

/// Adds the lines of a curve without its first point. Each halving divides the bend by four.
void appendCurve(DevicePoints& points, const std::array<DevicePoint, 4>& c, int halvings = 160) {
    if (halvings == 0 || isLikeLine(c)) {
        points.push_back(c[3]);
        return;
    }
    const DevicePoint ab = between(c[0], c[1], 0.5);
    const DevicePoint bc = between(c[1], c[2], 0.5);
    const DevicePoint cd = between(c[2], c[3], 0.5);
    const DevicePoint abc = between(ab, bc, 0.5);
    const DevicePoint bcd = between(bc, cd, 0.5);
    const DevicePoint middle = between(abc, bcd, 0.5);
    appendCurve(points, {c[0], ab, abc, middle}, halvings - 1);
    appendCurve(points, {middle, bcd, cd, c[3]}, halvings - 1);
}

std::vector<DeviceLines> linesOf(cairo_t* context, PathElements path) {
    std::vector<DeviceLines> lines;
    for (const auto& [kind, p] : path) {
        const DevicePoint first = devicePoint(context, p[0]);
        if (kind == NSBezierPathElement::ClosePath) {
            lines.back().closed = true;
            continue;
        }
        if (kind == NSBezierPathElement::MoveTo) {
            lines.push_back({{first}});
            continue;
        }
        if (lines.back().closed) lines.push_back({{lines.back().points.front()}}); // drawing on after a close
        DevicePoints& points = lines.back().points;
        if (kind == NSBezierPathElement::LineTo) {
            points.push_back(first);
        } else {
            appendCurve(points,
                        {points.back(), first, devicePoint(context, p[1]), devicePoint(context, p[2])});
        }
    }
    return lines;
}

/// What of a polygon lies on the near side of one border. Parts beyond are replaced by the border, so that
/// the winding of every point on the near side stays what it was (Sutherland and Hodgman, 1974).
DevicePoints cutAt(const DevicePoints& polygon, double DevicePoint::*axis, double sign) {
    DevicePoints kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const DevicePoint from = polygon[i == 0 ? polygon.size() - 1 : i - 1];
        const DevicePoint to = polygon[i];
        const double fromInside = farthest - sign * from.*axis;
        const double toInside = farthest - sign * to.*axis;
        if ((fromInside < 0) != (toInside < 0)) {
            DevicePoint crossing = between(from, to, fromInside / (fromInside - toInside));
            crossing.*axis = sign * farthest;
            kept.push_back(crossing);
        }
        if (toInside >= 0) kept.push_back(to);
    }
    return kept;
}

/// The part of a line that lies within the borders, as two parameters from 0 to 1 (Liang and Barsky, 1984).
bool cutLine(DevicePoint from, DevicePoint to, double& begin, double& end) {
    begin = 0;
    end = 1;
    for (double DevicePoint::*const axis : {&DevicePoint::x, &DevicePoint::y}) {
        for (const double sign : {-1.0, 1.0}) {
            const double fromInside = farthest - sign * from.*axis;
            const double toInside = farthest - sign * to.*axis;
            if (fromInside < 0 && toInside < 0) return false;
            const double crossing = fromInside / (fromInside - toInside);
            if (fromInside < 0) begin = std::max(begin, crossing);
            if (toInside < 0) end = std::min(end, crossing);
        }
    }
    return begin <= end;
}

void appendPolygon(cairo_t* context, DevicePoints polygon) {
    for (double DevicePoint::*const axis : {&DevicePoint::x, &DevicePoint::y}) {
        for (const double sign : {-1.0, 1.0}) polygon = cutAt(polygon, axis, sign);
    }
    if (polygon.size() < 3) return;
    cairo_move_to(context, polygon[0].x, polygon[0].y);
    for (std::size_t i = 1; i < polygon.size(); ++i) cairo_line_to(context, polygon[i].x, polygon[i].y);
    cairo_close_path(context);
}

void appendOpenLines(cairo_t* context, const DevicePoints& points) {
    bool continues = false;
    for (std::size_t i = 1; i < points.size(); ++i) {
        double begin = 0;
        double end = 1;
        if (!cutLine(points[i - 1], points[i], begin, end)) {
            continues = false;
            continue;
        }
        const DevicePoint from = between(points[i - 1], points[i], begin);
        const DevicePoint to = end < 1 ? between(points[i - 1], points[i], end) : points[i];
        if (!continues || begin > 0) cairo_move_to(context, from.x, from.y);
        cairo_line_to(context, to.x, to.y);
        continues = end == 1;
    }
}

void appendLines(cairo_t* context, DeviceLines lines) {
    if (lines.closed && lines.points.size() > 1) {
        // Beginning and ending within a line, the corner at the start is joined like every other.
        const DevicePoint middle = between(lines.points[0], lines.points[1], 0.5);
        lines.points.push_back(lines.points[0]);
        lines.points.push_back(middle);
        lines.points[0] = middle;
    }
    appendOpenLines(context, lines.points);
}

void appendElements(cairo_t* context, PathElements path) {
    for (const auto& [kind, p] : path) {
        switch (kind) {
        case NSBezierPathElement::MoveTo:
            cairo_move_to(context, p[0].x, p[0].y);
            break;
        case NSBezierPathElement::LineTo:
            cairo_line_to(context, p[0].x, p[0].y);
            break;
        case NSBezierPathElement::CurveTo:
            cairo_curve_to(context, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
            break;
        case NSBezierPathElement::ClosePath:
            cairo_close_path(context);
            break;
        }
    }
}

} // namespace

void appendPath(cairo_t* context, PathElements path) {
    const double reach = reachOf(context, path);
    if (reach <= farthest) appendElements(context, path);
    if (!(reach > farthest && reach <= immeasurable)) return;
    const std::vector<DeviceLines> lines = linesOf(context, path);
    const CairoStateScope state(context); // the path does not belong to the state
    cairo_identity_matrix(context);
    for (const DeviceLines& subpath : lines) appendPolygon(context, subpath.points);
}

void appendStrokePath(cairo_t* context, PathElements path) {
    const double reach = reachOf(context, path);
    if (reach <= farthest) appendElements(context, path);
    if (!(reach > farthest && reach <= immeasurable)) return;
    const std::vector<DeviceLines> lines = linesOf(context, path);
    const CairoStateScope state(context);
    cairo_identity_matrix(context);
    for (const DeviceLines& subpath : lines) appendLines(context, subpath);
}

void setFillRule(cairo_t* context, NSWindingRule rule) {
    cairo_set_fill_rule(context,
                        rule == NSWindingRule::EvenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
}

CairoContext measuringContext() {
    const CairoSurface surface(cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr));
    return CairoContext(cairo_create(surface.get()));
}

} // namespace Imaging::Platform
