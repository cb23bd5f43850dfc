#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/OpenGL/OpenGLConstants.h"
#include "Platform/OpenGL/OpenGLFacts.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace Imaging::Platform {

/// Where in the bound frame buffer drawing goes, in pixels from its lower left corner. All window coordinates
/// of the commands (viewport, read-back, copies) count from this corner.
struct OpenGLDrawable {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    /// Something else shares the frame buffer, so that clearing must stay inside the area.
    bool isPart = false;

    friend bool operator==(const OpenGLDrawable&, const OpenGLDrawable&) = default;
};

/// Every OpenGL command that the library uses, in the words of OpenGL 1.x: the one seam between drawing code
/// and whatever OpenGL there is.
///
/// ```
///   drawing code ─→ OpenGLCommands ─┬─ compatibility: the commands as they are            (OpenGL 1.4 and
///   later)
///                                   ├─ programmable: own stacks, batches, one shader      (core 3.2, ES 3.0
///                                   and later) └─ recording: text for tests
/// ```
///
/// Functions are named after the commands without "gl" and do what the reference of OpenGL 1.4 says; comments
/// here say only what is more or less than that. Angles are degrees, matrices have 16 numbers column by
/// column, and window coordinates grow upward. What an implementation needs to do differently it does where
/// nobody sees it; `facts` says what it cannot do.
///
/// Wrong use sets an error, as in OpenGL, and the command does nothing: Error::InvalidOperation for whatever
/// is not allowed between `begin` and `end`, StackOverflow and StackUnderflow at the limits below. Nothing
/// here throws, but for std::bad_alloc.
///
/// Who calls OpenGL directly on the same context calls `flush` before, since vertices may still wait in a
/// batch, and NSOpenGLContext::makeCurrentContext afterwards, which sends all state anew.
///
/// One object belongs to one native context, and is used on the thread where that is current. Vertices,
/// colours and matrices are frequent and cheap. Binding, blending and capabilities may end a batch. Uploads,
/// copies and read-back are rare, and read-back waits until all drawing is done.
class IMAGING_EXPORT OpenGLCommands {
public:
    /// How deep the stacks may be at least in every implementation, the current entry included. The
    /// projection's is four in the programmable one and two in some old contexts.
    static constexpr std::size_t modelViewStackDepth = 32;
    static constexpr std::size_t projectionStackDepth = 2;
    static constexpr std::size_t attribStackDepth = 16;

    using Matrix = std::array<float, 16>;

    virtual ~OpenGLCommands();
    OpenGLCommands(const OpenGLCommands&) = delete;
    OpenGLCommands& operator=(const OpenGLCommands&) = delete;

    /// The commands of the context that is current on this thread. Throws an NSException (NSOpenGLException)
    /// without one.
    static OpenGLCommands& current();

    /// The same, null without one.
    static std::shared_ptr<OpenGLCommands> currentOrNull();

    /// Called by whoever makes a native context current on this thread, and with null when none is any more.
    static void setCurrent(std::shared_ptr<OpenGLCommands> commands);

    virtual const OpenGLFacts& facts() const = 0;

    // Immediate mode. Between `begin` and `end` only vertices, colours and texture coordinates are allowed.
    virtual void begin(OpenGL::Primitive primitive) = 0;
    virtual void end() = 0;
    virtual void vertex2f(float x, float y) = 0;
    virtual void vertex3f(float x, float y, float z) = 0;
    virtual void texCoord2f(float s, float t) = 0;
    virtual void color4f(float red, float green, float blue, float alpha) = 0;
    /// A polygon of the four corners, anticlockwise from (x1, y1) where x1 < x2 and y1 < y2.
    virtual void rectf(float x1, float y1, float x2, float y2) = 0;

