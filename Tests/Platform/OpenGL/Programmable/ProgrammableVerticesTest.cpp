// Immediate mode in every kind of context: values by hand, and contexts against each other.

#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

class Vertices : public InEveryContext {};

/// One unit is one pixel, from the lower left.
void layPixels(OpenGLCommands& commands, int width, int height) {
    commands.matrixMode(MatrixMode::Projection);
    commands.loadIdentity();
    commands.ortho(0, width, 0, height, -1, 1);
    commands.matrixMode(MatrixMode::ModelView);
    commands.loadIdentity();
}

/// The mean difference of the pixels within two of a line, in 255ths.
double meanNearLine(const Grid& a, const Grid& b, NSPoint from, NSPoint to) {
    double sum = 0;
    int count = 0;
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const double dx = x + 0.5 - from.x;
            const double dy = y + 0.5 - from.y;
            const double along = (dx * (to.x - from.x) + dy * (to.y - from.y)) / length;
            const double across = (dx * (to.y - from.y) - dy * (to.x - from.x)) / length;
            if (std::abs(across) > 2 || along < -2 || along > length + 2) continue;
            sum += difference(a.above(x, y), b.above(x, y));
            ++count;
        }
    }
    return sum / count;
}

Grid drawnLine(NSOpenGLProfile profile, float width, NSPoint from, NSPoint to) {
    OpenGLSurface surface(profile, 60, 50);
    OpenGLCommands& commands = surface.commands();
    layPixels(commands, 60, 50);
    commands.enable(Capability::Blend);
    commands.enable(Capability::LineSmooth);
    commands.blendFunc(BlendFactor::SrcAlpha, BlendFactor::OneMinusSrcAlpha);
    commands.hint(HintTarget::LineSmooth, HintMode::Nicest);
    commands.lineWidth(width);
    commands.color4f(1, 1, 1, 1);
    commands.begin(Primitive::Lines);
    commands.vertex2f(from.x, from.y);
    commands.vertex2f(to.x, to.y);
    commands.end();
    return surface.pixels();
}

} // namespace

TEST_P(Vertices, FillARectangleOfWholePixelsExactly) {
    OpenGLSurface surface(GetParam(), 9, 7);
    layPixels(surface.commands(), 9, 7);
    surface.commands().color4f(1, 0.2f, 0, 0.6f);
    surface.commands().rectf(2, 1, 7, 4);
    Grid expected(9, 7);
    for (int y = 7 - 4; y < 7 - 1; ++y) {
        for (int x = 2; x < 7; ++x) expected.at(x, y) = {255, 51, 0, 153};
    }
    EXPECT_TRUE(areAlike(surface.pixels(), expected));
}

TEST_P(Vertices, DrawAPolygonAsAFanAlsoWhereItIsNotConvex) {
    OpenGLSurface surface(GetParam(), 8, 8);
    layPixels(surface.commands(), 8, 8);
    surface.commands().color4f(0, 1, 0, 1);
    // A hook whose fan from its first corner covers the triangle above the notch too.
    surface.commands().begin(Primitive::Polygon);
    const NSPoint corners[] = {{0, 0}, {8, 0}, {8, 8}, {6, 2}};
    for (const NSPoint& corner : corners) surface.commands().vertex2f(corner.x, corner.y);
    surface.commands().end();
    const Grid pixels = surface.pixels();
    EXPECT_EQ(pixels.above(7, 1), green);
    EXPECT_EQ(pixels.above(6, 5), green) << "right of the diagonal: in the first triangle of the fan";
    EXPECT_EQ(pixels.above(4, 3), green) << "outside the hook, but in its fan";
    EXPECT_EQ(pixels.above(1, 4), transparent);
}

TEST_P(Vertices, MixColoursBetweenVertices) {
    OpenGLSurface surface(GetParam(), 10, 4);
    layPixels(surface.commands(), 10, 4);
    surface.commands().begin(Primitive::Polygon);
    surface.commands().color4f(0, 0, 0, 1);
    surface.commands().vertex2f(0, 0);
    surface.commands().color4f(1, 0, 0, 1);
    surface.commands().vertex2f(10, 0);
    surface.commands().vertex2f(10, 4);
    surface.commands().color4f(0, 0, 0, 1);
    surface.commands().vertex2f(0, 4);
    surface.commands().end();
    Grid expected(10, 4);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 10; ++x) {
            expected.at(x, y) = {static_cast<std::uint8_t>(std::lround(25.5 * (x + 0.5))), 0, 0, 255};
        }
    }
    EXPECT_TRUE(areAlike(surface.pixels(), expected, 1));
}

TEST_P(Vertices, LimitColoursToWhatThereIs) {
    OpenGLSurface surface(GetParam(), 2, 2);
    surface.commands().color4f(7, -1, 0.4f, 2);
    surface.commands().rectf(-1, -1, 1, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(2, 2, {255, 0, 102, 255})));
}

