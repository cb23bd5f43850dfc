// Walks the grid of tiles and keeps their names; how tiles are cut, uploaded and drawn is in files of their
// own (OpenGL/TileGrid, TileUpload, TileDrawing).

#include "Imaging/OpenGLTexture.h"

#include "Imaging/Image.h"
#include "Imaging/OpenGL/OpenGLErrors.h"
#include "Imaging/OpenGL/StateScopes.h"
#include "Imaging/OpenGL/TileDrawing.h"
#include "Imaging/OpenGL/TileGrid.h"
#include "Imaging/OpenGL/TileUpload.h"
#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/OpenGL/OpenGLCommands.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace Imaging {

using Platform::NSException;
using Platform::OpenGLCommands;
using Platform::OpenGL::TextureTarget;

namespace {

constexpr int largestTileSide = 512;

/// What was asked of the first context, for the whole process.
struct HardwareAnswers {
    std::mutex lock;
    std::optional<bool> hasRectangles;
    std::optional<int> largestSide;
};

HardwareAnswers& hardwareAnswers() {
    static HardwareAnswers& answers = *new HardwareAnswers;
    return answers;
}

/// An answer that is asked for once, with the lock free: asking may log.
template<class Answer, class Ask>
Answer remembered(std::optional<Answer> HardwareAnswers::*field, const Ask& ask) {
    HardwareAnswers& answers = hardwareAnswers();
    {
        const std::lock_guard lock(answers.lock);
        if ((answers.*field).has_value()) return *(answers.*field);
    }
    const Answer answer = ask();
    const std::lock_guard lock(answers.lock);
    if (!(answers.*field).has_value()) answers.*field = answer;
    return *(answers.*field);
}

bool hasExtension(const char* name) {
    const std::string names = OpenGLCommands::current().getString(Platform::OpenGL::StringName::Extensions);
    return names.find(name) != std::string::npos;
}

TextureTarget targetOf(bool isRectangle) {
    return isRectangle ? TextureTarget::Rectangle : TextureTarget::Texture2D;
}

const NSBitmapImageRep& uploadable(const NSBitmapImageRep* bitmap) {
    const bool fits = bitmap != nullptr && !bitmap->isPlanar() && bitmap->bitsPerPixel() == 32 &&
                      bitmap->bytesPerRow() % 4 == 0;
    if (fits) return *bitmap;
    throw NSException(
        Platform::NSInvalidArgumentException,
        "an OpenGL texture needs a bitmap of 4 bytes a pixel in one plane, alpha first; convert "
        "the picture with bitmapRepresentationWithABGRFormat");
}

} // namespace

OpenGLPointMapping::~OpenGLPointMapping() = default;

// What the hardware can do

bool OpenGLTexture::supportsTextureRectangleExtension() {
    return remembered(&HardwareAnswers::hasRectangles,
                      [] { return hasExtension("GL_EXT_texture_rectangle"); });
}

bool OpenGLTexture::supportsTextureClientStorage() { return hasExtension("GL_APPLE_client_storage"); }

int OpenGLTexture::maxHardwareTextureRectangleSize() {
    return remembered(&HardwareAnswers::largestSide, [] {
        const bool hasRectangles = supportsTextureRectangleExtension();
        OpenGLCommands& gl = OpenGLCommands::current();
        const int side = hasRectangles ? gl.getMaxRectangleTextureSize() : gl.getMaxTextureSize();
        reportOpenGLError(gl);
        return side;
    });
}

int OpenGLTexture::maxTextureRectangleSize() {
    return std::min(maxHardwareTextureRectangleSize(), largestTileSide);
}

void OpenGLTexture::forgetHardwareAnswers() {
    HardwareAnswers& answers = hardwareAnswers();
    const std::lock_guard lock(answers.lock);
    answers.hasRectangles.reset();
    answers.largestSide.reset();
}

void OpenGLTexture::assumeHardwareAnswers(bool hasTextureRectangleExtension, int largestSide) {
    HardwareAnswers& answers = hardwareAnswers();
    const std::lock_guard lock(answers.lock);
    answers.hasRectangles = hasTextureRectangleExtension;
    answers.largestSide = largestSide;
}

