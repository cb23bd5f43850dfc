// Also tests: Platform/OpenGL/Contexts/EglBacking.cpp
// Also tests: Platform/OpenGL/Contexts/NativeContext.cpp
// Also tests: Platform/OpenGL/Contexts/OffscreenBacking.cpp

#include "Platform/OpenGL/Contexts/EglContext.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/Contexts/SuppliedCommands.h"
#include "Platform/OpenGL/Recording/RecordingCommands.h"
#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <gtest/gtest.h>

#include <array>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

class EglContextIn : public InEveryContext {
protected:
    std::unique_ptr<NativeContext> made(NativeContext* share = nullptr) {
        return offscreenBacking()->makeContext(*formatWithProfile(GetParam()), share);
    }
};

} // namespace

TEST_P(EglContextIn, IsCurrentUntilItIsReleased) {
    const auto context = made();
    EXPECT_EQ(context->commands(), nullptr);
    ASSERT_TRUE(context->makeCurrent());
    EXPECT_NE(eglGetCurrentContext(), EGL_NO_CONTEXT);
    EXPECT_NE(context->commands(), nullptr);
    context->release();
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
}

TEST_P(EglContextIn, ReleasesNobodyElses) {
    const auto first = made();
    const auto second = made();
    ASSERT_TRUE(first->makeCurrent());
    ASSERT_TRUE(second->makeCurrent());
    const EGLContext current = eglGetCurrentContext();
    first->release();
    EXPECT_EQ(eglGetCurrentContext(), current);
    second->release();
}

TEST_P(EglContextIn, LeavesWhatIsCurrentWhenItIsDestroyed) {
    const auto staying = made();
    auto going = made(staying.get());
    ASSERT_TRUE(going->makeCurrent());
    ASSERT_TRUE(staying->makeCurrent());
    const EGLContext current = eglGetCurrentContext();
    going.reset();
    EXPECT_EQ(eglGetCurrentContext(), current);
    staying->release();
}

TEST_P(EglContextIn, KeepsTheApisBindingOfTheApplication) {
    for (const EGLenum api : {EGL_OPENGL_API, EGL_OPENGL_ES_API}) {
        eglBindAPI(api);
        const auto context = made();
        EXPECT_EQ(eglQueryAPI(), api);
    }
}

TEST_P(EglContextIn, SharesNamesWithItsCompanion) {
    const auto context = made();
    const auto companion = context->makeCompanion();
    ASSERT_TRUE(context->makeCurrent());
    unsigned first = 0;
    context->commands()->genTextures(1, &first);
    ASSERT_TRUE(companion->makeCurrent());
    unsigned second = 0;
    companion->commands()->genTextures(1, &second);
    EXPECT_NE(first, second) << "names of one group are given once";
    companion->release();
}

TEST_P(EglContextIn, DrawsOnViewsWithoutAreaTooThoughNothingIsSeen) {
    const auto context = made();
    context->attach(*offscreenBacking(), {0, 0});
    ASSERT_TRUE(context->makeCurrent());
    context->commands()->rectf(-1, -1, 1, 1);
    EXPECT_EQ(nameOf(context->commands()->getError()), "GL_NO_ERROR");
    EXPECT_TRUE(context->flush());
    context->release();
}

TEST_P(EglContextIn, RefusesToShareWithAnotherKind) {
    const auto other = suppliedCommandsBacking(std::make_shared<RecordingCommands>())
                           ->makeContext(*NSOpenGLPixelFormat::defaultPixelFormat(), nullptr);
    EXPECT_THROW(made(other.get()), NSException);
}

INSTANTIATE_TEST_SUITE_P(Contexts, EglContextIn, everyProfile(), profileName);

TEST(EglContext, HasTheFirstProfileThatThereIsWhereNoneIsAskedFor) {
    const auto context = offscreenBacking()->makeContext(*NSOpenGLPixelFormat::defaultPixelFormat(), nullptr);
    ASSERT_TRUE(context->makeCurrent());
    EXPECT_EQ(context->commands()->facts().profile, OpenGLProfile::Compatibility);
    context->release();
}
