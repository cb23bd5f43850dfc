// Also tests: Imaging/DrawingTarget.cpp

#include "Imaging/GraphicsContext.h"

#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/BezierPath.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <vector>

using namespace ImagingTests;
using Imaging::GraphicsContext;
using Imaging::Platform::NSColor;

namespace {

/// A target that notes what reaches it.
class NotingTarget : public GraphicsContext {
public:
    struct Frame {
        NSRect rect;
        NSColor color;
        float width;
    };
    std::vector<Imaging::Platform::NSView*> prepared;
    std::vector<Frame> frames;
    bool failsToPrepare = false;

    void prepare(Imaging::Platform::NSView* view) override {
        prepared.push_back(view);
        if (failsToPrepare) throwSomething(Thrown::Exception);
    }
    void frameRect(NSRect rect, const NSColor& color, float width) override {
        frames.push_back({rect, color, width});
    }
};

Imaging::Platform::NSView* viewAt(std::uintptr_t address) {
    return reinterpret_cast<Imaging::Platform::NSView*>(address);
}

} // namespace

TEST(GraphicsContext, BeginsWithZeroRectangles) {
    const GraphicsContext target;
    EXPECT_TRUE(isRect(target.bounds(), 0, 0, 0, 0));
    EXPECT_TRUE(isRect(target.imageClipRect(), 0, 0, 0, 0));
}

TEST(GraphicsContext, CannotDrawPartial) { EXPECT_FALSE(GraphicsContext().canDrawPartial()); }

TEST(GraphicsContext, PreparesOnceForTheFirstView) {
    NotingTarget target;
    target.prepareOnce(viewAt(0x10));
    target.prepareOnce(viewAt(0x20));
    EXPECT_EQ(target.prepared, std::vector<Imaging::Platform::NSView*>{viewAt(0x10)});
}

TEST(GraphicsContext, CountsOnlyPrepareOnceAsPrepared) {
    NotingTarget target;
    target.prepare(viewAt(0x10));
    target.prepareOnce(viewAt(0x20));
    target.unprepare(viewAt(0x20));
    target.reprepare(viewAt(0x20));
    target.prepareOnce(viewAt(0x30));
    EXPECT_EQ(target.prepared, (std::vector<Imaging::Platform::NSView*>{viewAt(0x10), viewAt(0x20)}));
}

TEST(GraphicsContext, IsNotPreparedWhenPreparingFails) {
    NotingTarget target;
    target.failsToPrepare = true;
    EXPECT_THROW(target.prepareOnce(viewAt(0x10)), NSException);
    target.failsToPrepare = false;
    target.prepareOnce(viewAt(0x10));
    target.prepareOnce(viewAt(0x10));
    EXPECT_EQ(target.prepared.size(), 2U);
}

TEST(GraphicsContext, HasTheBoundsOfTheFrameThatItDraws) {
    GraphicsContext target;
    target.beginDrawing(NSMakeRect(-3, 5, 70, 20));
    EXPECT_TRUE(isRect(target.bounds(), -3, 5, 70, 20));
    target.endDrawing();
    EXPECT_TRUE(isRect(target.bounds(), -3, 5, 70, 20));
    target.beginDrawing(NSMakeRect(1, 2, 3, 4));
    EXPECT_TRUE(isRect(target.bounds(), 1, 2, 3, 4));
}

TEST(GraphicsContext, KeepsTheImageClipRectangleUntilTheNextFrame) {
    GraphicsContext target;
    target.setImageClipRect(NSMakeRect(1, 2, 3, -4));
    EXPECT_TRUE(isRect(target.imageClipRect(), 1, 2, 3, -4));
    target.endDrawing();
    EXPECT_TRUE(isRect(target.imageClipRect(), 1, 2, 3, -4));
    target.beginDrawing(NSMakeRect(5, 6, 7, 8));
    EXPECT_TRUE(isRect(target.imageClipRect(), 0, 0, 0, 0));
}

TEST(GraphicsContext, FramesTheFocusRingEightInsideWithAWidthOfTwo) {
    const Imaging::Platform::Appearance before = Imaging::Platform::appearance();
    Imaging::Platform::Appearance changed = before;
    changed.keyboardFocusIndicator = NSColor::colorWithCalibratedRed(0.25F, 1, 0, 0.75F);
    Imaging::Platform::setAppearance(changed);
    NotingTarget target;
    target.drawFocusRingInside(NSMakeRect(10, 20, 100, 50));
    target.drawFocusRingInside(NSMakeRect(1, 2, 10, 9));
    Imaging::Platform::setAppearance(before);
    ASSERT_EQ(target.frames.size(), 2U);
    EXPECT_TRUE(isRect(target.frames[0].rect, 18, 28, 84, 34));
    EXPECT_TRUE(target.frames[0].color.isEqual(changed.keyboardFocusIndicator));
    EXPECT_EQ(target.frames[0].width, 2);
    EXPECT_TRUE(isRect(target.frames[1].rect, 9, 10, -6, -7)) << "not clamped";
}

TEST(GraphicsContext, DrawsNothingByItself) {
    const auto node = pictureNode(distinctPicture(5, 4));
    const Grid ground = Pixels::Random(311).grid(60, 50);
    Pixels::Canvas canvas(ground);
    GraphicsContext target;
    const NSRect rect = NSMakeRect(7, 5, 40, 30);
    auto oval = Imaging::Platform::NSBezierPath::bezierPathWithOvalInRect(rect);
    target.prepareOnce(nullptr);
    target.unprepare(nullptr);
    target.reprepare(nullptr);
    target.beginDrawing(rect);
    target.drawFrameInside(rect, true);
    target.drawHintText("hint", rect);
    target.drawFocusRingInside(rect);
    target.fillRect(rect, NSColor::blackColor(), Imaging::Platform::NSCompositeCopy);
    target.frameRect(rect, NSColor::blackColor(), 3);
    target.fillBezierPath(oval, NSColor::blackColor());
    target.strokeBezierPath(oval, NSColor::blackColor());
    target.drawImage(node, rect, Imaging::Platform::NSCompositeCopy, 1);
    target.drawImage(*node, TransformAndClipList(), Imaging::Platform::NSCompositeCopy, 1);
    target.preloadBitmap(nullptr, 1.5F);
    target.drawCubeTransition(node, node, rect, TransformAndClipList(), Imaging::IMGTransitionDirectionLeft,
                              0.5F, 1);
    target.endDrawing();
    EXPECT_TRUE(areAlike(canvas.pixels(), ground));
    EXPECT_FALSE(canvas.context().hasPainted());
}

TEST(GraphicsContext, IsTheDrawingTargetsOwnGraphicsContext) {
    GraphicsContext target;
    EXPECT_EQ(static_cast<IMGDrawingTarget&>(target).graphicsContext(), &target);
    EXPECT_EQ(RecordingTarget().graphicsContext(), nullptr);
}
