#include "Imaging/CocoaGraphicsContext.h"

#include "Imaging/GraphicsUtilities.h"
#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/BezierPath.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

using namespace ImagingTests;
using Imaging::CocoaGraphicsContext;
using Imaging::Platform::NSBezierPath;
using Imaging::Platform::NSColor;
using Imaging::Platform::NSGraphicsContext;
using Pixels::Canvas;
using Pixels::composed;
using Pixels::Random;

namespace {

constexpr int width = 60;
constexpr int height = 50;

const NSColor halfRed = NSColor::colorWithCalibratedRed(1, 0, 0, 0.4F);
constexpr Rgba halfRedPixel{102, 0, 0, 102};

template<class Body>
Grid over(const Grid& ground, const Body& body) {
    Canvas canvas(ground);
    body();
    return canvas.pixels();
}

/// The ground with a pixel composed over each of a rectangle's pixels.
Grid withRect(Grid ground, int x, int y, int w, int h, int operation, Rgba pixel, double fraction = 1) {
    for (int row = y; row < y + h; ++row) {
        for (int column = x; column < x + w; ++column) {
            Rgba& there = ground.at(column, height - 1 - row);
            there = Pixels::rounded(composed(operation, pixel, there, fraction, 1));
        }
    }
    return ground;
}

/// Each operation of the target by name, on a rectangle off the origin.
std::vector<std::pair<std::string, std::function<void(CocoaGraphicsContext&)>>> allOperations() {
    const NSRect rect = NSMakeRect(7, 5, 40, 30);
    auto oval = NSBezierPath::bezierPathWithOvalInRect(rect);
    const auto node = pictureNode(distinctPicture(5, 4));
    const auto list =
        TransformAndClipList(TransformAndClipRect::transformAndClipRectWithTransform(moved(9, 8)));
    return {
        {"frame", [=](auto& t) { t.drawFrameInside(rect, true); }},
        {"hint", [=](auto& t) { t.drawHintText("hint", rect); }},
        {"focus ring", [=](auto& t) { t.drawFocusRingInside(rect); }},
        {"fill", [=](auto& t) { t.fillRect(rect, halfRed, Imaging::Platform::NSCompositeSourceOver); }},
        {"rect frame", [=](auto& t) { t.frameRect(rect, halfRed, 3); }},
        {"path fill", [=](auto& t) mutable { t.fillBezierPath(oval, halfRed); }},
        {"path stroke", [=](auto& t) mutable { t.strokeBezierPath(oval, halfRed); }},
        {"image", [=](auto& t) { t.drawImage(node, rect, Imaging::Platform::NSCompositeSourceOver, 0.5F); }},
        {"image under records",
         [=](auto& t) { t.drawImage(*node, list, Imaging::Platform::NSCompositeSourceOver, 1); }},
    };
}

} // namespace

TEST(CocoaGraphicsContext, CanDrawPartial) { EXPECT_TRUE(CocoaGraphicsContext().canDrawPartial()); }

TEST(CocoaGraphicsContext, BeginsAFrameLikeEveryTarget) {
    CocoaGraphicsContext target;
    target.setImageClipRect(NSMakeRect(1, 2, 3, 4));
    target.beginDrawing(NSMakeRect(5, 6, 7, 8));
    EXPECT_TRUE(isRect(target.bounds(), 5, 6, 7, 8));
    EXPECT_TRUE(isRect(target.imageClipRect(), 0, 0, 0, 0));
}

TEST(CocoaGraphicsContext, FillsWithEveryOperation) {
    Random random(312);
    CocoaGraphicsContext target;
    for (int operation = 0; operation < 14; ++operation) {
        const Grid ground = random.grid(width, height);
        const Grid grid =
            over(ground, [&] { target.fillRect(NSMakeRect(11, 7, 20, 13), halfRed, operation); });
        EXPECT_TRUE(areAlike(grid, withRect(ground, 11, 7, 20, 13, operation, halfRedPixel), 1)) << operation;
    }
}

