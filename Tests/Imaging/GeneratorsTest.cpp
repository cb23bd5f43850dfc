#include "Imaging/Generators.h"

#include "Imaging/GraphicsContext.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Graphics/BezierPath.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <sstream>

namespace {

using namespace ImagingTests;
using Imaging::GraphicsContext;
using Imaging::IMGConstantImageGenerator;
using Imaging::IMGNullGenerator;
using Imaging::IMGSimpleFrameGenerator;
using Imaging::Platform::NSBezierPath;
using Imaging::Platform::NSBezierPathElement;
using Imaging::Platform::NSColor;
using Imaging::Platform::NSCompositeSourceOver;

/// Notes the paths that it is asked to fill, and fills them in the current context.
class RecordingContext : public GraphicsContext {
public:
    struct Fill {
        NSBezierPath path;
        NSColor color;
    };
    std::vector<Fill> fills;
    int otherCalls = 0;

    void fillBezierPath(NSBezierPath& path, const NSColor& color) override {
        fills.push_back({path, color});
        const Imaging::Platform::NSGraphicsStateScope state;
        color.set();
        path.fill();
    }
    void fillRect(NSRect, const NSColor&, Imaging::CompositingOperation) override { ++otherCalls; }
    void drawImage(IMGImage&, const TransformAndClipList&, Imaging::CompositingOperation, float) override {
        ++otherCalls;
    }
    using GraphicsContext::drawImage;
};

/// What a record adds: a transform, and a clip rectangle in the space that it acts on.
struct Record {
    NSAffineTransform transform;
    std::optional<NSRect> clip = std::nullopt;
};

TransformAndClipList listOf(const std::vector<Record>& records) {
    TransformAndClipList list;
    for (const Record& r : records) {
        list = list.appending(
            r.clip.has_value() ? TransformAndClipRect::transformAndClipRectWithTransform(r.transform, *r.clip)
                               : TransformAndClipRect::transformAndClipRectWithTransform(r.transform));
    }
    return list;
}

NSAffineTransform turned(float degrees) {
    NSAffineTransform transform;
    transform.rotateByDegrees(degrees);
    return transform;
}

NSColor orange(float alpha) { return NSColor::colorWithCalibratedRed(1, 0.6F, 0.2F, alpha); }

/// That colour on nothing, premultiplied: each component and the alpha rounded to bytes.
Rgba orangePixel(double alpha) {
    const auto byte = [&](double v) { return static_cast<std::uint8_t>(std::lround(v * alpha * 255)); };
    return {byte(1), byte(0.6F), byte(0.2F), byte(1)};
}

/// A picture that shows the pixel wherever the test says so of a pixel's centre (y upward).
Grid gridWhere(int width, int height, Rgba pixel, const std::function<bool(double, double)>& isPainted) {
    Grid grid(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (isPainted(x + 0.5, height - 1 - y + 0.5)) grid.at(x, y) = pixel;
        }
    }
    return grid;
}

bool isWithin(double x, double y, double left, double bottom, double right, double top) {
    return x > left && x < right && y > bottom && y < top;
}

/// What a node draws on transparent pixels under the records.
Grid drawn(IMGImage& node, int width, int height, const std::vector<Record>& records, float fraction,
           IMGDrawingTarget* target) {
    Pixels::Canvas canvas(width, height);
    node.drawImage(nullptr, listOf(records), NSCompositeSourceOver, fraction, target);
    return canvas.pixels();
}

/// A path's elements in words, such as "M 0 0 L 1 0 Z".
std::string described(const NSBezierPath& path) {
    std::ostringstream out;
    std::array<NSPoint, 3> points;
    for (std::size_t i = 0; i < path.elementCount(); ++i) {
        const NSBezierPathElement kind = path.elementAtIndex(i, &points);
        if (i > 0) out << ' ';
        if (kind == NSBezierPathElement::ClosePath) {
            out << 'Z';
        } else {
            out << (kind == NSBezierPathElement::MoveTo ? "M " : "L ") << points[0].x << ' ' << points[0].y;
        }
    }
    return out.str();
}

/// Both ways of drawing, one test each.
class EitherWay : public testing::TestWithParam<bool> {
protected:
    Grid draw(IMGImage& node, int width, int height, const std::vector<Record>& records, float fraction) {
        return drawn(node, width, height, records, fraction, GetParam() ? &m_target : nullptr);
    }
    RecordingContext m_target;
};

