// Turns polygons into fans and lines into quadrilaterals with soft edges, as triangles that are drawn
// together.

#include "Platform/OpenGL/Programmable/VertexBatch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

namespace Imaging::Platform {

using OpenGL::Primitive;

namespace {

/// Nearer to the eye than this nothing is drawn of a line.
constexpr float nearestDepth = 1e-5f;

template<std::size_t Count>
std::array<float, Count> mixed(const std::array<float, Count>& a, const std::array<float, Count>& b,
                               float share) {
    std::array<float, Count> result{};
    for (std::size_t i = 0; i < Count; ++i) result[i] = a[i] + (b[i] - a[i]) * share;
    return result;
}

BatchVertex between(const BatchVertex& a, const BatchVertex& b, float share) {
    return {mixed(a.position, b.position, share), mixed(a.color, b.color, share),
            mixed(a.texCoord, b.texCoord, share), a.edge};
}

/// The part in front of the eye.
std::optional<std::pair<BatchVertex, BatchVertex>> visiblePart(BatchVertex from, BatchVertex to) {
    const float a = from.position[3];
    const float b = to.position[3];
    if (!(a > nearestDepth) && !(b > nearestDepth)) return std::nullopt;
    if (!(a > nearestDepth)) from = between(from, to, (nearestDepth - a) / (b - a));
    if (!(b > nearestDepth)) to = between(to, from, (nearestDepth - b) / (a - b));
    return std::pair(from, to);
}

struct WindowPoint {
    float x;
    float y;
};

WindowPoint toWindow(const BatchVertex& vertex, const LineStyle& style) {
    const float w = vertex.position[3];
    return {(vertex.position[0] / w + 1) / 2 * style.viewport[0],
            (vertex.position[1] / w + 1) / 2 * style.viewport[1]};
}

/// The vertex moved to a place in the window; its depth stays.
BatchVertex placedAt(BatchVertex vertex, WindowPoint point, const LineStyle& style) {
    const float w = vertex.position[3];
    vertex.position = {point.x / style.viewport[0] * 2 - 1, point.y / style.viewport[1] * 2 - 1,
                       vertex.position[2] / w, 1};
    return vertex;
}

void appendQuadrilateral(const std::array<BatchVertex, 4>& corners, std::vector<BatchVertex>& batch) {
    for (const std::size_t corner : {0, 1, 2, 0, 2, 3}) batch.push_back(corners.at(corner));
}

/// A rectangle around the line that reaches half a pixel farther than it, so that pixels that it covers in
/// part are drawn too.
void appendSmoothLine(const BatchVertex& from, const BatchVertex& to, const LineStyle& style,
                      std::vector<BatchVertex>& batch) {
    const WindowPoint a = toWindow(from, style);
    const WindowPoint b = toWindow(to, style);
    const float length = std::hypot(b.x - a.x, b.y - a.y);
    if (!(length > 0)) return;
    const WindowPoint along{(b.x - a.x) / length, (b.y - a.y) / length};
    const float across = style.width / 2 + 0.5f;
    const float end = length / 2 + 0.5f;
    const auto corner = [&](const BatchVertex& vertex, WindowPoint point, float forward, float aside) {
        const WindowPoint place{point.x + along.x * forward / 2 - along.y * aside,
                                point.y + along.y * forward / 2 + along.x * aside};
        BatchVertex placed = placedAt(vertex, place, style);
        placed.edge = {aside, forward * end, across, end};
        return placed;
    };
    appendQuadrilateral({corner(from, a, -1, -across), corner(to, b, 1, -across), corner(to, b, 1, across),
                         corner(from, a, -1, across)},
                        batch);
}

/// A parallelogram with level or upright ends, whichever the line is farther from, as OpenGL widens its
/// lines.
void appendHardLine(const BatchVertex& from, const BatchVertex& to, const LineStyle& style,
                    std::vector<BatchVertex>& batch) {
    const WindowPoint a = toWindow(from, style);
    const WindowPoint b = toWindow(to, style);
    const float half = std::round(style.width) / 2;
    const bool isFlat = std::abs(b.x - a.x) >= std::abs(b.y - a.y);
    const WindowPoint aside = isFlat ? WindowPoint{0, half} : WindowPoint{half, 0};
    const auto corner = [&](const BatchVertex& vertex, WindowPoint point, float sign) {
        return placedAt(vertex, {point.x + sign * aside.x, point.y + sign * aside.y}, style);
    };
    appendQuadrilateral({corner(from, a, -1), corner(to, b, -1), corner(to, b, 1), corner(from, a, 1)},
                        batch);
}

void appendLine(const BatchVertex& from, const BatchVertex& to, const LineStyle& style,
                std::vector<BatchVertex>& batch) {
    if (kindOfLines(style) == BatchKind::ThinLines) {
        batch.push_back(from);
        batch.push_back(to);
        return;
    }
    const auto part = visiblePart(from, to);
    if (!part) return;
    (style.isSmooth ? appendSmoothLine : appendHardLine)(part->first, part->second, style, batch);
}

} // namespace

BatchKind kindOfLines(const LineStyle& style) {
    return style.isSmooth || style.width >= 1.5f ? BatchKind::WideLines : BatchKind::ThinLines;
}

void appendPolygon(const std::vector<BatchVertex>& vertices, std::vector<BatchVertex>& triangles) {
    for (std::size_t i = 2; i < vertices.size(); ++i) {
        // Closed outlines end where they began; with a triangle of no area behind them, some software drivers
        // draw nothing at all.
        if (vertices[i].position == vertices[0].position) continue;
        triangles.push_back(vertices[0]);
        triangles.push_back(vertices[i - 1]);
        triangles.push_back(vertices[i]);
    }
}

void appendLines(Primitive primitive, const std::vector<BatchVertex>& vertices, const LineStyle& style,
                 std::vector<BatchVertex>& batch) {
    const bool isLoop = primitive == Primitive::LineLoop;
    for (std::size_t i = 1; i < vertices.size(); i += isLoop ? 1 : 2) {
        appendLine(vertices[i - 1], vertices[i], style, batch);
    }
    if (isLoop && vertices.size() > 1) appendLine(vertices.back(), vertices.front(), style, batch);
}

} // namespace Imaging::Platform
