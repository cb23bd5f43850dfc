// Deep and wide graphs of nodes that place pictures.

#include "Imaging/Canvas.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transpose.h"
#include "Tests/Imaging/PlacingTestSupport.h"

#include <gtest/gtest.h>

#include <functional>

using namespace ImagingTests;
using namespace Imaging;

namespace {

constexpr int levels = 1000;

/// Quarter turns and shifts over a source, and what they do to a point of it.
struct Tower {
    std::shared_ptr<IMGImage> top;
    std::function<Spot(Spot)> place;
};

Tower towerOfTurnsAndShifts(std::shared_ptr<IMGImage> source) {
    Tower tower{std::move(source), nullptr};
    for (int i = 0; i < levels; ++i) {
        const int x = i % 7 - 3;
        const int y = i % 5 - 2;
        const NSPoint point = NSMakePoint(static_cast<float>(x), static_cast<float>(y));
        if (i % 2 == 0) {
            tower.top = IMGTranslationOp::translationBy(point, tower.top);
        } else {
            tower.top = IMGRotationOp::rotationByDegrees(90, point, tower.top);
        }
    }
    tower.place = [](Spot p) {
        for (int i = 0; i < levels; ++i) {
            const int x = i % 7 - 3;
            const int y = i % 5 - 2;
            p = i % 2 == 0 ? Spot{p.x + x, p.y + y} : Spot{x - (p.y - y), y + (p.x - x)};
        }
        return p;
    };
    return tower;
}

/// The same of every kind of node with one source, all of which leave their source in its place.
std::shared_ptr<IMGImage> towerOfAllKinds(std::shared_ptr<IMGImage> source, NSSize size) {
    std::shared_ptr<IMGImage> top = std::move(source);
    for (int i = 0; i < levels; i += 8) {
        top = IMGAffineTransformOp::transformBy(NSAffineTransform(), top);
        top = IMGTransposeOp::transposeOfType(FLIP_HORIZONTAL, top);
        top = IMGTransposeOp::transposeOfType(FLIP_HORIZONTAL, top);
        top = IMGCropAndScale::cropWithSourceImage(top, {Imaging::Platform::NSZeroPoint, size}, size,
                                                   SCALE_TO_FILL, true);
        top = std::make_shared<IMGCanvas>(size, IMGImage::Sources{top});
        top = IMGTransposeOp::transposeOfType(ROTATE_180, top);
        top = IMGTransposeOp::transposeOfType(ROTATE_180, top);
        top = std::make_shared<IMGCompositeOp>(top);
    }
    return top;
}

} // namespace

TEST(DeepPlacing, AThousandTurnsAndShiftsDrawThePictureWhereItBelongs) {
    const Grid picture = distinctPicture(5, 3);
    const Tower tower = towerOfTurnsAndShifts(pictureNode(picture));
    const Spot corner = tower.place({0, 0});
    // So that all of it is seen, whichever way it is turned.
    const double x = 8 - corner.x;
    const double y = 8 - corner.y;
    Grid expected(16, 16);
    paint(expected, picture, [&](Spot p) {
        const Spot q = tower.place(p);
        return Spot{q.x + x, q.y + y};
    });
    EXPECT_TRUE(Pixels::areAlike(
        walked(*tower.top, 16, 16, moved(static_cast<float>(x), static_cast<float>(y))), expected));
}

TEST(DeepPlacing, AThousandTurnsAndShiftsAnswerBounds) {
    const auto picture = pictureNode(distinctPicture(5, 3));
    const Tower tower = towerOfTurnsAndShifts(picture);
    const auto found = tower.top->boundsForImage(*picture, tower.top->transform());
    ASSERT_TRUE(found.has_value());
    const Spot low = tower.place({0, 0});
    const Spot high = tower.place({5, 3});
    EXPECT_TRUE(isNearPoint(found->bottomLeft(), low.x, low.y, 0));
    EXPECT_TRUE(isNearPoint(found->topRight(), high.x, high.y, 0));
    // Quarter turns swap the sides or not; the bounds of the chain have them in any order.
    const NSRect whole = tower.top->imageBounds().boundingRect();
    EXPECT_EQ(whole.size.width * whole.size.height > 0, true);
    EXPECT_TRUE(isRect(tower.top->imageBounds().rectangle(), 0, 0, 5, 3));
}

