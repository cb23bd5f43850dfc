#include "Imaging/GraphicsUtilities.h"

#include "Platform/Foundation/Resources.h"
#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/Text.h"
#include "Tests/Imaging/ImagingTestSupport.h"
#include "Tests/Support/Ink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

using namespace ImagingTests;
using Imaging::DrawFocusRingInside;
using Imaging::DrawFrameInside;
using Imaging::HintTextInFrame;
using Imaging::Platform::NSColor;
using Pixels::Canvas;
using Pixels::Ink;
using Pixels::inkOf;
using Pixels::Random;
using Pixels::transparent;

namespace {

struct GraphicsUtilities : testing::Test {
    ~GraphicsUtilities() override { Imaging::Platform::setAppearance(m_appearance); }

    static void setFocusColor(const NSColor& color) {
        Imaging::Platform::Appearance changed = Imaging::Platform::appearance();
        changed.keyboardFocusIndicator = color;
        Imaging::Platform::setAppearance(changed);
    }

private:
    Imaging::Platform::Appearance m_appearance = Imaging::Platform::appearance();
};

template<class Body>
Grid over(const Grid& ground, const Body& body) {
    Canvas canvas(ground);
    body();
    return canvas.pixels();
}

/// A piece of the frame as it is in its file.
Grid piece(const std::string& name) {
    const auto picture = NSImage::imageWithContentsOfFile(Imaging::Platform::pathForImageResource(name));
    if (picture == nullptr) throw std::runtime_error(name + " cannot be read");
    return Pixels::shownBy(*picture, static_cast<int>(picture->size().width),
                           static_cast<int>(picture->size().height));
}

/// A piece over whole pixels of the grid: in its own size, or one row or column of it repeated.
void lay(Grid& grid, const Grid& piece, int x, int y, int width, int height) {
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const Rgba pixel =
                piece.above(std::min(column, piece.width() - 1), std::min(row, piece.height() - 1));
            Rgba& there = grid.at(x + column, grid.height() - 1 - y - row);
            there = Pixels::rounded(
                Pixels::composed(Imaging::Platform::NSCompositeSourceOver, pixel, there, 1, 1));
        }
    }
}

/// The frame by plain arithmetic, for a rectangle of whole pixels that is larger than its corners, which are
/// all of one size.
Grid framed(Grid grid, int x, int y, int w, int h) {
    const int c = piece("box_topleft").width();
    lay(grid, piece("box_topleft"), x, y + h - c, c, c);
    lay(grid, piece("box_top"), x + c, y + h - c, w - 2 * c, c);
    lay(grid, piece("box_topright"), x + w - c, y + h - c, c, c);
    lay(grid, piece("box_bottomleft"), x, y, c, c);
    lay(grid, piece("box_left"), x, y + c, c, h - 2 * c);
    lay(grid, piece("box_middle"), x + c, y + c, w - 2 * c, h - 2 * c);
    lay(grid, piece("box_right"), x + w - c, y + c, c, h - 2 * c);
    lay(grid, piece("box_bottom"), x + c, y, w - 2 * c, c);
    lay(grid, piece("box_bottomright"), x + w - c, y, c, c);
    return grid;
}

Ink inkOfHint(NSRect rect, const std::string& text, int width, int height) {
    return inkOf(over(Grid(width, height), [&] { HintTextInFrame(rect, text); }));
}

} // namespace

TEST_F(GraphicsUtilities, FramesWithCornersInTheirSizeAndStretchedEdges) {
    for (const Rgba ground : {Pixels::white, Rgba{128, 128, 128, 255}, Pixels::black, transparent}) {
        const Grid before(90, 70, ground);
        const Grid grid = over(before, [] { DrawFrameInside(NSMakeRect(7, 5, 61, 53)); });
        EXPECT_TRUE(areAlike(grid, framed(before, 7, 5, 61, 53), 1)) << ground;
        EXPECT_FALSE(areAlike(grid, before, 5)) << "the frame shows on " << ground;
    }
    const Grid mixed = Random(321).grid(90, 70);
    const Grid grid = over(mixed, [] { DrawFrameInside(NSMakeRect(11, 3, 60, 47)); });
    EXPECT_TRUE(areAlike(grid, framed(mixed, 11, 3, 60, 47), 1));
}

