// Textures in every kind of context: drawing with them, and copying into them.

#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

#include "Tests/Platform/OpenGL/TextureFixtures.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

class Textures : public InEveryContext {};

} // namespace

TEST_P(Textures, DrawPixelForPixelTheirFirstRowAtTheBottom) {
    Random random(31);
    const Grid picture = random.grid(16, 8);
    OpenGLSurface surface(GetParam(), 16, 8);
    const Texture texture(surface.commands(), TextureTarget::Texture2D, picture);
    texture.draw(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), flipped(picture)));
}

TEST_P(Textures, OfAnySizeDrawPixelForPixel) {
    Random random(32);
    const Grid picture = random.grid(13, 7);
    OpenGLSurface surface(GetParam(), 13, 7);
    if (!surface.commands().facts().anyTextureSize) GTEST_SKIP() << "only powers of two here";
    const Texture texture(surface.commands(), TextureTarget::Texture2D, picture);
    texture.draw(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), flipped(picture)));
}

TEST_P(Textures, OnRectanglesAreAddressedInPixels) {
    Random random(33);
    const Grid picture = random.grid(11, 9);
    OpenGLSurface surface(GetParam(), 11, 9);
    if (!surface.commands().facts().rectangleTextures) {
        surface.commands().enable(Capability::TextureRectangle);
        EXPECT_EQ(surface.commands().getError(), Error::InvalidEnum);
        surface.commands().bindTexture(TextureTarget::Rectangle, 0);
        EXPECT_EQ(surface.commands().getError(), Error::InvalidEnum);
        return;
    }
    const Texture texture(surface.commands(), TextureTarget::Rectangle, picture);
    texture.draw(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), flipped(picture)));
}

TEST_P(Textures, MeetTheColourAsTheEnvironmentSays) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    const Texture texture(commands, TextureTarget::Texture2D, Grid(2, 2, {200, 100, 50, 255}));
    commands.color4f(0.5f, 0.5f, 0.5f, 0.5f);
    texture.draw(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(4, 4, {100, 50, 25, 128}), 1));
    commands.texEnvi(TexEnvMode::Replace);
    texture.draw(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(4, 4, {200, 100, 50, 255})));
}

TEST_P(Textures, MixNeighboursWhenTheyAreEnlarged) {
    OpenGLSurface surface(GetParam(), 8, 2);
    Grid picture(2, 1);
    picture.at(1, 0) = {255, 255, 255, 255};
    const Texture texture(surface.commands(), TextureTarget::Texture2D, picture, TexParameterValue::Linear);
    texture.draw(-1, -1, 1, 1);
    // Texel middles lie at 2 and 6 of 8 pixels; between them the share grows by a quarter each pixel.
    const double shares[] = {0, 0, 0.125, 0.375, 0.625, 0.875, 1, 1};
    Grid expected(8, 2);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 8; ++x) {
            const auto value = static_cast<std::uint8_t>(std::lround(255 * shares[x]));
            expected.at(x, y) = {value, value, value, value};
        }
    }
    EXPECT_TRUE(areAlike(surface.pixels(), expected, 1));
}

TEST_P(Textures, AreNotDrawnUnderTheNameZero) {
    OpenGLSurface surface(GetParam(), 3, 3);
    OpenGLCommands& commands = surface.commands();
    commands.enable(Capability::Texture2D);
    commands.bindTexture(TextureTarget::Texture2D, 0);
    commands.color4f(0, 1, 0, 1);
    commands.rectf(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(3, 3, green)));
}

TEST_P(Textures, ComeBackWithTheAttributes) {
    OpenGLSurface surface(GetParam(), 3, 3);
    OpenGLCommands& commands = surface.commands();
    const Texture texture(commands, TextureTarget::Texture2D, Grid(1, 1, red));
    const Texture other(commands, TextureTarget::Texture2D, Grid(1, 1, blue));
    commands.enable(Capability::Texture2D);
    commands.bindTexture(TextureTarget::Texture2D, texture.name());
    commands.pushAttrib(AttribBits::Texture);
    commands.texEnvi(TexEnvMode::Replace);
    commands.bindTexture(TextureTarget::Texture2D, other.name());
    commands.popAttrib();
    commands.color4f(1, 1, 1, 0.2f);
    commands.rectf(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(3, 3, {255, 0, 0, 51})));
}