std::string nameOfWay(const testing::TestParamInfo<bool>& way) {
    return way.param ? "ThroughATarget" : "InTheCurrentContext";
}

INSTANTIATE_TEST_SUITE_P(Generators, EitherWay, testing::Bool(), nameOfWay);

// Null

TEST_P(EitherWay, ANullGeneratorDrawsNothing) {
    const auto node = IMGNullGenerator::generatorWithSize({8, 6});
    EXPECT_EQ(draw(*node, 8, 6, {{}}, 1), Grid(8, 6));
    EXPECT_TRUE(m_target.fills.empty());
    EXPECT_EQ(m_target.otherCalls, 0);
}

TEST(NullGenerator, AsksNothingOfATargetThatDrawsWholeNodes) {
    RecordingTarget target;
    IMGNullGenerator::generatorWithSize({8, 6})->drawWithTransform({}, NSCompositeSourceOver, 1, &target);
    EXPECT_TRUE(target.calls.empty());
}

// Constant

TEST_P(EitherWay, AConstantFillsItsRectangleUnderTheTransforms) {
    const auto node = IMGConstantImageGenerator::generatorWithSize({5, 3}, orange(1));
    // Deepest first: doubled, then moved.
    const Grid pixels = draw(*node, 16, 12, {{moved(2, 1)}, {matrix(2, 0, 0, 2, 0, 0)}}, 1);
    EXPECT_TRUE(Pixels::areAlike(pixels, gridWhere(16, 12, orangePixel(1), [](double x, double y) {
                                     return isWithin(x, y, 2, 1, 12, 7);
                                 })));
}

TEST_P(EitherWay, AConstantsAlphaIsTheFractionWhateverTheColours) {
    const auto node = IMGConstantImageGenerator::generatorWithSize({4, 4}, orange(0.5F));
    EXPECT_EQ(draw(*node, 4, 4, {{}}, 1), Grid(4, 4, orangePixel(1)));
    EXPECT_TRUE(Pixels::areAlike(draw(*node, 4, 4, {{}}, 0.25F), Grid(4, 4, orangePixel(0.25)), 1));
}

TEST_P(EitherWay, AConstantPaintsOverWhateverTheOperation) {
    const auto node = IMGConstantImageGenerator::generatorWithSize({2, 4}, orange(1));
    for (const int operation : {0, 1, 3, 7, 8, 10, 13, -5}) {
        Pixels::Canvas canvas(4, 4, Pixels::blue);
        node->drawImage(nullptr, listOf({{}}), operation, 1, GetParam() ? &m_target : nullptr);
        Grid expected(4, 4, Pixels::blue);
        for (int y = 0; y < 4; ++y) expected.at(0, y) = expected.at(1, y) = orangePixel(1);
        EXPECT_EQ(canvas.pixels(), expected) << operation;
    }
}

TEST_P(EitherWay, AGeneratorIgnoresARenderedPicture) {
    const auto picture = std::make_shared<CCImage>(Pixels::imageOf(Grid(4, 4, Pixels::green)));
    Pixels::Canvas canvas(4, 4);
    IMGConstantImageGenerator::generatorWithSize({4, 4}, orange(1))
        ->drawImage(picture, listOf({{}}), NSCompositeSourceOver, 1, GetParam() ? &m_target : nullptr);
    EXPECT_EQ(canvas.pixels(), Grid(4, 4, orangePixel(1)));
}

TEST_P(EitherWay, AConstantIsCutByEveryClipRectangle) {
    const auto node = IMGConstantImageGenerator::generatorWithSize({20, 20}, orange(1));
    const Grid pixels = draw(*node, 20, 20,
                             {{moved(3, 2), NSMakeRect(0, 0, 10, 10)}, // (3, 2) to (13, 12)
                              {moved(4, 0)},
                              {moved(1, 0), NSMakeRect(-2, 5, 100, 100)}}, // from (6, 7)
                             1);
    EXPECT_TRUE(Pixels::areAlike(pixels, gridWhere(20, 20, orangePixel(1), [](double x, double y) {
                                     return isWithin(x, y, 8, 7, 13, 12);
                                 })));
}

