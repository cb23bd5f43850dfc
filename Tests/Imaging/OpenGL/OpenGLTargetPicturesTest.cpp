// Also tests: Imaging/OpenGLGraphicsContext.cpp

#include "Tests/Imaging/OpenGL/TargetFixture.h"

#include "Imaging/Transitions.h"

using namespace ImagingTests;
using testing::Contains;
using testing::IsEmpty;

namespace {

class OpenGLTargetPictures : public TargetTest {
protected:
    OpenGLTargetPictures() { beginFrame(40, 20); }
    ~OpenGLTargetPictures() override { target->endDrawing(); }
};

} // namespace

TEST_F(OpenGLTargetPictures, OfABitmapNodeComeFromTexturesThatAreUploadedOnce) {
    const Grid grid = Pixels::Random(431).grid(8, 4);
    const auto node = std::make_shared<OpenGLImage>(alphaFirst(grid));
    target->drawImage(node, NSMakeRect(3, 5, 16, 8), 2, 0.5F);
    const Lines first = gl->takeLines();
    ASSERT_EQ(gl->uploads().size(), 1U);
    EXPECT_EQ(gl->uploads()[0].pixels, alphaFirstBytes(grid, 0, 0, 8, 4));
    EXPECT_THAT(first, Contains("glMultMatrixf({2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1, 0, 3, -5, 0, 1})"));
    EXPECT_THAT(first, Contains("glColor4f(0.5, 0.5, 0.5, 0.5)"));
    target->drawImage(node, NSMakeRect(0, 0, 16, 8), 2, 1);
    EXPECT_EQ(gl->uploads().size(), 1U);
    EXPECT_EQ(vertexLines(gl->takeLines()).size(), 4U);
}

TEST_F(OpenGLTargetPictures, HaveTheBitmapsSizeInPoints) {
    const auto bitmap = alphaFirst(Grid(8, 4, Pixels::red));
    bitmap->setSize({16, 12});
    OpenGLImage node(bitmap);
    target->drawImage(node, listOfRecords({recordOf({})}), 2, 1);
    EXPECT_THAT(gl->takeLines(), Contains("glScalef(8, 6, 1)"));
}

TEST_F(OpenGLTargetPictures, AreNotTurnedOver) {
    OpenGLImage node(alphaFirst(Grid(8, 4, Pixels::red)));
    target->drawImage(node, listOfRecords({recordOf({})}), 2, 1);
    EXPECT_THAT(gl->takeLines(), Contains("glTranslatef(-1, 1, 0)"));
}

TEST_F(OpenGLTargetPictures, BalanceTheLockInAFrameAndOutsideOne) {
    OpenGLImage node(alphaFirst(Grid(8, 4, Pixels::red)));
    target->drawImage(node, listOfRecords({recordOf({})}), 2, 1);
    EXPECT_EQ(target->contextLock()->holds(), 1U);
    const auto lock = target->contextLock();
    lock->lock();
    target->drawImage(node, listOfRecords({recordOf({})}), 2, 1);
    EXPECT_EQ(lock->holds(), 2U) << "all holds come back";
    lock->unlock();
    target->endDrawing();
    EXPECT_TRUE(isLockFree());
    target->drawImage(node, listOfRecords({recordOf({})}), 2, 1);
    EXPECT_TRUE(isLockFree());
}

TEST_F(OpenGLTargetPictures, BalanceTheLockWhenABitmapCannotBeUploaded) {
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = description.pixelsHigh = 4;
    description.samplesPerPixel = 3;
    description.hasAlpha = false;
    OpenGLImage node(NSBitmapImageRep::bitmapWithDescription(description));
    EXPECT_THROW(target->drawImage(node, listOfRecords({recordOf({})}), 2, 1), NSException);
    EXPECT_EQ(target->contextLock()->holds(), 1U);
    EXPECT_THAT(gl->takeLines(), IsEmpty());
    target->endDrawing();
    EXPECT_TRUE(isLockFree());
}

TEST_F(OpenGLTargetPictures, ThatArePreloadedAreNotUploadedAgain) {
    const auto bitmap = alphaFirst(Grid(8, 4, Pixels::red));
    target->endDrawing();
    target->preloadBitmap(bitmap, 2);
    EXPECT_EQ(gl->uploads().size(), 1U);
    beginFrame(40, 20);
    OpenGLImage node(bitmap);
    target->drawImage(node, listOfRecords({recordOf({})}), 2, 1);
    EXPECT_EQ(gl->uploads().size(), 1U);
}

TEST_F(OpenGLTargetPictures, OfADissolveAddUpInProportionToAConstantAlpha) {
    const auto from = std::make_shared<OpenGLImage>(alphaFirst(Grid(8, 4, Pixels::red)));
    const auto to = std::make_shared<OpenGLImage>(alphaFirst(Grid(8, 4, Pixels::blue)));
    const auto dissolve = Imaging::IMGDissolveTransitionOp::transitionWithFromImage(from, to, {8, 4}, 0.25F);
    target->drawImage(dissolve, NSMakeRect(0, 0, 40, 20), 2, 1);
    const Lines lines = gl->takeLines();
    EXPECT_THAT(lines, Contains("glBlendColor(1, 1, 1, 0.75)"));
    EXPECT_THAT(lines, Contains("glBlendColor(1, 1, 1, 0.25)"));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE)"), 2);
}

TEST_F(OpenGLTargetPictures, OfACubeAreNotDrawnYet) {
    const auto node = std::make_shared<OpenGLImage>(alphaFirst(Grid(8, 4, Pixels::red)));
    const auto cube = Imaging::IMGCubeTransitionOp::transitionWithFromImage(node, node, {8, 4}, 1, 0.25F);
    target->drawImage(cube, NSMakeRect(0, 0, 40, 20), 2, 1);
    EXPECT_THAT(gl->takeLines(), IsEmpty());
}
