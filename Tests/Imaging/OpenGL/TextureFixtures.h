#pragma once

// Bitmaps and expected command sequences for the tests of tiled textures.

#include "Imaging/OpenGLTexture.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Tests/Imaging/OpenGL/RecorderFixture.h"

namespace ImagingTests {

using Imaging::Platform::NSBitmapImageRep;

/// A bitmap of the grid's pixels as bytes alpha, red, green and blue, with padding at the end of each row.
inline std::shared_ptr<NSBitmapImageRep> alphaFirst(const Grid& grid, std::size_t padding = 0) {
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = grid.width();
    description.pixelsHigh = grid.height();
    description.bytesPerRow = static_cast<std::size_t>(grid.width()) * 4 + padding;
    auto bitmap = NSBitmapImageRep::bitmapWithDescription(description);
    for (int y = 0; y < grid.height(); ++y) {
        for (int x = 0; x < grid.width(); ++x) {
            const Rgba p = grid.at(x, y);
            bitmap->setPixelAt(x, y, {p.a, p.r, p.g, p.b});
        }
    }
    return bitmap;
}

/// The grid's part from column x and row y (counted from the top) as the same bytes.
inline std::vector<std::uint8_t> alphaFirstBytes(const Grid& grid, int x, int y, int width, int height) {
    std::vector<std::uint8_t> bytes;
    for (int row = y; row < y + height; ++row) {
        for (int column = x; column < x + width; ++column) {
            const Rgba p = grid.at(column, row);
            bytes.insert(bytes.end(), {p.a, p.r, p.g, p.b});
        }
    }
    return bytes;
}

/// Binding and filling one tile.
inline Lines uploadLines(const std::string& target, int name, int rowLength, int width, int height) {
    const std::string parameter = "glTexParameteri(" + target + ", ";
    return {"glBindTexture(" + target + ", " + std::to_string(name) + ")",
            "glPixelStorei(GL_UNPACK_ROW_LENGTH, " + std::to_string(rowLength) + ")",
            parameter + "GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
            parameter + "GL_TEXTURE_MAG_FILTER, GL_LINEAR)",
            parameter + "GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)",
            parameter + "GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)",
            "glTexImage2D(" + target + ", 0, GL_RGBA, " + std::to_string(width) + ", " +
                std::to_string(height) + ", 0, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8, pixels)"};
}

inline const std::string rectangle = "GL_TEXTURE_RECTANGLE_EXT";
inline const std::string flat = "GL_TEXTURE_2D";

} // namespace ImagingTests
