#include "Platform/OpenGL/Contexts/EglDisplay.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;

TEST(EglDisplay, NeedsNoScreenAndIsAlwaysTheSame) {
    EXPECT_NE(EglDisplay::headless().handle(), EGL_NO_DISPLAY);
    EXPECT_EQ(&EglDisplay::headless(), &EglDisplay::headless());
}

TEST(EglDisplay, KnowsItsExtensionsByTheirWholeNames) {
    EXPECT_FALSE(EglDisplay::headless().hasExtension("EGL_KHR_create"));
    EXPECT_FALSE(EglDisplay::headless().hasExtension("EGL_IMAGING_no_such_thing"));
    EXPECT_TRUE(EglDisplay::headless().hasExtension("EGL_EXT_platform_base")) << "the client's count too";
}

TEST(EglDisplay, OfAnUnknownPlatformIsRefusedWithWhatToDo) {
    try {
        EglDisplay::forNative(0x7777, nullptr);
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), NSOpenGLException);
        EXPECT_NE(exception.reason().find("apt install"), std::string::npos);
    }
}

TEST(EglDisplay, SaysErrorsInEglsWords) {
    eglGetError();
    EXPECT_EQ(eglErrorText(), "EGL_SUCCESS");
    eglQueryString(EglDisplay::headless().handle(), 0x1234);
    EXPECT_EQ(eglErrorText(), "EGL_BAD_PARAMETER");
}
