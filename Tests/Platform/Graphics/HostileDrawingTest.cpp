// Also tests: Platform/Graphics/Cairo/CairoPaths.cpp

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/BezierPath.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

// Coordinates and transforms that nobody means: they may paint nothing, but not harm what comes after.

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float huge = 3e38F;

/// Draws on a fresh state and checks that it arrives, so that nothing is left over of what went before.
void expectDrawingWorks(Canvas& canvas, const std::string& after) {
    ASSERT_EQ(cairo_status(canvas.cairo()), CAIRO_STATUS_SUCCESS) << after;
    NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
    NSRectFill(NSMakeRect(0, 0, 8, 8));
    ASSERT_TRUE(areAlike(canvas.pixels(), Grid(8, 8, red))) << after;
    imageOf(Grid(4, 4, blue))->drawInRect(NSMakeRect(2, 2, 4, 4), NSZeroRect, NSCompositeSourceOver, 1);
    ASSERT_EQ(canvas.pixels().at(3, 3), blue) << after;
    NSColor::blackColor().set();
    NSRectFill(NSMakeRect(0, 0, 8, 8));
}

void drawEverything(NSImage& image) {
    NSColor::whiteColor().set();
    NSRectFill(NSMakeRect(0, 0, 8, 8));
    NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(0, 0, 8, 8)).fill();
    NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(0, 0, 8, 8)).stroke();
    image.drawInRect(NSMakeRect(0, 0, 8, 8), NSZeroRect, NSCompositeSourceOver, 1);
    image.drawInRect(NSMakeRect(0, 0, 8, 8), NSZeroRect, NSCompositePlusDarker, 0.5F);
    NSRectClip(NSMakeRect(0, 0, 8, 8));
    NSRectFill(NSMakeRect(0, 0, 8, 8));
}

/// A number that is ordinary, large, tiny, or none.
float anyNumber(Random& random) {
    switch (random.integer(0, 9)) {
    case 0:
        return 0;
    case 1:
        return random.integer(0, 1) == 0 ? notANumber : infinity;
    case 2:
        return -huge;
    case 3:
        return static_cast<float>(std::pow(10.0, random.real(-44, 38)));
    case 4:
        return -static_cast<float>(std::pow(10.0, random.real(3, 12)));
    case 5:
        return static_cast<float>(random.integer(-9, 9));
    default:
        return random.single(-12, 12);
    }
}

NSRect anyRect(Random& random) {
    const float x = anyNumber(random);
    const float y = anyNumber(random);
    const float width = anyNumber(random);
    return NSMakeRect(x, y, width, anyNumber(random));
}

NSAffineTransform anyTransform(Random& random) {
    NSAffineTransformStruct entries;
    for (float* const entry :
         {&entries.m11, &entries.m12, &entries.m21, &entries.m22, &entries.tX, &entries.tY}) {
        *entry = anyNumber(random);
    }
    if (random.integer(0, 1) == 0) entries.m12 = entries.m21 = 0;
    return NSAffineTransform(entries);
}

NSBezierPath anyPath(Random& random) {
    const auto point = [&random] {
        const float x = anyNumber(random);
        return NSMakePoint(x, anyNumber(random));
    };
    NSBezierPath path;
    path.moveToPoint(point());
    for (int i = random.integer(1, 5); i > 0; --i) {
        switch (random.integer(0, 3)) {
        case 0:
            path.lineToPoint(point());
            break;
        case 1:
            path.closePath();
            break;
        case 2:
            path.moveToPoint(point());
            break;
        default: {
            const NSPoint end = point();
            const NSPoint first = point();
            path.curveToPoint(end, first, point());
        }
        }
    }
    path.setLineWidth(anyNumber(random));
    path.setMiterLimit(anyNumber(random));
    path.setLineCapStyle(static_cast<NSLineCapStyle>(random.integer(0, 2)));
    path.setLineJoinStyle(static_cast<NSLineJoinStyle>(random.integer(0, 2)));
    return path;
}

void drawAtRandom(Random& random, Canvas& canvas, NSImage& image) {
    for (int step = random.integer(1, 5); step > 0; --step) {
        const int operation = random.integer(-1, 14);
        switch (random.integer(0, 7)) {
        case 0:
            canvas.context().concat(anyTransform(random));
            break;
        case 1:
            NSRectClip(anyRect(random));
            break;
        case 2:
            anyPath(random).addClip();
            break;
        case 3:
            anyPath(random).fill();
            break;
        case 4:
            anyPath(random).stroke();
            break;
        case 5:
            NSRectFillUsingOperation(anyRect(random), operation);
            break;
        case 6:
            NSFrameRectWithWidth(anyRect(random), anyNumber(random));
            break;
        default: {
            const NSRect source = random.integer(0, 1) == 0 ? NSZeroRect : anyRect(random);
            const NSRect destination = random.integer(0, 2) == 0 ? NSMakeRect(1, 1, 6, 6) : anyRect(random);
            image.drawInRect(destination, source, operation, anyNumber(random));
        }
        }
    }
}

} // namespace

