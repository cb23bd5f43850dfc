// The commands for contexts with fixed function: each is OpenGL's own of that name, and the context keeps
// the state.

#include "Platform/OpenGL/Compatibility/CompatibilityCommands.h"

#include <epoxy/gl.h>

namespace Imaging::Platform {

using namespace OpenGL;

CompatibilityCommands::~CompatibilityCommands() = default;

// Immediate mode

void CompatibilityCommands::begin(Primitive primitive) { glBegin(static_cast<GLenum>(primitive)); }
void CompatibilityCommands::end() { glEnd(); }
void CompatibilityCommands::vertex2f(float x, float y) { glVertex2f(x, y); }
void CompatibilityCommands::vertex3f(float x, float y, float z) { glVertex3f(x, y, z); }
void CompatibilityCommands::texCoord2f(float s, float t) { glTexCoord2f(s, t); }
void CompatibilityCommands::color4f(float red, float green, float blue, float alpha) {
    glColor4f(red, green, blue, alpha);
}
void CompatibilityCommands::rectf(float x1, float y1, float x2, float y2) { glRectf(x1, y1, x2, y2); }

// Matrix stacks

void CompatibilityCommands::matrixMode(MatrixMode mode) { glMatrixMode(static_cast<GLenum>(mode)); }
void CompatibilityCommands::loadIdentity() { glLoadIdentity(); }
void CompatibilityCommands::ortho(double left, double right, double bottom, double top, double near,
                                  double far) {
    glOrtho(left, right, bottom, top, near, far);
}
void CompatibilityCommands::frustum(double left, double right, double bottom, double top, double near,
                                    double far) {
    glFrustum(left, right, bottom, top, near, far);
}
void CompatibilityCommands::translatef(float x, float y, float z) { glTranslatef(x, y, z); }
void CompatibilityCommands::scalef(float x, float y, float z) { glScalef(x, y, z); }
void CompatibilityCommands::rotatef(float degrees, float x, float y, float z) { glRotatef(degrees, x, y, z); }
void CompatibilityCommands::multMatrixf(const Matrix& matrix) { glMultMatrixf(matrix.data()); }
void CompatibilityCommands::pushMatrix() { glPushMatrix(); }
void CompatibilityCommands::popMatrix() { glPopMatrix(); }

// Attributes and capabilities

void CompatibilityCommands::pushAttrib(AttribBits bits) { glPushAttrib(static_cast<GLbitfield>(bits)); }
void CompatibilityCommands::popAttrib() { glPopAttrib(); }
void CompatibilityCommands::enable(Capability capability) { glEnable(static_cast<GLenum>(capability)); }
void CompatibilityCommands::disable(Capability capability) { glDisable(static_cast<GLenum>(capability)); }
bool CompatibilityCommands::isEnabled(Capability capability) {
    return glIsEnabled(static_cast<GLenum>(capability)) == GL_TRUE;
}
void CompatibilityCommands::lineWidth(float width) { glLineWidth(width); }
void CompatibilityCommands::hint(HintTarget target, HintMode mode) {
    glHint(static_cast<GLenum>(target), static_cast<GLenum>(mode));
}
void CompatibilityCommands::texEnvi(TexEnvMode mode) {
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, static_cast<GLint>(mode));
}

} // namespace Imaging::Platform
