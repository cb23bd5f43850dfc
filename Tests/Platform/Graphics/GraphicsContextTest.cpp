#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/BezierPath.h"

#include "Platform/Foundation/Exception.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <future>
#include <stdexcept>
#include <thread>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

/// Whether the pixels that satisfy a condition on (x, y), y upward, are white and all others black.
testing::AssertionResult isWhiteExactlyWhere(const Grid& shown,
                                             const std::function<bool(int, int)>& condition) {
    Grid expected(shown.width(), shown.height());
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            expected.at(x, y) = condition(x, shown.height() - 1 - y) ? white : black;
        }
    }
    return areAlike(shown, expected);
}

bool isWithin(int x, int y, int left, int bottom, int width, int height) {
    return x >= left && x < left + width && y >= bottom && y < bottom + height;
}

NSBezierPath triangle(NSPoint a, NSPoint b, NSPoint c) {
    NSBezierPath path;
    path.moveToPoint(a);
    path.lineToPoint(b);
    path.lineToPoint(c);
    path.closePath();
    return path;
}

/// How much of the pixel at (x, y) an area covers, by 64 by 64 samples.
double coverage(int x, int y, const std::function<bool(double, double)>& isInside) {
    constexpr int samples = 64;
    int inside = 0;
    for (int j = 0; j < samples; ++j) {
        for (int i = 0; i < samples; ++i)
            inside += isInside(x + (i + 0.5) / samples, y + (j + 0.5) / samples);
    }
    return inside / static_cast<double>(samples * samples);
}

/// White on black within the coverage, give or take what Cairo's grid of samples costs.
void expectCoverage(const Grid& shown, const std::function<bool(double, double)>& isInside,
                    double tolerance) {
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            EXPECT_NEAR(shown.above(x, y).r, coverage(x, y, isInside) * 255, tolerance) << x << ", " << y;
        }
    }
}

} // namespace

TEST(GraphicsContext, HasItsOriginAtTheLowerLeftWithYUpward) {
    Canvas canvas(8, 6, black);
    NSColor::whiteColor().set();
    NSRectFill(NSMakeRect(1, 0, 2, 3));
    EXPECT_TRUE(
        isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) { return isWithin(x, y, 1, 0, 2, 3); }));
}

TEST(GraphicsContext, FillingARectangleReplacesAlpha) {
    Canvas canvas(4, 4, white);
    NSColor::colorWithCalibratedRed(1, 0, 0, 0.2F).set();
    NSRectFill(NSMakeRect(1, 1, 2, 2));
    EXPECT_EQ(canvas.pixels().above(1, 1), (Rgba{51, 0, 0, 51}));
    EXPECT_EQ(canvas.pixels().above(0, 0), white);
}

TEST(GraphicsContext, FillingAPathComposesOverWhatIsThere) {
    Canvas canvas(4, 4, white);
    NSColor::colorWithCalibratedRed(0, 0, 0, 0.2F).set();
    NSBezierPath::bezierPathWithRect(NSMakeRect(1, 1, 2, 2)).fill();
    EXPECT_EQ(canvas.pixels().above(1, 1), (Rgba{204, 204, 204, 255}));
}

TEST(GraphicsContext, FillsByTheWindingRuleOfThePath) {
    NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(1, 1, 8, 8));
    path.appendBezierPathWithRect(NSMakeRect(3, 3, 4, 4)); // runs the same way round
    NSColor::whiteColor().set();
    {
        Canvas canvas(10, 10, black);
        NSColor::whiteColor().set();
        path.fill();
        EXPECT_TRUE(
            isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) { return isWithin(x, y, 1, 1, 8, 8); }));
    }
    Canvas canvas(10, 10, black);
    NSColor::whiteColor().set();
    path.setWindingRule(NSWindingRule::EvenOdd);
    path.fill();
    EXPECT_TRUE(isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) {
        return isWithin(x, y, 1, 1, 8, 8) && !isWithin(x, y, 3, 3, 4, 4);
    }));
}

TEST(GraphicsContext, CoversEdgePixelsInProportion) {
    Canvas canvas(12, 12, black);
    NSColor::whiteColor().set();
    triangle({1, 1}, {11, 3}, {4, 10.5F}).fill();
    const auto side = [](double ax, double ay, double bx, double by, double x, double y) {
        return (bx - ax) * (y - ay) - (by - ay) * (x - ax) >= 0;
    };
    const auto inside = [&](double x, double y) {
        return side(1, 1, 11, 3, x, y) && side(11, 3, 4, 10.5, x, y) && side(4, 10.5, 1, 1, x, y);
    };
    expectCoverage(canvas.pixels(), inside, 10);
}