TEST(CocoaGraphicsContext, FramesInwardsAndReplacesWhatIsThere) {
    const Grid ground = Random(313).grid(width, height);
    CocoaGraphicsContext target;
    const Grid grid = over(ground, [&] { target.frameRect(NSMakeRect(11, 7, 20, 13), halfRed, 3); });
    Grid expected = withRect(ground, 11, 7, 20, 13, Imaging::Platform::NSCompositeCopy, halfRedPixel);
    for (int y = 10; y < 17; ++y) {
        for (int x = 14; x < 28; ++x) expected.at(x, height - 1 - y) = ground.at(x, height - 1 - y);
    }
    EXPECT_TRUE(areAlike(grid, expected));
}

TEST(CocoaGraphicsContext, FramesTheFocusRingByItself) {
    const Imaging::Platform::Appearance before = Imaging::Platform::appearance();
    Imaging::Platform::Appearance changed = before;
    changed.keyboardFocusIndicator = NSColor::colorWithCalibratedRed(0, 1, 0, 1);
    Imaging::Platform::setAppearance(changed);
    CocoaGraphicsContext target;
    const Grid ground = Random(314).grid(width, height);
    const Grid grid = over(ground, [&] { target.drawFocusRingInside(NSMakeRect(5, 3, 40, 38)); });
    Imaging::Platform::setAppearance(before);
    Grid expected = withRect(ground, 13, 11, 24, 22, Imaging::Platform::NSCompositeCopy, Pixels::green);
    for (int y = 13; y < 31; ++y) {
        for (int x = 15; x < 35; ++x) expected.at(x, height - 1 - y) = ground.at(x, height - 1 - y);
    }
    EXPECT_TRUE(areAlike(grid, expected));
}

TEST(CocoaGraphicsContext, FillsAndStrokesPathsSourceOver) {
    const Grid ground = Random(315).grid(width, height);
    auto path = NSBezierPath::bezierPathWithRect(NSMakeRect(11, 7, 20, 13));
    CocoaGraphicsContext target;
    const Grid filled = over(ground, [&] { target.fillBezierPath(path, halfRed); });
    EXPECT_TRUE(areAlike(
        filled, withRect(ground, 11, 7, 20, 13, Imaging::Platform::NSCompositeSourceOver, halfRedPixel), 1));

    path.setLineWidth(4); // two pixels to either side
    const Grid stroked = over(ground, [&] { target.strokeBezierPath(path, halfRed); });
    Grid expected = withRect(ground, 9, 5, 24, 17, Imaging::Platform::NSCompositeSourceOver, halfRedPixel);
    for (int y = 9; y < 18; ++y) {
        for (int x = 13; x < 29; ++x) expected.at(x, height - 1 - y) = ground.at(x, height - 1 - y);
    }
    EXPECT_TRUE(areAlike(stroked, expected, 1));
}

TEST(CocoaGraphicsContext, LeavesThePathsThatItDrawsAsTheyAre) {
    auto path = NSBezierPath::bezierPathWithRect(NSMakeRect(11, 7, 20, 13));
    CocoaGraphicsContext target;
    target.beginDrawing(NSMakeRect(0, 0, width, height));
    Canvas canvas(width, height);
    target.fillBezierPath(path, halfRed);
    target.strokeBezierPath(path, halfRed);
    EXPECT_TRUE(isRect(path.bounds(), 11, 7, 20, 13));
}

TEST(CocoaGraphicsContext, DrawsTheFrameWithAndWithoutTheWindowBackground) {
    const NSRect rect = NSMakeRect(4, 3, 50, 40);
    const Grid ground = Random(316).grid(width, height);
    CocoaGraphicsContext target;
    const Grid bare = over(ground, [&] { target.drawFrameInside(rect, false); });
    EXPECT_TRUE(areAlike(bare, over(ground, [&] { Imaging::DrawFrameInside(rect); })));
    EXPECT_FALSE(areAlike(bare, ground));

    const Grid backed = over(ground, [&] { target.drawFrameInside(rect, true); });
    const NSColor color = Imaging::Platform::appearance().windowBackground;
    const auto level = [](float component) {
        return static_cast<std::uint8_t>(std::lround(component * 255));
    };
    const Rgba background{level(color.redComponent()), level(color.greenComponent()),
                          level(color.blueComponent()), 255};
    const Grid filled = withRect(ground, 4, 3, 50, 40, Imaging::Platform::NSCompositeCopy, background);
    EXPECT_TRUE(areAlike(backed, over(filled, [&] { Imaging::DrawFrameInside(rect); })));
}