TEST(HostileDrawing, ATransformWithoutAnInversePaintsNothingUntilTheStateIsRestored) {
    const auto image = imageOf(Grid(4, 4, white));
    for (const NSAffineTransformStruct entries :
         {NSAffineTransformStruct{0, 0, 0, 1, 0, 0}, NSAffineTransformStruct{0, 0, 0, 0, 3, 3},
          NSAffineTransformStruct{1, 2, 2, 4, 0, 0}, NSAffineTransformStruct{notANumber, 0, 0, 1, 0, 0},
          NSAffineTransformStruct{infinity, 0, 0, 1, 0, 0},
          NSAffineTransformStruct{1, 0, 0, 1, notANumber, 0},
          NSAffineTransformStruct{1, 0, 0, 1, 0, infinity},
          NSAffineTransformStruct{1, -infinity, 0, 1, 0, 0}}) {
        Canvas canvas(8, 8, black);
        canvas.context().saveGraphicsState();
        canvas.context().concat(NSAffineTransform(entries));
        EXPECT_FALSE(canvas.context().canDraw());
        drawEverything(*image);
        canvas.context().concat(NSAffineTransform()); // what comes on top does not bring it back
        canvas.context().saveGraphicsState();
        drawEverything(*image);
        canvas.context().restoreGraphicsState();
        EXPECT_FALSE(canvas.context().canDraw());
        EXPECT_TRUE(areAlike(canvas.pixels(), Grid(8, 8, black)));
        EXPECT_FALSE(canvas.context().hasPainted());
        canvas.context().restoreGraphicsState();
        EXPECT_TRUE(canvas.context().canDraw());
        expectDrawingWorks(canvas, "a transform without an inverse");
    }
}

TEST(HostileDrawing, ScalesThatMultiplyUpToNothingOrEverythingLeaveTheContextUsable) {
    const auto image = imageOf(Grid(4, 4, white));
    for (const float scale : {1e-30F, 1e30F, 1e-12F, 1e12F, 1e-3F, 1e3F}) {
        for (const bool bothAxes : {true, false}) {
            Canvas canvas(8, 8, black);
            for (int i = 0; i < 20; ++i) {
                canvas.context().saveGraphicsState();
                canvas.context().concat(NSAffineTransform({scale, 0, 0, bothAxes ? scale : 1, 0, 0}));
                drawEverything(*image);
                ASSERT_EQ(cairo_status(canvas.cairo()), CAIRO_STATUS_SUCCESS) << scale << ", " << i;
            }
            for (int i = 0; i < 20; ++i) canvas.context().restoreGraphicsState();
            expectDrawingWorks(canvas, "scales of " + std::to_string(scale));
        }
    }
}

TEST(HostileDrawing, ShrunkFarBelowAPixelThereIsNothingToSee) {
    const auto image = imageOf(Grid(4, 4, white));
    for (const float scale : {1e-3F, 1e-5F, 1e-8F, 1e-20F, 1e-30F}) {
        Canvas canvas(8, 8, black);
        canvas.context().concat(NSAffineTransform({scale, 0, 0, scale, 3.3F, 4.4F}));
        image->drawInRect(NSMakeRect(0, 0, 4, 4), NSZeroRect, NSCompositeSourceOver, 1);
        NSColor::whiteColor().set();
        NSRectFill(NSMakeRect(0, 0, 4, 4));
        EXPECT_LE(difference(canvas.pixels(), Grid(8, 8, black)).largest, 1) << scale;
    }
}

TEST(HostileDrawing, ThinSlicesOfAPictureAreMixedByTheirCoverage) {
    // 100 columns in a hundredth of a pixel, at the far end of a wide canvas.
    Canvas canvas(3000, 2, black);
    imageOf(Grid(100, 2, white))
        ->drawInRect(NSMakeRect(2990.25F, 0, 0.125F, 2), NSZeroRect, NSCompositeSourceOver, 1);
    const Grid shown = canvas.pixels();
    EXPECT_NEAR(shown.at(2990, 0).r, 32, 4);
    EXPECT_EQ(shown.at(2989, 0), black);
    EXPECT_EQ(shown.at(2991, 0), black);
}

