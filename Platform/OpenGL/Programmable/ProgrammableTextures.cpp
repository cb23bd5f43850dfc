// Textures: bindings are kept here and sent when something needs them.

#include "Platform/OpenGL/Native/TightRows.h"
#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

#include <epoxy/gl.h>

#include <algorithm>

namespace Imaging::Platform {

using namespace OpenGL;

bool ProgrammableCommands::canUse(TextureTarget target) {
    if (target == TextureTarget::Texture2D || facts().rectangleTextures) return true;
    noteError(Error::InvalidEnum);
    return false;
}

void ProgrammableCommands::genTextures(std::size_t count, unsigned* names) {
    if (isOutsideBegin()) NativeCommands::genTextures(count, names);
}

void ProgrammableCommands::deleteTextures(std::size_t count, const unsigned* names) {
    if (!isOutsideBegin()) return;
    drawBatch();
    const auto isDeleted = [&](unsigned name) {
        return std::find(names, names + count, name) != names + count;
    };
    if (isDeleted(m_state.render.binding2D)) m_state.render.binding2D = 0;
    if (isDeleted(m_state.render.bindingRectangle)) m_state.render.bindingRectangle = 0;
    m_sent_bindings = {}; // OpenGL unbinds what it deletes
    NativeCommands::deleteTextures(count, names);
}

void ProgrammableCommands::bindTexture(TextureTarget target, unsigned name) {
    if (!isOutsideBegin() || !canUse(target)) return;
    RenderState& render = m_state.render;
    unsigned& binding = target == TextureTarget::Texture2D ? render.binding2D : render.bindingRectangle;
    if (binding == name) return;
    drawBatch();
    binding = name;
}

void ProgrammableCommands::sendBinding(TextureTarget target) {
    const bool isPlain = target == TextureTarget::Texture2D;
    const unsigned wanted = isPlain ? m_state.render.binding2D : m_state.render.bindingRectangle;
    std::optional<unsigned>& sent = m_sent_bindings[isPlain ? 0 : 1];
    if (sent == wanted) return;
    if (!m_sent_bindings[0] && !m_sent_bindings[1]) glActiveTexture(GL_TEXTURE0);
    glBindTexture(static_cast<GLenum>(target), wanted);
    sent = wanted;
}

void ProgrammableCommands::texParameteri(TextureTarget target, TexParameter parameter,
                                         TexParameterValue value) {
    if (!isOutsideBegin() || !canUse(target)) return;
    drawBatch();
    sendBinding(target);
    NativeCommands::texParameteri(target, parameter, value);
}

void ProgrammableCommands::texEnvi(TexEnvMode mode) {
    if (!isOutsideBegin() || mode == m_state.render.texEnvMode) return;
    drawBatch();
    m_state.render.texEnvMode = mode;
}

void ProgrammableCommands::pixelStorei(PixelStore parameter, int value) {
    if (isOutsideBegin()) NativeCommands::pixelStorei(parameter, value);
}

void ProgrammableCommands::texImage2D(TextureTarget target, int width, int height, PixelFormat format,
                                      PixelType type, const void* pixels) {
    if (!isOutsideBegin() || !canUse(target)) return;
    drawBatch();
    sendBinding(target);
    NativeCommands::texImage2D(target, width, height, format, type, pixels);
}

void ProgrammableCommands::copyTexSubImage2D(TextureTarget target, int xOffset, int yOffset, int x, int y,
                                             int width, int height) {
    if (!isOutsideBegin() || !canUse(target)) return;
    drawBatch();
    sendBinding(target);
    GLint alphaBits = 8;
    if (facts().profile == OpenGLProfile::ES) glGetIntegerv(GL_ALPHA_BITS, &alphaBits);
    if (alphaBits == 0) return copyWithoutAlpha(target, xOffset, yOffset, x, y, width, height);
    NativeCommands::copyTexSubImage2D(target, xOffset, yOffset, x, y, width, height);
}

/// ES refuses to copy from a frame buffer without alpha to a texture with it; elsewhere that becomes opaque.
void ProgrammableCommands::copyWithoutAlpha(TextureTarget target, int xOffset, int yOffset, int x, int y,
                                            int width, int height) {
    if (width < 0 || height < 0) return noteError(Error::InvalidValue);
    std::vector<std::uint8_t> rows(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    const TightRows scope;
    NativeCommands::readPixels(x, y, width, height, rows.data());
    glTexSubImage2D(static_cast<GLenum>(target), 0, xOffset, yOffset, width, height, GL_RGBA,
                    GL_UNSIGNED_BYTE, rows.data());
}

} // namespace Imaging::Platform
