#pragma once

// Internal: the commands for contexts that have shaders only. Not installed.

#include "Platform/OpenGL/Native/NativeCommands.h"
#include "Platform/OpenGL/Programmable/BatchPrograms.h"
#include "Platform/OpenGL/Programmable/DrawState.h"
#include "Platform/OpenGL/Programmable/MatrixStacks.h"

#include <optional>
#include <vector>

namespace Imaging::Platform {

/// Fixed function over shaders, for core contexts and ES:
///
/// ```
///   vertices ─→ clip space (MatrixStacks) ─→ triangles (VertexBatch) ─→ batch ─→ BatchPrograms
///   state ─→ DrawState, sent once before a batch is drawn ─────────────────────────┘
/// ```
///
/// Each command refuses what is not allowed between `begin` and `end`, then changes one thing. Whatever
/// changes what a batch is drawn with, or looks at what was drawn, draws the batch first. State that the
/// context has is compared with what was last sent, which is forgotten at every `setDrawable`.
class ProgrammableCommands final : public NativeCommands {
public:
    /// While the context of these facts is current.
    explicit ProgrammableCommands(OpenGLFacts facts);
    ~ProgrammableCommands() override;

    void releaseObjects() override;
    void begin(OpenGL::Primitive primitive) override;
    void end() override;
    void vertex2f(float x, float y) override;
    void vertex3f(float x, float y, float z) override;
    void texCoord2f(float s, float t) override;
    void color4f(float red, float green, float blue, float alpha) override;
    void rectf(float x1, float y1, float x2, float y2) override;
    void matrixMode(OpenGL::MatrixMode mode) override;
    void loadIdentity() override;
    void ortho(double left, double right, double bottom, double top, double near, double far) override;
    void frustum(double left, double right, double bottom, double top, double near, double far) override;
    void translatef(float x, float y, float z) override;
    void scalef(float x, float y, float z) override;
    void rotatef(float degrees, float x, float y, float z) override;
    void multMatrixf(const Matrix& matrix) override;
    void pushMatrix() override;
    void popMatrix() override;
    void pushAttrib(OpenGL::AttribBits bits) override;
    void popAttrib() override;
    void enable(OpenGL::Capability capability) override;
    void disable(OpenGL::Capability capability) override;
    bool isEnabled(OpenGL::Capability capability) override;
    void blendFunc(OpenGL::BlendFactor source, OpenGL::BlendFactor destination) override;
    void blendColor(float red, float green, float blue, float alpha) override;
    void cullFace(OpenGL::CullFaceMode mode) override;
    void lineWidth(float width) override;
    void hint(OpenGL::HintTarget target, OpenGL::HintMode mode) override;
    void genTextures(std::size_t count, unsigned* names) override;
    void deleteTextures(std::size_t count, const unsigned* names) override;
    void bindTexture(OpenGL::TextureTarget target, unsigned name) override;
    void texParameteri(OpenGL::TextureTarget target, OpenGL::TexParameter parameter,
                       OpenGL::TexParameterValue value) override;
    void texEnvi(OpenGL::TexEnvMode mode) override;
    void pixelStorei(OpenGL::PixelStore parameter, int value) override;
    void texImage2D(OpenGL::TextureTarget target, int width, int height, OpenGL::PixelFormat format,
                    OpenGL::PixelType type, const void* pixels) override;
    void copyTexSubImage2D(OpenGL::TextureTarget target, int xOffset, int yOffset, int x, int y, int width,
                           int height) override;
    void viewport(int x, int y, int width, int height) override;
    void clearColor(float red, float green, float blue, float alpha) override;
    void clear(OpenGL::ClearBits bits) override;
    void readBufferBack() override;
    void readPixels(int x, int y, int width, int height, void* pixels) override;
    void setDrawable(const OpenGLDrawable& drawable) override;
    std::array<int, 4> getViewport() override { return m_state.render.viewport; }
    void flush() override;
    void finish() override;

private:
    bool isOutsideBegin();
    /// Draws what was gathered and empties the batch.
    void drawBatch();
    void sendState(BatchKind kind);
    void sendBinding(OpenGL::TextureTarget target);
    bool canUse(OpenGL::TextureTarget target);
    void copyWithoutAlpha(OpenGL::TextureTarget target, int xOffset, int yOffset, int x, int y, int width,
                          int height);

    BatchPrograms m_programs;
    MatrixStacks m_matrices;
    AttribStack m_attribs;
    DrawState m_state;
    bool m_has_drawable = false;
    std::optional<RenderState> m_sent; // what the context has; nothing when that is not known
    std::array<std::optional<unsigned>, 2> m_sent_bindings; // 2D and rectangle

    std::optional<OpenGL::Primitive> m_primitive; // between begin and end
    std::vector<BatchVertex> m_vertices;          // of it
    BatchKind m_batch_kind = BatchKind::Polygons;
    std::vector<BatchVertex> m_batch;
};

} // namespace Imaging::Platform