TEST(GraphicsContext, FillsAnOvalWhereTheEllipseIs) {
    Canvas canvas(20, 14, black);
    NSColor::whiteColor().set();
    NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(2, 1, 15, 11)).fill();
    const auto inside = [](double x, double y) { return std::hypot((x - 9.5) / 7.5, (y - 6.5) / 5.5) <= 1; };
    expectCoverage(canvas.pixels(), inside, 12);
}

TEST(GraphicsContext, StrokesLieHalfAWidthOnEitherSide) {
    Canvas canvas(12, 9, black);
    NSColor::whiteColor().set();
    NSBezierPath line;
    line.moveToPoint({2, 4});
    line.lineToPoint({9, 4});
    line.setLineWidth(2);
    line.stroke();
    EXPECT_TRUE(
        isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) { return isWithin(x, y, 2, 3, 7, 2); }));
}

TEST(GraphicsContext, StrokesEndAndTurnInTheStylesOfThePath) {
    const auto strokedWith = [](const std::function<void(NSBezierPath&)>& setUp) {
        Canvas canvas(20, 20, black);
        NSColor::whiteColor().set();
        NSBezierPath path;
        path.moveToPoint({5, 3});
        path.lineToPoint({5, 13});
        path.lineToPoint({15, 13});
        path.setLineWidth(4);
        setUp(path);
        path.stroke();
        return canvas.pixels();
    };
    const Grid plain = strokedWith([](NSBezierPath&) {});
    EXPECT_EQ(plain.above(3, 14), white) << "a mitered corner";
    EXPECT_EQ(plain.above(4, 2), black) << "a butt end";
    const Grid square = strokedWith([](NSBezierPath& p) { p.setLineCapStyle(NSLineCapStyle::Square); });
    EXPECT_EQ(square.above(3, 1), white);
    EXPECT_EQ(square.above(16, 14), white);
    const Grid roundEnds = strokedWith([](NSBezierPath& p) { p.setLineCapStyle(NSLineCapStyle::Round); });
    EXPECT_EQ(roundEnds.above(4, 2), white);
    EXPECT_LT(roundEnds.above(3, 1).r, 128);
    const Grid bevel = strokedWith([](NSBezierPath& p) { p.setLineJoinStyle(NSLineJoinStyle::Bevel); });
    EXPECT_NEAR(bevel.above(3, 13).r, 128, 16) << "on the bevel";
    EXPECT_EQ(bevel.above(3, 14), black);
    const Grid limited = strokedWith([](NSBezierPath& p) { p.setMiterLimit(1); });
    EXPECT_TRUE(areAlike(limited, bevel)) << "a right angle needs a limit of sqrt(2)";
    const Grid roundJoin = strokedWith([](NSBezierPath& p) { p.setLineJoinStyle(NSLineJoinStyle::Round); });
    EXPECT_GT(roundJoin.above(3, 13).r, 200);
    EXPECT_LT(roundJoin.above(3, 14).r, 128);
}

TEST(GraphicsContext, AStrokesWidthFollowsTheTransform) {
    Canvas canvas(12, 12, black);
    NSColor::whiteColor().set();
    canvas.context().concat(NSAffineTransform({2, 0, 0, 3, 0, 0}));
    NSBezierPath line;
    line.moveToPoint({1, 2});
    line.lineToPoint({5, 2});
    line.setLineWidth(2);
    line.stroke();
    EXPECT_TRUE(
        isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) { return isWithin(x, y, 2, 3, 8, 6); }));
}

TEST(GraphicsContext, AFrameRunsInwardsFromTheEdges) {
    Canvas canvas(12, 12, black);
    NSColor::whiteColor().set();
    NSFrameRectWithWidth(NSMakeRect(1, 2, 9, 8), 2);
    EXPECT_TRUE(isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) {
        return isWithin(x, y, 1, 2, 9, 8) && !isWithin(x, y, 3, 4, 5, 4);
    }));
}

TEST(GraphicsContext, AFrameReplacesAlphaOnceEverywhere) {
    Canvas canvas(12, 12, white);
    NSColor::colorWithCalibratedWhite(0, 0.2F).set();
    NSFrameRectWithWidth(NSMakeRect(1, 2, 9, 8), 2);
    for (const auto& [x, y] : std::vector<std::pair<int, int>>{{1, 2}, {2, 3}, {9, 9}, {1, 6}, {5, 2}}) {
        EXPECT_EQ(canvas.pixels().above(x, y), (Rgba{0, 0, 0, 51})) << x << ", " << y;
    }
    EXPECT_EQ(canvas.pixels().above(5, 6), white);
}