TEST(CocoaGraphicsContext, DrawsHintTextInTheRectangle) {
    const NSRect rect = NSMakeRect(-8, 3, 50, 40);
    const Grid ground = Random(317).grid(width, height);
    CocoaGraphicsContext target;
    const Grid grid = over(ground, [&] { target.drawHintText("hint", rect); });
    EXPECT_TRUE(areAlike(grid, over(ground, [&] { Imaging::HintTextInFrame(rect, "hint"); })));
    EXPECT_FALSE(areAlike(grid, ground));
}

TEST(CocoaGraphicsContext, DrawsANodeFittedIntoTheRectangleWithOperationAndAlpha) {
    const Grid picture = distinctPicture(5, 4);
    const auto node = pictureNode(picture);
    const Grid ground = Random(318).grid(width, height);
    CocoaGraphicsContext target;
    for (const int operation :
         {Imaging::Platform::NSCompositeSourceOver, Imaging::Platform::NSCompositeDestinationOut}) {
        const Grid grid =
            over(ground, [&] { target.drawImage(node, NSMakeRect(11, 7, 5, 4), operation, 0.6F); });
        Grid expected = ground;
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 5; ++x) {
                Rgba& there = expected.at(11 + x, height - 1 - 7 - y);
                there = Pixels::rounded(composed(operation, picture.above(x, y), there, 0.6F, 1));
            }
        }
        EXPECT_TRUE(areAlike(grid, expected, 1)) << operation;
    }
}

TEST(CocoaGraphicsContext, DrawsANodeByWalkingItsGraphWithoutATarget) {
    const auto node = leaf(NSMakeRect(0, 0, 10, 20));
    const auto above = nodeOver({node}, moved(3, 4));
    CocoaGraphicsContext target;
    Canvas canvas(width, height);
    target.drawImage(above, NSMakeRect(7, 9, 20, 60), Imaging::Platform::NSCompositeCopy, 0.25F);
    ASSERT_EQ(node->draws.size(), 1U);
    EXPECT_EQ(above->retainedDraws.size(), 0U);
    EXPECT_EQ(above->draws.at(0).imageContext, nullptr);
    EXPECT_EQ(node->draws[0].operation, Imaging::Platform::NSCompositeCopy);
    EXPECT_EQ(node->draws[0].fraction, 0.25F);
    EXPECT_EQ(node->draws[0].imageContext, nullptr);
}

TEST(CocoaGraphicsContext, DrawsNothingForNoNode) {
    Canvas canvas(width, height);
    CocoaGraphicsContext target;
    EXPECT_NO_THROW(target.drawImage(nullptr, NSMakeRect(1, 2, 3, 4), Imaging::Platform::NSCompositeCopy, 1));
    EXPECT_FALSE(canvas.context().hasPainted());
}

namespace {

/// A node whose leaf paints far beyond the node's own extent.
std::shared_ptr<TestNode> overflowingNode(const Grid& picture) {
    struct Overflowing : TestNode {
        using TestNode::TestNode;
        IMGBounds imageBounds() const override {
            return IMGBounds::boundsWithRect(NSMakeRect(0, 0, 4, 4), NSAffineTransform());
        }
    };
    return std::make_shared<Overflowing>(IMGImage::Sources{pictureNode(picture)});
}

} // namespace

TEST(CocoaGraphicsContext, DrawsImagesUnclippedWithoutAnImageClipRectangle) {
    const auto node = overflowingNode(Grid(20, 12, Pixels::red));
    CocoaGraphicsContext target;
    const Grid grid = over(Grid(width, height), [&] {
        target.drawImage(node, NSMakeRect(9, 7, 4, 4), Imaging::Platform::NSCompositeSourceOver, 1);
    });
    EXPECT_TRUE(areAlike(
        grid, withRect(Grid(width, height), 9, 7, 20, 12, Imaging::Platform::NSCompositeCopy, Pixels::red)));
}

