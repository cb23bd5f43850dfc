#pragma once

// Internal: the commands that every native context has under the same name. Not installed.

#include "Platform/OpenGL/OpenGLCommands.h"

#include <cstdint>
#include <vector>

namespace Imaging::Platform {

/// Textures, the frame buffer, blending and questions: what fixed function and shaders do alike. What a
/// context lacks is made up for here: window coordinates count from the drawable's corner, and pixel formats
/// that it does not read are put in order while they are uploaded.
///
/// Made while its context is current; used only then, on that thread.
class NativeCommands : public OpenGLCommands {
public:
    ~NativeCommands() override;

    const OpenGLFacts& facts() const final { return m_facts; }

    /// Deletes what this object has in the context, which is current. Called once, before the context goes.
    virtual void releaseObjects() = 0;

    void blendFunc(OpenGL::BlendFactor source, OpenGL::BlendFactor destination) override;
    void blendColor(float red, float green, float blue, float alpha) override;
    void cullFace(OpenGL::CullFaceMode mode) override;
    void genTextures(std::size_t count, unsigned* names) override;
    void deleteTextures(std::size_t count, const unsigned* names) override;
    void bindTexture(OpenGL::TextureTarget target, unsigned name) override;
    void texParameteri(OpenGL::TextureTarget target, OpenGL::TexParameter parameter,
                       OpenGL::TexParameterValue value) override;
    void pixelStorei(OpenGL::PixelStore parameter, int value) override;
    void texImage2D(OpenGL::TextureTarget target, int width, int height, OpenGL::PixelFormat format,
                    OpenGL::PixelType type, const void* pixels) override;
    void copyTexSubImage2D(OpenGL::TextureTarget target, int xOffset, int yOffset, int x, int y, int width,
                           int height) override;
    void textureRangeApple(OpenGL::TextureTarget target, std::size_t length, const void* pointer) override;
    void viewport(int x, int y, int width, int height) override;
    void clearColor(float red, float green, float blue, float alpha) override;
    void clear(OpenGL::ClearBits bits) override;
    void readBufferBack() override;
    void readPixels(int x, int y, int width, int height, void* pixels) override;
    void setDrawable(const OpenGLDrawable& drawable) override { m_drawable = drawable; }
    std::string getString(OpenGL::StringName name) override;
    std::array<int, 4> getViewport() override;
    int getMaxTextureSize() override { return m_facts.maximumTextureSize; }
    int getMaxRectangleTextureSize() override { return m_facts.maximumRectangleTextureSize; }
    OpenGL::Error getError() override;
    void flush() override;
    void finish() override;

protected:
    explicit NativeCommands(OpenGLFacts facts);

    /// Of several errors before the next `getError` the first is answered, as in OpenGL.
    void noteError(OpenGL::Error error);

    const OpenGLDrawable& drawable() const { return m_drawable; }

private:
    bool isTextureSize(OpenGL::TextureTarget target, int width, int height) const;
    void uploadInOrder(OpenGL::TextureTarget target, int width, int height, OpenGL::PixelFormat format,
                       OpenGL::PixelType type, const void* pixels);

    OpenGLFacts m_facts;
    OpenGLDrawable m_drawable;
    OpenGL::Error m_own_error = OpenGL::Error::None;
    int m_unpack_row_length = 0;
    int m_unpack_alignment = 4;
    std::vector<std::uint8_t> m_ordered_rows; // kept for the next upload
};

} // namespace Imaging::Platform