TEST(HostileDrawing, HugeRectanglesFillAndClipAllThereIs) {
    Random random(91);
    for (int round = 0; round < 300; ++round) {
        const auto far = [&random] { return static_cast<float>(std::pow(10.0, random.real(3, 38))); };
        NSBezierPath path;
        path.moveToPoint({-far(), -far()});
        path.lineToPoint({far(), -far()});
        path.lineToPoint({far(), far()});
        path.lineToPoint({-far(), far()});
        path.closePath();
        Canvas canvas(8, 8, black);
        NSColor::whiteColor().set();
        // Not rectangles in general, but whether they hold the canvas can be told from its corners.
        bool holdsAll = true;
        for (const NSPoint corner :
             {NSMakePoint(-1, -1), NSMakePoint(9, -1), NSMakePoint(9, 9), NSMakePoint(-1, 9)}) {
            std::array<NSPoint, 3> p;
            for (std::size_t i = 0; i < 4; ++i) {
                std::array<NSPoint, 3> q;
                path.elementAtIndex(i, &p);
                path.elementAtIndex((i + 1) % 4, &q);
                const double side =
                    (static_cast<double>(q[0].x) - p[0].x) * (static_cast<double>(corner.y) - p[0].y) -
                    (static_cast<double>(q[0].y) - p[0].y) * (static_cast<double>(corner.x) - p[0].x);
                holdsAll = holdsAll && side > 0;
            }
        }
        if (!holdsAll) continue;
        canvas.context().saveGraphicsState();
        path.fill();
        EXPECT_TRUE(areAlike(canvas.pixels(), Grid(8, 8, white))) << round;
        NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
        path.addClip();
        NSRectFill(NSMakeRect(0, 0, 8, 8));
        EXPECT_TRUE(areAlike(canvas.pixels(), Grid(8, 8, red))) << round;
        canvas.context().restoreGraphicsState();
    }
}

TEST(HostileDrawing, AHalfPlaneEndsAtItsLineHoweverFarItReaches) {
    // What lies below y = x / 2 + 1, in triangles that reach further and further.
    Grid first;
    for (const float reach : {1e3F, 1e5F, 1e6F, 1e7F, 1e9F, 1e12F}) {
        Canvas canvas(8, 8, black);
        NSColor::whiteColor().set();
        NSBezierPath path;
        path.moveToPoint({-reach, -reach / 2 + 1});
        path.lineToPoint({reach, reach / 2 + 1});
        path.lineToPoint({reach, -reach});
        path.closePath();
        path.fill();
        if (first.width() == 0) first = canvas.pixels();
        EXPECT_LE(difference(canvas.pixels(), first).largest, reach < 1e8F ? 24 : 255) << reach;
        EXPECT_EQ(canvas.pixels().above(4, 1), white) << reach;
        EXPECT_EQ(canvas.pixels().above(3, 5), black) << reach;
    }
}

TEST(HostileDrawing, LinesKeepTheirDirectionHoweverFarTheyGo) {
    const auto stroked = [](float reach) {
        Canvas canvas(9, 9, black);
        NSColor::whiteColor().set();
        NSBezierPath path;
        path.moveToPoint({0, 0});
        path.lineToPoint({reach, 2 * reach});
        path.setLineWidth(2);
        path.stroke();
        return canvas.pixels();
    };
    const Grid near = stroked(20);
    for (const float reach : {1e3F, 1e5F, 1e6F, 1e7F, 1e10F, 1e20F, 1e37F}) {
        EXPECT_TRUE(areAlike(stroked(reach), near, 8)) << reach;
    }
}

TEST(HostileDrawing, CurvesAndCornersStayWhatTheyAreWhenTheirPathGoesFar) {
    // A rectangle of which two sides are far away: the corner at (3, 3) is mitered like any other.
    Canvas canvas(9, 9, black);
    NSColor::whiteColor().set();
    NSBezierPath corner = NSBezierPath::bezierPathWithRect(NSMakeRect(3, 3, 1e7F, 1e7F));
    corner.setLineWidth(2);
    corner.stroke();
    const Grid shown = canvas.pixels();
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 9; ++x) {
            const bool onLine = x >= 2 && y >= 2 && (x < 4 || y < 4);
            EXPECT_EQ(shown.above(x, y), onLine ? white : black) << x << ", " << y;
        }
    }
    // A circle so large that its right-most arc is a straight edge at x = 4.
    for (const float radius : {1e4F, 1e6F, 1e7F}) {
        Canvas round(9, 9, black);
        NSColor::whiteColor().set();
        NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(4 - 2 * radius, 4 - radius, 2 * radius, 2 * radius))
            .fill();
        EXPECT_EQ(round.pixels().above(2, 4), white) << radius;
        EXPECT_EQ(round.pixels().above(6, 4), black) << radius;
    }
}

