// Also tests: Imaging/OpenGL/ContextMaking.cpp

#include "Imaging/OpenGLGraphicsContext.h"

#include "Platform/OpenGL/OpenGLException.h"
#include "Platform/OpenGL/OpenGLPixelFormat.h"
#include "Tests/Imaging/OpenGL/TargetFixture.h"

using namespace ImagingTests;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class OpenGLTarget : public TargetTest {};

const Lines frameStart = {"glViewport(3, 4, 40, 20)",
                          "glClearColor(0, 0, 0, 0)",
                          "glClear(GL_COLOR_BUFFER_BIT)",
                          "glMatrixMode(GL_PROJECTION)",
                          "glLoadIdentity()",
                          "glOrtho(-1, 1, -1, 1, -1, 1)",
                          "glMatrixMode(GL_MODELVIEW)",
                          "glLoadIdentity()",
                          "glEnable(GL_BLEND)",
                          "glEnable(GL_LINE_SMOOTH)",
                          "glHint(GL_LINE_SMOOTH_HINT, GL_NICEST)",
                          "glHint(GL_POINT_SMOOTH_HINT, GL_NICEST)",
                          "glHint(GL_POLYGON_SMOOTH_HINT, GL_NICEST)",
                          "glColor4f(1, 1, 1, 1)",
                          "glRectf(-1, -1, 1, 1)"};

} // namespace

TEST_F(OpenGLTarget, BeginsAFrameWithAnOpaqueWhiteSquare) {
    target->beginDrawing(NSMakeRect(3.75F, 4.25F, 40.5F, 20.99F));
    EXPECT_THAT(gl->takeLines(), testing::ElementsAreArray(frameStart));
    EXPECT_TRUE(isRect(target->bounds(), 3.75F, 4.25F, 40.5F, 20.99F));
    EXPECT_EQ(NSOpenGLContext::currentContext(), target->openGLContext());
    target->endDrawing();
    EXPECT_THAT(gl->takeLines(), ElementsAre("glFlush()"));
}

TEST_F(OpenGLTarget, HasNoViewportForARectangleThatIsNone) {
    target->beginDrawing(NSMakeRect(NAN, -1e20F, INFINITY, 20));
    EXPECT_EQ(gl->takeLines()[0], "glViewport(0, 0, 0, 20)");
    target->endDrawing();
}

TEST_F(OpenGLTarget, HoldsTheLockFromTheBeginningOfAFrameToItsEnd) {
    EXPECT_TRUE(isLockFree());
    target->beginDrawing(NSMakeRect(0, 0, 40, 20));
    EXPECT_FALSE(isLockFree());
    EXPECT_EQ(target->contextLock()->holds(), 1U);
    target->endDrawing();
    EXPECT_TRUE(isLockFree());
}

TEST_F(OpenGLTarget, EndsAFrameThatWasNotEndedWhenTheNextBegins) {
    target->beginDrawing(NSMakeRect(0, 0, 40, 20));
    target->beginDrawing(NSMakeRect(0, 0, 40, 20));
    EXPECT_EQ(target->contextLock()->holds(), 1U);
    target->endDrawing();
    EXPECT_TRUE(isLockFree());
}

TEST_F(OpenGLTarget, DoesNothingAtTheEndOfNoFrame) {
    target->endDrawing();
    EXPECT_THAT(gl->takeLines(), IsEmpty());
    EXPECT_TRUE(isLockFree());
}

TEST_F(OpenGLTarget, CannotDrawPartial) { EXPECT_FALSE(target->canDrawPartial()); }

TEST_F(OpenGLTarget, NeedsAContextToDrawAndSaysHowToGetOne) {
    OpenGLGraphicsContext unprepared;
    EXPECT_EQ(unprepared.openGLContext(), nullptr);
    try {
        unprepared.beginDrawing(NSMakeRect(0, 0, 40, 20));
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), Imaging::Platform::NSOpenGLException);
        EXPECT_THAT(exception.reason(), HasSubstr("call prepare"));
    }
    EXPECT_EQ(unprepared.contextLock()->holds(), 0U);
    EXPECT_THROW(unprepared.reprepare(view.get()), NSException);
    EXPECT_NO_THROW(unprepared.unprepare(view.get()));
    unprepared.endDrawing();
    EXPECT_EQ(unprepared.contextLock()->holds(), 0U);
}

