// Products of 32-bit floats are exact in double precision, so every entry is rounded only once, at the end.

#include "Platform/Foundation/AffineTransform.h"

#include "Platform/Foundation/Exception.h"

#include <cmath>
#include <numbers>

namespace Imaging::Platform {

namespace {

/// The transform that applies `first` and then `second`.
NSAffineTransformStruct product(const NSAffineTransformStruct& first, const NSAffineTransformStruct& second) {
    const auto sum = [](double a, double b, double c, double d, double e) {
        return static_cast<float>(a * b + c * d + e);
    };
    NSAffineTransformStruct r;
    r.m11 = sum(first.m11, second.m11, first.m12, second.m21, 0);
    r.m12 = sum(first.m11, second.m12, first.m12, second.m22, 0);
    r.m21 = sum(first.m21, second.m11, first.m22, second.m21, 0);
    r.m22 = sum(first.m21, second.m12, first.m22, second.m22, 0);
    r.tX = sum(first.tX, second.m11, first.tY, second.m21, second.tX);
    r.tY = sum(first.tX, second.m12, first.tY, second.m22, second.tY);
    return r;
}

/// In double, where the products of floats are exact and their difference rounds once.
double determinant(const NSAffineTransformStruct& m) {
    return static_cast<double>(m.m11) * m.m22 - static_cast<double>(m.m12) * m.m21;
}

} // namespace

void NSAffineTransform::translateXBy(float deltaX, float deltaY) {
    prependTransform(NSAffineTransform({1, 0, 0, 1, deltaX, deltaY}));
}

void NSAffineTransform::scaleXBy(float scaleX, float scaleY) {
    // The product with a transform that only scales, whose other terms are 0.
    m_entries.m11 *= scaleX;
    m_entries.m12 *= scaleX;
    m_entries.m21 *= scaleY;
    m_entries.m22 *= scaleY;
}

void NSAffineTransform::rotateByDegrees(float angle) {
    // Angles of many turns are brought to one before they lose digits in radians.
    const double turn = std::fmod(static_cast<double>(angle), 360.0);
    if (std::fmod(turn, 90.0) == 0.0) {
        static constexpr double sines[] = {0, 1, 0, -1};
        const int quarter = (static_cast<int>(turn / 90.0) + 4) % 4;
        rotateBySineAndCosine(sines[quarter], sines[(quarter + 1) % 4]);
        return;
    }
    const double radians = turn * (std::numbers::pi / 180.0);
    rotateBySineAndCosine(std::sin(radians), std::cos(radians));
}

void NSAffineTransform::rotateByRadians(float angle) {
    rotateBySineAndCosine(std::sin(static_cast<double>(angle)), std::cos(static_cast<double>(angle)));
}

void NSAffineTransform::rotateBySineAndCosine(double sine, double cosine) {
    // The product with a rotation, without rounding the rotation itself to floats first.
    const NSAffineTransformStruct m = m_entries;
    m_entries.m11 = static_cast<float>(cosine * m.m11 + sine * m.m21);
    m_entries.m12 = static_cast<float>(cosine * m.m12 + sine * m.m22);
    m_entries.m21 = static_cast<float>(cosine * m.m21 - sine * m.m11);
    m_entries.m22 = static_cast<float>(cosine * m.m22 - sine * m.m12);
}

void NSAffineTransform::prependTransform(const NSAffineTransform& transform) {
    m_entries = product(transform.m_entries, m_entries);
}

void NSAffineTransform::appendTransform(const NSAffineTransform& transform) {
    m_entries = product(m_entries, transform.m_entries);
}

bool NSAffineTransform::isInvertible() const {
    const double det = determinant(m_entries);
    return det != 0.0 && std::isfinite(det) && std::isfinite(m_entries.tX) && std::isfinite(m_entries.tY);
}

void NSAffineTransform::invert() {
    if (!isInvertible()) throw NSException(NSGenericException, "the affine transform has no inverse");
    const NSAffineTransformStruct m = m_entries;
    const double det = determinant(m);
    // The entries stay doubles until the translation, which is made of them, is computed too.
    const double m11 = m.m22 / det;
    const double m12 = -m.m12 / det;
    const double m21 = -m.m21 / det;
    const double m22 = m.m11 / det;
    m_entries = {static_cast<float>(m11),
                 static_cast<float>(m12),
                 static_cast<float>(m21),
                 static_cast<float>(m22),
                 static_cast<float>(-(m.tX * m11 + m.tY * m21)),
                 static_cast<float>(-(m.tX * m12 + m.tY * m22))};
}

NSPoint NSAffineTransform::transformPoint(NSPoint point) const {
    const double x = point.x;
    const double y = point.y;
    return {static_cast<float>(m_entries.m11 * x + m_entries.m21 * y + m_entries.tX),
            static_cast<float>(m_entries.m12 * x + m_entries.m22 * y + m_entries.tY)};
}

NSSize NSAffineTransform::transformSize(NSSize size) const {
    const double width = size.width;
    const double height = size.height;
    return {static_cast<float>(m_entries.m11 * width + m_entries.m21 * height),
            static_cast<float>(m_entries.m12 * width + m_entries.m22 * height)};
}

bool NSAffineTransform::isEqual(const NSAffineTransform& other) const {
    const NSAffineTransformStruct& a = m_entries;
    const NSAffineTransformStruct& b = other.m_entries;
    return a.m11 == b.m11 && a.m12 == b.m12 && a.m21 == b.m21 && a.m22 == b.m22 && a.tX == b.tX &&
           a.tY == b.tY;
}

} // namespace Imaging::Platform
