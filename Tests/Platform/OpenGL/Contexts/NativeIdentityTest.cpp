#include "Platform/OpenGL/Contexts/NativeIdentity.h"

#include "Tests/Platform/OpenGL/Application.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Pixels;

TEST(NativeIdentity, IsThatOfTheCurrentContext) {
    EXPECT_EQ(currentNativeContext(), nullptr);
    EXPECT_FALSE(currentEglOrigin());
    const Application application(NSOpenGLProfileVersionES3_0);
    EXPECT_EQ(currentNativeContext(), eglGetCurrentContext());
    ASSERT_TRUE(currentEglOrigin());
    EXPECT_EQ(currentEglOrigin()->context, eglGetCurrentContext());
    EXPECT_EQ(currentEglOrigin()->display, eglGetCurrentDisplay());
    EXPECT_NE(currentEglOrigin()->config, nullptr);
}
