// Tiles are uploaded as they lie in memory: rows of a bitmap in place, told apart by their row length, or a
// small picture drawn for the tile.

#include "Imaging/OpenGL/TileUpload.h"

#include "Imaging/BitmapFormats.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/OpenGL/OpenGLErrors.h"
#include "Imaging/OpenGL/TileGrid.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/OpenGL/OpenGLCommands.h"

#include <algorithm>

namespace Imaging {

using Platform::NSMakeRect;
using Platform::OpenGLCommands;
using Platform::OpenGL::PixelStore;
using Platform::OpenGL::TexParameter;
using Platform::OpenGL::TexParameterValue;
using Platform::OpenGL::TextureTarget;

namespace {

/// The place of a tile's first pixel along an axis: its offset in the units of the bitmap's own size,
/// truncated, and not so far that the tile would reach out of the bitmap.
std::size_t firstAlong(float pointsAlong, std::uint32_t offset, std::uint32_t side, std::uint32_t pixels) {
    const double first = static_cast<double>(pointsAlong) * offset / pixels;
    const double last = pixels - side;
    return first > 0 ? static_cast<std::size_t>(std::min(first, last)) : 0;
}

/// The part of the node's own extent that a tile shows. The node's y axis points up, tiles count downward.
NSRect areaOfTile(NSSize nodeSize, const Tile& tile, PictureSize size) {
    const double scaleX = static_cast<double>(nodeSize.width) / size.width;
    const double scaleY = static_cast<double>(nodeSize.height) / size.height;
    const double below = static_cast<double>(size.height) - tile.y - tile.height;
    return NSMakeRect(static_cast<float>(scaleX * tile.x), static_cast<float>(scaleY * below),
                      static_cast<float>(scaleX * tile.width), static_cast<float>(scaleY * tile.height));
}

void setTexParameter(OpenGLCommands& gl, TextureTarget target, TexParameter parameter,
                     TexParameterValue value) {
    gl.texParameteri(target, parameter, value);
    reportOpenGLError(gl);
}

} // namespace

std::shared_ptr<NSBitmapImageRep> drawnTile(const std::shared_ptr<IMGImage>& node, const Tile& tile,
                                            PictureSize size) {
    const NSSize side = {static_cast<float>(tile.width), static_cast<float>(tile.height)};
    const NSRect whole = {Platform::NSZeroPoint, side};
    NSImage picture(side);
    {
        const Platform::NSImageFocus focus(picture);
        {
            const Platform::NSGraphicsStateScope state;
            Platform::NSColor::clearColor().set();
            Platform::NSRectFill(whole);
        }
        const auto part = IMGCropAndScale::cropWithSourceImage(
            node, areaOfTile(node->imageSize(), tile, size), side, SCALE_PROPORTIONALLY, false);
        part->drawInRect(whole, Platform::NSCompositeSourceOver, 1, false);
    }
    return bitmapRepresentationWithABGRFormat(picture);
}

TilePixels pixelsOfTile(const NSBitmapImageRep& bitmap, const Tile& tile, PictureSize size) {
    const NSSize points = bitmap.size();
    const std::size_t column = firstAlong(points.width, tile.x, tile.width, size.width);
    const std::size_t row = firstAlong(points.height, tile.y, tile.height, size.height);
    const auto bytesPerPixel = static_cast<std::size_t>(bitmap.bitsPerPixel()) / 8;
    return {bitmap.bitmapData() + row * bitmap.bytesPerRow() + column * bytesPerPixel, bitmap.bytesPerRow(),
            bitmap.bitsPerPixel()};
}

void announceMemory(OpenGLCommands& gl, const NSBitmapImageRep* bitmap) {
    // Always the rectangle target, also for other textures: the range belongs to the memory.
    if (bitmap == nullptr) {
        gl.textureRangeApple(TextureTarget::Rectangle, 0, nullptr);
        reportOpenGLError(gl);
        return;
    }
    const double rows =
        std::min(static_cast<double>(bitmap->size().height), static_cast<double>(bitmap->pixelsHigh()));
    const double length = static_cast<double>(bitmap->bytesPerRow()) * std::max(rows, 0.0);
    gl.textureRangeApple(TextureTarget::Rectangle, static_cast<std::size_t>(length), bitmap->bitmapData());
    reportOpenGLError(gl);
    setTexParameter(gl, TextureTarget::Rectangle, TexParameter::StorageHintApple,
                    TexParameterValue::StorageCachedApple);
}

void uploadTile(OpenGLCommands& gl, TextureTarget target, const Tile& tile, const TilePixels& pixels,
                bool clientStorage) {
    const auto bytesPerPixel = static_cast<std::size_t>(pixels.bitsPerPixel) / 8;
    gl.pixelStorei(PixelStore::UnpackRowLength, static_cast<int>(pixels.bytesPerRow / bytesPerPixel));
    if (clientStorage) gl.pixelStorei(PixelStore::UnpackClientStorageApple, 1);
    reportOpenGLError(gl);
    setTexParameter(gl, target, TexParameter::MinFilter, TexParameterValue::Linear);
    setTexParameter(gl, target, TexParameter::MagFilter, TexParameterValue::Linear);
    setTexParameter(gl, target, TexParameter::WrapS, TexParameterValue::ClampToEdge);
    setTexParameter(gl, target, TexParameter::WrapT, TexParameterValue::ClampToEdge);
    gl.texImage2D(target, static_cast<int>(tile.width), static_cast<int>(tile.height),
                  Platform::OpenGL::PixelFormat::Bgra, Platform::OpenGL::PixelType::UnsignedInt8888,
                  pixels.first);
    reportOpenGLError(gl);
}

} // namespace Imaging
