// Also tests: Imaging/OpenGLGraphicsContext.cpp

#include "Imaging/OpenGL/FramePicture.h"

#include "Imaging/GraphicsUtilities.h"
#include "Tests/Imaging/OpenGL/TargetFixture.h"

using namespace ImagingTests;
using Imaging::forgetFramePicture;
using Imaging::framePicture;
using testing::IsEmpty;

namespace {

/// The frame in a picture of the rectangle's size, by 2-D graphics.
std::vector<std::uint8_t> frameBytes(NSRect rect, bool background) {
    const int width = static_cast<int>(rect.size.width);
    const int height = static_cast<int>(rect.size.height);
    const Grid grid = drawnOn(width, height, [&] {
        if (background) Imaging::Platform::NSDrawWindowBackground(rect);
        Imaging::DrawFrameInside(rect);
    });
    return alphaFirstBytes(grid, 0, 0, width, height);
}

class FramePicture : public TargetTest {
protected:
    FramePicture() {
        forgetFramePicture();
        beginFrame(100, 80);
    }
    ~FramePicture() override {
        target->endDrawing();
        forgetFramePicture();
    }
};

} // namespace

TEST_F(FramePicture, IsUploadedAndDrawnInTheRectangle) {
    const NSRect rect = NSMakeRect(0, 0, 70, 60);
    target->drawFrameInside(rect, false);
    const Lines lines = gl->takeLines();
    ASSERT_EQ(gl->uploads().size(), 1U);
    EXPECT_EQ(gl->uploads()[0].pixels, frameBytes(rect, false));
    EXPECT_THAT(lines, testing::IsSupersetOf({"glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA)",
                                              "glColor4f(1, 1, 1, 1)", "glScalef(35, 30, 1)"}));
    EXPECT_THAT(vertexLines(lines),
                testing::UnorderedElementsAre(vertexLine(0, 0, -1, -1), vertexLine(70, 0, 1, -1),
                                              vertexLine(70, 60, 1, 1), vertexLine(0, 60, -1, 1)));
}

TEST_F(FramePicture, IsDrawnAtTheRectanglesOwnCoordinatesInAPictureOfItsSize) {
    const NSRect rect = NSMakeRect(12, 7, 70, 60);
    target->drawFrameInside(rect, true);
    ASSERT_EQ(gl->uploads().size(), 1U);
    EXPECT_EQ(gl->uploads()[0].pixels, frameBytes(rect, true));
    EXPECT_THAT(gl->takeLines(),
                testing::Contains("glMultMatrixf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 12, -7, 0, 1})"));
}

TEST_F(FramePicture, IsKeptForEveryRectangleOfItsSizeWhateverTheBackground) {
    target->drawFrameInside(NSMakeRect(0, 0, 70, 60), false);
    target->drawFrameInside(NSMakeRect(9, 5, 70, 60), true);
    EXPECT_EQ(gl->uploads().size(), 1U);
    target->drawFrameInside(NSMakeRect(0, 0, 70, 61), true);
    ASSERT_EQ(gl->uploads().size(), 2U) << "another size is drawn anew";
    EXPECT_EQ(gl->uploads()[1].pixels, frameBytes(NSMakeRect(0, 0, 70, 61), true));
    const auto kept = framePicture(NSMakeRect(1, 2, 70, 61), false);
    EXPECT_EQ(framePicture(NSMakeRect(0, 0, 70, 61), true), kept);
}

TEST_F(FramePicture, IsSharedByAllTargetsOfTheProcess) {
    target->drawFrameInside(NSMakeRect(0, 0, 70, 60), false);
    OpenGLGraphicsContext other;
    other.prepare(view.get());
    other.beginDrawing(NSMakeRect(0, 0, 100, 80));
    other.drawFrameInside(NSMakeRect(0, 0, 70, 60), true);
    other.endDrawing();
    ASSERT_EQ(gl->uploads().size(), 2U) << "in textures of their own";
    EXPECT_EQ(gl->uploads()[1].pixels, gl->uploads()[0].pixels);
}

TEST_F(FramePicture, IsNoneForARectangleBelowAPixel) {
    EXPECT_EQ(framePicture(NSMakeRect(0, 0, 0, 60), false), nullptr);
    target->drawFrameInside(NSMakeRect(0, 0, 70, -3), true);
    EXPECT_THAT(gl->takeLines(), IsEmpty());
}

TEST_F(FramePicture, GivesTheLockBackAfterItsTextureWasFetched) {
    target->drawFrameInside(NSMakeRect(0, 0, 70, 60), false);
    EXPECT_EQ(target->contextLock()->holds(), 1U);
    target->endDrawing();
    EXPECT_TRUE(isLockFree());
}
