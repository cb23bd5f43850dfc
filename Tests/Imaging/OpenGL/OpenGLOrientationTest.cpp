// Also tests: Imaging/OpenGLGraphicsContext.cpp
//
// Pictures, overlays, hints, frames and what was read back stand upright and are not mirrored, in every
// context.

#include "Imaging/OpenGL/FramePicture.h"
#include "Tests/Imaging/OpenGL/ComparedTargets.h"

using namespace ImagingTests;

namespace {

/// The letter F, dark red on opaque gray.
Grid letterF() {
    Grid grid(9, 12, {200, 200, 200, 255});
    for (int y = 2; y < 10; ++y) grid.at(2, y) = {90, 0, 10, 255};
    for (int x = 2; x < 7; ++x) grid.at(x, 2) = {90, 0, 10, 255};
    for (int x = 2; x < 5; ++x) grid.at(x, 5) = {90, 0, 10, 255};
    return grid;
}

/// White ground with the picture's lower left corner at (x, y).
Grid onWhite(const Grid& picture, int width, int height, int x, int y) {
    Grid grid(width, height, Pixels::white);
    for (int row = 0; row < picture.height(); ++row) {
        for (int column = 0; column < picture.width(); ++column) {
            grid.at(x + column, height - y - picture.height() + row) = picture.at(column, row);
        }
    }
    return grid;
}

class OpenGLOrientation : public testing::TestWithParam<Surroundings> {};

INSTANTIATE_TEST_SUITE_P(Everywhere, OpenGLOrientation, testing::ValuesIn(allSurroundings()),
                         [](const auto& chosen) { return nameOf(chosen.param); });

} // namespace

TEST_P(OpenGLOrientation, OfATextureIsUpright) {
    OffscreenTarget offscreen(GetParam(), 31, 23);
    const auto node = std::make_shared<OpenGLImage>(alphaFirst(letterF(), 8));
    const Grid frame = offscreen.frame([&](auto& t) { t.drawImage(node, NSMakeRect(7, 4, 9, 12), 2, 1); });
    EXPECT_TRUE(areAlike(frame, onWhite(letterF(), 31, 23, 7, 4)));
}

TEST_P(OpenGLOrientation, OfATextureOfSeveralTilesIsUpright) {
    OffscreenTarget offscreen(GetParam(), 151, 143);
    const Grid picture = smoothPicture(140, 131);
    const auto node = std::make_shared<OpenGLImage>(alphaFirst(picture));
    const Grid frame = offscreen.frame([&](auto& t) { t.drawImage(node, NSMakeRect(7, 4, 140, 131), 2, 1); });
    EXPECT_TRUE(areAlike(frame, onWhite(picture, 151, 143, 7, 4)));
}

TEST_P(OpenGLOrientation, OfAnOverlayIsUpright) {
    OffscreenTarget offscreen(GetParam(), 31, 23);
    const auto node = pictureNode(letterF());
    const Grid frame = offscreen.frame([&](auto& t) { t.drawImage(node, NSMakeRect(7, 4, 9, 12), 2, 1); });
    EXPECT_TRUE(areAlike(frame, onWhite(letterF(), 31, 23, 7, 4)));
}

TEST_P(OpenGLOrientation, OfAHintIsThatOfThe2DTarget) {
    const Drawing hint = [](auto& t) { t.drawHintText("F", NSMakeRect(3, 2, 25, 19)); };
    OffscreenTarget offscreen(GetParam(), 31, 23);
    const Grid frame = offscreen.frame(hint);
    EXPECT_FALSE(areAlike(frame, Grid(31, 23, Pixels::white)));
    EXPECT_TRUE(areAlike(frame, frameIn2D(31, 23, hint), 1));
}

TEST_P(OpenGLOrientation, OfTheFrameIsThatOfThe2DTarget) {
    Imaging::forgetFramePicture();
    const Drawing drawing = [](auto& t) { t.drawFrameInside(NSMakeRect(0, 0, 90, 70), false); };
    OffscreenTarget offscreen(GetParam(), 101, 83);
    const Grid frame = offscreen.frame(drawing);
    EXPECT_FALSE(areAlike(frame, Grid(101, 83, Pixels::white)));
    EXPECT_TRUE(areAlike(frame, frameIn2D(101, 83, drawing), 1));
    Imaging::forgetFramePicture();
}

TEST_P(OpenGLOrientation, OfWhatWasReadBackIsUprightWhenItIsDrawnInverted) {
    OffscreenTarget offscreen(GetParam(), 31, 23);
    const auto node = std::make_shared<OpenGLImage>(alphaFirst(letterF()));
    const Grid expected = onWhite(letterF(), 31, 23, 7, 4);
    const auto captured = [&](bool inverted) {
        return offscreen.frame([&](GraphicsContext& t) {
            t.drawImage(node, NSMakeRect(7, 4, 9, 12), 2, 1);
            OpenGLTexture texture(alphaFirst(Grid(31, 23)));
            texture.loadTextureWithImage(nullptr, 0, texture.textureCount());
            texture.loadTextureWithFrameBuffer();
            t.fillRect(offscreen.rect(), Imaging::Platform::NSColor::blackColor(), 1);
            offscreen.target().drawTexture(texture, {31, 23}, listOfRecords({recordOf({})}), 2, 1, inverted);
        });
    };
    EXPECT_TRUE(areAlike(captured(true), expected));
    Grid turned(31, 23);
    for (int y = 0; y < 23; ++y) {
        for (int x = 0; x < 31; ++x) turned.at(x, y) = expected.at(x, 22 - y);
    }
    EXPECT_TRUE(areAlike(captured(false), turned));
}
