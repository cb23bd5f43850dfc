// Texture coordinates follow from where a vertex lies in its tile's square, so a tile may be cut in any way
// before it is drawn.

#include "Imaging/OpenGL/TileDrawing.h"

#include "Imaging/OpenGL/OpenGLErrors.h"
#include "Imaging/OpenGL/TileGrid.h"
#include "Platform/OpenGL/OpenGLCommands.h"

#include <algorithm>
#include <array>
#include <optional>

namespace Imaging {

using Platform::OpenGLCommands;
using Platform::OpenGL::Primitive;

namespace {

double normalised(double pixels, std::uint32_t all) { return 2 * pixels / all - 1; }

std::optional<Square> intersection(const Square& a, const Square& b) {
    const Square common{std::max(a.left, b.left), std::max(a.bottom, b.bottom), std::min(a.right, b.right),
                        std::min(a.top, b.top)};
    const bool hasArea = common.left < common.right && common.bottom < common.top;
    return hasArea ? std::optional(common) : std::nullopt;
}

/// Texture coordinates of a tile's points.
class TileCoordinates {
public:
    TileCoordinates(const PictureSquare& picture, const Tile& tile, const Square& square)
        : m_square(square),
          m_scale_x(picture.inPixels ? tile.width : 1),
          m_scale_y(picture.inPixels ? tile.height : 1) {}

    void texCoord(OpenGLCommands& gl, double x, double y) const {
        const double s = (x - m_square.left) * m_scale_x / (m_square.right - m_square.left);
        const double t = (y - m_square.bottom) * m_scale_y / (m_square.top - m_square.bottom);
        gl.texCoord2f(static_cast<float>(s), static_cast<float>(t));
    }

private:
    Square m_square;
    double m_scale_x;
    double m_scale_y;
};

std::array<gpc_vertex, 4> cornersOf(const Square& square) {
    return {{{square.left, square.bottom},
             {square.right, square.bottom},
             {square.right, square.top},
             {square.left, square.top}}};
}

void drawContour(OpenGLCommands& gl, const gpc_vertex_list& contour, const TileCoordinates& coordinates) {
    gl.begin(Primitive::Polygon);
    for (int i = contour.num_vertices - 1; i >= 0; --i) {
        const gpc_vertex& vertex = contour.vertex[i];
        coordinates.texCoord(gl, vertex.x, vertex.y);
        gl.vertex3f(static_cast<float>(vertex.x), static_cast<float>(vertex.y), 0);
    }
    gl.end();
    reportOpenGLError(gl);
}

} // namespace

Square PictureSquare::squareOf(NSRect pixels) const {
    const double x = pixels.origin.x;
    const double y = pixels.origin.y;
    return {normalised(x, pixelsWide), normalised(y, pixelsHigh),
            normalised(x + pixels.size.width, pixelsWide), normalised(y + pixels.size.height, pixelsHigh)};
}

Square PictureSquare::squareOf(const Tile& tile) const {
    return {normalised(tile.x, pixelsWide), normalised(tile.y, pixelsHigh),
            normalised(static_cast<double>(tile.x) + tile.width, pixelsWide),
            normalised(static_cast<double>(tile.y) + tile.height, pixelsHigh)};
}

void drawTile(OpenGLCommands& gl, const PictureSquare& picture, const Tile& tile, const Square& part,
              const gpc_polygon& clip) {
    const Square square = picture.squareOf(tile);
    const std::optional<Square> common = intersection(part, square);
    if (!common.has_value()) return;
    std::array<gpc_vertex, 4> corners = cornersOf(*common);
    const gpc_vertex_list contour = {static_cast<int>(corners.size()), corners.data()};
    gpc_owned_polygon limit;
    gpc_add_contour(&limit, &contour, 0);
    gpc_owned_polygon clipped;
    gpc_polygon_clip(Platform::GPC_INT, &clip, &limit, &clipped);
    const TileCoordinates coordinates(picture, tile, square);
    for (int i = 0; i < clipped.num_contours; ++i) drawContour(gl, clipped.contour[i], coordinates);
}

void drawTile(OpenGLCommands& gl, const PictureSquare& picture, const Tile& tile, const Square& part,
              const PointMapping& mapPoint) {
    const Square square = picture.squareOf(tile);
    const std::optional<Square> common = intersection(part, square);
    if (!common.has_value()) return;
    const std::array<gpc_vertex, 4> corners = cornersOf(*common);
    // Mapped before the polygon begins: whatever the function throws or draws meets no open polygon.
    std::array<std::array<float, 3>, 4> points;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        points[i] = mapPoint({static_cast<float>(corners[i].x), static_cast<float>(corners[i].y)});
    }
    const TileCoordinates coordinates(picture, tile, square);
    gl.begin(Primitive::Polygon);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        coordinates.texCoord(gl, corners[i].x, corners[i].y);
        gl.vertex3f(points[i][0], points[i][1], points[i][2]);
    }
    gl.end();
    reportOpenGLError(gl);
}

} // namespace Imaging