TEST(CocoaGraphicsContext, ClipsImagesToTheirOwnRectangleWhereverTheImageClipRectangleLies) {
    const auto node = overflowingNode(Grid(20, 12, Pixels::red));
    CocoaGraphicsContext target;
    for (const NSRect clip : {NSMakeRect(40, 40, 5, 5), NSMakeRect(0, 0, 0, 1), NSMakeRect(-1, 0, 0, 0),
                              NSMakeRect(10, 8, 1, 1), NSMakeRect(0, 0, 900, 900)}) {
        target.setImageClipRect(clip);
        const Grid grid = over(Grid(width, height), [&] {
            target.drawImage(node, NSMakeRect(9, 7, 4, 4), Imaging::Platform::NSCompositeSourceOver, 1);
        });
        EXPECT_TRUE(areAlike(
            grid, withRect(Grid(width, height), 9, 7, 4, 4, Imaging::Platform::NSCompositeCopy, Pixels::red)))
            << Imaging::Platform::NSStringFromRect(clip);
    }
}

TEST(CocoaGraphicsContext, ClipsNothingButImages) {
    CocoaGraphicsContext target;
    target.setImageClipRect(NSMakeRect(1, 1, 2, 2));
    const Grid grid = over(Grid(width, height), [&] {
        target.fillRect(NSMakeRect(20, 20, 5, 5), NSColor::colorWithCalibratedRed(1, 0, 0, 1),
                        Imaging::Platform::NSCompositeCopy);
    });
    EXPECT_TRUE(areAlike(
        grid, withRect(Grid(width, height), 20, 20, 5, 5, Imaging::Platform::NSCompositeCopy, Pixels::red)));
}

TEST(CocoaGraphicsContext, CutsTheImageClipFromTheClipThatIsThere) {
    const auto node = overflowingNode(Grid(20, 12, Pixels::red));
    CocoaGraphicsContext target;
    target.setImageClipRect(NSMakeRect(1, 1, 1, 1));
    const Grid grid = over(Grid(width, height), [&] {
        const Imaging::Platform::NSGraphicsStateScope state;
        Imaging::Platform::NSRectClip(NSMakeRect(11, 0, 40, 40));
        target.drawImage(node, NSMakeRect(9, 7, 4, 4), Imaging::Platform::NSCompositeSourceOver, 1);
    });
    EXPECT_TRUE(areAlike(
        grid, withRect(Grid(width, height), 11, 7, 2, 4, Imaging::Platform::NSCompositeCopy, Pixels::red)));
}

TEST(CocoaGraphicsContext, AsImageContextShowsTheLeavesOfAGraph) {
    const Grid picture = distinctPicture(5, 4);
    const auto leafNode = pictureNode(picture);
    const auto graph = nodeOver({nodeOver({leafNode}, moved(6, 2))}, moved(5, 3));
    CocoaGraphicsContext target;
    const Grid ground = Random(319).grid(width, height);
    const auto expected = [&](double fraction) {
        Grid grid = ground;
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 5; ++x) {
                Rgba& there = grid.at(11 + x, height - 1 - 5 - y);
                there = Pixels::rounded(composed(2, picture.above(x, y), there, fraction, 1));
            }
        }
        return grid;
    };
    const Grid whole = over(
        ground, [&] { graph->drawWithTransform({}, Imaging::Platform::NSCompositeSourceOver, 1, &target); });
    EXPECT_TRUE(areAlike(whole, expected(1)));
    const Grid faint = over(ground, [&] {
        graph->drawWithTransform({}, Imaging::Platform::NSCompositeSourceOver, 0.5F, &target);
    });
    EXPECT_TRUE(areAlike(faint, expected(0.5), 1));
    EXPECT_TRUE(areAlike(
        faint,
        over(ground, [&] { graph->drawWithTransform({}, Imaging::Platform::NSCompositeSourceOver, 0.5F); })))
        << "as without a target";
}

