// The attribute stack, capabilities, blending and lines.

#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

namespace Imaging::Platform {

using namespace OpenGL;

void ProgrammableCommands::pushAttrib(AttribBits bits) {
    if (isOutsideBegin() && !m_attribs.push(bits, m_state)) noteError(Error::StackOverflow);
}

void ProgrammableCommands::popAttrib() {
    if (!isOutsideBegin()) return;
    DrawState restored = m_state;
    if (!m_attribs.pop(restored)) return noteError(Error::StackUnderflow);
    if (restored.render != m_state.render) drawBatch();
    m_state = restored;
}

void ProgrammableCommands::enable(Capability capability) {
    if (!isOutsideBegin()) return;
    if (capability == Capability::TextureRectangle && !canUse(TextureTarget::Rectangle)) return;
    if (m_state.capability(capability)) return;
    drawBatch();
    m_state.capability(capability) = true;
}

void ProgrammableCommands::disable(Capability capability) {
    if (!isOutsideBegin()) return;
    if (capability == Capability::TextureRectangle && !canUse(TextureTarget::Rectangle)) return;
    if (!m_state.capability(capability)) return;
    drawBatch();
    m_state.capability(capability) = false;
}

bool ProgrammableCommands::isEnabled(Capability capability) { return m_state.capability(capability); }

void ProgrammableCommands::blendFunc(BlendFactor source, BlendFactor destination) {
    if (!isOutsideBegin()) return;
    if (source == m_state.render.blendSource && destination == m_state.render.blendDestination) return;
    drawBatch();
    m_state.render.blendSource = source;
    m_state.render.blendDestination = destination;
}

void ProgrammableCommands::blendColor(float red, float green, float blue, float alpha) {
    if (!isOutsideBegin()) return;
    drawBatch();
    m_state.render.blendColor = {red, green, blue, alpha};
}

void ProgrammableCommands::cullFace(CullFaceMode mode) {
    if (!isOutsideBegin()) return;
    drawBatch();
    m_state.render.cullFaceMode = mode;
}

void ProgrammableCommands::lineWidth(float width) {
    if (!isOutsideBegin()) return;
    if (!(width > 0)) return noteError(Error::InvalidValue);
    m_state.lineWidth = width;
}

void ProgrammableCommands::hint(HintTarget, HintMode) {
    // Lines are as smooth as they can be, and nothing else is smoothed.
    isOutsideBegin();
}

} // namespace Imaging::Platform