TEST_P(EitherWay, AConstantThatItsClipsMissPaintsNothing) {
    const auto node = IMGConstantImageGenerator::generatorWithSize({5, 5}, orange(1));
    EXPECT_EQ(draw(*node, 9, 9, {{{}, NSMakeRect(6, 6, 3, 3)}}, 1), Grid(9, 9));
    EXPECT_EQ(draw(*node, 9, 9, {{{}, NSMakeRect(0, 0, 2, 2)}, {{}, NSMakeRect(3, 3, 2, 2)}}, 1), Grid(9, 9));
    EXPECT_TRUE(m_target.fills.empty());
}

/// Whether pixels are as a test says of their centres, but for those whose centre lies within 0.75 of the
/// lines |u| = 6 and |v| = 6 around (15, 15), u and v along axes turned by 30 degrees, or of a given border.
testing::AssertionResult isTurnedSquare(const Grid& pixels, double borderX, Rgba pixel) {
    const double c = std::sqrt(3.0) / 2;
    const double s = 0.5;
    int checked = 0;
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x) {
            const double px = x + 0.5;
            const double dx = px - 15;
            const double dy = y + 0.5 - 15;
            const double reach = std::max(std::fabs(c * dx + s * dy), std::fabs(-s * dx + c * dy));
            if (std::fabs(reach - 6) < 0.75 || std::fabs(px - borderX) < 0.75) continue;
            const Rgba expected = reach < 6 && px < borderX ? pixel : Pixels::transparent;
            ++checked;
            if (pixels.above(x, y) == expected) continue;
            return testing::AssertionFailure() << "at " << x << ", " << y << ": " << pixels.above(x, y);
        }
    }
    return checked > 500 ? testing::AssertionSuccess() : testing::AssertionFailure() << checked;
}

TEST_P(EitherWay, AConstantIsCutByATurnedClip) {
    const auto node = IMGConstantImageGenerator::generatorWithSize({17, 30}, orange(1));
    const Grid pixels = draw(
        *node, 30, 30,
        {{moved(15, 15)}, {turned(30), NSMakeRect(-6, -6, 12, 12)}, {turned(-30)}, {moved(-15, -15)}}, 1);
    EXPECT_TRUE(isTurnedSquare(pixels, 17, orangePixel(1)));
}

TEST_P(EitherWay, AConstantIsTurnedUnderAClip) {
    const auto node = IMGConstantImageGenerator::generatorWithSize({12, 12}, orange(1));
    const Grid pixels = draw(
        *node, 30, 30, {{{}, NSMakeRect(0, 0, 17, 30)}, {moved(15, 15)}, {turned(30)}, {moved(-6, -6)}}, 1);
    EXPECT_TRUE(isTurnedSquare(pixels, 17, orangePixel(1)));
}

TEST_P(EitherWay, AShapeIsPaintedWhereverItReaches) {
    const auto shape = std::make_shared<NSBezierPath>(NSBezierPath::bezierPathWithRect({{-3, 2}, {12, 4}}));
    const auto node = IMGConstantImageGenerator::generatorWithSize({4, 4}, orange(1), shape);
    EXPECT_TRUE(Pixels::areAlike(
        draw(*node, 16, 9, {{moved(5, 1)}}, 1),
        gridWhere(16, 9, orangePixel(1), [](double x, double y) { return isWithin(x, y, 2, 3, 14, 7); })));
    EXPECT_TRUE(Pixels::areAlike(
        draw(*node, 16, 9, {{moved(5, 1), NSMakeRect(-1, 0, 8, 20)}}, 1),
        gridWhere(16, 9, orangePixel(1), [](double x, double y) { return isWithin(x, y, 4, 3, 12, 7); })));
}

std::shared_ptr<NSBezierPath> squareAround(float low, float high, float holeLow, float holeHigh) {
    auto shape = std::make_shared<NSBezierPath>(
        NSBezierPath::bezierPathWithRect({{low, low}, {high - low, high - low}}));
    shape->appendBezierPathWithRect({{holeLow, holeLow}, {holeHigh - holeLow, holeHigh - holeLow}});
    shape->setWindingRule(Imaging::Platform::NSWindingRule::EvenOdd);
    return shape;
}

