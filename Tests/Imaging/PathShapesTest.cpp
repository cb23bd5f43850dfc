#include "Imaging/PathShapes.h"

#include "Imaging/ColorFunction.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/BezierPath.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <cairo-svg.h>
#include <cmath>
#include <limits>
#include <numbers>
#include <regex>
#include <sstream>
#include <string>

using namespace Imaging;
using namespace Imaging::Platform;
using namespace Pixels;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

// Paths in words

std::string inWords(const NSBezierPath& path) {
    std::ostringstream words;
    std::array<NSPoint, 3> p;
    for (std::size_t i = 0; i < path.elementCount(); ++i) {
        const auto kind = path.elementAtIndex(i, &p);
        words << "MLCZ"[static_cast<int>(kind)];
        const int count = kind == NSBezierPathElement::CurveTo     ? 3
                          : kind == NSBezierPathElement::ClosePath ? 0
                                                                   : 1;
        for (int k = 0; k < count; ++k) words << ' ' << p.at(k).x << ',' << p.at(k).y;
        words << '\n';
    }
    return words.str();
}

testing::AssertionResult isNear(NSPoint point, double x, double y, double tolerance = 2e-6) {
    if (std::abs(point.x - x) <= tolerance && std::abs(point.y - y) <= tolerance) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "the point is (" << point.x << ", " << point.y << ")";
}

NSPoint pointOf(const NSBezierPath& path, std::size_t index) {
    std::array<NSPoint, 3> points;
    path.elementAtIndex(index, &points);
    return points[0];
}

// What reaches a page, as Cairo writes it down: the strokes in their order, in the user's space.

struct Stroke {
    std::string color; ///< in percent: "0 100 100"
    std::string path;  ///< "M 1 2 L 3 4"

    friend bool operator==(const Stroke&, const Stroke&) = default;
};

std::ostream& operator<<(std::ostream& out, const Stroke& stroke) {
    return out << stroke.path << " in " << stroke.color;
}

cairo_status_t keepBytes(void* closure, const unsigned char* bytes, unsigned int count) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

/// Cairo rounds to 1/256 of a unit of the page, so large scales show more digits.
template<class Draw>
std::vector<Stroke> strokesOf(const Draw& draw, float scale = 1) {
    std::string svg;
    {
        const CairoSurface surface(cairo_svg_surface_create_for_stream(keepBytes, &svg, 100, 100));
        const CairoContext cairo(cairo_create(surface.get()));
        const auto before = NSGraphicsContext::currentContext();
        NSGraphicsContext::setCurrentContext(NSGraphicsContext::graphicsContextWithCairo(cairo.get(), 100));
        NSAffineTransform larger;
        larger.scaleBy(scale);
        NSGraphicsContext::currentContext()->concat(larger);
        draw();
        NSGraphicsContext::setCurrentContext(before);
    }
    const std::regex form(R"(stroke-width:1;[^>]*stroke:rgb\(([^)]*)\)[^>]* d=\"([^\"]*[^ ]) *\")");
    std::vector<Stroke> strokes;
    for (std::sregex_iterator i(svg.begin(), svg.end(), form), end; i != end; ++i) {
        strokes.push_back({std::regex_replace((*i)[1].str(), std::regex("%,?"), " "), (*i)[2].str()});
        strokes.back().color.pop_back();
    }
    return strokes;
}

std::vector<double> numbersIn(const std::string& path) {
    std::vector<double> numbers;
    std::istringstream words(path);
    for (std::string word; words >> word;) {
        if (word.find_first_not_of("-.0123456789") == std::string::npos) numbers.push_back(std::stod(word));
    }
    return numbers;
}

void expectNumbers(const std::string& path, const std::vector<double>& expected) {
    const std::vector<double> numbers = numbersIn(path);
    ASSERT_EQ(numbers.size(), expected.size()) << path;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        EXPECT_NEAR(numbers[i], expected[i], 2e-5) << path << ", number " << i;
    }
}

// Colours for knobs

