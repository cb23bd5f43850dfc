// The colours that the functions give at their ends, steps and middles, worked out from their formulas.

#include "Imaging/ColorFunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Imaging;

namespace {

testing::AssertionResult isColor(const NSColor& color, double red, double green, double blue, double alpha) {
    const double error =
        std::max({std::abs(color.redComponent() - red), std::abs(color.greenComponent() - green),
                  std::abs(color.blueComponent() - blue), std::abs(color.alphaComponent() - alpha)});
    if (error < 3e-7) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "the colour is (" << color.redComponent() << ", " << color.greenComponent() << ", "
           << color.blueComponent() << ", " << color.alphaComponent() << "), " << error << " away";
}

testing::AssertionResult isGray(const NSColor& color, double white) {
    return isColor(color, white, white, white, 1);
}

} // namespace

TEST(GrayColorFunction, IsWhiteAtBothEndsAndDarkestInTheMiddle) {
    const auto gray = ColorFunction::grayColorFunction();
    EXPECT_TRUE(gray->colorForParam(0).isEqual(NSColor::whiteColor()));
    EXPECT_TRUE(gray->colorForParam(1).isEqual(NSColor::whiteColor()));
    EXPECT_TRUE(gray->colorForParam(0.5F).isEqual(NSColor::colorWithCalibratedWhite(0.85F, 1)));
}

TEST(GrayColorFunction, IsLinearOnBothSides) {
    const auto gray = ColorFunction::grayColorFunction();
    EXPECT_TRUE(isGray(gray->colorForParam(0.25F), 0.925));
    EXPECT_TRUE(isGray(gray->colorForParam(0.75F), 0.925));
    EXPECT_TRUE(isGray(gray->colorForParam(0.1F), 0.97));
    EXPECT_TRUE(isGray(gray->colorForParam(2), 1.3)); // 1.5 · 2 · 0.15 + 0.85
}

TEST(AquaColorFunction, IsThePaleBlueAtZero) {
    const NSColor color = ColorFunction::aquaColorFunction()->colorForParam(0);
    EXPECT_EQ(color.redComponent(), 0.85490197F);
    EXPECT_EQ(color.greenComponent(), 1);
    EXPECT_EQ(color.blueComponent(), 1);
    EXPECT_EQ(color.alphaComponent(), 1);
}

TEST(AquaColorFunction, IsWhiteWithATwentiethOfTheBlueAtOne) {
    // 0.95 + 0.05 · (109, 167, 243) / 255
    EXPECT_TRUE(isColor(ColorFunction::aquaColorFunction()->colorForParam(1), 0.95 + 5.45 / 255,
                        0.95 + 8.35 / 255, 0.95 + 12.15 / 255, 1));
}

TEST(AquaColorFunction, IsTheBlendOfBothBluesDownToTheMiddle) {
    const auto aqua = ColorFunction::aquaColorFunction();
    // u = 0.5: three quarters of the blue and a quarter of the pale one.
    EXPECT_TRUE(isColor(aqua->colorForParam(0.5F), (109 * 0.75 + 218 * 0.25) / 255,
                        (167 * 0.75 + 255 * 0.25) / 255, (243 * 0.75 + 255 * 0.25) / 255, 1));
    // u = 0.75: 7 / 16 and 9 / 16.
    EXPECT_TRUE(isColor(aqua->colorForParam(0.25F), (109.0 * 7 + 218.0 * 9) / 16 / 255,
                        (167.0 * 7 + 255.0 * 9) / 16 / 255, (243.0 * 7 + 255.0 * 9) / 16 / 255, 1));
}

TEST(AquaColorFunction, FadesTowardWhiteAboveTheMiddle) {
    // u = 0.25: the base has 1 / 16 of the pale blue, and 2 · 0.25 · 0.95 + 0.05 = 0.525 of it is in white.
    const auto faded = [](double base) { return 1 - 0.525 + 0.525 * base / 255; };
    EXPECT_TRUE(isColor(ColorFunction::aquaColorFunction()->colorForParam(0.75F),
                        faded((109.0 * 15 + 218) / 16), faded((167.0 * 15 + 255) / 16),
                        faded((243.0 * 15 + 255) / 16), 1));
}

TEST(AquaColorFunction, HasNoColourForWhatIsNoNumber) {
    const NSColor color = ColorFunction::aquaColorFunction()->colorForParam(std::nanf(""));
    EXPECT_TRUE(std::isnan(color.redComponent()));
    EXPECT_TRUE(std::isnan(color.blueComponent()));
}

TEST(ColorColorFunction, IsTheColourItselfInTheMiddle) {
    const NSColor color = NSColor::colorWithCalibratedRed(0.2F, 0.4F, 0.6F, 0.8F);
    EXPECT_TRUE(ColorFunction::colorFunctionWithColor(color)->colorForParam(0.5F).isEqual(color));
}

TEST(ColorColorFunction, MixesWhiteInTowardBothEndsWithAStepInTheMiddle) {
    // Black shows the fraction: the result is 1 − f.
    const auto black = ColorFunction::colorFunctionWithColor(NSColor::blackColor());
    EXPECT_TRUE(isGray(black->colorForParam(1), 0.7));
    EXPECT_TRUE(isGray(black->colorForParam(0.75F), 0.4)); // f = 0.5 · 0.6 + 0.3
    EXPECT_TRUE(isGray(black->colorForParam(std::nextafter(0.5F, 1.0F)), 0.1));
    EXPECT_TRUE(isGray(black->colorForParam(0.5F), 0));
    EXPECT_TRUE(isGray(black->colorForParam(0.25F), 0.175)); // f = 1 − 0.5 · 0.35
    EXPECT_TRUE(isGray(black->colorForParam(0), 0.35));
}

TEST(ColorColorFunction, MixesAlphaLikeTheColours) {
    // f = 0.3 of (1, 0, 0.5, 0) and 0.7 of opaque white.
    const auto function =
        ColorFunction::colorFunctionWithColor(NSColor::colorWithCalibratedRed(1, 0, 0.5F, 0));
    EXPECT_TRUE(isColor(function->colorForParam(1), 1, 0.7, 0.85, 0.7));
}

TEST(ColorColorFunction, KeepsACopyOfTheColour) {
    NSColor color = NSColor::blackColor();
    const ColorColorFunction function(color);
    color = NSColor::whiteColor();
    EXPECT_TRUE(function.colorForParam(0.5F).isEqual(NSColor::blackColor()));
}

TEST(ColorFunction, MakesFunctionsOfEachKind) {
    const auto gray = ColorFunction::grayColorFunction();
    const auto aqua = ColorFunction::aquaColorFunction();
    const auto color = ColorFunction::colorFunctionWithColor(NSColor());
    EXPECT_NE(dynamic_cast<const GrayColorFunction*>(gray.get()), nullptr);
    EXPECT_NE(dynamic_cast<const AquaColorFunction*>(aqua.get()), nullptr);
    EXPECT_NE(dynamic_cast<const ColorColorFunction*>(color.get()), nullptr);
}