TEST_P(EitherWay, AHoleOfAShapeIsPaintedTooClippedOrNot) {
    const auto node =
        IMGConstantImageGenerator::generatorWithSize({10, 10}, orange(1), squareAround(1, 9, 3, 6));
    const Grid solid =
        gridWhere(10, 10, orangePixel(1), [](double x, double y) { return isWithin(x, y, 1, 1, 9, 9); });
    EXPECT_TRUE(Pixels::areAlike(draw(*node, 10, 10, {{}}, 1), solid));
    EXPECT_TRUE(Pixels::areAlike(draw(*node, 10, 10, {{{}, NSMakeRect(-5, -5, 50, 50)}}, 1), solid));
}

TEST_P(EitherWay, AHoleOfATranslucentShapeIsPaintedTwice) {
    const auto node =
        IMGConstantImageGenerator::generatorWithSize({10, 10}, orange(1), squareAround(1, 9, 3, 6));
    const Grid pixels = draw(*node, 10, 10, {{{}, NSMakeRect(-5, -5, 50, 50)}}, 0.5F);
    EXPECT_NEAR(pixels.above(2, 2).a, 127.5, 1);
    EXPECT_NEAR(pixels.above(4, 4).a, 191.25, 1); // 1 - (1 - 1/2)²
}

TEST(ConstantGenerator, FillsEachContourOfAShapeByItself) {
    RecordingContext target;
    const auto node =
        IMGConstantImageGenerator::generatorWithSize({10, 10}, orange(1), squareAround(1, 9, 3, 6));
    node->drawWithTransform(moved(10, 20), NSCompositeSourceOver, 1, &target);
    ASSERT_EQ(target.fills.size(), 2U);
    EXPECT_EQ(described(target.fills[0].path), "M 11 21 L 19 21 L 19 29 L 11 29 Z");
    EXPECT_EQ(described(target.fills[1].path), "M 13 23 L 16 23 L 16 26 L 13 26 Z");
}

TEST(ConstantGenerator, KeepsTheShapeItselfSoThatLaterChangesShow) {
    const auto shape = std::make_shared<NSBezierPath>(NSBezierPath::bezierPathWithRect({{0, 0}, {2, 2}}));
    const auto node = IMGConstantImageGenerator::generatorWithSize({9, 9}, orange(1), shape);
    shape->transformUsingAffineTransform(moved(4, 0));
    EXPECT_TRUE(Pixels::areAlike(
        drawn(*node, 9, 9, {{}}, 1, nullptr),
        gridWhere(9, 9, orangePixel(1), [](double x, double y) { return isWithin(x, y, 4, 0, 6, 2); })));
}

TEST(ConstantGenerator, FillsARectangleInOnePathWithItsExactCorners) {
    RecordingContext target;
    const auto node = IMGConstantImageGenerator::generatorWithSize({0.1F, 1e6F}, orange(0.5F));
    node->drawWithTransform({}, NSCompositeSourceOver, 0.75F, &target);
    ASSERT_EQ(target.fills.size(), 1U);
    EXPECT_EQ(described(target.fills[0].path), "M 0 0 L 0.1 0 L 0.1 1e+06 L 0 1e+06");
    EXPECT_EQ(target.fills[0].path.bounds().size.width, 0.1F);
    EXPECT_TRUE(target.fills[0].color.isEqual(orange(0.75F)));
}

TEST(ConstantGenerator, PaintsNothingWithoutAnArea) {
    RecordingContext target;
    for (const NSSize size : {NSSize{0, 5}, NSSize{5, 0}, NSSize{0, 0}}) {
        IMGConstantImageGenerator::generatorWithSize(size, orange(1))
            ->drawWithTransform({}, NSCompositeSourceOver, 1, &target);
    }
    IMGConstantImageGenerator::generatorWithSize({5, 5}, orange(1))
        ->drawWithTransform(matrix(0, 0, 0, 1, 0, 0), NSCompositeSourceOver, 1, &target);
    EXPECT_TRUE(target.fills.empty());
}

TEST_P(EitherWay, AConstantPaintsNothingUnderValuesThatAreNotFinite) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const auto node = IMGConstantImageGenerator::generatorWithSize({5, 5}, orange(1));
    for (const float bad : {nan, infinity, -infinity}) {
        EXPECT_EQ(draw(*node, 5, 5, {{moved(bad, 0)}}, 1), Grid(5, 5));
        EXPECT_EQ(draw(*node, 5, 5, {{{}, NSMakeRect(0, bad, 5, 5)}}, 1), Grid(5, 5));
    }
}

// Frame

