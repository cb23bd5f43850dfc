#pragma once

// Internal: tiles on the normalised square. Not installed.

#include "Imaging/PolygonClipping.h"

#include <array>
#include <cstdint>
#include <functional>

namespace Imaging::Platform {
class OpenGLCommands;
}

namespace Imaging {

struct Tile;

/// Where a point of the normalised square lies in space.
using PointMapping = std::function<std::array<float, 3>(NSPoint)>;

/// A rectangle of the normalised square by its edges, in doubles: the edge between two tiles is the same
/// number for both.
struct Square {
    double left;
    double bottom;
    double right;
    double top;
};

/// A picture of pixels over the square from -1 to 1, and how texture coordinates count.
struct PictureSquare {
    std::uint32_t pixelsWide;
    std::uint32_t pixelsHigh;
    bool inPixels; ///< texture coordinates count pixels, otherwise from 0 to 1 over a tile

    Square squareOf(NSRect pixels) const;
    Square squareOf(const Tile& tile) const;
};

/// Draws what a part, a tile and a clip polygon of the square have in common from the bound texture, a
/// polygon for each contour. Nothing where part and tile share no area.
void drawTile(Platform::OpenGLCommands& gl, const PictureSquare& picture, const Tile& tile,
              const Square& part, const gpc_polygon& clip);

/// Draws what a part and a tile have in common, its corners where the function puts them.
void drawTile(Platform::OpenGLCommands& gl, const PictureSquare& picture, const Tile& tile,
              const Square& part, const PointMapping& mapPoint);

} // namespace Imaging