TEST(GraphicsContext, AFrameTooWideForItsRectangleFillsItAndOneWithoutWidthDrawsNothing) {
    for (const float width : {2.0F, 2.5F, 100.0F}) {
        Canvas canvas(8, 8, black);
        NSColor::whiteColor().set();
        NSFrameRectWithWidth(NSMakeRect(1, 1, 6, 4), width);
        EXPECT_TRUE(
            isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) { return isWithin(x, y, 1, 1, 6, 4); }));
    }
    for (const float width : {0.0F, -1.0F, std::nanf("")}) {
        Canvas canvas(8, 8, black);
        NSColor::whiteColor().set();
        NSFrameRectWithWidth(NSMakeRect(1, 1, 6, 4), width);
        EXPECT_TRUE(areAlike(canvas.pixels(), Grid(8, 8, black))) << width;
    }
}

TEST(GraphicsContext, ClipsCutWhatTheyHaveInCommonUntilTheStateIsRestored) {
    Canvas canvas(10, 10, black);
    NSColor::whiteColor().set();
    canvas.context().saveGraphicsState();
    NSRectClip(NSMakeRect(1, 1, 6, 6));
    NSRectClip(NSMakeRect(3, 2, 7, 3));
    NSRectFill(NSMakeRect(0, 0, 10, 10));
    EXPECT_TRUE(
        isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) { return isWithin(x, y, 3, 2, 4, 3); }));
    canvas.context().restoreGraphicsState();
    NSRectFill(NSMakeRect(0, 0, 10, 10));
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(10, 10, white)));
}

TEST(GraphicsContext, ClipsAreTakenInTheSpaceOfTheirMoment) {
    Canvas canvas(10, 10, black);
    NSColor::whiteColor().set();
    canvas.context().concat(NSAffineTransform({2, 0, 0, 2, 1, 3}));
    NSRectClip(NSMakeRect(0, 0, 2, 3)); // 1 to 5, 3 to 9
    canvas.context().concat(NSAffineTransform({0.1F, 0, 0, 0.1F, 0, 0}));
    NSRectFill(NSMakeRect(-1000, -1000, 2000, 2000));
    EXPECT_TRUE(
        isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) { return isWithin(x, y, 1, 3, 4, 6); }));
}

TEST(GraphicsContext, AClipUsesThePathsWindingRule) {
    Canvas canvas(10, 10, black);
    NSColor::whiteColor().set();
    NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(1, 1, 8, 8));
    path.appendBezierPathWithRect(NSMakeRect(3, 3, 4, 4));
    path.setWindingRule(NSWindingRule::EvenOdd);
    path.addClip();
    NSRectFill(NSMakeRect(0, 0, 10, 10));
    EXPECT_TRUE(isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) {
        return isWithin(x, y, 1, 1, 8, 8) && !isWithin(x, y, 3, 3, 4, 4);
    }));
}

TEST(GraphicsContext, AClipWithoutAreaLeavesNothing) {
    for (const NSRect rect : {NSMakeRect(5, 5, 0, 3), NSMakeRect(5, 5, -3, -3), NSMakeRect(20, 20, 3, 3),
                              NSMakeRect(std::nanf(""), 1, 3, 3), NSMakeRect(1, 1, std::nanf(""), 3)}) {
        Canvas canvas(10, 10, black);
        NSColor::whiteColor().set();
        canvas.context().saveGraphicsState();
        NSRectClip(rect);
        NSRectFill(NSMakeRect(0, 0, 10, 10));
        EXPECT_TRUE(areAlike(canvas.pixels(), Grid(10, 10, black)));
        canvas.context().restoreGraphicsState();
        NSRectFill(NSMakeRect(0, 0, 10, 10));
        EXPECT_TRUE(areAlike(canvas.pixels(), Grid(10, 10, white)));
    }
    Canvas canvas(10, 10, black);
    NSBezierPath().addClip();
    NSColor::whiteColor().set();
    NSRectFill(NSMakeRect(0, 0, 10, 10));
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(10, 10, black))) << "an empty path";
}

