#pragma once

// Internal: affine maps of the plane in double precision, as the painter computes in them. Not installed.

#include <optional>

namespace Imaging::Platform {

/// Maps (x, y) to (xx·x + xy·y + x0, yx·x + yy·y + y0). The identity when it is new. A plain value.
struct Affine {
    double xx = 1;
    double yx = 0;
    double xy = 0;
    double yy = 1;
    double x0 = 0;
    double y0 = 0;

    static Affine translation(double x, double y) { return {1, 0, 0, 1, x, y}; }
    static Affine scaling(double x, double y) { return {x, 0, 0, y, 0, 0}; }

    /// This map and then another one. Every entry is a sum of products in double, from left to right.
    Affine then(const Affine& next) const;

    /// The map back; nullopt without one: a determinant that is 0 or not finite, or for a map along the axes
    /// a factor of 0. The entries of the inverse need not be finite.
    std::optional<Affine> inverse() const;

    bool isFinite() const;
};

} // namespace Imaging::Platform
