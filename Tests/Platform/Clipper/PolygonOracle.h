#pragma once

// Polygons for the clipper's tests, and what is true of them by plain means: the even-odd rule for points,
// and areas by cutting the plane into strips in which no two edges cross.

#include "Platform/Clipper/PolygonClipper.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <ostream>
#include <utility>
#include <vector>

namespace PolygonOracle {

using Imaging::Platform::gpc_op;
using Imaging::Platform::gpc_owned_polygon;
using Imaging::Platform::gpc_polygon;
using Imaging::Platform::gpc_vertex;
using Real = long double;

struct Point {
    double x = 0;
    double y = 0;

    friend bool operator==(const Point&, const Point&) = default;
};

inline std::ostream& operator<<(std::ostream& out, const Point& p) {
    return out << '(' << p.x << ", " << p.y << ')';
}

using Ring = std::vector<Point>;
using Rings = std::vector<Ring>;

inline void add(gpc_polygon& polygon, const Ring& ring, int hole = 0) {
    std::vector<gpc_vertex> vertices;
    for (const Point& p : ring) vertices.push_back({p.x, p.y});
    const Imaging::Platform::gpc_vertex_list list = {static_cast<int>(vertices.size()), vertices.data()};
    Imaging::Platform::gpc_add_contour(&polygon, &list, hole);
}

inline Ring ringOf(const gpc_polygon& polygon, int index) {
    Ring ring;
    const Imaging::Platform::gpc_vertex_list& list = polygon.contour[index];
    for (int i = 0; i < list.num_vertices; ++i) ring.push_back({list.vertex[i].x, list.vertex[i].y});
    return ring;
}

inline Rings ringsOf(const gpc_polygon& polygon) {
    Rings rings;
    for (int i = 0; i < polygon.num_contours; ++i) rings.push_back(ringOf(polygon, i));
    return rings;
}

/// What an operation makes of two polygons.
inline void combine(gpc_op operation, const Rings& subject, const Rings& clip, gpc_polygon& result) {
    gpc_owned_polygon a;
    gpc_owned_polygon b;
    for (const Ring& ring : subject) add(a, ring);
    for (const Ring& ring : clip) add(b, ring);
    Imaging::Platform::gpc_polygon_clip(operation, &a, &b, &result);
}

inline Rings combined(gpc_op operation, const Rings& subject, const Rings& clip) {
    gpc_owned_polygon result;
    combine(operation, subject, clip, result);
    return ringsOf(result);
}

inline Rings common(const Rings& subject, const Rings& clip) {
    return combined(Imaging::Platform::GPC_INT, subject, clip);
}

inline Ring rectangle(double x, double y, double width, double height) {
    return {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}};
}

template<class Visit>
void forEachEdge(const Rings& rings, const Visit& visit) {
    for (const Ring& ring : rings) {
        for (std::size_t i = 0; i < ring.size(); ++i) visit(ring[i], ring[(i + 1) % ring.size()]);
    }
}

/// By counting the edges that a ray to the left crosses.
inline bool isInside(const Rings& rings, Point p) {
    bool inside = false;
    forEachEdge(rings, [&](Point a, Point b) {
        if ((a.y > p.y) == (b.y > p.y)) return;
        const Real x = a.x + (Real{b.x} - a.x) * (Real{p.y} - a.y) / (Real{b.y} - a.y);
        if (x < p.x) inside = !inside;
    });
    return inside;
}

inline bool isInside(gpc_op operation, bool subject, bool clip) {
    switch (operation) {
    case Imaging::Platform::GPC_DIFF:
        return subject && !clip;
    case Imaging::Platform::GPC_INT:
        return subject && clip;
    case Imaging::Platform::GPC_XOR:
        return subject != clip;
    case Imaging::Platform::GPC_UNION:
        break;
    }
    return subject || clip;
}