TEST_P(Textures, TakeOnWhatIsInTheFrameBuffer) {
    Random random(34);
    const Grid picture = random.grid(12, 10);
    OpenGLSurface surface(GetParam(), 12, 10);
    OpenGLCommands& commands = surface.commands();
    Texture(commands, TextureTarget::Texture2D, flipped(picture)).draw(-1, -1, 1, 1);
    const Texture copy(commands, TextureTarget::Texture2D, Grid(8, 8, green));
    commands.bindTexture(TextureTarget::Texture2D, copy.name());
    commands.copyTexSubImage2D(TextureTarget::Texture2D, 1, 2, 3, 4, 6, 5);
    commands.clear(ClearBits::Color);
    commands.viewport(0, 0, 8, 8);
    copy.draw(-1, -1, 1, 1);
    Grid expected(8, 8, green);
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 6; ++x) expected.at(1 + x, 7 - (2 + y)) = picture.above(3 + x, 4 + y);
    }
    EXPECT_TRUE(areAlike(pixelsOf(commands, 8, 8), expected));
}

TEST_P(Textures, AreOpaqueCopiesOfAFrameBufferWithoutAlpha) {
    const std::array<std::uint32_t, 6> attributes{
        NSOpenGLPFAColorSize, 24, NSOpenGLPFAAlphaSize, 0, NSOpenGLPFAOpenGLProfile, GetParam()};
    std::vector<std::uint32_t> list(attributes.begin(), attributes.end());
    list.push_back(0);
    const auto context =
        NSOpenGLContext::contextWithFormat(NSOpenGLPixelFormat::pixelFormatWithAttributes(list));
    context->setView(std::make_shared<NSView>(NSMakeRect(0, 0, 4, 4)));
    ASSERT_TRUE(context->makeCurrentContext());
    OpenGLCommands& commands = OpenGLCommands::current();
    commands.clearColor(0.2f, 0.4f, 0.6f, 0.5f);
    commands.clear(ClearBits::Color);
    {
        const Texture copy(commands, TextureTarget::Texture2D, Grid(4, 4, {9, 9, 9, 9}));
        commands.bindTexture(TextureTarget::Texture2D, copy.name());
        commands.pixelStorei(PixelStore::UnpackRowLength, 100);
        commands.copyTexSubImage2D(TextureTarget::Texture2D, 0, 0, 0, 0, 4, 4);
        commands.pixelStorei(PixelStore::UnpackRowLength, 0);
        commands.enable(Capability::Blend);
        commands.blendFunc(BlendFactor::SrcAlpha, BlendFactor::Zero);
        copy.draw(-1, -1, 1, 1);
    }
    EXPECT_TRUE(areAlike(pixelsOf(commands, 4, 4), Grid(4, 4, {51, 102, 153, 255})));
    EXPECT_EQ(nameOf(commands.getError()), "GL_NO_ERROR");
    NSOpenGLContext::clearCurrentContext();
}

TEST_P(Textures, AreLetGoOfWhenTheyAreDeletedWhileBound) {
    OpenGLSurface surface(GetParam(), 3, 3);
    OpenGLCommands& commands = surface.commands();
    {
        const Texture texture(commands, TextureTarget::Texture2D, Grid(1, 1, red));
        texture.draw(-1, -1, 1, 1);
        commands.enable(Capability::Texture2D);
        commands.bindTexture(TextureTarget::Texture2D, texture.name());
    }
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(3, 3, red))) << "what was drawn before stays";
    commands.color4f(0, 0, 1, 1);
    commands.rectf(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(3, 3, blue)));
}

INSTANTIATE_TEST_SUITE_P(Contexts, Textures, everyProfile(), profileName);
