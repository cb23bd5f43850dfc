// The product of 4 × 4 matrices, each entry summed up in one order, so that results are the same everywhere.

#include "Imaging/Matrix4.h"

#include <cstddef>

namespace Imaging {

Matrix4 MultiplyMatrix4(const Matrix4& a, const Matrix4& b) {
    Matrix4 product;
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            float sum = 0; // in floats on purpose: curves are defined by these roundings
            for (std::size_t k = 0; k < 4; ++k) sum += a.elements[4 * row + k] * b.elements[4 * k + column];
            product.elements[4 * row + column] = sum;
        }
    }
    return product;
}

} // namespace Imaging
