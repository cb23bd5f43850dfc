#include "Platform/Graphics/Appearance.h"

#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

/// Gives back the appearance that was there before a test.
struct AppearanceTest : testing::Test {
    ~AppearanceTest() override { setAppearance(m_before); }

private:
    Appearance m_before = appearance();
};

} // namespace

TEST_F(AppearanceTest, StartsWithTheUsualColours) {
    const Appearance usual = appearance();
    EXPECT_TRUE(usual.darkGray.isEqual(NSColor::colorWithCalibratedWhite(1.0F / 3, 1)));
    EXPECT_TRUE(usual.lightGray.isEqual(NSColor::colorWithCalibratedWhite(2.0F / 3, 1)));
    EXPECT_TRUE(usual.purple.isEqual(NSColor::colorWithCalibratedRed(0.5F, 0, 0.5F, 1)));
    EXPECT_TRUE(usual.cyan.isEqual(NSColor::colorWithCalibratedRed(0, 1, 1, 1)));
    EXPECT_EQ(usual.windowBackground.alphaComponent(), 1);
    EXPECT_EQ(usual.keyboardFocusIndicator.alphaComponent(), 1);
    EXPECT_FALSE(usual.systemFontFamily.empty());
}

TEST_F(AppearanceTest, IsWhatTheApplicationSetLast) {
    Appearance changed = appearance();
    changed.purple = NSColor::colorWithCalibratedRed(0.25F, 0, 1, 0.5F);
    changed.systemFontFamily = "Serif";
    setAppearance(changed);
    EXPECT_TRUE(appearance().purple.isEqual(changed.purple));
    EXPECT_EQ(appearance().systemFontFamily, "Serif");
    EXPECT_TRUE(appearance().cyan.isEqual(changed.cyan));
}

TEST_F(AppearanceTest, OfTheWindowFillsItsBackgroundAndReplacesWhatIsThere) {
    Appearance changed = appearance();
    changed.windowBackground = NSColor::colorWithCalibratedRed(0, 0, 1, 0.2F);
    setAppearance(changed);
    Canvas canvas(Grid(12, 10, red));
    NSColor::colorWithCalibratedRed(0, 1, 0, 1).set();
    NSDrawWindowBackground(NSMakeRect(3, 2, 5, 4));
    Grid expected(12, 10, red);
    for (int y = 2; y < 6; ++y) {
        for (int x = 3; x < 8; ++x) expected.at(x, 9 - y) = {0, 0, 51, 51};
    }
    EXPECT_TRUE(areAlike(canvas.pixels(), expected));
    EXPECT_TRUE(canvas.context().color().isEqual(NSColor::colorWithCalibratedRed(0, 1, 0, 1)));
    EXPECT_EQ(canvas.context().savedStateCount(), 0U);
}

TEST_F(AppearanceTest, OfTheWindowIsDrawnNowhereWithoutAContext) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    EXPECT_NO_THROW(NSDrawWindowBackground(NSMakeRect(3, 2, 5, 4)));
}
