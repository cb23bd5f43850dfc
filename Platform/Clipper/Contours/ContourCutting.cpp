// Plain geometry in doubles. Contours are cut at one side of a box after the other (I. Sutherland and G.
// Hodgman, 1974), and what runs outside is replaced by the side.

#include "Platform/Clipper/Contours/ContourCutting.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Imaging::Platform::Clipping {

namespace {

/// One side of a box: what lies on the near side of a line across an axis.
struct Side {
    double gpc_vertex::*along;
    double gpc_vertex::*across;
    double bound;
    bool keepsLower;

    bool keeps(const gpc_vertex& v) const { return keepsLower ? v.*along <= bound : v.*along >= bound; }

    /// Where an edge meets the line. Both ways along an edge give the same, so that contours which share an
    /// edge still do when they are cut. An edge along the axis keeps its place exactly.
    gpc_vertex crossing(const gpc_vertex& from, const gpc_vertex& to) const {
        const bool upward = from.*along < to.*along;
        const gpc_vertex& low = upward ? from : to;
        const gpc_vertex& high = upward ? to : from;
        const double part = (bound - low.*along) / (high.*along - low.*along);
        gpc_vertex v{};
        v.*along = bound;
        v.*across = std::lerp(low.*across, high.*across, part);
        return v;
    }
};

Contour cutAt(const Contour& contour, const Side& side) {
    Contour kept;
    if (contour.empty()) return kept;
    kept.reserve(contour.size() + 4);
    gpc_vertex previous = contour.back();
    bool wasKept = side.keeps(previous);
    for (const gpc_vertex& vertex : contour) {
        const bool isKept = side.keeps(vertex);
        if (isKept != wasKept) kept.push_back(side.crossing(previous, vertex));
        if (isKept) kept.push_back(vertex);
        previous = vertex;
        wasKept = isKept;
    }
    return kept;
}

double cross(const gpc_vertex& a, const gpc_vertex& b, const gpc_vertex& c) {
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

} // namespace

Box Box::ofNothing() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return {{infinity, infinity}, {-infinity, -infinity}};
}

void Box::include(gpc_vertex vertex) {
    low = {std::min(low.x, vertex.x), std::min(low.y, vertex.y)};
    high = {std::max(high.x, vertex.x), std::max(high.y, vertex.y)};
}

void Box::include(const Box& other) {
    low = {std::min(low.x, other.low.x), std::min(low.y, other.low.y)};
    high = {std::max(high.x, other.high.x), std::max(high.y, other.high.y)};
}

bool Box::contains(const Box& other) const {
    return low.x <= other.low.x && low.y <= other.low.y && high.x >= other.high.x && high.y >= other.high.y;
}

Box Box::common(const Box& other) const {
    return {{std::max(low.x, other.low.x), std::max(low.y, other.low.y)},
            {std::min(high.x, other.high.x), std::min(high.y, other.high.y)}};
}

Box Box::enlarged(double part) const {
    const double x = (high.x - low.x) * part;
    const double y = (high.y - low.y) * part;
    return {{low.x - x, low.y - y}, {high.x + x, high.y + y}};
}

Box boxOf(const Contour& contour) {
    Box box = Box::ofNothing();
    for (const gpc_vertex& vertex : contour) box.include(vertex);
    return box;
}

Box boxOf(const Contours& contours) {
    Box box = Box::ofNothing();
    for (const Contour& contour : contours) box.include(boxOf(contour));
    return box;
}

double signedArea(const Contour& contour) {
    if (contour.empty()) return 0;
    // Measured from a vertex of its own, so that a place far from the origin costs no precision.
    const gpc_vertex origin = contour.front();
    double twice = 0;
    double sizes = 0;
    for (std::size_t i = 1; i + 1 < contour.size(); ++i) {
        const gpc_vertex& a = contour[i];
        const gpc_vertex& b = contour[i + 1];
        const double one = (a.x - origin.x) * (b.y - origin.y);
        const double other = (a.y - origin.y) * (b.x - origin.x);
        twice += one - other;
        sizes += std::fabs(one) + std::fabs(other);
    }
    // What may be rounding alone is none.
    return std::fabs(twice) > 4 * std::numeric_limits<double>::epsilon() * sizes ? twice / 2 : 0;
}

std::optional<Box> asRectangle(const Contour& c) {
    if (c.size() != 4) return std::nullopt;
    const bool startsAcross = c[0].y == c[1].y && c[1].x == c[2].x && c[2].y == c[3].y && c[3].x == c[0].x;
    const bool startsUp = c[0].x == c[1].x && c[1].y == c[2].y && c[2].x == c[3].x && c[3].y == c[0].y;
    if (!startsAcross && !startsUp) return std::nullopt;
    return boxOf(c);
}

bool isConvexTriangleOrQuadrilateral(const Contour& contour) {
    const std::size_t n = contour.size();
    if (n != 3 && n != 4) return false;
    int left = 0;
    int right = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const double turn = cross(contour[i], contour[(i + 1) % n], contour[(i + 2) % n]);
        left += turn > 0 ? 1 : 0;
        right += turn < 0 ? 1 : 0;
    }
    // Four turns one way are a single round: twice around takes five corners.
    return left == static_cast<int>(n) || right == static_cast<int>(n);
}

Contour cutToBox(const Contour& contour, const Box& box) {
    Contour kept = cutAt(contour, {&gpc_vertex::x, &gpc_vertex::y, box.low.x, false});
    kept = cutAt(kept, {&gpc_vertex::x, &gpc_vertex::y, box.high.x, true});
    kept = cutAt(kept, {&gpc_vertex::y, &gpc_vertex::x, box.low.y, false});
    return cutAt(kept, {&gpc_vertex::y, &gpc_vertex::x, box.high.y, true});
}

Contours cutToBox(Contours contours, const Box& box) {
    Contours kept;
    kept.reserve(contours.size());
    for (Contour& contour : contours) {
        const Box extent = boxOf(contour);
        if (box.contains(extent)) {
            kept.push_back(std::move(contour));
        } else if (box.common(extent).hasArea()) {
            Contour inside = cutToBox(contour, box);
            if (!inside.empty()) kept.push_back(std::move(inside));
        }
    }
    return kept;
}

} // namespace Imaging::Platform::Clipping
