// Rectangles, transforms and paths as the polygon clipper wants them: contours of doubles, curves as short
// lines.

#include "Imaging/PolygonClipping.h"

#include "Imaging/Bezier.h"
#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Graphics/BezierPath.h"

#include <array>
#include <limits>
#include <new>
#include <utility>

namespace Imaging {

using Platform::NSBezierPathElement;

namespace {

constexpr int pointsOfCurve = 20;
constexpr float curveTolerance = 1.0F / 1024;

/// Vertices are doubles for the clipper alone: what goes through a transform is a point of floats.
gpc_vertex widened(NSPoint point) { return {point.x, point.y}; }

NSPoint narrowed(const gpc_vertex& vertex) {
    return {static_cast<float>(vertex.x), static_cast<float>(vertex.y)};
}

/// Walks a path and keeps the list so far, the point of the pen and the subpath's start.
class VertexGatherer {
public:
    explicit VertexGatherer(PointLists& lists) : m_lists(lists) {}

    void add(NSBezierPathElement kind, const std::array<NSPoint, 3>& points) {
        switch (kind) {
        case NSBezierPathElement::MoveTo:
            finishList();
            m_list.push_back(points[0]);
            m_current = m_start = points[0];
            break;
        case NSBezierPathElement::LineTo:
            m_list.push_back(points[0]);
            m_current = points[0];
            break;
        case NSBezierPathElement::CurveTo:
            addCurve({m_current, points[0], points[1], points[2]});
            m_current = points[2];
            break;
        case NSBezierPathElement::ClosePath:
            m_list.push_back(m_start); // the pen stays where it was
            break;
        }
    }

    /// A single point stays for what comes next.
    void finishList() {
        if (m_list.size() < 2) return;
        m_lists.push_back(std::move(m_list));
        m_list.clear();
    }

private:
    void addCurve(const BezierCurve& curve) {
        // Without the end, which whatever comes next begins with or passes by.
        for (int i = 0; i < pointsOfCurve; ++i) {
            const float fraction = static_cast<float>(i) / pointsOfCurve;
            m_list.push_back(PointAlongBezierCurve(curve, fraction, curveTolerance));
        }
    }

    PointLists& m_lists;
    std::vector<NSPoint> m_list;
    NSPoint m_current;
    NSPoint m_start;
};

} // namespace

void AddRectToPolygon(gpc_polygon* polygon, NSRect rect) {
    const float left = Platform::NSMinX(rect);
    const float right = Platform::NSMaxX(rect);
    const float bottom = Platform::NSMinY(rect);
    const float top = Platform::NSMaxY(rect);
    std::array<gpc_vertex, 4> corners = {{{left, bottom}, {right, bottom}, {right, top}, {left, top}}};
    const gpc_vertex_list contour = {static_cast<int>(corners.size()), corners.data()};
    gpc_add_contour(polygon, &contour, 0);
}

void TransformPolygon(gpc_polygon* polygon, const NSAffineTransform& transform) {
    for (int i = 0; i < polygon->num_contours; ++i) {
        const gpc_vertex_list& contour = polygon->contour[i];
        for (int k = 0; k < contour.num_vertices; ++k) {
            contour.vertex[k] = widened(transform.transformPoint(narrowed(contour.vertex[k])));
        }
    }
}

void ClipPolygonToTransformedRect(gpc_polygon* polygon, NSRect rect, const NSAffineTransform& transform) {
    gpc_owned_polygon limit;
    AddRectToPolygon(&limit, rect);
    TransformPolygon(&limit, transform);
    gpc_owned_polygon clipped;
    // Where this throws the polygon has not been touched.
    gpc_polygon_clip(Platform::GPC_INT, polygon, &limit, &clipped);
    gpc_free_polygon(polygon);
    clipped.moveTo(polygon);
}

void GatherVertices(const NSBezierPath& path, PointLists& lists) {
    VertexGatherer gatherer(lists);
    std::array<NSPoint, 3> points;
    for (std::size_t i = 0; i < path.elementCount(); ++i) {
        const NSBezierPathElement kind = path.elementAtIndex(i, &points);
        gatherer.add(kind, points);
    }
    gatherer.finishList();
}

void ConvertBezierPathToPolygon(const NSBezierPath& path, gpc_polygon* polygon) {
    PointLists lists;
    GatherVertices(path, lists);
    gpc_owned_polygon made;
    std::vector<gpc_vertex> vertices;
    for (const std::vector<NSPoint>& list : lists) {
        if (list.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw std::bad_alloc();
        vertices.clear();
        for (const NSPoint point : list) vertices.push_back(widened(point));
        const gpc_vertex_list contour = {static_cast<int>(vertices.size()), vertices.data()};
        gpc_add_contour(&made, &contour, 0);
    }
    made.moveTo(polygon);
}

} // namespace Imaging
