#include "Platform/Graphics/Text.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Appearance.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"
#include "Tests/Support/Ink.h"

#include <gtest/gtest.h>

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

// Nothing here may depend on which fonts the machine has.

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

const std::string greek = "\u0395\u03bb\u03bb\u03b7\u03bd\u03b9\u03ba\u03ac";
const std::string cyrillic = "\u041a\u0438\u0440\u0438\u043b\u043b\u0438\u0446\u0430";
const std::string hebrew = "\u05e9\u05dc\u05d5\u05dd";
const std::string arabic = "\u0627\u0644\u0639\u0631\u0628\u064a\u0629";
const std::string devanagari = "\u0939\u093f\u0928\u094d\u0926\u0940";
const std::string chinese = "\u6f22\u5b57";
const std::string emoji = "\U0001F600\U0001F468\u200D\U0001F469\u200D\U0001F467";

NSFont plain(float size) { return NSFont::systemFontOfSize(size); }

Grid drawn(const std::string& text, const NSFont& font, NSPoint point, int width = 200, int height = 60,
           const NSColor& color = NSColor::blackColor()) {
    Canvas canvas(width, height);
    drawTextAtPoint(text, font, color, point);
    return canvas.pixels();
}

Ink inkOfText(const std::string& text, const NSFont& font, NSPoint point, int width = 200, int height = 60) {
    return inkOf(drawn(text, font, point, width, height));
}

cairo_status_t keepBytes(void* closure, const unsigned char* bytes, unsigned int count) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

/// What a document of one page with a text holds.
template<class MakeSurface>
std::string documentWithText(const MakeSurface& make, const std::string& text) {
    std::string bytes;
    const CairoSurface surface(make(keepBytes, &bytes, 200.0, 60.0));
    const CairoContext cairo(cairo_create(surface.get()));
    const auto previous = NSGraphicsContext::currentContext();
    NSGraphicsContext::setCurrentContext(NSGraphicsContext::graphicsContextWithCairo(cairo.get(), 60));
    drawTextAtPoint(text, plain(18), NSColor::blackColor(), NSMakePoint(11, 13));
    NSGraphicsContext::setCurrentContext(previous);
    EXPECT_EQ(cairo_status(cairo.get()), CAIRO_STATUS_SUCCESS);
    cairo_surface_finish(surface.get());
    return bytes;
}

/// Whether a pixel and those around it are all alike, so that no edge runs near.
bool isFarFromEdges(const Grid& grid, int x, int y) {
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            if (!grid.contains(x + dx, y + dy) || grid.above(x + dx, y + dy) != grid.above(x, y))
                return false;
        }
    }
    return true;
}

} // namespace

TEST(Font, KeepsWhatItWasMadeWith) {
    const NSFont font = NSFont::fontWithFamily("Some Family", 12.5F, NSFontWeight::Bold);
    EXPECT_EQ(font.family(), "Some Family");
    EXPECT_EQ(font.pointSize(), 12.5F);
    EXPECT_EQ(font.weight(), NSFontWeight::Bold);
    EXPECT_EQ(NSFont::fontWithFamily("Some Family", 1).weight(), NSFontWeight::Regular);
}

TEST(Font, OfTheSystemHasTheFamilyOfTheAppearance) {
    const Appearance before = appearance();
    Appearance changed = before;
    changed.systemFontFamily = "A Family, Another";
    setAppearance(changed);
    const NSFont regular = NSFont::systemFontOfSize(9);
    const NSFont bold = NSFont::boldSystemFontOfSize(18);
    setAppearance(before);
    EXPECT_EQ(regular.family(), "A Family, Another");
    EXPECT_EQ(regular.weight(), NSFontWeight::Regular);
    EXPECT_EQ(regular.pointSize(), 9);
    EXPECT_EQ(bold.family(), "A Family, Another");
    EXPECT_EQ(bold.weight(), NSFontWeight::Bold);
    EXPECT_EQ(bold.pointSize(), 18);
}

