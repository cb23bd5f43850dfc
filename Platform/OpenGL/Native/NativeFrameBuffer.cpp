// The frame buffer that is bound: where to draw, clearing, and reading back.

#include "Platform/OpenGL/Native/NativeCommands.h"

#include <epoxy/gl.h>

namespace Imaging::Platform {

using namespace OpenGL;

namespace {

/// Keeps clearing inside a rectangle, and leaves the scissor test as it was.
class ScissorScope {
public:
    explicit ScissorScope(const OpenGLDrawable& area)
        : m_was_enabled(glIsEnabled(GL_SCISSOR_TEST) == GL_TRUE) {
        glGetIntegerv(GL_SCISSOR_BOX, m_box.data());
        glScissor(area.x, area.y, area.width, area.height);
        glEnable(GL_SCISSOR_TEST);
    }
    ~ScissorScope() {
        glScissor(m_box[0], m_box[1], m_box[2], m_box[3]);
        if (!m_was_enabled) glDisable(GL_SCISSOR_TEST);
    }
    ScissorScope(const ScissorScope&) = delete;
    ScissorScope& operator=(const ScissorScope&) = delete;

private:
    std::array<GLint, 4> m_box{};
    bool m_was_enabled;
};

} // namespace

void NativeCommands::viewport(int x, int y, int width, int height) {
    glViewport(m_drawable.x + x, m_drawable.y + y, width, height);
}

std::array<int, 4> NativeCommands::getViewport() {
    std::array<int, 4> area{};
    glGetIntegerv(GL_VIEWPORT, area.data());
    area[0] -= m_drawable.x;
    area[1] -= m_drawable.y;
    return area;
}

void NativeCommands::clearColor(float red, float green, float blue, float alpha) {
    glClearColor(red, green, blue, alpha);
}

void NativeCommands::clear(ClearBits bits) {
    if (!m_drawable.isPart) return glClear(static_cast<GLbitfield>(bits));
    const ScissorScope scope(m_drawable);
    glClear(static_cast<GLbitfield>(bits));
}

void NativeCommands::readBufferBack() {
    const bool hasFrameBuffers =
        m_facts.majorVersion >= 3 || m_facts.hasExtension("GL_ARB_framebuffer_object");
    GLint bound = 0;
    if (hasFrameBuffers) glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &bound);
    if (bound != 0) return; // reads from what is attached
    GLint isDouble = 1;
    if (m_facts.profile != OpenGLProfile::ES) glGetIntegerv(GL_DOUBLEBUFFER, &isDouble);
    if (isDouble != 0) glReadBuffer(GL_BACK);
}

void NativeCommands::readPixels(int x, int y, int width, int height, void* pixels) {
    glReadPixels(m_drawable.x + x, m_drawable.y + y, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
}

} // namespace Imaging::Platform