TEST_F(GraphicsUtilities, FramesWithoutSeamsAlsoOnFinerScreens) {
    const NSAffineTransform finer({2, 0, 0, 2, 0, 0});
    const Grid grid = over(Grid(160, 140, Pixels::white), [&] {
        Imaging::Platform::NSGraphicsContext::currentContext()->concat(finer);
        DrawFrameInside(NSMakeRect(6, 5, 60, 50));
    });
    // From the middle outwards both ways, each row and column of an edge is the same as the one before.
    for (int y = 10; y < 110; ++y) {
        for (int x = 12 + 24; x < 132 - 24; ++x) {
            ASSERT_LE(Pixels::difference(grid.above(x, y), grid.above(x - 1, y)), 8) << x << ", " << y;
        }
    }
    for (int x = 12; x < 132; ++x) {
        for (int y = 10 + 24; y < 110 - 24; ++y) {
            ASSERT_LE(Pixels::difference(grid.above(x, y), grid.above(x, y - 1)), 8) << x << ", " << y;
        }
    }
}

TEST_F(GraphicsUtilities, FramesSmallerThanTheirCornersWithNothingBetweenThem) {
    const int c = piece("box_topleft").width();
    for (const int size : {1, c, 2 * c - 1, 2 * c}) {
        const auto side = static_cast<float>(size);
        const Grid grid = over(Grid(60, 60), [&] { DrawFrameInside(NSMakeRect(20, 20, side, side)); });
        Grid expected(60, 60);
        lay(expected, piece("box_topleft"), 20, 20 + size - c, c, c);
        lay(expected, piece("box_topright"), 20 + size - c, 20 + size - c, c, c);
        lay(expected, piece("box_bottomleft"), 20, 20, c, c);
        lay(expected, piece("box_bottomright"), 20 + size - c, 20, c, c);
        EXPECT_TRUE(areAlike(grid, expected, 1)) << size;
    }
}

TEST_F(GraphicsUtilities, FramesNarrowRectanglesWithTheSidesThatHaveASize) {
    const int c = piece("box_topleft").width();
    // Too narrow for the upper and lower edge and the middle, high enough for the left and right one.
    const Grid grid = over(Grid(60, 60), [&] { DrawFrameInside(NSMakeRect(20, 5, 10, 40)); });
    Grid expected(60, 60);
    lay(expected, piece("box_topleft"), 20, 45 - c, c, c);
    lay(expected, piece("box_topright"), 30 - c, 45 - c, c, c);
    lay(expected, piece("box_bottomleft"), 20, 5, c, c);
    lay(expected, piece("box_left"), 20, 5 + c, c, 40 - 2 * c);
    lay(expected, piece("box_right"), 30 - c, 5 + c, c, 40 - 2 * c);
    lay(expected, piece("box_bottomright"), 30 - c, 5, c, c);
    EXPECT_TRUE(areAlike(grid, expected, 1));
}

TEST_F(GraphicsUtilities, FramesDrawTheCornersOfEmptyAndNegativeRectanglesOnly) {
    const Grid empty = over(Grid(60, 60), [] { DrawFrameInside(NSMakeRect(20, 20, 0, 0)); });
    EXPECT_EQ(inkOf(empty).width(), 2 * piece("box_topleft").width()) << "around the point";
    EXPECT_NO_THROW(over(Grid(60, 60), [] { DrawFrameInside(NSMakeRect(40, 40, -30, -20)); }));
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(
        inkOf(over(Grid(60, 60), [&] { DrawFrameInside(NSMakeRect(nothing, nothing, 5, 5)); })).isEmpty());
}