TEST(HostileDrawing, PathsAndRectanglesThatAreNotFinitePaintNothing) {
    const auto image = imageOf(Grid(4, 4, white));
    for (const float bad : {notANumber, infinity, -infinity}) {
        Canvas canvas(8, 8, black);
        NSColor::whiteColor().set();
        for (int which = 0; which < 6; ++which) {
            std::array<NSPoint, 4> p{NSPoint{1, 1}, NSPoint{7, 1}, NSPoint{7, 7}, NSPoint{1, 7}};
            if (which < 3)
                p[static_cast<std::size_t>(which + 1)].x = bad;
            else
                p[static_cast<std::size_t>(which - 3)].y = bad;
            NSBezierPath path;
            path.moveToPoint(p[0]);
            path.curveToPoint(p[3], p[1], p[2]);
            path.lineToPoint({1, 1});
            path.setLineWidth(3);
            path.fill();
            path.stroke();
            canvas.context().saveGraphicsState();
            path.addClip();
            NSRectFill(NSMakeRect(0, 0, 8, 8));
            canvas.context().restoreGraphicsState();
            EXPECT_TRUE(areAlike(canvas.pixels(), Grid(8, 8, black))) << "point " << which;
        }
        for (const NSRect rect : {NSMakeRect(bad, 1, 5, 5), NSMakeRect(1, bad, 5, 5),
                                  NSMakeRect(1, 1, bad, 5), NSMakeRect(1, 1, 5, bad)}) {
            NSRectFill(rect);
            NSRectFillUsingOperation(rect, NSCompositePlusDarker);
            NSFrameRectWithWidth(rect, 1);
            image->drawInRect(rect, NSZeroRect, NSCompositeCopy, 1);
            image->drawInRect(NSMakeRect(1, 1, 5, 5), rect, NSCompositeCopy, 1);
        }
        EXPECT_TRUE(areAlike(canvas.pixels(), Grid(8, 8, black)));
        expectDrawingWorks(canvas, "coordinates that are not finite");
    }
}

TEST(HostileDrawing, RectanglesWithoutAreaPaintNothing) {
    const auto image = imageOf(Grid(4, 4, white));
    Canvas canvas(8, 8, black);
    NSColor::whiteColor().set();
    for (const NSRect rect : {NSMakeRect(1, 1, 0, 5), NSMakeRect(5, 5, -3, 3), NSMakeRect(5, 5, -3, -3)}) {
        NSRectFill(rect);
        NSFrameRectWithWidth(rect, 1);
        image->drawInRect(rect, NSZeroRect, NSCompositeCopy, 1);
        image->drawInRect(NSMakeRect(1, 1, 5, 5), rect, NSCompositeCopy, 1);
    }
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(8, 8, black)));
}

TEST(HostileDrawing, LineWidthsThatMakeNoSensePaintNothingAndHangNowhere) {
    for (const float width : {0.0F, -3.0F, notANumber, infinity, 1e15F, huge}) {
        for (const NSLineJoinStyle join : {NSLineJoinStyle::Miter, NSLineJoinStyle::Round}) {
            Canvas canvas(8, 8, black);
            NSColor::whiteColor().set();
            NSBezierPath path = NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(1, 1, 6, 6));
            path.setLineWidth(width);
            path.setLineJoinStyle(join);
            path.setLineCapStyle(NSLineCapStyle::Round);
            path.stroke();
            EXPECT_TRUE(areAlike(canvas.pixels(), Grid(8, 8, black))) << width;
            expectDrawingWorks(canvas, "a line width of " + std::to_string(width));
        }
    }
}

TEST(HostileDrawing, ThousandsOfRandomTransformsPathsAndRectanglesNeverBreakAContext) {
    Random random(92);
    const auto image = imageOf(random.grid(5, 4));
    for (int round = 0; round < 20000; ++round) {
        Canvas canvas(8, 8, black);
        canvas.context().saveGraphicsState();
        try {
            drawAtRandom(random, canvas, *image);
        } catch (const NSException& exception) {
            FAIL() << "round " << round << ": " << exception.what();
        }
        canvas.context().restoreGraphicsState();
        expectDrawingWorks(canvas, "round " + std::to_string(round));
        if (HasFatalFailure()) return;
    }
}

TEST(HostileDrawing, RandomDrawingIntoAFocusedPictureOfOddSizeNeverBreaksIt) {
    Random random(93);
    const auto image = imageOf(random.grid(5, 4));
    for (int round = 0; round < 3000; ++round) {
        NSImage target(NSMakeSize(random.single(0.5F, 20), random.single(0.5F, 20)));
        {
            const NSImageFocus focus(target);
            for (int step = 0; step < 3; ++step) {
                const NSGraphicsStateScope state;
                NSGraphicsContext::currentContext()->concat(anyTransform(random));
                image->drawInRect(anyRect(random), NSZeroRect, random.integer(0, 13), 1);
                target.drawInRect(anyRect(random), anyRect(random), random.integer(0, 13), 0.5F);
                NSRectFill(anyRect(random));
            }
            ASSERT_EQ(cairo_status(NSGraphicsContext::currentContext()->cairo()), CAIRO_STATUS_SUCCESS)
                << round;
        }
        ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    }
}
