#pragma once

// Textures of small pictures for tests.

#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <array>
#include <vector>

namespace Pixels {

/// The same picture upside down.
inline Grid flipped(const Grid& picture) {
    Grid turned(picture.width(), picture.height());
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) turned.at(x, y) = picture.at(x, picture.height() - 1 - y);
    }
    return turned;
}

/// A texture of a picture, its top row first, for as long as the object lives.
class Texture {
public:
    using Target = Imaging::Platform::OpenGL::TextureTarget;
    using Filter = Imaging::Platform::OpenGL::TexParameterValue;

    Texture(Imaging::Platform::OpenGLCommands& commands, Target target, const Grid& picture,
            Filter filter = Filter::Nearest)
        : m_commands(commands), m_target(target), m_width(picture.width()), m_height(picture.height()) {
        using namespace Imaging::Platform::OpenGL;
        commands.genTextures(1, &m_name);
        commands.bindTexture(target, m_name);
        commands.texParameteri(target, TexParameter::MinFilter, filter);
        commands.texParameteri(target, TexParameter::MagFilter, filter);
        commands.texParameteri(target, TexParameter::WrapS, TexParameterValue::ClampToEdge);
        commands.texParameteri(target, TexParameter::WrapT, TexParameterValue::ClampToEdge);
        std::vector<Rgba> pixels;
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) pixels.push_back(picture.at(x, y));
        }
        commands.texImage2D(target, m_width, m_height, PixelFormat::Rgba, PixelType::UnsignedByte,
                            pixels.data());
        commands.bindTexture(target, 0);
    }
    ~Texture() { m_commands.deleteTextures(1, &m_name); }
    Texture(const Texture&) = delete;
    Texture& operator=(const Texture&) = delete;

    unsigned name() const { return m_name; }

    /// All of it into a rectangle, with its first row at y1.
    void draw(float x1, float y1, float x2, float y2) const {
        using namespace Imaging::Platform::OpenGL;
        const bool inPixels = m_target == TextureTarget::Rectangle;
        const float s = inPixels ? static_cast<float>(m_width) : 1;
        const float t = inPixels ? static_cast<float>(m_height) : 1;
        m_commands.enable(capabilityOf(m_target));
        m_commands.bindTexture(m_target, m_name);
        m_commands.begin(Primitive::Polygon);
        const std::array<std::array<float, 4>, 4> corners{
            {{0, 0, x1, y1}, {s, 0, x2, y1}, {s, t, x2, y2}, {0, t, x1, y2}}};
        for (const auto& corner : corners) {
            m_commands.texCoord2f(corner[0], corner[1]);
            m_commands.vertex2f(corner[2], corner[3]);
        }
        m_commands.end();
        m_commands.bindTexture(m_target, 0);
        m_commands.disable(capabilityOf(m_target));
    }

private:
    Imaging::Platform::OpenGLCommands& m_commands;
    Target m_target;
    int m_width;
    int m_height;
    unsigned m_name = 0;
};

} // namespace Pixels