TEST_F(GraphicsUtilities, FramesTheFocusRingEightInside) {
    setFocusColor(NSColor::colorWithCalibratedRed(0, 0, 1, 0.2F));
    const Grid ground = Random(322).grid(60, 50);
    const Grid grid = over(ground, [] { DrawFocusRingInside(NSMakeRect(3, 5, 50, 40)); });
    Grid expected = ground;
    for (int y = 13; y < 37; ++y) {
        for (int x = 11; x < 45; ++x) {
            const bool isInside = x >= 13 && x < 43 && y >= 15 && y < 35;
            if (!isInside) expected.at(x, 49 - y) = {0, 0, 51, 51}; // replaced, alpha too
        }
    }
    EXPECT_TRUE(areAlike(grid, expected));
}

TEST_F(GraphicsUtilities, FillsAFocusRingThatHasNoRoomInside) {
    setFocusColor(NSColor::colorWithCalibratedRed(0, 0, 1, 1));
    const Grid small = over(Grid(60, 50), [] { DrawFocusRingInside(NSMakeRect(3, 5, 19, 20)); });
    const Ink ink = inkOf(small); // 3 x 4, all of it
    EXPECT_EQ(ink.count, 12) << ink;
    EXPECT_EQ(ink.left, 11);
    EXPECT_EQ(ink.bottom, 13);
    EXPECT_TRUE(inkOf(over(Grid(60, 50), [] { DrawFocusRingInside(NSMakeRect(3, 5, 15, 15)); })).isEmpty());
}

TEST_F(GraphicsUtilities, LeaveTheColourAsItWas) {
    Canvas canvas(60, 50);
    const NSColor color = NSColor::colorWithCalibratedRed(0.25F, 0.5F, 1, 0.5F);
    canvas.context().setColor(color);
    DrawFrameInside(NSMakeRect(3, 5, 50, 40));
    DrawFocusRingInside(NSMakeRect(3, 5, 50, 40));
    HintTextInFrame(NSMakeRect(3, 5, 50, 40), "hint");
    EXPECT_TRUE(canvas.context().color().isEqual(color));
    EXPECT_EQ(canvas.context().savedStateCount(), 0U);
}

TEST_F(GraphicsUtilities, DrawNothingWithoutACurrentContext) {
    ASSERT_EQ(Imaging::Platform::NSGraphicsContext::currentContext(), nullptr);
    EXPECT_NO_THROW(DrawFrameInside(NSMakeRect(3, 5, 50, 40)));
    EXPECT_NO_THROW(DrawFocusRingInside(NSMakeRect(3, 5, 50, 40)));
    EXPECT_NO_THROW(HintTextInFrame(NSMakeRect(3, 5, 50, 40), "hint"));
}

TEST_F(GraphicsUtilities, PutTheMiddleOfTheHintIntoTheMiddleOfTheRectangle) {
    const std::string text = "HHHHHH";
    const auto size =
        Imaging::Platform::sizeOfText(text, Imaging::Platform::NSFont::boldSystemFontOfSize(18));
    for (const NSPoint corner : {NSMakePoint(11, 7), NSMakePoint(40, 25)}) {
        const Ink ink = inkOfHint({corner, NSMakeSize(150, 61)}, text, 240, 120);
        EXPECT_NEAR(ink.middleX(), corner.x + 75, 1.5) << ink;
        EXPECT_NEAR(ink.middleY(), corner.y + 30.5, size.height / 4)
            << "lines are higher than letters" << ink;
        EXPECT_NEAR(ink.width(), size.width, 5) << ink;
    }
}

TEST_F(GraphicsUtilities, DrawTheHintAtTheMidpointLessHalfItsSize) {
    const auto font = Imaging::Platform::NSFont::boldSystemFontOfSize(18);
    const std::string text = "A hint,\nsecond line";
    const auto size = Imaging::Platform::sizeOfText(text, font);
    const NSRect rect = NSMakeRect(13, 9, 180, 70);
    const Grid expected = over(Grid(220, 100), [&] {
        Imaging::Platform::drawTextAtPoint(
            text, font, NSColor::colorWithCalibratedWhite(2.0F / 3, 1),
            NSMakePoint(13 + 180 / 2.0F - size.width / 2, 9 + 70 / 2.0F - size.height / 2));
    });
    EXPECT_GT(inkOf(expected).count, 200);
    EXPECT_TRUE(areAlike(over(Grid(220, 100), [&] { HintTextInFrame(rect, text); }), expected));
}