/// One colour for all parameters, which are noted.
class NotingFunction : public ColorFunction {
public:
    explicit NotingFunction(NSColor color = NSColor::whiteColor()) : m_color(color) {}
    NSColor colorForParam(float param) const override {
        params.push_back(param);
        return m_color;
    }
    mutable std::vector<float> params;

private:
    NSColor m_color;
};

/// A path whose outline leaves no mark.
NSBezierPath withoutOutline(NSBezierPath path) {
    path.setLineWidth(0);
    return path;
}

NSBezierPath rectangle(float x, float y, float width, float height) {
    return NSBezierPath::bezierPathWithRect(NSMakeRect(x, y, width, height));
}

Rgba gray(double value) { return rounded({value / 255, value / 255, value / 255, 1}); }

} // namespace

// Rounded rectangles and diamonds

TEST(PathShapes, ARoundedRectangleHasItsControlPointsOnTheCorners) {
    EXPECT_EQ(inWords(bezierPathWithRoundedRect(NSMakeRect(10, 20, 40, 30), 5)), "M 15,20\n"
                                                                                 "L 45,20\n"
                                                                                 "C 50,20 50,20 50,25\n"
                                                                                 "L 50,45\n"
                                                                                 "C 50,50 50,50 45,50\n"
                                                                                 "L 15,50\n"
                                                                                 "C 10,50 10,50 10,45\n"
                                                                                 "L 10,25\n"
                                                                                 "C 10,20 10,20 15,20\n");
}

TEST(PathShapes, ARoundedRectanglesCornersAreTighterThanArcs) {
    Canvas canvas(40, 40);
    NSColor::whiteColor().set();
    bezierPathWithRoundedRect(NSMakeRect(0, 0, 40, 40), 16).fill();
    // The curve's middle lies r / 8 = 2 inside each side, an arc's would lie 4.7 inside.
    for (const auto& [x, y] : {std::pair{3, 3}, {36, 3}, {36, 36}, {3, 36}}) {
        EXPECT_EQ(canvas.pixels().above(x, y), white);
    }
    for (const auto& [x, y] : {std::pair{0, 0}, {39, 0}, {39, 39}, {0, 39}}) {
        EXPECT_EQ(canvas.pixels().above(x, y), transparent);
    }
}

TEST(PathShapes, ARoundedRectangleOfRadiusZeroIsARectangleWithFourCurvesWithoutLength) {
    const NSBezierPath path = bezierPathWithRoundedRect(NSMakeRect(3, 2, 8, 6), 0);
    EXPECT_EQ(inWords(path), "M 3,2\nL 11,2\nC 11,2 11,2 11,2\nL 11,8\nC 11,8 11,8 11,8\n"
                             "L 3,8\nC 3,8 3,8 3,8\nL 3,2\nC 3,2 3,2 3,2\n");
    Canvas canvas(16, 12);
    NSColor::whiteColor().set();
    path.fill();
    Grid expected(16, 12);
    for (int y = 4; y < 10; ++y) {
        for (int x = 3; x < 11; ++x) expected.at(x, y) = white;
    }
    EXPECT_TRUE(areAlike(canvas.pixels(), expected));
}

TEST(PathShapes, ARadiusIsNotComparedWithTheSize) {
    const NSBezierPath path = bezierPathWithRoundedRect(NSMakeRect(10, 20, 40, 30), 35);
    EXPECT_TRUE(isNear(pointOf(path, 0), 45, 20));
    EXPECT_TRUE(isNear(pointOf(path, 1), 15, 20));
    EXPECT_TRUE(isNear(pointOf(path, 3), 50, 15));
}

TEST(PathShapes, ADiamondGoesThroughTheMiddlesOfTheSides) {
    EXPECT_EQ(inWords(bezierPathWithDiamondInRect(NSMakeRect(10, 20, 40, 30))),
              "M 10,35\nL 30,50\nL 50,35\nL 30,20\nZ\n");
    EXPECT_EQ(inWords(bezierPathWithDiamondInRect(NSMakeRect(-1, 2, 3, 5))),
              "M -1,4.5\nL 0.5,7\nL 2,4.5\nL 0.5,2\nZ\n");
}

// Arrows