TEST(SizeOfText, IsProportionalToTheFontsSize) {
    const NSSize unit = sizeOfText("Hamburg, Ag", plain(100));
    ASSERT_GT(unit.width, 100);
    for (const float factor : {0.001F, 0.07F, 0.18F, 0.25F, 3.0F, 90.0F, 1e6F}) {
        const NSSize size = sizeOfText("Hamburg, Ag", plain(100 * factor));
        EXPECT_NEAR(size.width / factor, unit.width, 1e-3 * unit.width) << factor;
        EXPECT_NEAR(size.height / factor, unit.height, 1e-3 * unit.height) << factor;
    }
}

TEST(SizeOfText, IsTheSameWhateverTheContextIs) {
    const NSSize without = sizeOfText("Hamburg", plain(13));
    Canvas canvas(10, 10);
    canvas.context().concat(NSAffineTransform({3, 1, -1, 7, 20, 30}));
    EXPECT_TRUE(NSEqualSizes(sizeOfText("Hamburg", plain(13)), without));
}

TEST(SizeOfText, GrowsWithTheText) {
    const NSSize one = sizeOfText("W", plain(20));
    const NSSize two = sizeOfText("WW", plain(20));
    EXPECT_GT(one.width, 5);
    EXPECT_GT(two.width, 1.5F * one.width);
    EXPECT_EQ(one.height, two.height);
    EXPECT_GT(one.height, 15); // a line reaches from ascent to descent
    EXPECT_LT(one.height, 60);
}

TEST(SizeOfText, OfLinesIsTheLongestOnesWidthAndAllTheirHeights) {
    const NSSize longer = sizeOfText("WWWW", plain(17));
    const NSSize both = sizeOfText("i\nWWWW", plain(17));
    EXPECT_EQ(both.width, longer.width);
    EXPECT_NEAR(both.height, 2 * longer.height, 1e-3);
}

TEST(SizeOfText, TakesEveryKindOfLineBreakForOne) {
    const NSSize expected = sizeOfText("a\nb", plain(17));
    for (const char* text : {"a\rb", "a\r\nb", "a\u2028b", "a\u2029b"}) {
        EXPECT_TRUE(NSEqualSizes(sizeOfText(text, plain(17)), expected)) << text;
    }
    const float line = sizeOfText("a", plain(17)).height;
    EXPECT_NEAR(sizeOfText("a\n\n\nb", plain(17)).height, 4 * line, 1e-3) << "empty lines";
}

TEST(SizeOfText, NeverWrapsLongLines) {
    std::string words;
    for (int i = 0; i < 5000; ++i) words += "word ";
    const NSSize size = sizeOfText(words, plain(18));
    EXPECT_EQ(size.height, sizeOfText("word", plain(18)).height);
    EXPECT_NEAR(size.width, 5000 * sizeOfText("word word ", plain(18)).width / 2, 0.01F * size.width);
}

TEST(SizeOfText, IsZeroWithoutATextOrAUsableSize) {
    EXPECT_TRUE(NSEqualSizes(sizeOfText("", plain(18)), NSZeroSize));
    for (const float size : {0.0F, -18.0F, infinity, notANumber}) {
        EXPECT_TRUE(NSEqualSizes(sizeOfText("text", plain(size)), NSZeroSize)) << size;
    }
}

TEST(SizeOfText, CountsEachByteThatIsNoUTF8AsAReplacementCharacter) {
    const auto width = [](const std::string& text) { return sizeOfText(text, plain(30)).width; };
    EXPECT_EQ(width("a\xff"
                    "b"),
              width("a\ufffdb"));
    EXPECT_EQ(width("a\xc3"), width("a\ufffd")) << "cut off";
    EXPECT_EQ(width("\xed\xa0\x80"), width("\ufffd\ufffd\ufffd")) << "half a surrogate pair";
    EXPECT_EQ(width(std::string("a\0b", 3)), width("a\ufffdb")) << "a NUL does not end the text";
}

