#pragma once

// Internal: the commands as they are, for contexts with fixed function. Not installed.

#include "Platform/OpenGL/Native/NativeCommands.h"

namespace Imaging::Platform {

/// Hands each command on to OpenGL under its own name; the context keeps all state.
class CompatibilityCommands final : public NativeCommands {
public:
    /// While the context of these facts is current.
    explicit CompatibilityCommands(OpenGLFacts facts) : NativeCommands(std::move(facts)) {}
    ~CompatibilityCommands() override;

    void releaseObjects() override {}
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
    void lineWidth(float width) override;
    void hint(OpenGL::HintTarget target, OpenGL::HintMode mode) override;
    void texEnvi(OpenGL::TexEnvMode mode) override;
};

} // namespace Imaging::Platform
