// The frame buffer: drawing batches, clearing, reading back.

#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

#include <epoxy/gl.h>

#include <utility>

namespace Imaging::Platform {

using namespace OpenGL;

namespace {

void setCapability(GLenum capability, bool isOn) { isOn ? glEnable(capability) : glDisable(capability); }

} // namespace

ProgrammableCommands::ProgrammableCommands(OpenGLFacts facts)
    : NativeCommands(std::move(facts)), m_programs(this->facts()) {}

ProgrammableCommands::~ProgrammableCommands() = default;

void ProgrammableCommands::releaseObjects() { m_programs.release(); }

void ProgrammableCommands::drawBatch() {
    if (m_batch.empty()) return;
    sendState(m_batch_kind);
    m_programs.draw(m_batch_kind, m_batch, m_state.render);
    m_batch.clear();
}

void ProgrammableCommands::sendState(BatchKind kind) {
    RenderState wanted = m_state.render;
    wanted.cullFace = wanted.cullFace && kind == BatchKind::Polygons;
    if (wanted.texture2D) sendBinding(TextureTarget::Texture2D);
    if (wanted.textureRectangle) sendBinding(TextureTarget::Rectangle);
    if (m_sent == wanted) return;
    const bool all = !m_sent;
    const RenderState sent = m_sent.value_or(RenderState{});
    if (all) m_programs.bind();
    if (all || sent.cullFace != wanted.cullFace) setCapability(GL_CULL_FACE, wanted.cullFace);
    if (all || sent.cullFaceMode != wanted.cullFaceMode) NativeCommands::cullFace(wanted.cullFaceMode);
    if (all || sent.depthTest != wanted.depthTest) setCapability(GL_DEPTH_TEST, wanted.depthTest);
    if (all || sent.blend != wanted.blend) setCapability(GL_BLEND, wanted.blend);
    if (all || sent.blendSource != wanted.blendSource || sent.blendDestination != wanted.blendDestination) {
        NativeCommands::blendFunc(wanted.blendSource, wanted.blendDestination);
    }
    const std::array<float, 4>& color = wanted.blendColor;
    if (all || sent.blendColor != color) NativeCommands::blendColor(color[0], color[1], color[2], color[3]);
    const std::array<int, 4>& area = wanted.viewport;
    if (all || sent.viewport != area) NativeCommands::viewport(area[0], area[1], area[2], area[3]);
    m_sent = wanted;
}

void ProgrammableCommands::viewport(int x, int y, int width, int height) {
    if (!isOutsideBegin()) return;
    if (width < 0 || height < 0) return noteError(Error::InvalidValue);
    drawBatch();
    m_state.render.viewport = {x, y, width, height};
}

void ProgrammableCommands::clearColor(float red, float green, float blue, float alpha) {
    if (isOutsideBegin()) m_state.clearColor = {red, green, blue, alpha};
}

void ProgrammableCommands::clear(ClearBits bits) {
    if (!isOutsideBegin()) return;
    drawBatch();
    const std::array<float, 4>& color = m_state.clearColor;
    NativeCommands::clearColor(color[0], color[1], color[2], color[3]);
    NativeCommands::clear(bits);
}

void ProgrammableCommands::readBufferBack() {
    if (isOutsideBegin()) NativeCommands::readBufferBack();
}

void ProgrammableCommands::readPixels(int x, int y, int width, int height, void* pixels) {
    if (!isOutsideBegin()) return;
    drawBatch();
    NativeCommands::readPixels(x, y, width, height, pixels);
}

void ProgrammableCommands::setDrawable(const OpenGLDrawable& area) {
    drawBatch();
    NativeCommands::setDrawable(area);
    if (!m_has_drawable) m_state.render.viewport = {0, 0, area.width, area.height};
    m_has_drawable = true;
    m_sent.reset();
    m_sent_bindings = {};
}

void ProgrammableCommands::flush() {
    drawBatch();
    NativeCommands::flush();
}

void ProgrammableCommands::finish() {
    drawBatch();
    NativeCommands::finish();
}

} // namespace Imaging::Platform