TEST(SizeOfText, RefusesMoreThanAMebibyte) {
    const std::string longest(1 << 20, 'i');
    EXPECT_GT(sizeOfText(longest, plain(18)).width, 1 << 20);
    try {
        sizeOfText(longest + "i", plain(18));
        FAIL() << "nothing thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), NSInvalidArgumentException);
    }
}

TEST(SizeOfText, WorksForFamiliesThatAreNotThere) {
    for (const char* family : {"No Such Family", "", ",", "\xff\xfe"}) {
        const NSSize size = sizeOfText("text", NSFont::fontWithFamily(family, 20));
        EXPECT_GT(size.width, 10) << family;
        EXPECT_GT(size.height, 10) << family;
    }
}

TEST(DrawText, InksTheRoomThatTheTextTakesFromItsLowerLeftCornerOn) {
    const NSSize size = sizeOfText("Hamburg", plain(24));
    const Ink ink = inkOfText("Hamburg", plain(24), NSMakePoint(31, 17));
    EXPECT_NEAR(ink.left, 31, 3);
    EXPECT_NEAR(ink.right, 31 + size.width, 3);
    EXPECT_GE(ink.bottom, 17 - 1);
    EXPECT_LE(ink.top, 17 + size.height + 1);
    EXPECT_GT(ink.height(), 24 / 2); // capitals and a descender
}

TEST(DrawText, StandsUpright) {
    const Grid grid = drawn("L", plain(40), NSMakePoint(20, 5));
    const Ink ink = inkOf(grid);
    ASSERT_GT(ink.height(), 15);
    const int low = inkOf(partOf(grid, ink.left, ink.bottom, ink.width(), ink.height() / 3)).width();
    const int high =
        inkOf(partOf(grid, ink.left, ink.top - ink.height() / 3, ink.width(), ink.height() / 3)).width();
    EXPECT_GT(low, high + 3) << "an L's foot is below";
    const Ink left = inkOf(partOf(grid, ink.left, ink.bottom, ink.width() / 2, ink.height()));
    const Ink right =
        inkOf(partOf(grid, ink.right - ink.width() / 2, ink.bottom, ink.width() / 2, ink.height()));
    EXPECT_GT(left.height(), right.height() + 5) << "and its stem on the left";
}

TEST(DrawText, PutsLinesBelowOneAnother) {
    const float line = sizeOfText("W", plain(20)).height;
    const auto middle = static_cast<int>(std::lround(10 + line));
    const Grid grid = drawn("WWW\n.", plain(20), NSMakePoint(13, 10), 100, 70);
    const Ink upper = inkOf(partOf(grid, 0, middle, 100, 70 - middle));
    const Ink lower = inkOf(partOf(grid, 0, 0, 100, middle));
    EXPECT_GT(upper.width(), 30) << upper;
    EXPECT_GT(lower.count, 0);
    EXPECT_LT(lower.width(), 10) << lower;
    EXPECT_LT(lower.left, 25) << "lines begin at the left";
}

TEST(DrawText, EndsRightToLeftLinesAtTheRight) {
    const std::string text = "WWWWWWWW\n" + hebrew.substr(0, 2);
    const NSSize size = sizeOfText(text, plain(20));
    const Grid grid = drawn(text, plain(20), NSMakePoint(11, 7));
    const Ink lower = inkOf(partOf(grid, 0, 0, 200, static_cast<int>(7 + size.height / 2)));
    EXPECT_GT(lower.left, 11 + size.width / 2) << lower;
    EXPECT_NEAR(lower.right, 11 + size.width, 4) << lower;
}

TEST(DrawText, ShowsSomethingForEveryScript) {
    for (const std::string& text : {std::string("Latin"), greek, cyrillic, hebrew, arabic, devanagari,
                                    chinese, emoji, std::string("\ufffd"), std::string("\xff\xff")}) {
        EXPECT_GT(sizeOfText(text, plain(24)).width, 0) << text;
        EXPECT_GT(inkOfText(text, plain(24), NSMakePoint(20, 20)).count, 10) << text;
    }
}