TEST_P(EitherWay, AFrameIsWhatLiesBetweenTheRectangleAndTheInsetOne) {
    const auto node = IMGSimpleFrameGenerator::generatorWithSize({14, 10}, orange(1), 2);
    EXPECT_TRUE(Pixels::areAlike(draw(*node, 20, 15, {{moved(3, 4)}}, 1),
                                 gridWhere(20, 15, orangePixel(1), [](double x, double y) {
                                     return isWithin(x, y, 3, 4, 17, 14) && !isWithin(x, y, 5, 6, 15, 12);
                                 })));
}

TEST_P(EitherWay, AFramesAlphaIsItsColoursTimesTheFraction) {
    const auto node = IMGSimpleFrameGenerator::generatorWithSize({8, 8}, orange(0.5F), 1);
    const Grid quarter = draw(*node, 8, 8, {{}}, 0.5F);
    const Grid half = draw(*node, 8, 8, {{}}, 1);
    EXPECT_TRUE(Pixels::areAlike(
        quarter,
        gridWhere(8, 8, orangePixel(0.25), [](double x, double y) { return !isWithin(x, y, 1, 1, 7, 7); }),
        1));
    EXPECT_TRUE(Pixels::areAlike(
        half,
        gridWhere(8, 8, orangePixel(0.5), [](double x, double y) { return !isWithin(x, y, 1, 1, 7, 7); }),
        1));
}

TEST_P(EitherWay, TheColoursAlphaCountsForAFrameAndNotForAConstant) {
    const auto frame = IMGSimpleFrameGenerator::generatorWithSize({4, 4}, orange(0.5F), 1);
    const auto constant = IMGConstantImageGenerator::generatorWithSize({4, 4}, orange(0.5F));
    EXPECT_NEAR(draw(*frame, 4, 4, {{}}, 1).above(0, 0).a, 127.5, 1);
    EXPECT_EQ(draw(*constant, 4, 4, {{}}, 1).above(0, 0).a, 255);
    if (!GetParam()) return;
    ASSERT_EQ(m_target.fills.size(), 5U);
    EXPECT_TRUE(m_target.fills.front().color.isEqual(orange(0.5F)));
    EXPECT_TRUE(m_target.fills.back().color.isEqual(orange(1)));
}

TEST_P(EitherWay, ATranslucentFrameHasEvenAlphaUnderAClip) {
    const auto node = IMGSimpleFrameGenerator::generatorWithSize({14, 10}, orange(0.5F), 2);
    const Grid pixels = draw(*node, 14, 10, {{{}, NSMakeRect(-1, 1, 12, 40)}}, 1);
    EXPECT_TRUE(Pixels::areAlike(pixels,
                                 gridWhere(14, 10, orangePixel(0.5),
                                           [](double x, double y) {
                                               return isWithin(x, y, 0, 1, 11, 10) &&
                                                      !isWithin(x, y, 2, 2, 12, 8);
                                           }),
                                 1));
}

TEST_P(EitherWay, AFrameInsideItsClipKeepsItsInsideUnpainted) {
    const auto node = IMGSimpleFrameGenerator::generatorWithSize({14, 10}, orange(0.5F), 2);
    const Grid clipped = draw(*node, 14, 10, {{{}, NSMakeRect(-50, -50, 100, 100)}}, 1);
    EXPECT_TRUE(Pixels::areAlike(clipped, draw(*node, 14, 10, {{}}, 1)));
    EXPECT_EQ(clipped.above(7, 5), Pixels::transparent);
}

TEST_P(EitherWay, AFrameIsCutByATurnedClip) {
    // So wide that its line fills all that the clip shows left of 17.
    const auto node = IMGSimpleFrameGenerator::generatorWithSize({60, 200}, orange(0.5F), 17);
    const Grid pixels = draw(
        *node, 30, 30,
        {{moved(15, 15)}, {turned(30), NSMakeRect(-6, -6, 12, 12)}, {turned(-30)}, {moved(-15, -115)}}, 1);
    const Rgba pixel = pixels.above(14, 15);
    EXPECT_TRUE(isTurnedSquare(pixels, 17, pixel));
    EXPECT_LE(Pixels::difference(pixel, orangePixel(0.5)), 1);
}