TEST_F(GraphicsUtilities, WriteTheHintInLightGrayAndBold) {
    const Grid grid = over(Grid(220, 60), [] { HintTextInFrame(NSMakeRect(5, 5, 210, 50), "MMMMM"); });
    int full = 0;
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 220; ++x) {
            const Rgba p = grid.at(x, y);
            if (p.a != 255) continue;
            EXPECT_EQ(p, (Rgba{170, 170, 170, 255}));
            ++full;
        }
    }
    EXPECT_GT(full, 100);
    const auto regular = Imaging::Platform::NSFont::systemFontOfSize(18);
    const Grid thin = over(Grid(220, 60), [&] {
        Imaging::Platform::drawTextAtPoint("MMMMM", regular, NSColor::blackColor(), NSMakePoint(20, 20));
    });
    EXPECT_GT(inkOf(grid).count, inkOf(thin).count);
}

TEST_F(GraphicsUtilities, TakeTheHintsColourFromTheAppearance) {
    Imaging::Platform::Appearance changed = Imaging::Platform::appearance();
    changed.lightGray = NSColor::colorWithCalibratedRed(1, 0, 0, 1);
    Imaging::Platform::setAppearance(changed);
    const Grid grid = over(Grid(120, 60), [] { HintTextInFrame(NSMakeRect(5, 5, 110, 50), "MMM"); });
    int full = 0;
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 120; ++x) full += grid.at(x, y) == Pixels::red ? 1 : 0;
    }
    EXPECT_GT(full, 50);
}

TEST_F(GraphicsUtilities, LetAHintOverflowOnBothSidesEqually) {
    const NSRect rect = NSMakeRect(140, 40, 20, 5);
    const Ink ink = inkOfHint(rect, "HHHHHHHHHH", 300, 90);
    EXPECT_LT(ink.left, 140 - 20) << ink;
    EXPECT_GT(ink.right, 160 + 20) << ink;
    EXPECT_NEAR(140 - ink.left, ink.right - 160, 3) << ink;
    EXPECT_GT(ink.height(), 5) << "neither clipped nor wrapped: " << ink;
    EXPECT_LT(ink.height(), 20) << ink;
    const Ink nowhere = inkOfHint(NSMakeRect(150, 45, 0, 0), "HHHHHHHHHH", 300, 90);
    EXPECT_NEAR(nowhere.middleX(), 150, 1.5);
    EXPECT_GT(nowhere.count, 100);
}

TEST_F(GraphicsUtilities, DrawNothingForAnEmptyHint) {
    EXPECT_TRUE(inkOfHint(NSMakeRect(5, 5, 50, 40), "", 60, 50).isEmpty());
}

TEST_F(GraphicsUtilities, DrawHintsOfEveryScriptInTheMiddle) {
    const std::vector<std::string> hints{
        "\u0391\u03c6\u03ae\u03c3\u03c4\u03b5 \u03b5\u03b9\u03ba\u03cc\u03bd\u03b1",
        "\u041f\u0435\u0440\u0435\u0442\u0430\u0449\u0438\u0442\u0435",
        "\u0623\u0641\u0644\u062a \u0635\u0648\u0631\u0629",
        "\u05d2\u05e8\u05d5\u05e8 \u05ea\u05de\u05d5\u05e0\u05d4",
        "\u30d5\u30a1\u30a4\u30eb\u3092\u30c9\u30ed\u30c3\u30d7",
        "\u62d6\u653e\u56fe\u7247",
    };
    for (const std::string& hint : hints) {
        const Ink ink = inkOfHint(NSMakeRect(20, 10, 260, 60), hint, 300, 80);
        EXPECT_GT(ink.count, 40) << hint;
        EXPECT_NEAR(ink.middleX(), 150, 4) << hint << ": " << ink;
    }
}