TEST(DeepPlacing, AThousandNodesOfAllKindsDrawAndAnswerBounds) {
    const Grid picture = distinctPicture(5, 3);
    const auto leafNode = pictureNode(picture);
    const auto top = towerOfAllKinds(leafNode, NSMakeSize(5, 3));
    EXPECT_TRUE(isRect(top->imageBoundsRect(), 0, 0, 5, 3));
    const auto found = top->boundsForImage(*leafNode, moved(2, 1));
    ASSERT_TRUE(found.has_value());
    EXPECT_TRUE(isRect(found->boundingRect(), 2, 1, 5, 3));
    Grid expected(9, 6);
    paint(expected, picture, [](Spot p) { return Spot{p.x + 2, p.y + 1}; });
    EXPECT_TRUE(Pixels::areAlike(walked(*top, 9, 6, moved(2, 1)), expected));
    const ChangeCounter counter(top);
    leafNode->changed();
    EXPECT_EQ(counter.count(), 1);
}

TEST(DeepPlacing, AThousandNodesComeBackFromTheirArchive) {
    const auto top = towerOfAllKinds(pictureNode(distinctPicture(5, 3)), NSMakeSize(5, 3));
    const auto back = archivedAndBack(*top, Imaging::Platform::NSPropertyListFormat::Binary);
    EXPECT_TRUE(Pixels::areAlike(walked(*back, 5, 3), distinctPicture(5, 3)));
}

TEST(WidePlacing, ACanvasOfTenThousandSourcesDrawsThemAllAndAnswersBounds) {
    const std::array pictures = {pictureNode(Grid(1, 1, Pixels::red)), pictureNode(Grid(1, 1, Pixels::green)),
                                 pictureNode(Grid(1, 1, Pixels::blue))};
    const std::array colors = {Pixels::red, Pixels::green, Pixels::blue};
    const auto canvas = IMGCanvas::canvasWithSize(NSMakeSize(100, 100));
    Grid expected(100, 100);
    for (int i = 0; i < 10'000; ++i) {
        const int x = i % 100;
        const int y = i / 100;
        const auto which = static_cast<std::size_t>((x * y + x) % 3);
        canvas->addSource(IMGTranslationOp::translationBy(
            NSMakePoint(static_cast<float>(x), static_cast<float>(y)), pictures.at(which)));
        expected.at(x, 99 - y) = colors.at(which);
    }
    EXPECT_TRUE(
        Pixels::areAlike(Pixels::shownBy(*canvas->untransformedImage()->nsImage(), 100, 100), expected));
    EXPECT_TRUE(isRect(canvas->imageBoundsRect(), 0, 0, 100, 100));
    const auto last = canvas->boundsForImage(*canvas->sourceAtIndex(9'999), NSAffineTransform());
    ASSERT_TRUE(last.has_value());
    EXPECT_TRUE(isRect(last->boundingRect(), 99, 99, 1, 1));
    IMGCompositeOp composite(canvas->sources());
    EXPECT_TRUE(isRect(composite.imageBoundsRect(), 0, 0, 100, 100));
}

TEST(WidePlacing, AChangeReachesTheNodesAboveAndNoOthers) {
    // 100 chains of 99 nodes under one canvas.
    std::vector<std::vector<std::shared_ptr<TestNode>>> chains(100);
    const auto canvas = IMGCanvas::canvasWithSize(NSMakeSize(10, 10));
    for (auto& chain : chains) {
        chain.push_back(leaf(NSMakeRect(0, 0, 1, 1)));
        while (chain.size() < 99) chain.push_back(nodeOver({chain.back()}));
        canvas->addSource(chain.back());
    }
    const ChangeCounter counter(canvas);
    chains[42].front()->changed();
    EXPECT_EQ(counter.count(), 1);
    for (std::size_t i = 0; i < chains.size(); ++i) {
        for (const auto& node : chains[i]) ASSERT_EQ(node->changes, i == 42 ? 1 : 0);
    }
}
