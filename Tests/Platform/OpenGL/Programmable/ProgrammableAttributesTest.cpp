// Blending, capabilities and the attribute stack in every kind of context.

#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

class Attributes : public InEveryContext {};

void fill(OpenGLCommands& commands, Rgba color) {
    commands.color4f(static_cast<float>(color.r) / 255, static_cast<float>(color.g) / 255,
                     static_cast<float>(color.b) / 255, static_cast<float>(color.a) / 255);
    commands.rectf(-1, -1, 1, 1);
}

/// A sample of what blending gives, by the formula of the operation on numbers from 0 to 1.
Rgba blended(Rgba source, Rgba target,
             const std::function<double(double s, double d, double sa, double da)>& formula) {
    const auto mix = [&](std::uint8_t s, std::uint8_t d) {
        const double value = formula(s / 255.0, d / 255.0, source.a / 255.0, target.a / 255.0);
        return static_cast<std::uint8_t>(std::lround(255 * std::min(value, 1.0)));
    };
    return {mix(source.r, target.r), mix(source.g, target.g), mix(source.b, target.b),
            mix(source.a, target.a)};
}

} // namespace

TEST_P(Attributes, BlendByTheirFactors) {
    struct Case {
        BlendFactor source;
        BlendFactor destination;
        double (*formula)(double s, double d, double sa, double da);
    };
    const Case cases[] = {
        {BlendFactor::One, BlendFactor::Zero, [](double s, double, double, double) { return s; }},
        {BlendFactor::One, BlendFactor::OneMinusSrcAlpha,
         [](double s, double d, double sa, double) { return s + d * (1 - sa); }},
        {BlendFactor::OneMinusDstAlpha, BlendFactor::One,
         [](double s, double d, double, double da) { return s * (1 - da) + d; }},
        {BlendFactor::SrcAlpha, BlendFactor::OneMinusSrcAlpha,
         [](double s, double d, double sa, double) { return s * sa + d * (1 - sa); }},
        {BlendFactor::ConstantAlpha, BlendFactor::One,
         [](double s, double d, double, double) { return s * 0.4 + d; }},
        {BlendFactor::DstAlpha, BlendFactor::Zero,
         [](double s, double, double, double da) { return s * da; }},
    };
    const Rgba target{60, 120, 20, 150};
    const Rgba source{90, 30, 100, 110};
    for (const Case& blend : cases) {
        OpenGLSurface surface(GetParam(), 3, 3);
        fill(surface.commands(), target);
        surface.commands().enable(Capability::Blend);
        surface.commands().blendColor(1, 1, 1, 0.4f);
        surface.commands().blendFunc(blend.source, blend.destination);
        fill(surface.commands(), source);
        EXPECT_TRUE(areAlike(surface.pixels(), Grid(3, 3, blended(source, target, blend.formula)), 1))
            << nameOf(blend.source) << ", " << nameOf(blend.destination);
    }
}

TEST_P(Attributes, AreOffInAFreshContext) {
    OpenGLSurface surface(GetParam(), 3, 3);
    for (const Capability capability : {Capability::LineSmooth, Capability::CullFace, Capability::DepthTest,
                                        Capability::Blend, Capability::Texture2D}) {
        EXPECT_FALSE(surface.commands().isEnabled(capability)) << nameOf(capability);
        surface.commands().enable(capability);
        EXPECT_TRUE(surface.commands().isEnabled(capability)) << nameOf(capability);
        surface.commands().disable(capability);
        EXPECT_FALSE(surface.commands().isEnabled(capability)) << nameOf(capability);
    }
}