unsigned OpenGLTexture::getNextTextureSizeForLength(int length, int maxTextureSize,
                                                    bool hasTextureRectangleExtension) {
    return nextTileSide(length, maxTextureSize, hasTextureRectangleExtension);
}

int OpenGLTexture::getTextureNumFromTextureDim(int dimension, int maxTextureSize,
                                               bool hasTextureRectangleExtension) {
    return tileCount(dimension, maxTextureSize, hasTextureRectangleExtension);
}

// Life

OpenGLTexture::OpenGLTexture(int pixelsWide, int pixelsHigh)
    : m_pixels_wide(static_cast<std::uint32_t>(std::max(pixelsWide, 0))),
      m_pixels_high(static_cast<std::uint32_t>(std::max(pixelsHigh, 0))),
      m_texture_rectangle(supportsTextureRectangleExtension()),
      m_max_texture_size(static_cast<std::uint32_t>(std::max(maxTextureRectangleSize(), 0))) {
    const auto countOf = [this](std::uint32_t dimension) {
        return static_cast<std::uint32_t>(tileCount(
            static_cast<int>(dimension), static_cast<int>(m_max_texture_size), m_texture_rectangle));
    };
    m_texture_count_x = countOf(m_pixels_wide);
    m_texture_count_y = countOf(m_pixels_high);
}

OpenGLTexture::OpenGLTexture(std::shared_ptr<NSBitmapImageRep> bitmap)
    : OpenGLTexture(static_cast<int>(uploadable(bitmap.get()).pixelsWide()),
                    static_cast<int>(uploadable(bitmap.get()).pixelsHigh())) {
    m_bitmap = std::move(bitmap);
}

OpenGLTexture::OpenGLTexture(const std::shared_ptr<IMGImage>& image, int pixelsWide, int pixelsHigh)
    : OpenGLTexture(pixelsWide, pixelsHigh) {
    loadTextureWithImage(image, 0, textureCount());
}

OpenGLTexture::~OpenGLTexture() {
    if (!isLoaded()) return;
    const std::shared_ptr<OpenGLCommands> gl = OpenGLCommands::currentOrNull();
    if (gl == nullptr) {
        Platform::NSLog(
            "an OpenGL texture was let go of while no context was current, and its %d names are lost; "
            "make its context current first",
            static_cast<int>(m_texture_name_data.size()));
        return;
    }
    gl->deleteTextures(m_texture_name_data.size(), m_texture_name_data.data());
    reportOpenGLError(*gl);
}

void OpenGLTexture::getTextureCountX(int* x, int* y) const {
    if (x != nullptr) *x = static_cast<int>(m_texture_count_x);
    if (y != nullptr) *y = static_cast<int>(m_texture_count_y);
}

std::vector<Tile> OpenGLTexture::tiles() const {
    return tilesOf(m_pixels_wide, m_pixels_high, static_cast<int>(m_max_texture_size), m_texture_rectangle);
}

// Loading

Platform::OpenGLCommands& OpenGLTexture::beginLoad() {
    OpenGLCommands& gl = OpenGLCommands::current();
    if (!isLoaded()) {
        std::vector<std::uint32_t> names(textureCount());
        gl.genTextures(names.size(), names.data());
        reportOpenGLError(gl);
        m_texture_name_data = std::move(names);
    }
    return gl;
}

void OpenGLTexture::loadTextureWithImage(const std::shared_ptr<IMGImage>& image,
                                         std::uint32_t textureIndexStart, std::uint32_t textureIndexEnd) {
    if (isEmpty()) return;
    const TextureScope texturing(OpenGLCommands::current(), targetOf(m_texture_rectangle));
    OpenGLCommands& gl = beginLoad();
    const bool clientStorage = supportsTextureClientStorage();
    for (const Tile& tile : tiles()) {
        if (tile.loadIndex < textureIndexStart || tile.loadIndex > textureIndexEnd) continue;
        loadTile(gl, tile, image, clientStorage);
    }
}