TEST(PathShapes, AnArrowIsALineAndATriangleAtItsEnd) {
    const auto strokes = strokesOf([] { strokeArrowFromPoint({0, 0}, {10, 0}); }, 256);
    ASSERT_EQ(strokes.size(), 2U);
    expectNumbers(strokes[0].path, {0, 0, 10, 0});
    EXPECT_EQ(strokes[1].path.front(), 'M');
    EXPECT_NE(strokes[1].path.find('Z'), std::string::npos);
    // Cairo begins anew after a close.
    expectNumbers(strokes[1].path, {10, 0, 2.928932, 3.535534, 2.928932, -3.535534, 10, 0});
}

TEST(PathShapes, AnArrowPointsAlongItsLine) {
    // Along (0.6, 0.8): b - 7.071068 · (0.6, 0.8) ± 3.535534 · (-0.8, 0.6).
    const auto strokes = strokesOf([] { strokeArrowFromPoint({3, 5}, {6, 9}); }, 256);
    ASSERT_EQ(strokes.size(), 2U);
    expectNumbers(strokes[0].path, {3, 5, 6, 9});
    expectNumbers(strokes[1].path, {6, 9, -1.071068, 5.464466, 4.585786, 1.221825, 6, 9});
}

TEST(PathShapes, AnArrowsHeadIsFilledAndAllOfItHasTheCurrentColour) {
    Canvas canvas(32, 21);
    NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
    strokeArrowFromPoint({4, 10.5F}, {24, 10.5F});
    const Grid shown = canvas.pixels();
    EXPECT_EQ(shown.above(4, 10), red);
    EXPECT_EQ(shown.above(12, 10), red);
    EXPECT_EQ(shown.above(12, 11), transparent);
    EXPECT_EQ(shown.above(3, 10), transparent);
    for (int y = 8; y <= 12; ++y) EXPECT_EQ(shown.above(18, y), red) << y; // 3 high there, and its outline
    EXPECT_EQ(shown.above(18, 15), transparent);
    EXPECT_EQ(shown.above(18, 5), transparent);
    EXPECT_EQ(shown.above(26, 10), transparent);
}

TEST(PathShapes, AnArrowWithoutDirectionIsNotDrawn) {
    Canvas canvas(20, 20);
    NSColor::whiteColor().set();
    strokeArrowFromPoint({10, 10}, {10, 10});
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(20, 20)));
    NSRectFill(NSMakeRect(0, 0, 20, 20));
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(20, 20, white))) << "the context is as usable as before";
}

TEST(PathShapes, AnAppendedArrowheadRunsBackFromTheCurrentPoint) {
    NSBezierPath path;
    path.moveToPoint({10, 20});
    path.lineToPoint({30, 20});
    const float size = 14.142136F; // 10 · sqrt(2)
    appendArrowAtAngle(path, 0, size, std::numbers::pi_v<float> / 4);
    ASSERT_EQ(path.elementCount(), 6U);
    EXPECT_EQ(path.elementAtIndex(2), NSBezierPathElement::MoveTo);
    EXPECT_EQ(path.elementAtIndex(3), NSBezierPathElement::LineTo);
    EXPECT_EQ(path.elementAtIndex(4), NSBezierPathElement::LineTo);
    EXPECT_EQ(path.elementAtIndex(5), NSBezierPathElement::ClosePath);
    EXPECT_TRUE(isNear(pointOf(path, 2), 30, 20));
    EXPECT_TRUE(isNear(pointOf(path, 3), 30 - 7.0710678, 20 + 7.0710678));
    EXPECT_TRUE(isNear(pointOf(path, 4), 30 - 7.0710678, 20 - 7.0710678));
    EXPECT_TRUE(isNear(*path.currentPoint(), 30, 20));
}

TEST(PathShapes, AnAppendedArrowheadPointsAlongItsAngle) {
    NSBezierPath path;
    path.moveToPoint({7, 11});
    // Up; the sides of length 6 run back along 60 and 120 degrees.
    appendArrowAtAngle(path, std::numbers::pi_v<float> / 2, 8.485281F, std::numbers::pi_v<float> / 6);
    EXPECT_TRUE(isNear(pointOf(path, 2), 7 - 3, 11 - 5.1961524));
    EXPECT_TRUE(isNear(pointOf(path, 3), 7 + 3, 11 - 5.1961524));
    Canvas canvas(14, 14);
    NSColor::whiteColor().set();
    path.fill();
    EXPECT_EQ(canvas.pixels().above(6, 7), white);
    EXPECT_EQ(canvas.pixels().above(6, 11), transparent);
    EXPECT_EQ(canvas.pixels().above(6, 4), transparent);
}

