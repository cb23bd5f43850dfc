// Products are formed in double and rounded once, when a vertex is.

#include "Platform/OpenGL/Programmable/MatrixStacks.h"

#include <cmath>
#include <numbers>

namespace Imaging::Platform {

using OpenGL::MatrixMode;

TransformMatrix product(const TransformMatrix& left, const TransformMatrix& right) {
    TransformMatrix result{};
    for (std::size_t column = 0; column < 4; ++column) {
        for (std::size_t row = 0; row < 4; ++row) {
            double sum = 0;
            for (std::size_t k = 0; k < 4; ++k) sum += left[4 * k + row] * right[4 * column + k];
            result[4 * column + row] = sum;
        }
    }
    return result;
}

TransformMatrix orthoMatrix(double left, double right, double bottom, double top, double near, double far) {
    TransformMatrix matrix = scaleMatrix(2 / (right - left), 2 / (top - bottom), -2 / (far - near));
    matrix[12] = -(right + left) / (right - left);
    matrix[13] = -(top + bottom) / (top - bottom);
    matrix[14] = -(far + near) / (far - near);
    return matrix;
}

TransformMatrix frustumMatrix(double left, double right, double bottom, double top, double near, double far) {
    TransformMatrix matrix{};
    matrix[0] = 2 * near / (right - left);
    matrix[5] = 2 * near / (top - bottom);
    matrix[8] = (right + left) / (right - left);
    matrix[9] = (top + bottom) / (top - bottom);
    matrix[10] = -(far + near) / (far - near);
    matrix[11] = -1;
    matrix[14] = -2 * far * near / (far - near);
    return matrix;
}

TransformMatrix translationMatrix(double x, double y, double z) {
    TransformMatrix matrix = identityMatrix;
    matrix[12] = x;
    matrix[13] = y;
    matrix[14] = z;
    return matrix;
}

TransformMatrix scaleMatrix(double x, double y, double z) {
    TransformMatrix matrix = identityMatrix;
    matrix[0] = x;
    matrix[5] = y;
    matrix[10] = z;
    return matrix;
}

TransformMatrix rotationMatrix(double degrees, double x, double y, double z) {
    const double length = std::sqrt(x * x + y * y + z * z);
    if (!(length > 0)) return identityMatrix;
    x /= length;
    y /= length;
    z /= length;
    const double angle = degrees * std::numbers::pi / 180;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double rest = 1 - c;
    return {x * x * rest + c,
            y * x * rest + z * s,
            x * z * rest - y * s,
            0,
            x * y * rest - z * s,
            y * y * rest + c,
            y * z * rest + x * s,
            0,
            x * z * rest + y * s,
            y * z * rest - x * s,
            z * z * rest + c,
            0,
            0,
            0,
            0,
            1};
}

MatrixStacks::MatrixStacks()
    : m_model_view{identityMatrix}, m_projection{identityMatrix}, m_both(identityMatrix) {}

std::vector<TransformMatrix>& MatrixStacks::stack(MatrixMode mode) {
    return mode == MatrixMode::ModelView ? m_model_view : m_projection;
}

void MatrixStacks::setCurrent(MatrixMode mode, const TransformMatrix& matrix) {
    stack(mode).back() = matrix;
    m_both_is_old = true;
}

void MatrixStacks::multiply(MatrixMode mode, const TransformMatrix& matrix) {
    setCurrent(mode, product(stack(mode).back(), matrix));
}

bool MatrixStacks::push(MatrixMode mode) {
    std::vector<TransformMatrix>& entries = stack(mode);
    if (entries.size() == (mode == MatrixMode::ModelView ? modelViewDepth : projectionDepth)) return false;
    entries.push_back(TransformMatrix(entries.back()));
    return true;
}

bool MatrixStacks::pop(MatrixMode mode) {
    std::vector<TransformMatrix>& entries = stack(mode);
    if (entries.size() == 1) return false;
    entries.pop_back();
    m_both_is_old = true;
    return true;
}

std::array<double, 4> MatrixStacks::toClipSpace(double x, double y, double z) const {
    if (m_both_is_old) m_both = product(m_projection.back(), m_model_view.back());
    m_both_is_old = false;
    std::array<double, 4> point{};
    for (std::size_t row = 0; row < 4; ++row) {
        point[row] = m_both[row] * x + m_both[4 + row] * y + m_both[8 + row] * z + m_both[12 + row];
    }
    return point;
}

} // namespace Imaging::Platform
