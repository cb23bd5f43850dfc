#include "Imaging/OpenGLImage.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Imaging/OpenGL/TextureFixtures.h"

using namespace ImagingTests;
using Imaging::OpenGLImage;

namespace {

std::shared_ptr<OpenGLImage> nodeOf(const Grid& grid) {
    return std::make_shared<OpenGLImage>(alphaFirst(grid));
}

TransformAndClipList records(const NSAffineTransform& transform, std::optional<NSRect> clip = std::nullopt) {
    return TransformAndClipList(
        clip.has_value() ? TransformAndClipRect::transformAndClipRectWithTransform(transform, *clip)
                         : TransformAndClipRect::transformAndClipRectWithTransform(transform));
}

/// What a body draws, which may leave transforms and clips behind.
template<class Body>
Grid drawnInScope(int width, int height, const Body& body) {
    return drawnOn(width, height, [&] {
        const Imaging::Platform::NSGraphicsStateScope state;
        body();
    });
}

/// The grid laid over transparent ground with its lower left corner at (x, y).
Grid laid(const Grid& grid, int width, int height, int x, int y) {
    Grid ground(width, height);
    for (int row = 0; row < grid.height(); ++row) {
        for (int column = 0; column < grid.width(); ++column) {
            const int top = height - y - grid.height() + row;
            if (ground.contains(x + column, top)) ground.at(x + column, top) = grid.at(column, row);
        }
    }
    return ground;
}

} // namespace

TEST(OpenGLImage, HasTheExtentOfItsBitmapInPoints) {
    const auto bitmap = alphaFirst(distinctPicture(6, 4));
    bitmap->setSize({12, 9});
    OpenGLImage node(bitmap);
    EXPECT_TRUE(isSize(node.untransformedImageSize(), 12, 9));
    EXPECT_TRUE(isRect(node.imageBounds().rectangle(), 0, 0, 12, 9));
    EXPECT_EQ(node.bitmap(), bitmap);
    EXPECT_EQ(node.name(), "Bitmap");
    EXPECT_EQ(node.image(), nullptr);
    EXPECT_EQ(node.untransformedImage(), nullptr);
}

TEST(OpenGLImage, DrawsItsBitmapUnderTheRecords) {
    const Grid grid = Pixels::Random(411).grid(5, 4);
    const auto node = nodeOf(grid);
    const Grid drawn =
        drawnInScope(20, 16, [&] { node->drawImage(nullptr, records(moved(7, 3)), 2, 1, nullptr); });
    EXPECT_TRUE(areAlike(drawn, laid(grid, 20, 16, 7, 3)));
}

TEST(OpenGLImage, ClipsInTheSpaceThatARecordsTransformActsOn) {
    const Grid grid(5, 4, Pixels::red);
    const auto node = nodeOf(grid);
    const Grid drawn = drawnInScope(20, 16, [&] {
        node->drawImage(nullptr, records(moved(7, 3), NSMakeRect(1, 0, 2, 3)), 2, 1, nullptr);
    });
    EXPECT_TRUE(areAlike(drawn, laid(Grid(2, 3, Pixels::red), 20, 16, 8, 3)));
}

TEST(OpenGLImage, IgnoresTheOperationAndTakesTheFractionAsAlpha) {
    const auto node = nodeOf(Grid(4, 4, Pixels::red));
    const auto draw = [&](int operation) {
        return drawnInScope(4, 4, [&] {
            Imaging::Platform::NSColor::colorWithCalibratedRed(0, 0, 1, 1).set();
            Imaging::Platform::NSRectFill(NSMakeRect(0, 0, 4, 4));
            node->drawImage(nullptr, records({}), operation, 0.5F, nullptr);
        });
    };
    EXPECT_TRUE(areAlike(draw(2), Grid(4, 4, {128, 0, 128, 255}), 1));
    EXPECT_EQ(draw(1), draw(2));
    EXPECT_EQ(draw(13), draw(2));
}

TEST(OpenGLImage, LeavesItsTransformsInTheContextForTheCallerToRestore) {
    const auto node = nodeOf(Grid(2, 2, Pixels::red));
    const Grid drawn = drawnInScope(12, 12, [&] {
        node->drawImage(nullptr, records(moved(3, 2)), 2, 1, nullptr);
        node->drawImage(nullptr, records(moved(3, 2)), 2, 1, nullptr);
    });
    EXPECT_EQ(drawn.above(4, 3), Pixels::red);
    EXPECT_EQ(drawn.above(7, 5), Pixels::red) << "moved twice";
}

TEST(OpenGLImage, HasATargetDrawIt) {
    const auto node = nodeOf(Grid(2, 2, Pixels::red));
    RecordingTarget target;
    const Grid drawn = drawnInScope(4, 4, [&] { node->drawImage(nullptr, records({}), 5, 0.25F, &target); });
    ASSERT_EQ(target.calls.size(), 1U);
    EXPECT_EQ(target.calls[0].node, node.get());
    EXPECT_EQ(target.calls[0].operation, 5);
    EXPECT_EQ(target.calls[0].fraction, 0.25F);
    EXPECT_EQ(drawn, Grid(4, 4));
}

TEST(OpenGLImage, DrawsNothingWithoutABitmapOrAContext) {
    OpenGLImage empty(nullptr);
    EXPECT_TRUE(isRect(empty.imageBounds().rectangle(), 0, 0, 0, 0));
    EXPECT_EQ(drawnInScope(4, 4, [&] { empty.drawImage(nullptr, records({}), 2, 1, nullptr); }), Grid(4, 4));
    const auto node = nodeOf(Grid(2, 2, Pixels::red));
    EXPECT_NO_THROW(node->drawImage(nullptr, records({}), 2, 1, nullptr));
}

TEST(OpenGLImage, CopiesToANodeWithTheSameBitmap) {
    const auto node = nodeOf(Grid(2, 2, Pixels::red));
    const auto copy = std::dynamic_pointer_cast<OpenGLImage>(node->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, node);
    EXPECT_EQ(copy->bitmap(), node->bitmap());
}

TEST(OpenGLImage, ComesBackFromAnArchiveWithoutItsBitmap) {
    const auto node = nodeOf(Grid(2, 2, Pixels::red));
    const auto data = Imaging::Platform::archivedDataWithRootObject(*node);
    const auto back = Imaging::Platform::unarchiveObjectOfClass<IMGImage>(data);
    const auto image = std::dynamic_pointer_cast<OpenGLImage>(back);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->bitmap(), nullptr);
    EXPECT_TRUE(image->sources().empty());
}
