// Reports go to the log as one line, whose place is always the same: those who compare logs of several
// callers see the error's code and nothing that differs between them. Every command here is followed by one.

#include "Imaging/OpenGLUtilities.h"

#include "Imaging/Drawing/AssertionLines.h"
#include "Platform/Foundation/Log.h"
#include "Platform/OpenGL/OpenGLCommands.h"
#include "Platform/Pixels/CompositingOperation.h"

namespace Imaging {

using Platform::OpenGL::BlendFactor;

namespace {

void reportErrorOf(Platform::OpenGLCommands& gl) {
    ReportError(static_cast<unsigned>(gl.getError()), __FILE__, __LINE__);
}

void setBlending(Platform::OpenGLCommands& gl, BlendFactor source, BlendFactor destination) {
    gl.blendFunc(source, destination);
    reportErrorOf(gl);
}

/// All four alike, since the textures' colours are multiplied by their alpha.
void setColor(Platform::OpenGLCommands& gl, float fraction) {
    gl.color4f(fraction, fraction, fraction, fraction);
    reportErrorOf(gl);
}

} // namespace

void ReportError(unsigned error, const char*, int) {
    if (error == 0) return;
    Platform::NSLog(CheckOpenGLErrorFormat, "Imaging/GraphicsUtilities", AssertionLines::glError,
                    static_cast<int>(error));
}

std::array<float, 3> MakePoint3D(float x, float y, float z) { return {x, y, z}; }

NSPoint MapPointGL(NSPoint point, NSRect from, NSRect to) {
    return {(point.x - from.origin.x) * to.size.width / from.size.width + to.origin.x,
            (point.y - from.origin.y) * to.size.height / from.size.height + to.origin.y};
}

NSRect MapRectGL(NSRect rect, NSRect from, NSRect to) {
    return {MapPointGL(rect.origin, from, to),
            {to.size.width * rect.size.width / from.size.width,
             to.size.height * rect.size.height / from.size.height}};
}

void SetCompositedModeGL(int operation, float fraction) {
    Platform::OpenGLCommands& gl = Platform::OpenGLCommands::current();
    gl.enable(Platform::OpenGL::Capability::Blend);
    reportErrorOf(gl);
    switch (operation) {
    case Platform::NSCompositeCopy:
        setBlending(gl, BlendFactor::One, BlendFactor::Zero);
        break;
    case Platform::NSCompositeSourceOver:
        setBlending(gl, BlendFactor::One, BlendFactor::OneMinusSrcAlpha);
        setColor(gl, fraction);
        break;
    case Platform::NSCompositeDestinationOver:
        setBlending(gl, BlendFactor::OneMinusDstAlpha, BlendFactor::One);
        setColor(gl, fraction);
        break;
    case Platform::NSCompositePlusLighter:
        setBlending(gl, BlendFactor::ConstantAlpha, BlendFactor::One);
        gl.blendColor(1, 1, 1, fraction);
        reportErrorOf(gl);
        break;
    default: // nothing in OpenGL's blending stands for them
        break;
    }
}

} // namespace Imaging