void OpenGLTexture::loadTile(OpenGLCommands& gl, const Tile& tile, const std::shared_ptr<IMGImage>& image,
                             bool clientStorage) {
    const TextureTarget target = targetOf(m_texture_rectangle);
    const PictureSize size{m_pixels_wide, m_pixels_high};
    gl.bindTexture(target, m_texture_name_data[tile.nameIndex]);
    reportOpenGLError(gl);
    TilePixels pixels;
    if (image != nullptr) {
        const std::shared_ptr<NSBitmapImageRep> drawn = drawnTile(image, tile, size);
        if (drawn != nullptr) {
            // OpenGL may go on reading it.
            m_bitmaps.push_back(drawn);
            pixels = {drawn->bitmapData(), drawn->bytesPerRow(), drawn->bitsPerPixel()};
        }
    } else if (m_bitmap != nullptr) {
        pixels = pixelsOfTile(*m_bitmap, tile, size);
    }
    if (clientStorage) announceMemory(gl, image != nullptr ? nullptr : m_bitmap.get());
    if (pixels.first == nullptr) {
        Platform::parameterAssertionFailed("pBuffer != NULL", "Imaging/OpenGLTexture", __LINE__);
        return;
    }
    uploadTile(gl, target, tile, pixels, clientStorage);
}

void OpenGLTexture::loadTextureWithFrameBuffer() {
    if (isEmpty()) return;
    const TextureTarget target = targetOf(m_texture_rectangle);
    const TextureScope texturing(OpenGLCommands::current(), target);
    OpenGLCommands& gl = beginLoad();
    for (const Tile& tile : tiles()) {
        gl.bindTexture(target, m_texture_name_data[tile.nameIndex]);
        reportOpenGLError(gl);
        const AttribScope attributes(gl, Platform::OpenGL::AttribBits::Current);
        gl.copyTexSubImage2D(target, 0, 0, static_cast<int>(tile.x), static_cast<int>(tile.y),
                             static_cast<int>(tile.width), static_cast<int>(tile.height));
        reportOpenGLError(gl);
    }
}

// Drawing

void OpenGLTexture::drawImage() {
    gpc_owned_polygon whole;
    AddRectToPolygon(&whole, Platform::NSMakeRect(-1, -1, 2, 2));
    drawImage(whole);
}

void OpenGLTexture::drawImage(const gpc_polygon& clipPolygon) {
    const NSRect all =
        Platform::NSMakeRect(0, 0, static_cast<float>(m_pixels_wide), static_cast<float>(m_pixels_high));
    drawImage(all, clipPolygon);
}

void OpenGLTexture::drawImage(NSRect rect, const gpc_polygon& clipPolygon) {
    const PictureSquare picture{m_pixels_wide, m_pixels_high, m_texture_rectangle};
    const Square part = isEmpty() ? Square{} : picture.squareOf(rect);
    drawTiles([&](OpenGLCommands& gl, const Tile& tile) { drawTile(gl, picture, tile, part, clipPolygon); });
}

void OpenGLTexture::drawImage(NSRect rect, OpenGLPointMapping& function) {
    const PictureSquare picture{m_pixels_wide, m_pixels_high, m_texture_rectangle};
    const Square part = isEmpty() ? Square{} : picture.squareOf(rect);
    const PointMapping mapPoint = [&](NSPoint point) { return function.mapPoint(point); };
    drawTiles([&](OpenGLCommands& gl, const Tile& tile) { drawTile(gl, picture, tile, part, mapPoint); });
}

template<class DrawTile>
void OpenGLTexture::drawTiles(const DrawTile& drawOne) {
    if (!isLoaded()) return;
    const TextureTarget target = targetOf(m_texture_rectangle);
    OpenGLCommands& gl = OpenGLCommands::current();
    const TextureScope texturing(gl, target);
    for (const Tile& tile : tiles()) {
        gl.bindTexture(target, m_texture_name_data[tile.nameIndex]);
        reportOpenGLError(gl);
        drawOne(gl, tile);
        gl.bindTexture(target, 0);
        reportOpenGLError(gl);
    }
}

} // namespace Imaging
