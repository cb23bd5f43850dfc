#include "Platform/Graphics/Color.h"
#include "Platform/Graphics/BezierPath.h"

#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

void expectComponents(const NSColor& color, float red, float green, float blue, float alpha) {
    EXPECT_EQ(color.redComponent(), red);
    EXPECT_EQ(color.greenComponent(), green);
    EXPECT_EQ(color.blueComponent(), blue);
    EXPECT_EQ(color.alphaComponent(), alpha);
}

/// One pixel filled with a colour.
Rgba painted(const NSColor& color) {
    Canvas canvas(1, 1);
    color.set();
    NSRectFill(NSMakeRect(0, 0, 1, 1));
    return canvas.pixels().at(0, 0);
}

} // namespace

TEST(Color, IsOpaqueBlackFromTheStart) { expectComponents(NSColor(), 0, 0, 0, 1); }

TEST(Color, KeepsItsComponentsNotPremultiplied) {
    expectComponents(NSColor::colorWithCalibratedRed(0.1F, 0.2F, 0.3F, 0.4F), 0.1F, 0.2F, 0.3F, 0.4F);
    expectComponents(NSColor::colorWithDeviceRed(0.5F, 0.6F, 0.7F, 0.8F), 0.5F, 0.6F, 0.7F, 0.8F);
    expectComponents(NSColor::colorWithCalibratedWhite(0.25F, 0.5F), 0.25F, 0.25F, 0.25F, 0.5F);
}

TEST(Color, NamesThreeColours) {
    expectComponents(NSColor::blackColor(), 0, 0, 0, 1);
    expectComponents(NSColor::whiteColor(), 1, 1, 1, 1);
    expectComponents(NSColor::clearColor(), 0, 0, 0, 0);
}

TEST(Color, AnotherAlphaReplacesItsOwn) {
    const NSColor color = NSColor::colorWithCalibratedRed(0.1F, 0.2F, 0.3F, 0.4F);
    expectComponents(color.colorWithAlphaComponent(0.9F), 0.1F, 0.2F, 0.3F, 0.9F);
    expectComponents(color, 0.1F, 0.2F, 0.3F, 0.4F);
}

TEST(Color, MixesAFractionOfAnotherColourIntoIt) {
    const NSColor color = NSColor::colorWithCalibratedRed(0, 1, 0.5F, 0.25F);
    const NSColor other = NSColor::colorWithCalibratedRed(1, 0, 0.75F, 0.75F);
    expectComponents(color.blendedColorWithFraction(0.25F, other), 0.25F, 0.75F, 0.5625F, 0.375F);
    expectComponents(other.blendedColorWithFraction(0.25F, color), 0.75F, 0.25F, 0.6875F, 0.625F);
    expectComponents(color, 0, 1, 0.5F, 0.25F);
}

TEST(Color, MixesNothingAndAllOfAnotherColourExactly) {
    const NSColor color = NSColor::colorWithCalibratedRed(0.1F, 0.2F, 0.3F, 0.4F);
    const NSColor other = NSColor::colorWithCalibratedRed(0.9F, 0.7F, 0.6F, 0.8F);
    EXPECT_TRUE(color.blendedColorWithFraction(0, other).isEqual(color));
    EXPECT_TRUE(color.blendedColorWithFraction(1, other).isEqual(other));
}

TEST(Color, MixesInDoubleAndRoundsOnce) {
    // (1 - 2^-24) · (1 + 2^-23) + 2^-24 = 1 + 2^-23 - 2^-47; in floats the product would already be 1, and
    // the sum too.
    const float above = std::nextafter(1.0F, 2.0F);
    const NSColor mixed = NSColor::colorWithCalibratedWhite(above, 1).blendedColorWithFraction(
        std::ldexp(1.0F, -24), NSColor::whiteColor());
    EXPECT_EQ(mixed.redComponent(), above);
}

TEST(Color, FractionsBeyondTheRangeContinueTheLine) {
    const NSColor color = NSColor::colorWithCalibratedWhite(0.5F, 1);
    const NSColor other = NSColor::colorWithCalibratedWhite(1, 0);
    expectComponents(color.blendedColorWithFraction(2, other), 1.5F, 1.5F, 1.5F, -1);
    expectComponents(color.blendedColorWithFraction(-1, other), 0, 0, 0, 2);
}

TEST(Color, IsEqualWhenEveryComponentIs) {
    const NSColor color = NSColor::colorWithCalibratedRed(0.1F, 0.2F, 0.3F, 0.4F);
    EXPECT_TRUE(color.isEqual(NSColor::colorWithDeviceRed(0.1F, 0.2F, 0.3F, 0.4F)));
    EXPECT_FALSE(color.isEqual(NSColor::colorWithCalibratedRed(0.2F, 0.2F, 0.3F, 0.4F)));
    EXPECT_FALSE(color.isEqual(NSColor::colorWithCalibratedRed(0.1F, 0.3F, 0.3F, 0.4F)));
    EXPECT_FALSE(color.isEqual(NSColor::colorWithCalibratedRed(0.1F, 0.2F, 0.4F, 0.4F)));
    EXPECT_FALSE(color.isEqual(NSColor::colorWithCalibratedRed(0.1F, 0.2F, 0.3F, 0.5F)));
}

TEST(Color, IsPremultipliedWhenItIsDrawnWith) {
    EXPECT_EQ(painted(NSColor::colorWithCalibratedRed(1, 0.5F, 0, 0.4F)), (Rgba{102, 51, 0, 102}));
    EXPECT_EQ(painted(NSColor::whiteColor()), white);
    EXPECT_EQ(painted(NSColor::clearColor()), transparent);
}

TEST(Color, ComponentsBeyondTheRangeAreKeptAndClampedInDrawing) {
    const NSColor color = NSColor::colorWithCalibratedRed(2, -1, 0.2F, 3);
    expectComponents(color, 2, -1, 0.2F, 3);
    EXPECT_EQ(painted(color), (Rgba{255, 0, 51, 255}));
    constexpr float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(painted(NSColor::colorWithCalibratedRed(infinity, -infinity, 1, 1)), (Rgba{255, 0, 255, 255}));
}

TEST(Color, ComponentsThatAreNoNumbersAreDrawnAsZero) {
    EXPECT_EQ(painted(NSColor::colorWithCalibratedRed(std::nanf(""), 1, 0, 1)), green);
    EXPECT_EQ(painted(NSColor::colorWithCalibratedWhite(1, std::nanf(""))), transparent);
}

TEST(Color, SettingItWithoutAContextDoesNothing) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    NSColor::whiteColor().set();
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(Color, IsTheContextsFillAndStrokeColourUntilTheStateIsRestored) {
    Canvas canvas(4, 4, black);
    NSColor::whiteColor().set();
    canvas.context().saveGraphicsState();
    NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
    NSRectFill(NSMakeRect(0, 0, 1, 4));
    NSBezierPath line;
    line.moveToPoint({1.5F, 0});
    line.lineToPoint({1.5F, 4});
    line.stroke();
    canvas.context().restoreGraphicsState();
    NSRectFill(NSMakeRect(2, 0, 1, 4));
    const Grid shown = canvas.pixels();
    EXPECT_EQ(shown.at(0, 2), red);
    EXPECT_EQ(shown.at(1, 2), red);
    EXPECT_EQ(shown.at(2, 2), white);
    EXPECT_EQ(shown.at(3, 2), black);
}