TEST(DrawText, JoinsLettersOfArabic) {
    // Four letters alone take more room than the word that they join to.
    const std::string beh = "\u0628";
    const std::string nonJoiner = "\u200c";
    const float joined = sizeOfText(beh + beh + beh + beh, plain(40)).width;
    const float apart =
        sizeOfText(beh + nonJoiner + beh + nonJoiner + beh + nonJoiner + beh, plain(40)).width;
    EXPECT_LT(joined, apart);
}

TEST(DrawText, DrawsNothingForAnEmptyText) {
    Canvas canvas(50, 50);
    drawTextAtPoint("", plain(18), NSColor::blackColor(), NSMakePoint(10, 10));
    EXPECT_TRUE(inkOf(canvas.pixels()).isEmpty());
    EXPECT_FALSE(canvas.context().hasPainted());
}

TEST(DrawText, DrawsNothingAtUnusableSizesAndPlaces) {
    for (const float size : {0.0F, -18.0F, infinity, notANumber}) {
        EXPECT_TRUE(inkOfText("W", plain(size), NSMakePoint(10, 10)).isEmpty()) << size;
    }
    for (const float place : {infinity, -infinity, notANumber}) {
        EXPECT_TRUE(inkOfText("W", plain(18), NSMakePoint(place, 10)).isEmpty()) << place;
        EXPECT_TRUE(inkOfText("W", plain(18), NSMakePoint(10, place)).isEmpty()) << place;
    }
}

TEST(DrawText, DrawsNothingWithoutAContextOrUnderATransformWithoutInverse) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    EXPECT_NO_THROW(drawTextAtPoint("W", plain(18), NSColor::blackColor(), NSMakePoint(1, 1)));
    Canvas canvas(50, 50);
    canvas.context().concat(NSAffineTransform({0, 0, 0, 1, 10, 10}));
    drawTextAtPoint("W", plain(18), NSColor::blackColor(), NSMakePoint(1, 1));
    EXPECT_TRUE(inkOf(canvas.pixels()).isEmpty());
}

TEST(DrawText, UsesTheColourAndItsAlphaSourceOver) {
    Canvas canvas(Grid(120, 120, white));
    drawTextAtPoint("M", NSFont::boldSystemFontOfSize(100), NSColor::colorWithCalibratedRed(1, 0, 0, 0.5F),
                    NSMakePoint(5, 0));
    const Grid grid = canvas.pixels();
    int full = 0;
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 120; ++x) {
            const Rgba p = grid.at(x, y);
            EXPECT_EQ(p.r, 255) << "red on white stays red";
            EXPECT_EQ(p.g, p.b);
            EXPECT_GE(p.g, 127);
            full += p.g <= 128 ? 1 : 0;
        }
    }
    EXPECT_GT(full, 300);
}

TEST(DrawText, TakesComponentsThatAreNotNumbersForZero) {
    const Ink ink = inkOf(drawn("W", plain(20), NSMakePoint(10, 10), 60, 60,
                                NSColor::colorWithCalibratedRed(notANumber, 2, -1, 1)));
    EXPECT_GT(ink.count, 10);
}

TEST(DrawText, LeavesTheGraphicsStateAlone) {
    for (const float size : {18.0F, 9000.0F}) { // by glyphs and by outlines
        Canvas canvas(50, 50);
        canvas.context().setColor(NSColor::colorWithCalibratedRed(0, 1, 0, 1));
        const std::size_t saved = canvas.context().savedStateCount();
        cairo_matrix_t before;
        cairo_get_matrix(canvas.cairo(), &before);
        drawTextAtPoint("W", plain(size), NSColor::blackColor(), NSMakePoint(3, 4));
        cairo_matrix_t after;
        cairo_get_matrix(canvas.cairo(), &after);
        EXPECT_EQ(canvas.context().savedStateCount(), saved);
        EXPECT_EQ(after.yy, before.yy);
        EXPECT_EQ(after.x0, before.x0);
        EXPECT_EQ(after.y0, before.y0);
        EXPECT_TRUE(canvas.context().hasPainted());
        NSRectFill(NSMakeRect(40, 40, 5, 5));
        EXPECT_EQ(canvas.pixels().above(42, 42), green);
    }
}

