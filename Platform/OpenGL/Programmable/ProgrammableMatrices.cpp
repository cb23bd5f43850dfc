// Matrix stacks. Vertices are transformed when they are given, so no matrix ends a batch.

#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

#include <algorithm>

namespace Imaging::Platform {

using namespace OpenGL;

void ProgrammableCommands::matrixMode(MatrixMode mode) {
    if (isOutsideBegin()) m_state.matrixMode = mode;
}

void ProgrammableCommands::loadIdentity() {
    if (isOutsideBegin()) m_matrices.setCurrent(m_state.matrixMode, identityMatrix);
}

void ProgrammableCommands::ortho(double left, double right, double bottom, double top, double near,
                                 double far) {
    if (!isOutsideBegin()) return;
    if (left == right || bottom == top || near == far) return noteError(Error::InvalidValue);
    m_matrices.multiply(m_state.matrixMode, orthoMatrix(left, right, bottom, top, near, far));
}

void ProgrammableCommands::frustum(double left, double right, double bottom, double top, double near,
                                   double far) {
    if (!isOutsideBegin()) return;
    const bool isFlat = left == right || bottom == top || near == far;
    if (isFlat || near <= 0 || far <= 0) return noteError(Error::InvalidValue);
    m_matrices.multiply(m_state.matrixMode, frustumMatrix(left, right, bottom, top, near, far));
}

void ProgrammableCommands::translatef(float x, float y, float z) {
    if (isOutsideBegin()) m_matrices.multiply(m_state.matrixMode, translationMatrix(x, y, z));
}

void ProgrammableCommands::scalef(float x, float y, float z) {
    if (isOutsideBegin()) m_matrices.multiply(m_state.matrixMode, scaleMatrix(x, y, z));
}

void ProgrammableCommands::rotatef(float degrees, float x, float y, float z) {
    if (isOutsideBegin()) m_matrices.multiply(m_state.matrixMode, rotationMatrix(degrees, x, y, z));
}

void ProgrammableCommands::multMatrixf(const Matrix& matrix) {
    if (!isOutsideBegin()) return;
    TransformMatrix wide{};
    std::copy(matrix.begin(), matrix.end(), wide.begin());
    m_matrices.multiply(m_state.matrixMode, wide);
}

void ProgrammableCommands::pushMatrix() {
    if (isOutsideBegin() && !m_matrices.push(m_state.matrixMode)) noteError(Error::StackOverflow);
}

void ProgrammableCommands::popMatrix() {
    if (isOutsideBegin() && !m_matrices.pop(m_state.matrixMode)) noteError(Error::StackUnderflow);
}

} // namespace Imaging::Platform