TEST_F(OpenGLTarget, AsksForTwoBuffersOnAScreenAndForAlphaAndDepth) {
    using Imaging::Platform::NSOpenGLCPSwapInterval;
    const auto& shown = target->openGLContext()->pixelFormat();
    EXPECT_TRUE(shown.isDoubleBuffered());
    EXPECT_FALSE(shown.isOffScreen());
    EXPECT_EQ(shown.colorSize(), 32);
    EXPECT_EQ(shown.alphaSize(), 8);
    EXPECT_EQ(shown.depthSize(), 32);
    EXPECT_EQ(target->openGLContext()->getValues(NSOpenGLCPSwapInterval), 1);
    target->prepareOffscreen(view.get());
    const auto& hidden = target->openGLContext()->pixelFormat();
    EXPECT_FALSE(hidden.isDoubleBuffered());
    EXPECT_TRUE(hidden.isOffScreen());
    EXPECT_EQ(hidden.colorSize(), 32);
    EXPECT_EQ(hidden.alphaSize(), 8);
    EXPECT_EQ(hidden.depthSize(), 32);
    EXPECT_EQ(target->openGLContext()->view(), view);
}

TEST_F(OpenGLTarget, AsksForTheProfileThatItIsToldTo) {
    EXPECT_EQ(target->openGLContext()->pixelFormat().profile(), std::nullopt);
    target->setProfile(Imaging::Platform::NSOpenGLProfileVersion3_2Core);
    EXPECT_EQ(target->openGLContext()->pixelFormat().profile(), std::nullopt)
        << "not before the next prepare";
    target->prepare(view.get());
    EXPECT_EQ(target->openGLContext()->pixelFormat().profile(),
              Imaging::Platform::NSOpenGLProfileVersion3_2Core);
}

TEST_F(OpenGLTarget, DrawsIntoNoViewBetweenUnprepareAndReprepare) {
    const auto context = target->openGLContext();
    EXPECT_EQ(context->view(), view);
    target->unprepare(view.get());
    EXPECT_EQ(context->view(), nullptr);
    const auto other = NSView::viewWithCommands(NSMakeRect(0, 0, 10, 10), gl);
    target->reprepare(other.get());
    EXPECT_EQ(context->view(), other);
    EXPECT_EQ(target->openGLContext(), context);
}

TEST_F(OpenGLTarget, PreloadsOnlyAfterPrepareOnce) {
    const auto bitmap = alphaFirst(distinctPicture(5, 4));
    OpenGLGraphicsContext other;
    other.preloadBitmap(bitmap, 1);
    other.prepare(view.get());
    other.preloadBitmap(bitmap, 1);
    EXPECT_EQ(gl->uploads().size(), 0U);
    target->preloadBitmap(nullptr, 1);
    EXPECT_EQ(gl->uploads().size(), 0U);
    target->preloadBitmap(bitmap, 1);
    EXPECT_EQ(gl->uploads().size(), 1U);
    EXPECT_TRUE(isLockFree());
}

TEST_F(OpenGLTarget, DeletesItsTexturesWithItsContextCurrent) {
    target->preloadBitmap(alphaFirst(distinctPicture(5, 4)), 1);
    NSOpenGLContext::clearCurrentContext();
    target.reset();
    EXPECT_EQ(gl->deletedNames(), 1U);
}

TEST_F(OpenGLTarget, DeletesTheTexturesOfAContextThatItReplaces) {
    target->preloadBitmap(alphaFirst(distinctPicture(5, 4)), 1);
    target->prepare(view.get());
    EXPECT_EQ(gl->deletedNames(), 1U);
    target->preloadBitmap(alphaFirst(distinctPicture(5, 4)), 1);
    EXPECT_EQ(gl->liveNames().size(), 1U);
}

TEST_F(OpenGLTarget, LogsErrorsAndDrawsOn) {
    gl->answerWithError(Imaging::Platform::OpenGL::Error::OutOfMemory);
    target->beginDrawing(NSMakeRect(3, 4, 40, 20));
    EXPECT_THAT(gl->takeLines(), testing::ElementsAreArray(frameStart));
    EXPECT_THAT(takeLog(), ElementsAre("gl error Imaging/GraphicsUtilities 285 1285"));
    target->endDrawing();
}
