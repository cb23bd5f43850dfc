// Matrix stacks in every kind of context.

#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

class Matrices : public InEveryContext {};

/// White where a rectangle of whole pixels is, from the lower left.
Grid whiteIn(int width, int height, int x, int y, int across, int up) {
    Grid grid(width, height);
    for (int row = y; row < y + up; ++row) {
        for (int column = x; column < x + across; ++column) grid.at(column, height - 1 - row) = white;
    }
    return grid;
}

} // namespace

TEST_P(Matrices, ActInTheOrderOfFixedFunction) {
    OpenGLSurface surface(GetParam(), 20, 10);
    OpenGLCommands& commands = surface.commands();
    commands.matrixMode(MatrixMode::Projection);
    commands.ortho(0, 20, 0, 10, -1, 1);
    commands.matrixMode(MatrixMode::ModelView);
    commands.translatef(12, 3, 0);
    commands.rotatef(90, 0, 0, 1);
    commands.scalef(2, 3, 1);
    commands.rectf(0, 0, 2, 1); // 4 up and 3 to the left of (12, 3)
    EXPECT_TRUE(areAlike(surface.pixels(), whiteIn(20, 10, 9, 3, 3, 4)));
}

TEST_P(Matrices, TakeSixteenNumbersColumnByColumn) {
    OpenGLSurface surface(GetParam(), 16, 16);
    OpenGLCommands& commands = surface.commands();
    commands.multMatrixf({0.25f, 0, 0, 0, 0, -0.5f, 0, 0, 0, 0, 1, 0, 0.5f, 0.25f, 0, 1});
    commands.rectf(-1, -1, 1, 1); // x from 0.25 to 0.75, y from −0.25 to 0.75
    EXPECT_TRUE(areAlike(surface.pixels(), whiteIn(16, 16, 10, 6, 4, 8)));
}

TEST_P(Matrices, ComeBackWhenTheyArePopped) {
    OpenGLSurface surface(GetParam(), 16, 16);
    OpenGLCommands& commands = surface.commands();
    commands.pushMatrix();
    commands.scalef(0, 0, 0);
    commands.popMatrix();
    commands.scalef(0.5f, 0.5f, 1);
    commands.pushMatrix();
    commands.loadIdentity();
    commands.popMatrix();
    commands.rectf(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), whiteIn(16, 16, 4, 4, 8, 8)));
}

TEST_P(Matrices, ShowDepthInPerspective) {
    OpenGLSurface surface(GetParam(), 40, 40);
    OpenGLCommands& commands = surface.commands();
    commands.frustum(-1, 1, -1, 1, 3, 5);
    commands.begin(Primitive::Polygon);
    // On the plane z = −4 three quarters of the size are left: from 20 − 15 to 20 + 15.
    commands.vertex3f(-1, -1, -4);
    commands.vertex3f(1, -1, -4);
    commands.vertex3f(1, 1, -4);
    commands.vertex3f(-1, 1, -4);
    commands.end();
    EXPECT_TRUE(areAlike(surface.pixels(), whiteIn(40, 40, 5, 5, 30, 30)));
}

TEST_P(Matrices, RunOverAndRunEmptyWithErrors) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    for (std::size_t i = 1; i < OpenGLCommands::modelViewStackDepth; ++i) commands.pushMatrix();
    EXPECT_EQ(commands.getError(), Error::None);
    for (std::size_t i = 1; i < OpenGLCommands::modelViewStackDepth; ++i) commands.popMatrix();
    EXPECT_EQ(commands.getError(), Error::None);
    commands.popMatrix();
    EXPECT_EQ(commands.getError(), Error::StackUnderflow);
    for (int i = 0; i < 200; ++i) commands.pushMatrix();
    EXPECT_EQ(commands.getError(), Error::StackOverflow);
    commands.ortho(1, 1, 0, 1, -1, 1);
    EXPECT_EQ(commands.getError(), Error::InvalidValue);
    commands.frustum(-1, 1, -1, 1, 0, 5);
    EXPECT_EQ(commands.getError(), Error::InvalidValue);
}

INSTANTIATE_TEST_SUITE_P(Contexts, Matrices, everyProfile(), profileName);
