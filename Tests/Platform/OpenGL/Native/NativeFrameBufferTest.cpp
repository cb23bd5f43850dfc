// Also tests: Platform/OpenGL/Native/NativeCommands.cpp
// Also tests: Platform/OpenGL/Programmable/ProgrammableFrameBuffer.cpp

#include "Platform/OpenGL/Native/NativeCommands.h"

#include "Tests/Platform/OpenGL/TextureFixtures.h"

#include <gtest/gtest.h>

#include <array>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

class NativeFrameBuffer : public InEveryContext {};

} // namespace

TEST_P(NativeFrameBuffer, KeepsTheViewport) {
    OpenGLSurface surface(GetParam(), 10, 10);
    surface.commands().viewport(1, 2, 5, 6);
    EXPECT_EQ(surface.commands().getViewport(), (std::array{1, 2, 5, 6}));
    surface.commands().pushAttrib(AttribBits::Viewport);
    surface.commands().viewport(0, 0, 3, 3);
    surface.commands().popAttrib();
    EXPECT_EQ(surface.commands().getViewport(), (std::array{1, 2, 5, 6}));
    surface.commands().color4f(1, 0, 0, 1);
    surface.commands().rectf(-1, -1, 1, 1);
    Grid expected(10, 10);
    for (int y = 2; y < 8; ++y) {
        for (int x = 1; x < 6; ++x) expected.at(x, 9 - y) = red;
    }
    EXPECT_TRUE(areAlike(surface.pixels(), expected));
    surface.commands().viewport(0, 0, -1, 3);
    EXPECT_EQ(surface.commands().getError(), Error::InvalidValue);
}

TEST_P(NativeFrameBuffer, StaysInsideADrawableThatIsAPart) {
    OpenGLSurface surface(GetParam(), 12, 12);
    OpenGLCommands& commands = surface.commands();
    commands.clearColor(0, 1, 0, 1);
    commands.clear(ClearBits::Color);
    commands.setDrawable({3, 2, 6, 5, true});
    commands.viewport(0, 0, 6, 5);
    EXPECT_EQ(commands.getViewport(), (std::array{0, 0, 6, 5}));
    commands.clearColor(1, 0, 0, 1);
    commands.clear(ClearBits::Color);
    commands.color4f(0, 0, 1, 1);
    commands.rectf(-1, -1, 0, 1); // its left half
    EXPECT_EQ(pixelsOf(commands, 6, 5).above(0, 0), blue);
    EXPECT_EQ(pixelsOf(commands, 6, 5).above(5, 4), red);
    commands.setDrawable({0, 0, 12, 12, false});
    Grid expected(12, 12, green);
    for (int y = 2; y < 7; ++y) {
        for (int x = 3; x < 9; ++x) expected.at(x, 11 - y) = x < 6 ? blue : red;
    }
    EXPECT_TRUE(areAlike(surface.pixels(), expected));
}

TEST_P(NativeFrameBuffer, CopiesFromTheDrawablesCorner) {
    OpenGLSurface surface(GetParam(), 8, 8);
    OpenGLCommands& commands = surface.commands();
    Random random(51);
    const Grid picture = random.grid(8, 8);
    Texture(commands, TextureTarget::Texture2D, flipped(picture)).draw(-1, -1, 1, 1);
    const Texture copy(commands, TextureTarget::Texture2D, Grid(2, 2));
    commands.setDrawable({3, 4, 4, 4, true});
    commands.bindTexture(TextureTarget::Texture2D, copy.name());
    commands.copyTexSubImage2D(TextureTarget::Texture2D, 0, 0, 1, 0, 2, 2);
    commands.setDrawable({0, 0, 8, 8, false});
    commands.viewport(0, 0, 2, 2);
    copy.draw(-1, -1, 1, 1);
    const Grid pixels = pixelsOf(commands, 2, 2);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 2; ++x) EXPECT_EQ(pixels.above(x, y), picture.above(4 + x, 4 + y));
    }
}

TEST_P(NativeFrameBuffer, ReadsIntoRowsAsTheyAreSet) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    commands.clearColor(0, 1, 0, 1);
    commands.clear(ClearBits::Color);
    std::vector<Rgba> rows(6, {1, 2, 3, 4});
    commands.pixelStorei(PixelStore::PackRowLength, 3);
    commands.readPixels(1, 1, 2, 2, rows.data());
    commands.pixelStorei(PixelStore::PackRowLength, 0);
    EXPECT_EQ(rows, (std::vector<Rgba>{green, green, {1, 2, 3, 4}, green, green, {1, 2, 3, 4}}));
}

INSTANTIATE_TEST_SUITE_P(Contexts, NativeFrameBuffer, everyProfile(), profileName);