TEST(PathShapes, AnArrowheadNeedsACurrentPoint) {
    NSBezierPath path;
    try {
        appendArrowAtAngle(path, 0, 10, 0.5F);
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), NSGenericException);
    }
    EXPECT_TRUE(path.isEmpty());
}

// Knobs

TEST(PathShapes, AKnobAsksForTheColourOfEachRowFromTheBottom) {
    Canvas canvas(30, 30);
    const NotingFunction function;
    drawAsKnob(rectangle(5, 7, 8, 10), function);
    EXPECT_EQ(function.params,
              (std::vector<float>{0.0F, 0.1F, 0.2F, 0.3F, 0.4F, 0.5F, 0.6F, 0.7F, 0.8F, 0.9F}));
    const NotingFunction another;
    drawAsKnob(rectangle(5, 7, 8, 2.5F), another);
    EXPECT_EQ(another.params, (std::vector<float>{0, 1 / 2.5F, 2 / 2.5F}));
}

TEST(PathShapes, AKnobsRowsHaveTheirColoursAndItsSidesAreDarker) {
    class Rows : public ColorFunction {
    public:
        NSColor colorForParam(float param) const override {
            return NSColor::colorWithCalibratedRed(param, 1, 1 - param, 1);
        }
    };
    Canvas canvas(20, 20, black);
    drawAsKnob(withoutOutline(rectangle(6, 9, 8, 5)), Rows());
    const Grid shown = canvas.pixels();
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 8; ++column) {
            const double left = 1 - std::abs(4.0 - column) / 8 * 0.5;
            const Rgba expected = rounded({left * row / 5, left, left * (1 - row / 5.0), 1});
            EXPECT_LE(difference(shown.above(6 + column, 9 + row), expected), 1)
                << row << ", " << column << ": " << shown.above(6 + column, 9 + row);
        }
    }
}

TEST(PathShapes, AKnobIsCutToItsPath) {
    Canvas canvas(40, 40, white);
    drawAsKnob(withoutOutline(bezierPathWithDiamondInRect(NSMakeRect(4, 4, 32, 32))),
               NotingFunction(NSColor::colorWithCalibratedRed(1, 0, 0, 1)));
    const Grid shown = canvas.pixels();
    EXPECT_EQ(shown.above(20, 20), red);
    EXPECT_EQ(shown.above(20, 34), red);
    EXPECT_EQ(shown.above(6, 34), white);
    EXPECT_EQ(shown.above(33, 34), white);
}

TEST(PathShapes, AKnobsRowsReplaceAlpha) {
    Canvas canvas(20, 20, red);
    drawAsKnob(withoutOutline(rectangle(6, 6, 8, 8)),
               NotingFunction(NSColor::colorWithCalibratedRed(0, 1, 0, 0.6F)));
    EXPECT_EQ(canvas.pixels().above(10, 10), (Rgba{0, 153, 0, 153})); // the column that is not darkened
    // Black of alpha 0.25 over it: 0.25 + 0.6 · 0.75 of alpha, 0.6 · 0.75 of green.
    EXPECT_LE(difference(canvas.pixels().above(6, 10), rounded({0, 0.45, 0, 0.7})), 1);
}

