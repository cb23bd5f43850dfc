// Products of matrices, by hand, against plain sums, and with numbers that are none.

#include "Imaging/Matrix4.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>

using Imaging::identityMatrix4;
using Imaging::Matrix4;
using Imaging::MultiplyMatrix4;

namespace {

constexpr Matrix4 left{{1, 2, 3, 4, 5, 6, 7, 8, -1, -2, -3, -4, 0.5f, 0, 2, -8}};
constexpr Matrix4 right{{2, -1, 0, 3, 4, 1, -2, 0, 0, 7, 1, 5, -3, 2, 6, 1}};

Matrix4 randomMatrix(std::mt19937& random) {
    std::uniform_real_distribution<float> entry(-100, 100);
    Matrix4 matrix;
    for (float& value : matrix.elements) value = entry(random);
    return matrix;
}

} // namespace

TEST(Matrix4, IsZeroWhenNew) {
    for (const float value : Matrix4().elements) EXPECT_EQ(value, 0);
}

TEST(Matrix4, MultipliesRowsByColumns) {
    // First entry: 1 * 2 + 2 * 4 + 3 * 0 + 4 * -3; the others likewise.
    const Matrix4 expected{{-2, 30, 23, 22, 10, 66, 43, 58, 2, -30, -23, -22, 25, -2.5f, -46, 3.5f}};
    EXPECT_EQ(MultiplyMatrix4(left, right).elements, expected.elements);
}

TEST(Matrix4, KeepsTheOrderOfTheFactors) {
    // First entry: 2 * 1 - 1 * 5 + 0 * -1 + 3 * 0.5, of the second row: 4 * 1 + 1 * 5 - 2 * -1 + 0 * 0.5.
    const Matrix4 product = MultiplyMatrix4(right, left);
    EXPECT_EQ(product.elements[0], -1.5f);
    EXPECT_EQ(product.elements[4], 11);
    EXPECT_NE(product.elements, MultiplyMatrix4(left, right).elements);
}

TEST(Matrix4, StandsInRowMajorOrder) {
    // One entry in row 1, column 2 takes the factor's row 2 to row 1.
    Matrix4 single;
    single.elements[4 * 1 + 2] = 3;
    const Matrix4 expected{{0, 0, 0, 0, 0, 21, 3, 15, 0, 0, 0, 0, 0, 0, 0, 0}};
    EXPECT_EQ(MultiplyMatrix4(single, right).elements, expected.elements);
}

TEST(Matrix4, IsUnchangedByTheIdentityOnEitherSide) {
    EXPECT_EQ(MultiplyMatrix4(identityMatrix4, left).elements, left.elements);
    EXPECT_EQ(MultiplyMatrix4(left, identityMatrix4).elements, left.elements);
    std::mt19937 random(20261);
    const Matrix4 any = randomMatrix(random);
    EXPECT_EQ(MultiplyMatrix4(identityMatrix4, any).elements, any.elements);
    EXPECT_EQ(MultiplyMatrix4(any, identityMatrix4).elements, any.elements);
}

TEST(Matrix4, UndoesAProductByTheInverse) {
    // Unit triangular, so that the inverse is made of whole numbers.
    const Matrix4 matrix{{1, 0, 0, 0, 2, 1, 0, 0, 3, -4, 1, 0, 5, 6, -7, 1}};
    const Matrix4 inverse{{1, 0, 0, 0, -2, 1, 0, 0, -11, 4, 1, 0, -70, 22, 7, 1}};
    EXPECT_EQ(MultiplyMatrix4(matrix, inverse).elements, identityMatrix4.elements);
    EXPECT_EQ(MultiplyMatrix4(inverse, matrix).elements, identityMatrix4.elements);
    EXPECT_EQ(MultiplyMatrix4(MultiplyMatrix4(left, matrix), inverse).elements, left.elements);
}

TEST(Matrix4, SumsIn32BitFloatsFromTheFirstProductOn) {
    // 2^24 + 1 is 2^24 in floats, so that the ones before the large number goes away are lost.
    Matrix4 row;
    row.elements[0] = 16777216;
    row.elements[1] = 1;
    row.elements[2] = -16777216;
    row.elements[3] = 1;
    const Matrix4 ones{{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}};
    EXPECT_EQ(MultiplyMatrix4(row, ones).elements[0], 1);
}

TEST(Matrix4, AgreesWithSumsInDoubleOnRandomMatrices) {
    const std::uint32_t seed = 90125;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 200; ++round) {
        const Matrix4 a = randomMatrix(random);
        const Matrix4 b = randomMatrix(random);
        const Matrix4 product = MultiplyMatrix4(a, b);
        for (std::size_t i = 0; i < 4; ++i) {
            for (std::size_t j = 0; j < 4; ++j) {
                double sum = 0;
                double magnitude = 0;
                for (std::size_t k = 0; k < 4; ++k) {
                    const double term = static_cast<double>(a.elements[4 * i + k]) * b.elements[4 * k + j];
                    sum += term;
                    magnitude += std::fabs(term);
                }
                // Four products and three sums, each rounded by at most 2^-24 of the sizes met.
                ASSERT_NEAR(product.elements[4 * i + j], sum, 7 * magnitude / 16777216) << i << ", " << j;
            }
        }
    }
}

TEST(Matrix4, LetsInfinitiesAndMissingNumbersThrough) {
    Matrix4 infinite = identityMatrix4;
    infinite.elements[0] = std::numeric_limits<float>::infinity();
    const Matrix4 product = MultiplyMatrix4(infinite, right);
    EXPECT_EQ(product.elements[0], std::numeric_limits<float>::infinity());
    EXPECT_EQ(product.elements[1], -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(product.elements[2])) << "infinity times 0";
    EXPECT_EQ(product.elements[4], 4);
}
