#include "Platform/OpenGL/Contexts/SuppliedCommands.h"

#include "Platform/OpenGL/OpenGLPixelFormat.h"
#include "Platform/OpenGL/Recording/RecordingCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Imaging::Platform;

TEST(SuppliedCommands, AreThoseOfEveryContextAndCompanion) {
    const auto recorder = std::make_shared<RecordingCommands>();
    const auto backing = suppliedCommandsBacking(recorder);
    const auto context = backing->makeContext(*NSOpenGLPixelFormat::defaultPixelFormat(), nullptr);
    const auto companion = context->makeCompanion();
    EXPECT_EQ(context->commands(), recorder);
    EXPECT_EQ(companion->commands(), recorder);
    EXPECT_NE(backing->makeContext(*NSOpenGLPixelFormat::defaultPixelFormat(), context.get()), nullptr);
}

TEST(SuppliedCommands, DrawOnTheSizeThatIsAttached) {
    const auto recorder = std::make_shared<RecordingCommands>();
    const auto backing = suppliedCommandsBacking(recorder);
    const auto context = backing->makeContext(*NSOpenGLPixelFormat::defaultPixelFormat(), nullptr);
    context->attach(*backing, {30, 20});
    EXPECT_TRUE(context->makeCurrent());
    EXPECT_EQ(recorder->drawable(), (OpenGLDrawable{0, 0, 30, 20, false}));
    EXPECT_TRUE(context->flush());
    context->detach();
    EXPECT_TRUE(context->makeCurrent());
    EXPECT_EQ(recorder->drawable(), OpenGLDrawable{});
    EXPECT_THAT(recorder->lines(), testing::ElementsAre("glFlush()"));
}