TEST(FrameGenerator, FillsFourStripsThroughATarget) {
    RecordingContext target;
    IMGSimpleFrameGenerator::generatorWithSize({14, 10}, orange(1), 2)
        ->drawWithTransform({}, NSCompositeSourceOver, 1, &target);
    ASSERT_EQ(target.fills.size(), 4U);
    EXPECT_EQ(described(target.fills[0].path), "M 0 0 L 0 2 L 14 2 L 14 0 Z");
    EXPECT_EQ(described(target.fills[1].path), "M 0 8 L 0 10 L 14 10 L 14 8 Z");
    EXPECT_EQ(described(target.fills[2].path), "M 0 2 L 0 8 L 2 8 L 2 2 Z");
    EXPECT_EQ(described(target.fills[3].path), "M 12 2 L 12 8 L 14 8 L 14 2 Z");
}

TEST(FrameGenerator, BuildsSideStripsOfNegativeHeightAsTheyAre) {
    RecordingContext target;
    IMGSimpleFrameGenerator::generatorWithSize({14, 4}, orange(1), 3)
        ->drawWithTransform({}, NSCompositeSourceOver, 1, &target);
    ASSERT_EQ(target.fills.size(), 4U);
    EXPECT_EQ(described(target.fills[0].path), "M 0 0 L 0 3 L 14 3 L 14 0 Z");
    EXPECT_EQ(described(target.fills[1].path), "M 0 1 L 0 4 L 14 4 L 14 1 Z");
    EXPECT_EQ(described(target.fills[2].path), "M 0 3 L 0 1 L 3 1 L 3 3 Z");
    EXPECT_EQ(described(target.fills[3].path), "M 11 3 L 11 1 L 14 1 L 14 3 Z");
}

TEST(FrameGenerator, PaintsStripsOfNegativeHeightUnderAClipAsWithoutOne) {
    const auto node = IMGSimpleFrameGenerator::generatorWithSize({14, 4}, orange(0.5F), 3);
    RecordingContext target;
    const Grid plain = drawn(*node, 14, 4, {{}}, 1, &target);
    EXPECT_TRUE(Pixels::areAlike(drawn(*node, 14, 4, {{{}, NSMakeRect(-9, -9, 99, 99)}}, 1, &target), plain));
    // Once at the bottom; twice where bottom and top overlap; three times where a side strip joins them.
    EXPECT_NEAR(plain.above(7, 0).a, 127.5, 1);
    EXPECT_NEAR(plain.above(7, 2).a, 191.25, 1);
    EXPECT_NEAR(plain.above(1, 2).a, 223.125, 1);
}

TEST(FrameGenerator, PaintsNothingUnderValuesThatAreNotFiniteInTheCurrentContext) {
    const auto node = IMGSimpleFrameGenerator::generatorWithSize({8, 8}, orange(1), 2);
    EXPECT_EQ(drawn(*node, 8, 8, {{moved(NAN, 0)}}, 1, nullptr), Grid(8, 8));
    EXPECT_EQ(drawn(*node, 8, 8, {{{}, NSMakeRect(0, 0, NAN, 5)}}, 1, nullptr), Grid(8, 8));
}

// All of them

std::vector<std::shared_ptr<IMGImage>> oneOfEach(NSSize size) {
    return {IMGNullGenerator::generatorWithSize(size),
            IMGConstantImageGenerator::generatorWithSize(size, orange(1)),
            IMGConstantImageGenerator::generatorWithSize(size, orange(1), squareAround(-5, 90, 3, 6)),
            IMGSimpleFrameGenerator::generatorWithSize(size, orange(1), 2)};
}

TEST(Generators, HaveTheBoundsOfTheirSizeAndNoSources) {
    for (const auto& node : oneOfEach({8, 6})) {
        EXPECT_TRUE(node->sources().empty());
        EXPECT_TRUE(isRect(node->imageBounds().rectangle(), 0, 0, 8, 6));
        ASSERT_TRUE(node->imageBounds().transform().has_value());
        EXPECT_TRUE(isTransform(*node->imageBounds().transform(), NSAffineTransform()));
    }
}

TEST(Generators, AnswerForTheirOwnBoundsOnly) {
    const auto other = IMGNullGenerator::generatorWithSize({1, 1});
    for (const auto& node : oneOfEach({8, 6})) {
        const auto bounds = node->boundsForImage(*node, matrix(2, 1, 0, 1, 5, 7));
        ASSERT_TRUE(bounds.has_value());
        EXPECT_TRUE(isRect(bounds->rectangle(), 0, 0, 8, 6));
        EXPECT_TRUE(isTransform(*bounds->transform(), matrix(2, 1, 0, 1, 5, 7)));
        EXPECT_FALSE(node->boundsForImage(*other, NSAffineTransform()).has_value());
    }
}

