#include "Platform/OpenGL/Programmable/DrawState.h"

#include "Platform/OpenGL/OpenGLCommands.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;

namespace {

DrawState otherState() {
    DrawState state;
    for (const Capability capability :
         {Capability::LineSmooth, Capability::CullFace, Capability::DepthTest, Capability::Blend,
          Capability::Texture2D, Capability::TextureRectangle}) {
        state.capability(capability) = true;
    }
    state.color = {0.5f, 0.25f, 0, 1};
    state.texCoord = {3, 4};
    state.lineWidth = 7;
    state.matrixMode = MatrixMode::Projection;
    state.clearColor = {1, 1, 0, 1};
    state.render.cullFaceMode = CullFaceMode::Front;
    state.render.blendSource = BlendFactor::SrcAlpha;
    state.render.blendDestination = BlendFactor::One;
    state.render.blendColor = {1, 0, 1, 0};
    state.render.binding2D = 11;
    state.render.bindingRectangle = 12;
    state.render.texEnvMode = TexEnvMode::Replace;
    state.render.viewport = {1, 2, 3, 4};
    return state;
}

/// A fresh state is saved under `bits` and put back into another one.
DrawState restored(AttribBits bits) {
    AttribStack stack;
    EXPECT_TRUE(stack.push(bits, DrawState{}));
    DrawState state = otherState();
    EXPECT_TRUE(stack.pop(state));
    return state;
}

/// How many of the capabilities are still on.
int capabilitiesIn(DrawState state) {
    return int{state.lineSmooth} + int{state.render.cullFace} + int{state.render.depthTest} +
           int{state.render.blend} + int{state.render.texture2D} + int{state.render.textureRectangle};
}

} // namespace

TEST(AttribStack, BringsBackEachGroupAlone) {
    EXPECT_EQ(restored(AttribBits::Lighting).render, otherState().render);
    EXPECT_EQ(capabilitiesIn(restored(AttribBits::Lighting | AttribBits::Hint)), 6);

    DrawState state = restored(AttribBits::Current);
    EXPECT_EQ(state.color, DrawState{}.color);
    EXPECT_EQ(state.texCoord, DrawState{}.texCoord);
    EXPECT_EQ(state.lineWidth, 7);
    EXPECT_EQ(capabilitiesIn(state), 6);

    state = restored(AttribBits::Line);
    EXPECT_EQ(state.lineWidth, 1);
    EXPECT_FALSE(state.lineSmooth);
    EXPECT_EQ(capabilitiesIn(state), 5);
    EXPECT_EQ(state.color, otherState().color);

    state = restored(AttribBits::Polygon);
    EXPECT_FALSE(state.render.cullFace);
    EXPECT_EQ(state.render.cullFaceMode, CullFaceMode::Back);
    EXPECT_EQ(capabilitiesIn(state), 5);

    state = restored(AttribBits::DepthBuffer);
    EXPECT_FALSE(state.render.depthTest);
    EXPECT_EQ(capabilitiesIn(state), 5);

    EXPECT_EQ(restored(AttribBits::Viewport).render.viewport, DrawState{}.render.viewport);
    EXPECT_EQ(restored(AttribBits::Transform).matrixMode, MatrixMode::ModelView);
}

TEST(AttribStack, BringsBackBlendingAndTextures) {
    DrawState state = restored(AttribBits::ColorBuffer);
    EXPECT_FALSE(state.render.blend);
    EXPECT_EQ(state.render.blendSource, BlendFactor::One);
    EXPECT_EQ(state.render.blendDestination, BlendFactor::Zero);
    EXPECT_EQ(state.render.blendColor, DrawState{}.render.blendColor);
    EXPECT_EQ(state.clearColor, DrawState{}.clearColor);
    EXPECT_EQ(capabilitiesIn(state), 5);

    state = restored(AttribBits::Texture);
    EXPECT_FALSE(state.render.texture2D);
    EXPECT_FALSE(state.render.textureRectangle);
    EXPECT_EQ(state.render.binding2D, 0u);
    EXPECT_EQ(state.render.bindingRectangle, 0u);
    EXPECT_EQ(state.render.texEnvMode, TexEnvMode::Modulate);
    EXPECT_EQ(capabilitiesIn(state), 4);

    state = restored(AttribBits::Enable);
    EXPECT_EQ(capabilitiesIn(state), 0);
    EXPECT_EQ(state.render.binding2D, 11u);
    EXPECT_EQ(state.lineWidth, 7);
}

TEST(AttribStack, HoldsAsManyAsItPromises) {
    AttribStack stack;
    DrawState state = otherState();
    EXPECT_FALSE(stack.pop(state));
    EXPECT_EQ(state.lineWidth, 7);
    for (std::size_t i = 0; i < OpenGLCommands::attribStackDepth; ++i) {
        state.lineWidth = static_cast<float>(i);
        ASSERT_TRUE(stack.push(AttribBits::Line, state));
    }
    EXPECT_FALSE(stack.push(AttribBits::Line, state));
    for (std::size_t i = OpenGLCommands::attribStackDepth; i-- > 0;) {
        ASSERT_TRUE(stack.pop(state));
        EXPECT_EQ(state.lineWidth, static_cast<float>(i));
    }
}