TEST(PathShapes, AKnobThrowsThreeShadowsDownAndToTheSides) {
    Canvas canvas(30, 30, white);
    drawAsKnob(withoutOutline(rectangle(10, 10, 10, 10)), NotingFunction());
    const Grid shown = canvas.pixels();
    // Their edges: i / 2 beyond the sides, 3/4 · i below and i / 4 below the top; dark gray is 85.
    const auto shaded = [](std::initializer_list<double> coverages) {
        double value = 255;
        for (const double coverage : coverages) value += (85 - value) * 0.2 * coverage;
        return gray(value);
    };
    EXPECT_LE(difference(shown.above(15, 9), shaded({0.75, 1, 1})), 2) << shown.above(15, 9);
    EXPECT_LE(difference(shown.above(15, 8), shaded({0, 0.5, 1})), 2) << shown.above(15, 8);
    EXPECT_LE(difference(shown.above(15, 7), shaded({0, 0, 0.25})), 2) << shown.above(15, 7);
    EXPECT_EQ(shown.above(15, 6), white);
    for (const int left : {0, 1}) {
        const auto beside = [&](int distance) {
            return shown.above(left != 0 ? 10 - distance : 19 + distance, 15);
        };
        EXPECT_LE(difference(beside(1), shaded({0.5, 1, 1})), 2) << beside(1);
        EXPECT_LE(difference(beside(2), shaded({0, 0, 0.5})), 2) << beside(2);
        EXPECT_EQ(beside(3), white);
    }
    EXPECT_EQ(shown.above(15, 20), white);
}

TEST(PathShapes, AKnobIsOutlinedInDarkGrayWithItsOwnLine) {
    Canvas canvas(40, 40, white);
    NSBezierPath path = rectangle(10, 10, 20, 20);
    path.setLineWidth(2);
    drawAsKnob(path, NotingFunction());
    EXPECT_EQ(canvas.pixels().above(9, 20), gray(85));
    EXPECT_EQ(canvas.pixels().above(10, 20), gray(85));
    EXPECT_EQ(canvas.pixels().above(20, 30), gray(85));
    EXPECT_EQ(canvas.pixels().above(20, 20), white);
}

TEST(PathShapes, AKnobLeavesTheStateAsItWas) {
    Canvas canvas(40, 40, white);
    NSColor::colorWithCalibratedRed(0, 0, 1, 1).set();
    drawAsKnob(rectangle(10, 10, 20, 20), *ColorFunction::aquaColorFunction());
    EXPECT_EQ(canvas.context().savedStateCount(), 0U);
    NSRectFill(NSMakeRect(0, 0, 40, 40));
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(40, 40, blue))) << "neither the clip nor the colour stays";
}

TEST(PathShapes, AKnobOfAnEmptyOrEndlessPathIsNotDrawn) {
    Canvas canvas(20, 20);
    const NotingFunction function;
    drawAsKnob(NSBezierPath(), function);
    NSBezierPath endless;
    endless.moveToPoint({0, 0});
    endless.lineToPoint({5, infinity});
    endless.lineToPoint({5, 0});
    drawAsKnob(endless, function);
    NSBezierPath nowhere;
    nowhere.moveToPoint({notANumber, 0});
    nowhere.lineToPoint({5, notANumber});
    drawAsKnob(nowhere, function);
    EXPECT_TRUE(function.params.empty());
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(20, 20)));
}

// Debugging

TEST(PathShapes, ATinyXIsTwoDiagonals) {
    const auto strokes = strokesOf([] {
        NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
        drawTinyX({30, 40});
    });
    EXPECT_EQ(strokes, (std::vector<Stroke>{{"100 0 0", "M 32 42 L 28 38"}, {"100 0 0", "M 28 42 L 32 38"}}));
    Canvas canvas(20, 20);
    NSColor::whiteColor().set();
    drawTinyX({10, 10});
    // A line of width 1 along a pixel's diagonal leaves two triangles with legs of 1 - sqrt(0.5) uncovered.
    for (const auto& [x, y] : {std::pair{8, 8}, {11, 11}, {8, 11}, {11, 8}}) {
        EXPECT_NEAR(canvas.pixels().above(x, y).a, 255 * (1 - 0.2929 * 0.2929), 4) << x << ", " << y;
    }
    for (const auto& [x, y] : {std::pair{7, 7}, {12, 12}, {7, 12}, {12, 7}, {10, 12}, {7, 10}}) {
        EXPECT_EQ(canvas.pixels().above(x, y), transparent) << x << ", " << y;
    }
}

