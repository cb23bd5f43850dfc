#pragma once

#include "Platform/Foundation/Export.h"

#include <array>

namespace Imaging {

/// Four rows of four 32-bit floats; the entry of a row and a column stands at elements[4 * row + column]. A
/// plain value; a new one is all zeros.
///
/// Example:
/// @code
/// const Matrix4 twice{{2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1}};
/// const Matrix4 fourTimes = MultiplyMatrix4(twice, twice);
/// const float scale = fourTimes.elements[0]; // 4
/// @endcode
struct Matrix4 {
    std::array<float, 16> elements{};
};

/// The matrix that leaves the other factor of a product as it is.
inline constexpr Matrix4 identityMatrix4{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

/// The product a · b: its entry of row i and column j is the sum over k of a's (i, k) times b's (k, j),
/// formed in 32-bit floats with k rising from 0. Products that overflow or are not numbers go through
/// unchecked. Any thread.
IMAGING_EXPORT Matrix4 MultiplyMatrix4(const Matrix4& a, const Matrix4& b);

} // namespace Imaging
