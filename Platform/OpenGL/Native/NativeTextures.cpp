// Textures: names, parameters, uploads and copies.

#include "Platform/OpenGL/Native/NativeCommands.h"
#include "Platform/OpenGL/Native/SampleOrder.h"
#include "Platform/OpenGL/Native/TightRows.h"

#include <epoxy/gl.h>

#include <algorithm>

namespace Imaging::Platform {

using namespace OpenGL;

namespace {

/// Without a size the driver keeps the order of samples that it is given, where a size would have it change
/// each pixel while uploading. All that is uploaded has 8 bits a sample, and drivers keep those.
constexpr GLint storedFormat = GL_RGBA;

} // namespace

void NativeCommands::genTextures(std::size_t count, unsigned* names) {
    glGenTextures(static_cast<GLsizei>(count), names);
}

void NativeCommands::deleteTextures(std::size_t count, const unsigned* names) {
    glDeleteTextures(static_cast<GLsizei>(count), names);
}

void NativeCommands::bindTexture(TextureTarget target, unsigned name) {
    glBindTexture(static_cast<GLenum>(target), name);
}

void NativeCommands::texParameteri(TextureTarget target, TexParameter parameter, TexParameterValue value) {
    glTexParameteri(static_cast<GLenum>(target), static_cast<GLenum>(parameter), static_cast<GLint>(value));
}

void NativeCommands::pixelStorei(PixelStore parameter, int value) {
    if (parameter == PixelStore::UnpackRowLength) m_unpack_row_length = std::max(value, 0);
    if (parameter == PixelStore::UnpackAlignment) m_unpack_alignment = value;
    glPixelStorei(static_cast<GLenum>(parameter), value);
}

bool NativeCommands::isTextureSize(TextureTarget target, int width, int height) const {
    const int limit =
        target == TextureTarget::Rectangle ? m_facts.maximumRectangleTextureSize : m_facts.maximumTextureSize;
    return width >= 0 && height >= 0 && width <= limit && height <= limit;
}

void NativeCommands::texImage2D(TextureTarget target, int width, int height, PixelFormat format,
                                PixelType type, const void* pixels) {
    if (!isTextureSize(target, width, height)) return noteError(Error::InvalidValue);
    const bool isPlain = format == PixelFormat::Rgba && type == PixelType::UnsignedByte;
    if (!isPlain && !m_facts.bgraUploads) return uploadInOrder(target, width, height, format, type, pixels);
    glTexImage2D(static_cast<GLenum>(target), 0, storedFormat, width, height, 0, static_cast<GLenum>(format),
                 static_cast<GLenum>(type), pixels);
}

void NativeCommands::uploadInOrder(TextureTarget target, int width, int height, PixelFormat format,
                                   PixelType type, const void* pixels) {
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    // Rows of whole 32-bit pixels meet every alignment but 8, which an odd number of them misses.
    std::size_t stride =
        4 * (m_unpack_row_length == 0 ? columns : static_cast<std::size_t>(m_unpack_row_length));
    if (m_unpack_alignment == 8) stride = (stride + 7) / 8 * 8;
    if (pixels != nullptr) m_ordered_rows.resize(4 * columns * rows);
    for (std::size_t y = 0; pixels != nullptr && y < rows; ++y) {
        orderSamples(format, type, static_cast<const std::uint8_t*>(pixels) + y * stride,
                     m_ordered_rows.data() + y * 4 * columns, columns);
    }
    const TightRows scope;
    glTexImage2D(static_cast<GLenum>(target), 0, storedFormat, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 pixels == nullptr ? nullptr : m_ordered_rows.data());
}

void NativeCommands::copyTexSubImage2D(TextureTarget target, int xOffset, int yOffset, int x, int y,
                                       int width, int height) {
    glCopyTexSubImage2D(static_cast<GLenum>(target), 0, xOffset, yOffset, m_drawable.x + x, m_drawable.y + y,
                        width, height);
}

void NativeCommands::textureRangeApple(TextureTarget target, std::size_t length, const void* pointer) {
    // Where the extension is not, loading its command would end the program.
    if (!m_facts.hasExtension("GL_APPLE_texture_range")) return noteError(Error::InvalidOperation);
    glTextureRangeAPPLE(static_cast<GLenum>(target), static_cast<GLsizei>(length), pointer);
}

} // namespace Imaging::Platform
