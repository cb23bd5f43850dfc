#pragma once

// Internal: where a tile's pixels come from, and how they become a texture. Not installed.

#include "Platform/OpenGL/OpenGLConstants.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Imaging::Platform {
class NSBitmapImageRep;
class OpenGLCommands;
} // namespace Imaging::Platform

namespace Imaging {

class IMGImage;
struct Tile;

/// A picture's size in pixels.
struct PictureSize {
    std::uint32_t width;
    std::uint32_t height;
};

/// Pixels in memory: the address of the first one, null for none, and the rows they stand in.
struct TilePixels {
    const std::uint8_t* first = nullptr;
    std::size_t bytesPerRow = 0;
    int bitsPerPixel = 0;
};

/// What a node drawn at a size shows in one tile, as bytes with alpha first. Null when it cannot be
/// converted. Throws what drawing throws.
std::shared_ptr<Platform::NSBitmapImageRep> drawnTile(const std::shared_ptr<IMGImage>& node, const Tile& tile,
                                                      PictureSize size);

/// Where a tile's pixels begin in a bitmap of the size, which has 4 bytes a pixel. They lie inside the bitmap
/// whatever its size in points is.
TilePixels pixelsOfTile(const Platform::NSBitmapImageRep& bitmap, const Tile& tile, PictureSize size);

/// Tells OpenGL which memory it may go on reading, where it can: a bitmap's, or none for null.
void announceMemory(Platform::OpenGLCommands& gl, const Platform::NSBitmapImageRep* bitmap);

/// Gives the bound texture a tile's pixels, with linear filters and clamped edges.
void uploadTile(Platform::OpenGLCommands& gl, Platform::OpenGL::TextureTarget target, const Tile& tile,
                const TilePixels& pixels, bool clientStorage);

} // namespace Imaging
