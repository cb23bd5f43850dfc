#pragma once

// Internal: what immediate mode draws, as triangles. Not installed.

#include "Platform/OpenGL/OpenGLConstants.h"

#include <array>
#include <vector>

namespace Imaging::Platform {

/// A vertex as the shader takes it.
struct BatchVertex {
    std::array<float, 4> position{}; ///< clip space
    std::array<float, 4> color{};    ///< 0 to 1
    std::array<float, 2> texCoord{};
    /// For lines with soft edges: pixels from the line's middle across and along it, and where on each the
    /// coverage ends. Coverage is what is left to that end in pixels, at most 1.
    std::array<float, 4> edge{0, 0, 1, 1};
};

/// How lines are drawn.
struct LineStyle {
    float width = 1;                 ///< pixels
    bool isSmooth = false;           ///< soft edges, as quadrilaterals; else as wide as whole pixels
    std::array<float, 2> viewport{}; ///< width and height in pixels
};

/// Of which primitives a batch is made up. Those made from lines are never culled.
enum class BatchKind { Polygons, WideLines, ThinLines };

/// Whether lines of this style are single pixels, which OpenGL's own lines draw.
BatchKind kindOfLines(const LineStyle& style);

/// Appends the triangles of a polygon: the fan of its vertices. Fewer than three draw nothing.
void appendPolygon(const std::vector<BatchVertex>& vertices, std::vector<BatchVertex>& triangles);

/// Appends the lines of a primitive (Lines: each two vertices; LineLoop: all in a ring) as pairs of vertices
/// where they are thin, as two triangles each where they are wide. What lies behind the eye is cut away.
void appendLines(OpenGL::Primitive primitive, const std::vector<BatchVertex>& vertices,
                 const LineStyle& style, std::vector<BatchVertex>& batch);

} // namespace Imaging::Platform
