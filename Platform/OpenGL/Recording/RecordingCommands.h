#pragma once

// Internal: the commands as text, for tests. Not installed.

#include "Platform/OpenGL/OpenGLCommands.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Imaging::Platform {

/// Commands that draw nothing and write down what they were given, one line each in OpenGL's own words:
/// "glBlendFunc(GL_ONE, GL_ZERO)". Numbers are the shortest that read back as the same value. Questions
/// (`get…`, `isEnabled`) are answered and not written down; nor is `setDrawable`, which is no command.
///
/// It knows the rules that tests most need: what is wrong between `begin` and `end`, stacks that run over or
/// empty, names that are deleted without having been generated. Each sets the error that OpenGL would.
class RecordingCommands final : public OpenGLCommands {
public:
    /// One `texImage2D`, with its pixels as they lay in memory but for the padding of rows.
    struct Upload {
        unsigned name = 0; ///< the texture that was bound
        OpenGL::TextureTarget target{};
        int width = 0;
        int height = 0;
        OpenGL::PixelFormat format{};
        OpenGL::PixelType type{};
        std::vector<std::uint8_t> pixels; ///< 4 bytes a pixel; empty when null was given
    };
    using PixelSource = std::function<void(int x, int y, int width, int height, std::uint8_t* rgba)>;

    /// Without facts: OpenGL 2.1 in compatibility with rectangle textures and a limit of 2,048 pixels.
    RecordingCommands();
    explicit RecordingCommands(OpenGLFacts facts);
    ~RecordingCommands() override;

    const std::vector<std::string>& lines() const { return m_lines; }

    /// The lines so far, and forgets them. Counters and state stay.
    std::vector<std::string> takeLines();

    const std::vector<Upload>& uploads() const { return m_uploads; }

    /// What `getError` answers next, one after another; before whatever this object found wrong itself.
    void answerWithError(OpenGL::Error error) { m_errors.push_back(error); }

    /// What `readPixels` writes: tightly packed rows from the bottom. Without it all bytes are 0.
    void answerPixelsWith(PixelSource source) { m_pixel_source = std::move(source); }

    std::size_t generatedNames() const { return m_generated; }
    std::size_t deletedNames() const { return m_deleted; }
    /// Names that were generated and not deleted.
    const std::set<unsigned>& liveNames() const { return m_live_names; }

    /// How many entries are pushed and not popped.
    std::size_t attribDepth() const { return m_attribs.size(); }
    std::size_t matrixDepth(OpenGL::MatrixMode mode) const;
    bool isInsideBegin() const { return m_inside_begin; }
    const OpenGLDrawable& drawable() const { return m_drawable; }

    const OpenGLFacts& facts() const override { return m_facts; }
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
    void textureRangeApple(OpenGL::TextureTarget target, std::size_t length, const void* pointer) override;
    void viewport(int x, int y, int width, int height) override;
    void clearColor(float red, float green, float blue, float alpha) override;
    void clear(OpenGL::ClearBits bits) override;
    void readBufferBack() override;
    void readPixels(int x, int y, int width, int height, void* pixels) override;
    void setDrawable(const OpenGLDrawable& drawable) override { m_drawable = drawable; }
    std::string getString(OpenGL::StringName name) override;
    std::array<int, 4> getViewport() override { return m_state.viewport; }
    int getMaxTextureSize() override { return m_facts.maximumTextureSize; }
    int getMaxRectangleTextureSize() override { return m_facts.maximumRectangleTextureSize; }
    OpenGL::Error getError() override;
    void flush() override;
    void finish() override;

private:
    /// What can be asked for, and comes back with the attributes.
    struct State {
        OpenGL::MatrixMode matrix_mode = OpenGL::MatrixMode::ModelView;
        std::set<OpenGL::Capability> enabled;
        std::map<OpenGL::TextureTarget, unsigned> bindings;
        std::array<int, 4> viewport{};
    };
    struct SavedState {
        OpenGL::AttribBits bits;
        State state;
    };

    template<typename... Arguments>
    void record(const char* command, const Arguments&... arguments);
    bool isOutsideBegin();
    void noteError(OpenGL::Error error);
    void restore(const SavedState& saved);

    OpenGLFacts m_facts;
    std::vector<std::string> m_lines;
    std::vector<Upload> m_uploads;
    std::deque<OpenGL::Error> m_errors;
    OpenGL::Error m_own_error = OpenGL::Error::None;
    PixelSource m_pixel_source;
    std::set<unsigned> m_live_names;
    unsigned m_last_name = 0;
    std::size_t m_generated = 0;
    std::size_t m_deleted = 0;
    std::map<OpenGL::MatrixMode, std::size_t> m_matrix_depths;
    std::vector<SavedState> m_attribs;
    State m_state;
    std::map<OpenGL::PixelStore, int> m_pixel_store;
    OpenGLDrawable m_drawable;
    bool m_inside_begin = false;
};

} // namespace Imaging::Platform