TEST(GraphicsContext, StatesHoldTransformClipAndColour) {
    Canvas canvas(6, 6, black);
    NSGraphicsContext& context = canvas.context();
    NSColor::whiteColor().set();
    EXPECT_EQ(context.savedStateCount(), 0U);
    context.saveGraphicsState();
    context.concat(NSAffineTransform({1, 0, 0, 1, 3, 3}));
    NSRectClip(NSMakeRect(0, 0, 1, 1));
    NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
    context.saveGraphicsState();
    EXPECT_EQ(context.savedStateCount(), 2U);
    NSRectFill(NSMakeRect(0, 0, 2, 2));
    context.restoreGraphicsState();
    context.restoreGraphicsState();
    EXPECT_TRUE(context.color().isEqual(NSColor::whiteColor()));
    NSRectFill(NSMakeRect(0, 0, 2, 2));
    const Grid shown = canvas.pixels();
    EXPECT_EQ(shown.above(3, 3), red);
    EXPECT_EQ(shown.above(4, 4), black);
    EXPECT_EQ(shown.above(1, 1), white);
    EXPECT_THROW(context.restoreGraphicsState(), NSException);
}

TEST(GraphicsContext, ATransformActsBeforeTheEarlierOnes) {
    Canvas canvas(12, 12, black);
    NSColor::whiteColor().set();
    canvas.context().concat(NSAffineTransform({2, 0, 0, 2, 0, 0}));
    canvas.context().concat(NSAffineTransform({1, 0, 0, 1, 3, 1}));
    NSRectFill(NSMakeRect(0, 0, 1, 1));
    EXPECT_TRUE(
        isWhiteExactlyWhere(canvas.pixels(), [](int x, int y) { return isWithin(x, y, 6, 2, 2, 2); }));
}

TEST(GraphicsContext, AStateScopeRestoresWhateverWasSavedSinceAlsoOnTheWayOutOfAnException) {
    Canvas canvas(6, 6, black);
    NSColor::whiteColor().set();
    canvas.context().saveGraphicsState();
    try {
        const NSGraphicsStateScope scope;
        canvas.context().saveGraphicsState();
        canvas.context().concat(NSAffineTransform({0, 0, 0, 0, 0, 0}));
        NSColor::blackColor().set();
        Canvas other(2, 2); // another context is current while the scope ends
        throw std::runtime_error("out");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(canvas.context().savedStateCount(), 1U);
    EXPECT_TRUE(canvas.context().canDraw());
    EXPECT_TRUE(canvas.context().color().isEqual(NSColor::whiteColor()));
}

TEST(GraphicsContext, AStateScopeWithoutAContextDoesNothing) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    { const NSGraphicsStateScope scope; }
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(GraphicsContext, TheRectangleFunctionsDoNothingWithoutAContext) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    NSRectFill(NSMakeRect(0, 0, 1, 1));
    NSRectFillUsingOperation(NSMakeRect(0, 0, 1, 1), NSCompositeXOR);
    NSFrameRectWithWidth(NSMakeRect(0, 0, 3, 3), 1);
    NSRectClip(NSMakeRect(0, 0, 1, 1));
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(GraphicsContext, NotesWhetherAnythingWasDrawn) {
    Canvas canvas(4, 4);
    NSGraphicsContext& context = canvas.context();
    NSRectFill(NSMakeRect(0, 0, 0, 5));
    NSBezierPath().fill();
    NSBezierPath().stroke();
    NSRectClip(NSMakeRect(0, 0, 2, 2));
    EXPECT_FALSE(context.hasPainted());
    NSRectFill(NSMakeRect(0, 0, 1, 1));
    EXPECT_TRUE(context.hasPainted());
    Canvas second(4, 4);
    second.context().notePainted();
    EXPECT_TRUE(second.context().hasPainted());
}

TEST(GraphicsContext, EachThreadHasACurrentContextOfItsOwn) {
    Canvas canvas(4, 4, black);
    NSColor::whiteColor().set();
    std::promise<void> drawnHere;
    std::thread other([&drawnHere] {
        EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
        Canvas own(4, 4, black);
        NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
        drawnHere.get_future().wait(); // both are current at once
        NSRectFill(NSMakeRect(0, 0, 4, 4));
        EXPECT_TRUE(areAlike(own.pixels(), Grid(4, 4, red)));
    });
    EXPECT_EQ(NSGraphicsContext::currentContext().get(), &canvas.context());
    NSRectFill(NSMakeRect(0, 0, 2, 4));
    drawnHere.set_value();
    other.join();
    NSRectFill(NSMakeRect(2, 0, 2, 4));
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(4, 4, white)));
}