    // Matrix stacks. Each operation but `loadIdentity` multiplies the current matrix from the right.
    virtual void matrixMode(OpenGL::MatrixMode mode) = 0;
    virtual void loadIdentity() = 0;
    virtual void ortho(double left, double right, double bottom, double top, double near, double far) = 0;
    virtual void frustum(double left, double right, double bottom, double top, double near, double far) = 0;
    virtual void translatef(float x, float y, float z) = 0;
    virtual void scalef(float x, float y, float z) = 0;
    virtual void rotatef(float degrees, float x, float y, float z) = 0;
    virtual void multMatrixf(const Matrix& matrix) = 0;
    virtual void pushMatrix() = 0;
    virtual void popMatrix() = 0;

    // The attribute stack. Whether it brings back the parameters of texture objects is open: set those
    // outside.
    virtual void pushAttrib(OpenGL::AttribBits bits) = 0;
    virtual void popAttrib() = 0;

    // Capabilities and what fragments meet.
    virtual void enable(OpenGL::Capability capability) = 0;
    virtual void disable(OpenGL::Capability capability) = 0;
    virtual bool isEnabled(OpenGL::Capability capability) = 0;
    virtual void blendFunc(OpenGL::BlendFactor source, OpenGL::BlendFactor destination) = 0;
    virtual void blendColor(float red, float green, float blue, float alpha) = 0;
    virtual void cullFace(OpenGL::CullFaceMode mode) = 0;
    /// In pixels. A width that is not above 0 is Error::InvalidValue.
    virtual void lineWidth(float width) = 0;
    virtual void hint(OpenGL::HintTarget target, OpenGL::HintMode mode) = 0;

    // Textures. Names are those of OpenGL; 0 is no texture.
    virtual void genTextures(std::size_t count, unsigned* names) = 0;
    virtual void deleteTextures(std::size_t count, const unsigned* names) = 0;
    virtual void bindTexture(OpenGL::TextureTarget target, unsigned name) = 0;
    virtual void texParameteri(OpenGL::TextureTarget target, OpenGL::TexParameter parameter,
                               OpenGL::TexParameterValue value) = 0;
    virtual void texEnvi(OpenGL::TexEnvMode mode) = 0;
    virtual void pixelStorei(OpenGL::PixelStore parameter, int value) = 0;
    /// Level 0 of the bound texture, stored as 8-bit RGBA. The pixels are read during the call, row 0 first,
    /// as `pixelStorei` says; null leaves them undefined. With client storage they must outlive the texture.
    virtual void texImage2D(OpenGL::TextureTarget target, int width, int height, OpenGL::PixelFormat format,
                            OpenGL::PixelType type, const void* pixels) = 0;
    /// Copies from the bound frame buffer into the bound texture, which has storage.
    virtual void copyTexSubImage2D(OpenGL::TextureTarget target, int xOffset, int yOffset, int x, int y,
                                   int width, int height) = 0;
    virtual void textureRangeApple(OpenGL::TextureTarget target, std::size_t length, const void* pointer) = 0;

    // The frame buffer that is bound.
    virtual void viewport(int x, int y, int width, int height) = 0;
    virtual void clearColor(float red, float green, float blue, float alpha) = 0;
    virtual void clear(OpenGL::ClearBits bits) = 0;
    /// Reads from the back buffer from now on where there is one; where there is not, what is bound is read.
    virtual void readBufferBack() = 0;
    /// As 8-bit RGBA, bottom row first, in rows as `pixelStorei` says.
    virtual void readPixels(int x, int y, int width, int height, void* pixels) = 0;
    virtual void setDrawable(const OpenGLDrawable& drawable) = 0;

    // Questions, and what is left to do.
    virtual std::string getString(OpenGL::StringName name) = 0;
    /// x, y, width and height of the viewport.
    virtual std::array<int, 4> getViewport() = 0;
    virtual int getMaxTextureSize() = 0;
    /// 0 without rectangle textures.
    virtual int getMaxRectangleTextureSize() = 0;
    /// The first error since the last call, which it forgets.
    virtual OpenGL::Error getError() = 0;
    /// Hands everything over to OpenGL, which then ends it in finite time.
    virtual void flush() = 0;
    /// Waits until all of it is done. What was uploaded is then seen by the other contexts of the share
    /// group, once they bind the texture anew.
    virtual void finish() = 0;

protected:
    OpenGLCommands() = default;
};

} // namespace Imaging::Platform