TEST(Generators, AreDrawnAsWholeNodesByATargetWithoutAGraphicsContext) {
    const std::vector<std::shared_ptr<IMGImage>> nodes = oneOfEach({8, 6});
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        RecordingTarget target;
        Pixels::Canvas canvas(8, 6);
        nodes[i]->drawImage(nullptr, listOf({{moved(1, 2), NSMakeRect(0, 0, 3, 3)}}), 7, 0.5F, &target);
        ASSERT_EQ(target.calls.size(), 1U);
        EXPECT_EQ(target.calls[0].node, nodes[i].get());
        EXPECT_EQ(target.calls[0].operation, 7);
        EXPECT_EQ(target.calls[0].fraction, 0.5F);
        ASSERT_EQ(target.calls[0].records.size(), 1U);
        EXPECT_TRUE(isRect(target.calls[0].records[0].clipRect(), 0, 0, 3, 3));
        EXPECT_EQ(canvas.pixels(), Grid(8, 6));
    }
}

TEST(Generators, PaintNothingAnywhereThroughATargetThatFillsNoPaths) {
    GraphicsContext target;
    for (const auto& node : oneOfEach({8, 6})) EXPECT_EQ(drawn(*node, 8, 6, {{}}, 1, &target), Grid(8, 6));
}

TEST(Generators, LeaveTheContextAsItWas) {
    for (const auto& node : oneOfEach({8, 6})) {
        Pixels::Canvas canvas(8, 6);
        canvas.context().setColor(NSColor::colorWithCalibratedRed(0, 0, 1, 1));
        node->drawImage(nullptr, listOf({{moved(1, 2), NSMakeRect(0, 0, 3, 3)}}), 2, 1, nullptr);
        EXPECT_EQ(canvas.context().savedStateCount(), 0U);
        Imaging::Platform::NSRectFill(NSMakeRect(0, 0, 8, 6));
        EXPECT_EQ(canvas.pixels(), Grid(8, 6, Pixels::blue));
    }
}

TEST(Generators, DoNothingWithoutAContext) {
    ASSERT_EQ(Imaging::Platform::NSGraphicsContext::currentContext(), nullptr);
    for (const auto& node : oneOfEach({8, 6})) EXPECT_NO_THROW(node->drawWithTransform({}, 2, 1));
}

TEST(Generators, PassOnWhatATargetThrows) {
    class FailingContext : public GraphicsContext {
        void fillBezierPath(NSBezierPath&, const NSColor&) override { throw std::runtime_error("full"); }
    } target;
    const std::vector<std::shared_ptr<IMGImage>> nodes = oneOfEach({8, 6});
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        EXPECT_THROW(nodes[i]->drawWithTransform({}, 2, 1, &target), std::runtime_error);
    }
}

TEST(Generators, CopyToNodesThatDrawTheSame) {
    for (const auto& node : oneOfEach({8, 6})) {
        const std::shared_ptr<IMGImage> copy = node->copy();
        ASSERT_NE(copy, nullptr);
        EXPECT_NE(copy, node);
        EXPECT_EQ(copy->archiveClassName(), node->archiveClassName());
        EXPECT_TRUE(isSize(copy->imageSize(), 8, 6));
        EXPECT_EQ(drawn(*copy, 12, 12, {{}}, 0.5F, nullptr), drawn(*node, 12, 12, {{}}, 0.5F, nullptr));
    }
}

TEST(Generators, ComeBackFromAnArchiveWithoutASizeAndDrawNothing) {
    for (const auto& node : oneOfEach({8, 6})) {
        const Imaging::Platform::NSData data = Imaging::Platform::archivedDataWithRootObject(*node);
        const auto back = Imaging::Platform::unarchiveObjectOfClass<IMGImage>(data);
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(back->archiveClassName(), node->archiveClassName());
        EXPECT_TRUE(isSize(back->imageBounds().rectangle().size, 0, 0));
        EXPECT_EQ(drawn(*back, 8, 6, {{}}, 1, nullptr), Grid(8, 6));
    }
}

} // namespace