TEST(DrawText, StaysInsideTheClip) {
    Canvas canvas(100, 50);
    NSRectClip(NSMakeRect(20, 10, 30, 12));
    drawTextAtPoint("WWWWWW", NSFont::boldSystemFontOfSize(40), NSColor::blackColor(), NSMakePoint(0, 0));
    const Ink ink = inkOf(canvas.pixels());
    EXPECT_GT(ink.count, 50);
    EXPECT_GE(ink.left, 20);
    EXPECT_LE(ink.right, 50);
    EXPECT_GE(ink.bottom, 10);
    EXPECT_LE(ink.top, 22);
}

TEST(DrawText, GrowsAndTurnsWithTheTransform) {
    const Ink once = inkOfText("Hamburg", plain(12), NSMakePoint(10, 10));
    Canvas doubled(300, 100);
    doubled.context().concat(NSAffineTransform({2, 0, 0, 2, 0, 0}));
    drawTextAtPoint("Hamburg", plain(12), NSColor::blackColor(), NSMakePoint(10, 10));
    const Ink twice = inkOf(doubled.pixels());
    EXPECT_NEAR(twice.left, 2 * once.left, 2) << once << " and " << twice;
    EXPECT_NEAR(twice.right, 2 * once.right, 4) << once << " and " << twice;
    EXPECT_NEAR(twice.bottom, 2 * once.bottom, 2) << once << " and " << twice;
    EXPECT_NEAR(twice.top, 2 * once.top, 2) << once << " and " << twice;

    Canvas turned(60, 200);
    turned.context().concat(NSAffineTransform({0, 1, -1, 0, 60, 0})); // (x, y) to (60 - y, x)
    drawTextAtPoint("Hamburg", plain(12), NSColor::blackColor(), NSMakePoint(10, 10));
    const Ink upward = inkOf(turned.pixels());
    EXPECT_NEAR(upward.bottom, once.left, 1.5) << once << " and " << upward;
    EXPECT_NEAR(upward.top, once.right, 2) << once << " and " << upward;
    EXPECT_NEAR(upward.right, 60 - once.bottom, 1.5) << once << " and " << upward;
    EXPECT_NEAR(upward.left, 60 - once.top, 1.5) << once << " and " << upward;
}

TEST(DrawText, ShowsTheSameShapesByOutlinesWhenItIsLarge) {
    constexpr float factor = 250; // of a size of 40, so 10000 pixels
    const Grid small = drawn("S", NSFont::boldSystemFontOfSize(40), NSMakePoint(10, 10), 60, 60);
    const float half = factor / 2;
    int covered = 0;
    for (int y = 0; y < 60; y += 2) {
        for (int x = 0; x < 60; x += 2) {
            const Rgba p = small.above(x, y);
            if (!isFarFromEdges(small, x, y) || (p != transparent && p != black)) continue;
            // The large text, moved so that this pixel's middle lies on a canvas of a few pixels.
            const NSPoint moved = NSMakePoint((10 - static_cast<float>(x)) * factor - half,
                                              (10 - static_cast<float>(y)) * factor - half);
            const Grid large = drawn("S", NSFont::boldSystemFontOfSize(40 * factor), moved, 3, 3);
            EXPECT_TRUE(areAlike(large, Grid(3, 3, p))) << x << ", " << y;
            covered += p == black ? 1 : 0;
        }
    }
    EXPECT_GT(covered, 5);
}

