// The same scenes by fixed function and by shaders.

#include "Platform/OpenGL/Compatibility/CompatibilityCommands.h"

#include "Tests/Platform/OpenGL/TextureFixtures.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

constexpr int side = 64;

constexpr BlendFactor sources[] = {BlendFactor::One, BlendFactor::SrcAlpha, BlendFactor::OneMinusDstAlpha,
                                   BlendFactor::ConstantAlpha};
constexpr BlendFactor destinations[] = {BlendFactor::Zero, BlendFactor::One, BlendFactor::OneMinusSrcAlpha};

/// Polygons, rectangles and textures at random under random matrices, colours and blending. Everything stands
/// on pixel edges, so that no sample lies on an edge, where a driver may decide as it likes.
void drawScene(OpenGLCommands& commands, Random& random, const Texture& texture) {
    commands.matrixMode(MatrixMode::Projection);
    commands.ortho(0, side, 0, side, -1, 1);
    commands.matrixMode(MatrixMode::ModelView);
    for (int i = 0; i < 40; ++i) {
        commands.pushAttrib(AttribBits::Current | AttribBits::ColorBuffer | AttribBits::Texture);
        commands.pushMatrix();
        commands.translatef(static_cast<float>(random.integer(0, side)),
                            static_cast<float>(random.integer(0, side)), 0);
        commands.rotatef(static_cast<float>(90 * random.integer(0, 3)), 0, 0, 1);
        commands.scalef(static_cast<float>(random.integer(1, 40)), static_cast<float>(random.integer(1, 40)),
                        1);
        random.integer(0, 3) > 0 ? commands.enable(Capability::Blend) : commands.disable(Capability::Blend);
        commands.blendFunc(sources[random.integer(0, 3)], destinations[random.integer(0, 2)]);
        commands.blendColor(1, 1, 1, random.single(0, 1));
        commands.texEnvi(random.integer(0, 1) == 0 ? TexEnvMode::Modulate : TexEnvMode::Replace);
        const float red = random.single(0, 1);
        const float green = random.single(0, 1);
        const float blue = random.single(0, 1);
        commands.color4f(red, green, blue, random.single(0, 1));
        random.integer(0, 1) == 0 ? commands.rectf(0, 0, 1, 1) : texture.draw(0, 0, 1, 1);
        commands.popMatrix();
        commands.popAttrib();
    }
}

Grid sceneIn(NSOpenGLProfile profile, std::uint32_t seed) {
    Random random(seed);
    OpenGLSurface surface(profile, side, side);
    const Grid picture = random.grid(16, 16);
    const Texture texture(surface.commands(), TextureTarget::Texture2D, picture, TexParameterValue::Linear);
    drawScene(surface.commands(), random, texture);
    return surface.pixels();
}

} // namespace

TEST(CompatibilityCommands, DrawWhatShadersDraw) {
    for (std::uint32_t seed = 60; seed < 64; ++seed) {
        const Grid expected = sceneIn(NSOpenGLProfileVersionLegacy, seed);
        EXPECT_NE(expected, Grid(side, side)) << "the scene is empty";
        EXPECT_TRUE(areAlike(sceneIn(NSOpenGLProfileVersion3_2Core, seed), expected, 1)) << "core";
        EXPECT_TRUE(areAlike(sceneIn(NSOpenGLProfileVersionES3_0, seed), expected, 1)) << "ES";
    }
}
