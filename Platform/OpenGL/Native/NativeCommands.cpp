// What fixed function and shaders do alike: textures, the frame buffer, blending and questions.

#include "Platform/OpenGL/Native/NativeCommands.h"

#include <epoxy/gl.h>

#include <utility>

namespace Imaging::Platform {

using namespace OpenGL;

NativeCommands::NativeCommands(OpenGLFacts facts) : m_facts(std::move(facts)) {}
NativeCommands::~NativeCommands() = default;

void NativeCommands::blendFunc(BlendFactor source, BlendFactor destination) {
    glBlendFunc(static_cast<GLenum>(source), static_cast<GLenum>(destination));
}

void NativeCommands::blendColor(float red, float green, float blue, float alpha) {
    glBlendColor(red, green, blue, alpha);
}

void NativeCommands::cullFace(CullFaceMode mode) { glCullFace(static_cast<GLenum>(mode)); }

std::string NativeCommands::getString(StringName name) {
    switch (name) {
    case StringName::Vendor:
        return m_facts.vendor;
    case StringName::Renderer:
        return m_facts.renderer;
    case StringName::Version:
        return m_facts.version;
    case StringName::Extensions:
        return m_facts.extensions;
    }
    noteError(Error::InvalidEnum);
    return {};
}

void NativeCommands::noteError(Error error) {
    if (m_own_error == Error::None) m_own_error = error;
}

Error NativeCommands::getError() {
    if (m_own_error != Error::None) return std::exchange(m_own_error, Error::None);
    return static_cast<Error>(glGetError());
}

void NativeCommands::flush() { glFlush(); }
void NativeCommands::finish() { glFinish(); }

} // namespace Imaging::Platform