TEST(CocoaGraphicsContext, HandsANodeItsRecordsWithoutATarget) {
    const auto node = leaf(NSMakeRect(0, 0, 10, 20));
    const auto record =
        TransformAndClipRect::transformAndClipRectWithTransform(moved(3, 4), NSMakeRect(1, 2, 3, 4));
    CocoaGraphicsContext target;
    Canvas canvas(width, height);
    static_cast<IMGDrawingTarget&>(target).drawImage(*node, TransformAndClipList(record), 5, 0.75F);
    ASSERT_EQ(node->draws.size(), 1U);
    const DrawCall& call = node->draws[0];
    EXPECT_EQ(call.image, nullptr);
    EXPECT_EQ(call.operation, 5);
    EXPECT_EQ(call.fraction, 0.75F);
    EXPECT_EQ(call.imageContext, nullptr);
    ASSERT_EQ(call.records.size(), 1U);
    EXPECT_TRUE(isTransform(call.records[0].transform(), moved(3, 4)));
    EXPECT_TRUE(isRect(call.records[0].clipRect(), 1, 2, 3, 4));
}

TEST(CocoaGraphicsContext, LeavesNoColourClipOrTransformBehind) {
    for (const auto& [name, draw] : allOperations()) {
        Canvas canvas(width, height);
        const NSColor color = NSColor::colorWithCalibratedRed(0, 1, 0, 1);
        canvas.context().setColor(color);
        CocoaGraphicsContext target;
        target.setImageClipRect(NSMakeRect(1, 1, 1, 1));
        draw(target);
        EXPECT_TRUE(canvas.context().hasPainted()) << name;
        EXPECT_TRUE(canvas.context().color().isEqual(color)) << name;
        EXPECT_EQ(canvas.context().savedStateCount(), 0U) << name;
        Imaging::Platform::NSRectFill(NSMakeRect(0, 0, width, height));
        EXPECT_TRUE(areAlike(canvas.pixels(), Grid(width, height, Pixels::green))) << name;
    }
}

TEST(CocoaGraphicsContext, RestoresTheStateWhenDrawingThrows) {
    struct Thrower : TestNode {
        void drawImage(const std::shared_ptr<CCImage>&, const TransformAndClipList&,
                       Imaging::CompositingOperation, float, IMGDrawingTarget*) override {
            NSGraphicsContext::currentContext()->saveGraphicsState();
            Imaging::Platform::NSRectClip(NSMakeRect(0, 0, 1, 1));
            throwSomething(Thrown::StandardException);
        }
    };
    const auto node = std::make_shared<Thrower>();
    node->setExtent(NSMakeRect(0, 0, 4, 4));
    Canvas canvas(width, height);
    CocoaGraphicsContext target;
    target.setImageClipRect(NSMakeRect(1, 1, 1, 1));
    EXPECT_THROW(target.drawImage(node, NSMakeRect(5, 5, 4, 4), 2, 1), std::runtime_error);
    EXPECT_THROW(target.drawImage(*node, TransformAndClipList(), 2, 1), std::runtime_error);
    EXPECT_EQ(canvas.context().savedStateCount(), 0U);
    NSColor::colorWithCalibratedRed(0, 1, 0, 1).set();
    Imaging::Platform::NSRectFill(NSMakeRect(0, 0, width, height));
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(width, height, Pixels::green)));
}

TEST(CocoaGraphicsContext, DrawsNothingWithoutACurrentContext) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    CocoaGraphicsContext target;
    for (const auto& [name, draw] : allOperations()) EXPECT_NO_THROW(draw(target)) << name;
}

TEST(CocoaGraphicsContext, HasNoCubeAndNothingToLoadAhead) {
    Canvas canvas(width, height);
    CocoaGraphicsContext target;
    const auto node = pictureNode(distinctPicture(5, 4));
    target.drawCubeTransition(node, node, NSMakeRect(1, 2, 30, 20), TransformAndClipList(),
                              Imaging::IMGTransitionDirectionLeft, 0.5F, 1);
    target.preloadBitmap(nullptr, 2);
    EXPECT_FALSE(canvas.context().hasPainted());
}