TEST(PathShapes, DebugDrawingShowsEachElementInTheColourOfItsIndex) {
    NSBezierPath path;
    path.moveToPoint({10, 10});
    path.lineToPoint({30, 10});
    path.curveToPoint({50, 40}, {40, 10}, {50, 20});
    path.closePath();
    path.lineToPoint({20, 30}); // goes on from the subpath's start
    path.moveToPoint({60, 60});
    const std::string even = "0 0 0";
    const std::string odd = "50 0 50";
    const std::string cyan = "0 100 100";
    EXPECT_EQ(strokesOf([&path] { strokeDebug(path); }), (std::vector<Stroke>{
                                                             {even, "M 12 12 L 8 8"},
                                                             {even, "M 8 12 L 12 8"},
                                                             {odd, "M 10 10 L 30 10"},
                                                             {odd, "M 32 12 L 28 8"},
                                                             {odd, "M 28 12 L 32 8"},
                                                             {cyan, "M 30 10 L 40 10"},
                                                             {even, "M 30 10 C 40 10 50 20 50 40"},
                                                             {cyan, "M 50 20 L 50 40"},
                                                             {even, "M 52 42 L 48 38"},
                                                             {even, "M 48 42 L 52 38"},
                                                             {odd, "M 50 40 L 10 10"},
                                                             {odd, "M 12 12 L 8 8"},
                                                             {odd, "M 8 12 L 12 8"},
                                                             {even, "M 10 10 L 20 30"},
                                                             {even, "M 22 32 L 18 28"},
                                                             {even, "M 18 32 L 22 28"},
                                                             {odd, "M 62 62 L 58 58"},
                                                             {odd, "M 58 62 L 62 58"},
                                                         }));
}

TEST(PathShapes, DebugDrawingReachesPixels) {
    Canvas canvas(40, 40, white);
    NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
    NSBezierPath path;
    path.moveToPoint({5.5F, 5.5F});
    path.lineToPoint({30.5F, 5.5F});
    path.curveToPoint({30.5F, 30.5F}, {36.5F, 5.5F}, {30.5F, 20.5F});
    strokeDebug(path);
    EXPECT_EQ(canvas.pixels().above(15, 5), (Rgba{128, 0, 128, 255}));
    EXPECT_EQ(canvas.pixels().above(34, 5), (Rgba{0, 255, 255, 255})) << "to the first control point";
    EXPECT_EQ(canvas.pixels().above(30, 22), (Rgba{0, 255, 255, 255})) << "from the second one";
    EXPECT_LE(difference(canvas.pixels().above(4, 4), gray(22)), 4) << "the tiny x, as wide as above";
    NSRectFill(NSMakeRect(0, 0, 40, 40));
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(40, 40, red))) << "the colour is what it was";
    strokeDebug(NSBezierPath());
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(40, 40, red)));
}

TEST(PathShapes, TheApplicationReplacesTheNamedColours) {
    const Appearance before = appearance();
    Appearance other = before;
    other.purple = NSColor::colorWithCalibratedRed(0, 1, 0, 1);
    other.cyan = NSColor::colorWithCalibratedRed(0, 0, 1, 1);
    other.darkGray = NSColor::colorWithCalibratedRed(1, 0, 0, 1);
    setAppearance(other);
    NSBezierPath path;
    path.moveToPoint({10, 10});
    path.curveToPoint({40, 10}, {10, 30}, {40, 30});
    const auto strokes = strokesOf([&path] { strokeDebug(path); });
    Canvas canvas(20, 20, white);
    drawAsKnob(rectangle(5.5F, 5.5F, 10, 10), NotingFunction());
    setAppearance(before);
    ASSERT_EQ(strokes.size(), 7U);
    EXPECT_EQ(strokes[2].color, "0 0 100");
    EXPECT_EQ(strokes[3].color, "0 100 0");
    EXPECT_EQ(strokes[4].color, "0 0 100");
    EXPECT_EQ(canvas.pixels().above(5, 10), red);
}

TEST(PathShapes, WithoutAContextNothingHappens) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    strokeArrowFromPoint({0, 0}, {10, 0});
    drawAsKnob(rectangle(0, 0, 4, 4), *ColorFunction::grayColorFunction());
    strokeDebug(rectangle(0, 0, 4, 4));
    drawTinyX({1, 1});
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}
