// Keeps what fixed function would keep, and tells batches when it changes.

#include "Platform/OpenGL/Programmable/DrawState.h"

#include "Platform/OpenGL/OpenGLCommands.h"

namespace Imaging::Platform {

using namespace OpenGL;

namespace {

constexpr AttribBits groupOf(Capability capability) {
    switch (capability) {
    case Capability::LineSmooth:
        return AttribBits::Line;
    case Capability::CullFace:
        return AttribBits::Polygon;
    case Capability::DepthTest:
        return AttribBits::DepthBuffer;
    case Capability::Blend:
        return AttribBits::ColorBuffer;
    case Capability::Texture2D:
    case Capability::TextureRectangle:
        break;
    }
    return AttribBits::Texture;
}

void restoreCapabilities(AttribBits bits, DrawState saved, DrawState& state) {
    for (const Capability capability :
         {Capability::LineSmooth, Capability::CullFace, Capability::DepthTest, Capability::Blend,
          Capability::Texture2D, Capability::TextureRectangle}) {
        if (!contains(bits, groupOf(capability) | AttribBits::Enable)) continue;
        state.capability(capability) = saved.capability(capability);
    }
}

void restoreBlending(const DrawState& saved, DrawState& state) {
    state.render.blendSource = saved.render.blendSource;
    state.render.blendDestination = saved.render.blendDestination;
    state.render.blendColor = saved.render.blendColor;
    state.clearColor = saved.clearColor;
}

void restoreTextures(const DrawState& saved, DrawState& state) {
    state.render.binding2D = saved.render.binding2D;
    state.render.bindingRectangle = saved.render.bindingRectangle;
    state.render.texEnvMode = saved.render.texEnvMode;
}

} // namespace

bool& DrawState::capability(Capability capability) {
    switch (capability) {
    case Capability::LineSmooth:
        return lineSmooth;
    case Capability::CullFace:
        return render.cullFace;
    case Capability::DepthTest:
        return render.depthTest;
    case Capability::Blend:
        return render.blend;
    case Capability::Texture2D:
        return render.texture2D;
    case Capability::TextureRectangle:
        break;
    }
    return render.textureRectangle;
}

bool AttribStack::push(AttribBits bits, const DrawState& state) {
    if (m_entries.size() == OpenGLCommands::attribStackDepth) return false;
    m_entries.push_back({bits, state});
    return true;
}

bool AttribStack::pop(DrawState& state) {
    if (m_entries.empty()) return false;
    const AttribBits bits = m_entries.back().bits;
    const DrawState saved = m_entries.back().state;
    m_entries.pop_back();
    restoreCapabilities(bits, saved, state);
    if (contains(bits, AttribBits::Current)) state.color = saved.color;
    if (contains(bits, AttribBits::Current)) state.texCoord = saved.texCoord;
    if (contains(bits, AttribBits::Line)) state.lineWidth = saved.lineWidth;
    if (contains(bits, AttribBits::Polygon)) state.render.cullFaceMode = saved.render.cullFaceMode;
    if (contains(bits, AttribBits::Viewport)) state.render.viewport = saved.render.viewport;
    if (contains(bits, AttribBits::Transform)) state.matrixMode = saved.matrixMode;
    if (contains(bits, AttribBits::ColorBuffer)) restoreBlending(saved, state);
    if (contains(bits, AttribBits::Texture)) restoreTextures(saved, state);
    return true;
}

} // namespace Imaging::Platform
