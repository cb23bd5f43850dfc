#include "Platform/OpenGL/Programmable/MatrixStacks.h"

#include <gtest/gtest.h>

#include <array>

using namespace Imaging::Platform;
using OpenGL::MatrixMode;

namespace {

void expectPoint(const MatrixStacks& stacks, std::array<double, 3> point, std::array<double, 4> expected) {
    const std::array<double, 4> actual = stacks.toClipSpace(point[0], point[1], point[2]);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(actual[i], expected[i], 1e-12) << "coordinate " << i;
}

} // namespace

TEST(MatrixStacks, BeginWithIdentities) { expectPoint(MatrixStacks(), {3, -4, 5}, {3, -4, 5, 1}); }

TEST(MatrixStacks, MultiplyFromTheRight) {
    MatrixStacks stacks;
    stacks.multiply(MatrixMode::ModelView, translationMatrix(10, 20, 30));
    stacks.multiply(MatrixMode::ModelView, scaleMatrix(2, 3, 4));
    expectPoint(stacks, {1, 1, 1}, {12, 23, 34, 1}); // scaled first
    stacks.multiply(MatrixMode::Projection, scaleMatrix(-1, 1, 1));
    expectPoint(stacks, {1, 1, 1}, {-12, 23, 34, 1}); // the projection last
}

TEST(MatrixStacks, TurnAnticlockwiseAboutAnAxisOfAnyLength) {
    MatrixStacks stacks;
    stacks.multiply(MatrixMode::ModelView, rotationMatrix(90, 0, 0, 7));
    expectPoint(stacks, {3, 1, 2}, {-1, 3, 2, 1});
    stacks.setCurrent(MatrixMode::ModelView, rotationMatrix(90, 0.5, 0, 0));
    expectPoint(stacks, {3, 1, 2}, {3, -2, 1, 1});
    stacks.setCurrent(MatrixMode::ModelView, rotationMatrix(-90, 0, 1, 0));
    expectPoint(stacks, {3, 1, 2}, {-2, 1, 3, 1});
    stacks.setCurrent(MatrixMode::ModelView, rotationMatrix(120, 1, 1, 1)); // x to y to z to x
    expectPoint(stacks, {3, 1, 2}, {2, 3, 1, 1});
    stacks.setCurrent(MatrixMode::ModelView, rotationMatrix(33, 0, 0, 0));
    expectPoint(stacks, {3, 1, 2}, {3, 1, 2, 1});
}

TEST(MatrixStacks, LayABoxIntoTheSquare) {
    MatrixStacks stacks;
    stacks.multiply(MatrixMode::Projection, orthoMatrix(10, 30, -5, 5, 1, 9));
    expectPoint(stacks, {10, -5, -1}, {-1, -1, -1, 1});
    expectPoint(stacks, {30, 5, -9}, {1, 1, 1, 1});
    expectPoint(stacks, {25, 0, -5}, {0.5, 0, 0, 1});
}

TEST(MatrixStacks, ShrinkWhatIsFartherFromTheEye) {
    MatrixStacks stacks;
    stacks.multiply(MatrixMode::ModelView, frustumMatrix(-1, 1, -1, 1, 3, 5));
    expectPoint(stacks, {1, -1, -3}, {3, -3, -3, 3}); // on the near plane: (1, −1, −1)
    expectPoint(stacks, {1, -1, -5}, {3, -3, 5, 5});  // on the far plane: (0.6, −0.6, 1)
}

TEST(MatrixStacks, PopWhatWasPushed) {
    MatrixStacks stacks;
    stacks.multiply(MatrixMode::ModelView, translationMatrix(1, 2, 3));
    ASSERT_TRUE(stacks.push(MatrixMode::ModelView));
    stacks.multiply(MatrixMode::ModelView, scaleMatrix(5, 5, 5));
    expectPoint(stacks, {1, 1, 1}, {6, 7, 8, 1});
    ASSERT_TRUE(stacks.pop(MatrixMode::ModelView));
    expectPoint(stacks, {1, 1, 1}, {2, 3, 4, 1});
    EXPECT_FALSE(stacks.pop(MatrixMode::ModelView));
    expectPoint(stacks, {1, 1, 1}, {2, 3, 4, 1});
}

TEST(MatrixStacks, HoldAsManyAsTheyPromise) {
    MatrixStacks stacks;
    for (std::size_t i = 1; i < MatrixStacks::modelViewDepth; ++i)
        ASSERT_TRUE(stacks.push(MatrixMode::ModelView));
    EXPECT_FALSE(stacks.push(MatrixMode::ModelView));
    for (std::size_t i = 1; i < MatrixStacks::projectionDepth; ++i)
        ASSERT_TRUE(stacks.push(MatrixMode::Projection));
    EXPECT_FALSE(stacks.push(MatrixMode::Projection));
}
