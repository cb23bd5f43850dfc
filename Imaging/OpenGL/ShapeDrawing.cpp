// Shapes have colours that are not multiplied by their alpha, other than textures, so lines and outlines are
// blended by the alpha of what is drawn.

#include "Imaging/OpenGL/ShapeDrawing.h"

#include "Imaging/GraphicsUtilities.h"
#include "Imaging/OpenGL/StateScopes.h"
#include "Platform/Graphics/Color.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/OpenGL/OpenGLCommands.h"

namespace Imaging {

using Platform::NSColor;
using Platform::OpenGLCommands;
using Platform::OpenGL::AttribBits;
using Platform::OpenGL::BlendFactor;
using Platform::OpenGL::Primitive;

namespace {

constexpr AttribBits shapeState = AttribBits::Current | AttribBits::Line | AttribBits::ColorBuffer;

void setColor(OpenGLCommands& gl, const NSColor& color) {
    gl.color4f(color.redComponent(), color.greenComponent(), color.blueComponent(), color.alphaComponent());
    reportOpenGLError(gl);
}

void setLineState(OpenGLCommands& gl, const NSColor& color, float lineWidth) {
    SetCompositedModeGL(Platform::NSCompositeSourceOver, 1);
    setColor(gl, color);
    gl.lineWidth(lineWidth);
    reportOpenGLError(gl);
}

void blendByAlpha(OpenGLCommands& gl) {
    gl.blendFunc(BlendFactor::SrcAlpha, BlendFactor::OneMinusSrcAlpha);
    reportOpenGLError(gl);
}

} // namespace

void drawRectangle(OpenGLCommands& gl, NSRect rect, const NSColor& color, int operation) {
    const AttribScope attributes(gl, shapeState);
    SetCompositedModeGL(operation, 1);
    setColor(gl, color);
    gl.rectf(rect.origin.x, rect.origin.y, rect.origin.x + rect.size.width, rect.origin.y + rect.size.height);
    reportOpenGLError(gl);
}

void drawFrame(OpenGLCommands& gl, NSRect rect, float overlap, const NSColor& color, float lineWidth) {
    const float left = rect.origin.x;
    const float bottom = rect.origin.y;
    const float right = left + rect.size.width;
    const float top = bottom + rect.size.height;
    const AttribScope attributes(gl, shapeState);
    setLineState(gl, color, lineWidth);
    blendByAlpha(gl);
    gl.begin(Primitive::Lines);
    gl.vertex2f(left - overlap, bottom);
    gl.vertex2f(right + overlap, bottom);
    gl.vertex2f(right, bottom - overlap);
    gl.vertex2f(right, top + overlap);
    gl.vertex2f(right + overlap, top);
    gl.vertex2f(left - overlap, top);
    gl.vertex2f(left, top + overlap);
    gl.vertex2f(left, bottom - overlap);
    gl.end();
    reportOpenGLError(gl);
}

void drawOutlines(OpenGLCommands& gl, const PointLists& outlines, Primitive primitive, const NSColor& color,
                  float lineWidth) {
    const AttribScope attributes(gl, shapeState);
    setLineState(gl, color, lineWidth);
    blendByAlpha(gl);
    for (const std::vector<NSPoint>& outline : outlines) {
        gl.begin(primitive);
        for (const NSPoint point : outline) gl.vertex2f(point.x, point.y);
        gl.end();
        reportOpenGLError(gl);
    }
}

} // namespace Imaging