TEST(DrawText, NeverLeavesTheContextInErrorWhateverTheSizeAndPlace) {
    Canvas canvas(40, 40);
    for (const float size : {1e-30F, 1e-3F, 1.0F, 3e3F, 1e5F, 1e9F, 1e20F, 3e38F}) {
        for (const float place : {0.0F, -100.0F, 1e6F, -1e7F, 1e9F, 1e38F}) {
            EXPECT_NO_THROW(drawTextAtPoint("Hag " + chinese + emoji, plain(size), NSColor::blackColor(),
                                            NSMakePoint(place, -place / 2)))
                << size << " at " << place;
        }
    }
    EXPECT_EQ(cairo_status(canvas.cairo()), CAIRO_STATUS_SUCCESS);
    NSColor::colorWithCalibratedRed(0, 1, 0, 1).set();
    NSRectFill(NSMakeRect(0, 0, 40, 40));
    EXPECT_EQ(canvas.pixels().above(20, 20), green);
}

TEST(DrawText, LeavesNoTraceWhereCoordinatesWouldWrapAround) {
    // 2^24 pixels away, which is no distance at all for coordinates of 24 bits.
    for (const float place : {16777216.0F, -16777216.0F}) {
        EXPECT_TRUE(inkOfText("WWWWWW", plain(18), NSMakePoint(place, 10)).isEmpty()) << place;
        EXPECT_TRUE(inkOfText("WWWWWW", plain(18), NSMakePoint(10, place)).isEmpty()) << place;
    }
}

TEST(DrawText, ShowsTheMiddleOfAVeryLongLine) {
    const std::string text(400'000, 'W');
    const NSSize size = sizeOfText(text, plain(18));
    ASSERT_GT(size.width, 4e6F);
    const Ink ink = inkOfText(text, plain(18), NSMakePoint(-size.width / 2, 10), 60, 60);
    EXPECT_LE(ink.left, 18) << ink;
    EXPECT_GE(ink.right, 60 - 18) << ink;
    EXPECT_GT(ink.count, 100) << ink;
}

TEST(DrawText, GivesDocumentsTextWithItsFonts) {
    const auto pdf = [](const std::string& text) {
        return documentWithText([](auto write, auto* to, double w,
                                   double h) { return cairo_pdf_surface_create_for_stream(write, to, w, h); },
                                text);
    };
    EXPECT_NE(pdf("Hamburg").find("/FontFile"), std::string::npos);
    EXPECT_EQ(pdf("").find("/FontFile"), std::string::npos);

    const auto svg = [](const std::string& text) {
        return documentWithText([](auto write, auto* to, double w,
                                   double h) { return cairo_svg_surface_create_for_stream(write, to, w, h); },
                                text);
    };
    EXPECT_NE(svg("Hamburg").find("glyph"), std::string::npos);
    EXPECT_EQ(svg("").find("glyph"), std::string::npos);
}

TEST(DrawText, IsBoldWhereTheFontIs) {
    const Ink regular = inkOfText("Hamburg", plain(24), NSMakePoint(10, 10));
    const Ink bold = inkOfText("Hamburg", NSFont::boldSystemFontOfSize(24), NSMakePoint(10, 10));
    EXPECT_GT(bold.count, regular.count);
}

TEST(DrawText, SaysSoWhenTheMachineHasNoFont) {
    // In a process of its own, since fonts are looked for once.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const TestSupport::TemporaryFolder folder;
    const std::string configuration = folder.write("fonts.conf", "<fontconfig></fontconfig>");
    const auto measureWithoutFonts = [&configuration] {
        setenv("FONTCONFIG_FILE", configuration.c_str(), 1);
        try {
            sizeOfText("text", plain(18));
        } catch (const NSException& exception) {
            std::fprintf(stderr, "%s\n", exception.what());
            std::_Exit(exception.name() == NSGraphicsException ? 7 : 1);
        }
        std::_Exit(0);
    };
    EXPECT_EXIT(measureWithoutFonts(), testing::ExitedWithCode(7), "no font .*install one");
}