inline double distanceFromEdges(const Rings& rings, Point p) {
    double nearest = HUGE_VAL;
    forEachEdge(rings, [&](Point a, Point b) {
        const double dx = b.x - a.x;
        const double dy = b.y - a.y;
        const double square = dx * dx + dy * dy;
        const double along = square > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / square : 0;
        const double t = std::clamp(along, 0.0, 1.0);
        nearest = std::min(nearest, std::hypot(a.x + t * dx - p.x, a.y + t * dy - p.y));
    });
    return nearest;
}

/// Positive for rings that run counter-clockwise.
inline Real signedArea(const Ring& ring) {
    Real twice = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Point a = ring[i];
        const Point b = ring[(i + 1) % ring.size()];
        twice += (Real{a.x} - ring[0].x) * (Real{b.y} - ring[0].y) -
                 (Real{b.x} - ring[0].x) * (Real{a.y} - ring[0].y);
    }
    return twice / 2;
}

inline Real signedArea(const Rings& rings) {
    Real sum = 0;
    for (const Ring& ring : rings) sum += signedArea(ring);
    return sum;
}

/// The area of what an operation makes of two polygons. Between two neighbouring heights at which an edge
/// ends or two edges cross, the area is made of trapezoids, so its width at the middle times the height is
/// exact but for rounding.
class StripAreas {
public:
    StripAreas(gpc_op operation, const Rings& subject, const Rings& clip) : m_operation(operation) {
        gather(subject, true);
        gather(clip, false);
    }

    Real area() const {
        const std::vector<Real> heights = eventHeights();
        Real sum = 0;
        for (std::size_t i = 0; i + 1 < heights.size(); ++i) {
            const Real height = heights[i + 1] - heights[i];
            if (height > 0) sum += height * widthAt((heights[i] + heights[i + 1]) / 2);
        }
        return sum;
    }

private:
    struct Edge {
        Point low;
        Point high;
        bool ofSubject;

        Real xAt(Real y) const {
            return low.x + (Real{high.x} - low.x) * (y - low.y) / (Real{high.y} - low.y);
        }
    };

    void gather(const Rings& rings, bool ofSubject) {
        forEachEdge(rings, [&](Point a, Point b) {
            if (a.y == b.y) return;
            m_edges.push_back(a.y < b.y ? Edge{a, b, ofSubject} : Edge{b, a, ofSubject});
        });
    }

    std::vector<Real> eventHeights() const {
        std::vector<Real> heights;
        for (const Edge& e : m_edges) heights.insert(heights.end(), {Real{e.low.y}, Real{e.high.y}});
        for (std::size_t i = 0; i < m_edges.size(); ++i) {
            for (std::size_t k = 0; k < i; ++k) addCrossing(m_edges[i], m_edges[k], heights);
        }
        std::sort(heights.begin(), heights.end());
        return heights;
    }

    static void addCrossing(const Edge& a, const Edge& b, std::vector<Real>& heights) {
        const Real low = std::max(a.low.y, b.low.y);
        const Real high = std::min(a.high.y, b.high.y);
        if (low >= high) return;
        const Real atLow = a.xAt(low) - b.xAt(low);
        const Real atHigh = a.xAt(high) - b.xAt(high);
        if (atLow * atHigh < 0) heights.push_back(low + (high - low) * atLow / (atLow - atHigh));
    }

    Real widthAt(Real y) const {
        std::vector<std::pair<Real, bool>> crossings;
        for (const Edge& e : m_edges) {
            if (e.low.y <= y && y < e.high.y) crossings.emplace_back(e.xAt(y), e.ofSubject);
        }
        std::sort(crossings.begin(), crossings.end());
        Real width = 0;
        bool inSubject = false;
        bool inClip = false;
        for (std::size_t i = 0; i < crossings.size(); ++i) {
            if (isInside(m_operation, inSubject, inClip))
                width += crossings[i].first - crossings[i - 1].first;
            (crossings[i].second ? inSubject : inClip) ^= true;
        }
        return width;
    }

    gpc_op m_operation;
    std::vector<Edge> m_edges;
};

} // namespace PolygonOracle