TEST_P(Vertices, DrawLinesAsWideAsTheyAre) {
    OpenGLSurface surface(GetParam(), 12, 12);
    layPixels(surface.commands(), 12, 12);
    surface.commands().color4f(1, 0, 0, 1);
    surface.commands().lineWidth(4);
    surface.commands().begin(Primitive::Lines);
    surface.commands().vertex2f(2, 6);
    surface.commands().vertex2f(9, 6);
    surface.commands().end();
    Grid expected(12, 12);
    for (int y = 4; y < 8; ++y) {
        for (int x = 2; x < 9; ++x) expected.at(x, y) = red;
    }
    EXPECT_TRUE(areAlike(surface.pixels(), expected));
}

TEST_P(Vertices, DrawThinLoopsPixelByPixel) {
    OpenGLSurface surface(GetParam(), 10, 8);
    layPixels(surface.commands(), 10, 8);
    surface.commands().color4f(0, 0, 1, 1);
    surface.commands().begin(Primitive::LineLoop);
    const NSPoint corners[] = {{2.5f, 1.5f}, {7.5f, 1.5f}, {7.5f, 5.5f}, {2.5f, 5.5f}};
    for (const NSPoint& corner : corners) surface.commands().vertex2f(corner.x, corner.y);
    surface.commands().end();
    const Grid pixels = surface.pixels();
    for (int x = 3; x < 7; ++x) {
        EXPECT_EQ(pixels.above(x, 1), blue);
        EXPECT_EQ(pixels.above(x, 5), blue);
        EXPECT_EQ(pixels.above(x, 3), transparent);
    }
    EXPECT_EQ(pixels.above(2, 3), blue);
    EXPECT_EQ(pixels.above(7, 3), blue);
}

TEST_P(Vertices, CoverPixelsOfSmoothLinesInPart) {
    // Three wide about the middle of a pixel's row: that row and both neighbours whole, nothing beyond.
    const Grid whole = drawnLine(GetParam(), 3, {10, 20.5f}, {40, 20.5f});
    EXPECT_TRUE(difference(whole.above(25, 20), white) <= 1);
    EXPECT_TRUE(difference(whole.above(25, 21), white) <= 1);
    EXPECT_TRUE(difference(whole.above(25, 22), transparent) <= 1);
    // Three wide about the edge between two rows: those whole, half of the next two. Alpha is blended too.
    const Grid parts = drawnLine(GetParam(), 3, {10, 20}, {40, 20});
    EXPECT_TRUE(difference(parts.above(25, 20), white) <= 1);
    EXPECT_TRUE(difference(parts.above(25, 21), {128, 128, 128, 64}) <= 3) << parts.above(25, 21);
    EXPECT_TRUE(difference(parts.above(25, 22), transparent) <= 1);
}

TEST_P(Vertices, SmoothLinesAsFixedFunctionDoes) {
    const NSPoint ends[][2] = {{{7.3f, 8.1f}, {50.2f, 41.7f}},
                               {{10, 44}, {52, 40}},
                               {{30.5f, 4}, {22, 45}},
                               {{8, 25.5f}, {51, 25.5f}}};
    for (const auto& [from, to] : ends) {
        for (const float width : {1.0f, 2.0f, 5.5f}) {
            const Grid expected = drawnLine(NSOpenGLProfileVersionLegacy, width, from, to);
            const double mean = meanNearLine(drawnLine(GetParam(), width, from, to), expected, from, to);
            EXPECT_LE(mean, 2) << "width " << width << " from " << from.x << ", " << from.y;
        }
    }
}

TEST_P(Vertices, RefuseWhatIsNotAllowedBetweenBeginAndEnd) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    commands.begin(Primitive::Polygon);
    commands.blendFunc(BlendFactor::One, BlendFactor::One);
    commands.end();
    EXPECT_EQ(commands.getError(), Error::InvalidOperation);
    commands.begin(Primitive::Polygon);
    commands.begin(Primitive::Lines);
    commands.end();
    EXPECT_EQ(commands.getError(), Error::InvalidOperation);
    commands.end();
    EXPECT_EQ(commands.getError(), Error::InvalidOperation);
    commands.begin(Primitive::Polygon);
    commands.pushMatrix();
    commands.pushAttrib(AttribBits::Current);
    commands.rectf(0, 0, 1, 1);
    commands.end();
    EXPECT_EQ(commands.getError(), Error::InvalidOperation);
    EXPECT_EQ(commands.getError(), Error::None);
    commands.popMatrix();
    EXPECT_EQ(commands.getError(), Error::StackUnderflow);
    commands.popAttrib();
    EXPECT_EQ(commands.getError(), Error::StackUnderflow);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(4, 4)));
}

TEST_P(Vertices, DrawManyMoreThanABatchHolds) {
    OpenGLSurface surface(GetParam(), 128, 128);
    layPixels(surface.commands(), 128, 128);
    Grid expected(128, 128);
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 128; ++x) {
            const Rgba color{static_cast<std::uint8_t>(2 * x), static_cast<std::uint8_t>(2 * y), 0, 255};
            surface.commands().color4f(static_cast<float>(color.r) / 255, static_cast<float>(color.g) / 255,
                                       0, 1);
            surface.commands().rectf(static_cast<float>(x), static_cast<float>(y), static_cast<float>(x + 1),
                                     static_cast<float>(y + 1));
            expected.at(x, 127 - y) = color;
        }
    }
    EXPECT_TRUE(areAlike(surface.pixels(), expected));
}

INSTANTIATE_TEST_SUITE_P(Contexts, Vertices, everyProfile(), profileName);
