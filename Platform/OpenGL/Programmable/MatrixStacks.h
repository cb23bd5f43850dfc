#pragma once

// Internal: the matrix stacks of fixed function. Not installed.

#include "Platform/OpenGL/OpenGLCommands.h"

#include <array>
#include <cstddef>
#include <vector>

namespace Imaging::Platform {

/// 16 numbers column by column, as in OpenGL. Products are formed in double, so that vertices are rounded to
/// float once, at the end.
using TransformMatrix = std::array<double, 16>;

inline constexpr TransformMatrix identityMatrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// left · right: `right` acts first on a point.
TransformMatrix product(const TransformMatrix& left, const TransformMatrix& right);

/// The matrices of the commands of the same names, as OpenGL's reference gives them. Nothing checks the
/// arguments.
TransformMatrix orthoMatrix(double left, double right, double bottom, double top, double near, double far);
TransformMatrix frustumMatrix(double left, double right, double bottom, double top, double near, double far);
TransformMatrix translationMatrix(double x, double y, double z);
TransformMatrix scaleMatrix(double x, double y, double z);
/// About an axis of any length; the identity for one of none.
TransformMatrix rotationMatrix(double degrees, double x, double y, double z);

/// Both stacks, and what takes a point to clip space.
class MatrixStacks {
public:
    /// Entries of each stack.
    static constexpr std::size_t modelViewDepth = OpenGLCommands::modelViewStackDepth;
    static constexpr std::size_t projectionDepth = 4;

    MatrixStacks();

    void setCurrent(OpenGL::MatrixMode mode, const TransformMatrix& matrix);
    void multiply(OpenGL::MatrixMode mode, const TransformMatrix& matrix);

    /// False at the limit, and for the last entry; nothing changes then.
    bool push(OpenGL::MatrixMode mode);
    bool pop(OpenGL::MatrixMode mode);

    /// projection · modelview · (x, y, z, 1)
    std::array<double, 4> toClipSpace(double x, double y, double z) const;

private:
    std::vector<TransformMatrix>& stack(OpenGL::MatrixMode mode);

    std::vector<TransformMatrix> m_model_view;
    std::vector<TransformMatrix> m_projection;
    mutable TransformMatrix m_both;
    mutable bool m_both_is_old = true;
};

} // namespace Imaging::Platform
