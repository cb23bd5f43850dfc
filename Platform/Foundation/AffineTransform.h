#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

namespace Imaging::Platform {

/// The six entries of an affine transform. A point (x, y) maps to
/// (m11·x + m21·y + tX, m12·x + m22·y + tY).
struct NSAffineTransformStruct {
    float m11 = 1;
    float m12 = 0;
    float m21 = 0;
    float m22 = 1;
    float tX = 0;
    float tY = 0;
};

/// An affine transform of the plane, held in 32-bit floats. A new one is the identity.
///
/// Every changing call but `appendTransform` and `invert` prepends its step: the step that was added last
/// acts first on a point. Angles turn counter-clockwise in a space whose y axis points up. Products and
/// sums are formed in double precision and each entry is rounded once to a 32-bit float.
///
/// A plain value: copy it, share it through a pointer where sharing is wanted. No call locks anything.
///
/// Example:
/// @code
/// NSAffineTransform turn;
/// turn.rotateByDegrees(30);
/// if (turn.isInvertible()) turn.invert();
/// @endcode
class IMAGING_EXPORT NSAffineTransform {
public:
    NSAffineTransform() = default;
    explicit NSAffineTransform(const NSAffineTransformStruct& entries) : m_entries(entries) {}

    NSAffineTransformStruct transformStruct() const { return m_entries; }
    void setTransformStruct(const NSAffineTransformStruct& entries) { m_entries = entries; }

    void translateXBy(float deltaX, float deltaY);
    void scaleXBy(float scaleX, float scaleY);
    void scaleBy(float scale) { scaleXBy(scale, scale); }

    /// Turns by an angle in degrees. Sine and cosine are computed in double precision; multiples of 90
    /// degrees have the exact entries 0, 1 and -1. An angle that is not finite gives entries that are not
    /// numbers.
    void rotateByDegrees(float angle);
    void rotateByRadians(float angle);

    /// Afterwards a point is mapped by `transform` first and then by what this transform was before.
    void prependTransform(const NSAffineTransform& transform);

    /// Afterwards a point is mapped by what this transform was before and then by `transform`.
    void appendTransform(const NSAffineTransform& transform);

    /// True when the linear part has a finite determinant other than zero and all entries are finite.
    bool isInvertible() const;

    /// Replaces the transform by its inverse. Throws an NSException when it has none.
    void invert();

    NSPoint transformPoint(NSPoint point) const;

    /// Maps a vector: the linear part only, without the translation.
    NSSize transformSize(NSSize size) const;

    /// Equality by value, entry by entry: +0 equals -0, and a value that is not a number equals nothing.
    bool isEqual(const NSAffineTransform& other) const;

private:
    void rotateBySineAndCosine(double sine, double cosine);

    NSAffineTransformStruct m_entries;
};

} // namespace Imaging::Platform