TEST_P(Attributes, ComeBackWhenTheyArePopped) {
    OpenGLSurface surface(GetParam(), 3, 3);
    OpenGLCommands& commands = surface.commands();
    commands.color4f(0, 1, 0, 1);
    commands.enable(Capability::Blend);
    commands.blendFunc(BlendFactor::One, BlendFactor::Zero);
    commands.pushAttrib(AttribBits::Current | AttribBits::ColorBuffer | AttribBits::Transform);
    commands.color4f(1, 0, 0, 1);
    commands.blendFunc(BlendFactor::Zero, BlendFactor::One);
    commands.matrixMode(MatrixMode::Projection);
    commands.enable(Capability::CullFace);
    commands.popAttrib();
    commands.translatef(0, 0, 0); // of the modelview again
    commands.rectf(-1, -1, 1, 1);
    EXPECT_TRUE(commands.isEnabled(Capability::CullFace)) << "of a group that was not saved";
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(3, 3, green)));
    commands.pushAttrib(AttribBits::Enable);
    commands.disable(Capability::CullFace);
    commands.popAttrib();
    EXPECT_TRUE(commands.isEnabled(Capability::CullFace));
}

TEST_P(Attributes, SeparateWhatIsDrawnBeforeFromWhatIsDrawnAfter) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    commands.enable(Capability::Blend);
    commands.blendFunc(BlendFactor::One, BlendFactor::One);
    fill(commands, {100, 0, 0, 100});
    fill(commands, {50, 0, 0, 50});
    commands.pushAttrib(AttribBits::ColorBuffer);
    commands.disable(Capability::Blend);
    fill(commands, {10, 20, 30, 40});
    commands.popAttrib();
    fill(commands, {5, 5, 5, 5});
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(4, 4, {15, 25, 35, 45})));
}

TEST_P(Attributes, CullFacesButNeverLines) {
    OpenGLSurface surface(GetParam(), 8, 8);
    OpenGLCommands& commands = surface.commands();
    commands.enable(Capability::CullFace);
    commands.cullFace(CullFaceMode::Back);
    commands.color4f(1, 0, 0, 1);
    commands.rectf(1, -1, -1, 1); // clockwise: its back
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(8, 8)));
    commands.lineWidth(8);
    commands.begin(Primitive::Lines);
    commands.vertex2f(1, 0);
    commands.vertex2f(-1, 0);
    commands.vertex2f(-1, 0);
    commands.vertex2f(1, 0);
    commands.end();
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(8, 8, red)));
    commands.color4f(0, 1, 0, 1);
    commands.rectf(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(8, 8, green)));
    commands.cullFace(CullFaceMode::Front);
    commands.color4f(0, 0, 1, 1);
    commands.rectf(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(8, 8, green)));
}

TEST_P(Attributes, HideWhatIsBehind) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    commands.enable(Capability::DepthTest);
    commands.translatef(0, 0, -0.5f);
    commands.color4f(0, 1, 0, 1);
    commands.rectf(-1, -1, 1, 1);
    commands.translatef(0, 0, 0.75f);
    commands.color4f(1, 0, 0, 1);
    commands.rectf(-1, -1, 1, 1); // farther away
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(4, 4, green)));
    commands.clear(ClearBits::Depth);
    commands.rectf(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(4, 4, red)));
}

TEST_P(Attributes, RefuseALineWidthOfZeroAndStacksThatRunOver) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    commands.lineWidth(0);
    EXPECT_EQ(commands.getError(), Error::InvalidValue);
    commands.lineWidth(-2);
    EXPECT_EQ(commands.getError(), Error::InvalidValue);
    for (std::size_t i = 0; i < OpenGLCommands::attribStackDepth; ++i) commands.pushAttrib(AttribBits::Line);
    EXPECT_EQ(commands.getError(), Error::None);
    commands.pushAttrib(AttribBits::Line);
    EXPECT_EQ(commands.getError(), Error::StackOverflow);
    for (std::size_t i = 0; i < OpenGLCommands::attribStackDepth; ++i) commands.popAttrib();
    EXPECT_EQ(commands.getError(), Error::None);
}

INSTANTIATE_TEST_SUITE_P(Contexts, Attributes, everyProfile(), profileName);
