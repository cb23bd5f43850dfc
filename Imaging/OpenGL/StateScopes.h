#pragma once

// Internal: OpenGL state that is put back at the end of a scope, on the way out of an exception too. Not
// installed.

#include "Imaging/OpenGL/OpenGLErrors.h"
#include "Platform/OpenGL/OpenGLCommands.h"

namespace Imaging {

/// Pushes groups of attributes and pops them.
class AttribScope {
public:
    AttribScope(Platform::OpenGLCommands& gl, Platform::OpenGL::AttribBits bits) : m_gl(gl) {
        m_gl.pushAttrib(bits);
        reportOpenGLError(m_gl);
    }
    ~AttribScope() {
        m_gl.popAttrib();
        reportOpenGLError(m_gl);
    }
    AttribScope(const AttribScope&) = delete;
    AttribScope& operator=(const AttribScope&) = delete;

private:
    Platform::OpenGLCommands& m_gl;
};

/// Pushes the modelview matrix, which is the current one meanwhile, and pops it.
class ModelViewScope {
public:
    explicit ModelViewScope(Platform::OpenGLCommands& gl) : m_gl(gl) {
        m_gl.matrixMode(Platform::OpenGL::MatrixMode::ModelView);
        m_gl.pushMatrix();
        reportOpenGLError(m_gl);
    }
    ~ModelViewScope() {
        m_gl.popMatrix();
        reportOpenGLError(m_gl);
    }
    ModelViewScope(const ModelViewScope&) = delete;
    ModelViewScope& operator=(const ModelViewScope&) = delete;

private:
    Platform::OpenGLCommands& m_gl;
};

/// Switches the textures of a target on, and off again.
class TextureScope {
public:
    TextureScope(Platform::OpenGLCommands& gl, Platform::OpenGL::TextureTarget target)
        : m_gl(gl), m_target(target) {
        m_gl.enable(Platform::OpenGL::capabilityOf(m_target));
        reportOpenGLError(m_gl);
    }
    ~TextureScope() {
        m_gl.disable(Platform::OpenGL::capabilityOf(m_target));
        reportOpenGLError(m_gl);
    }
    TextureScope(const TextureScope&) = delete;
    TextureScope& operator=(const TextureScope&) = delete;

private:
    Platform::OpenGLCommands& m_gl;
    Platform::OpenGL::TextureTarget m_target;
};

} // namespace Imaging
