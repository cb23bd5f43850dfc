#include "Platform/OpenGL/Contexts/OpenGLLibraries.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string_view>

using namespace Imaging::Platform;
using testing::HasSubstr;
using testing::Not;

TEST(OpenGLLibraries, AreEnoughWithEglAndOneOpenGL) {
    EXPECT_TRUE(findOpenGLLibraries([](const char*) { return true; }).canMakeContexts());
    const auto onlyEs = [](const char* name) {
        return std::string_view(name).find("GLES") != std::string_view::npos;
    };
    EXPECT_FALSE(findOpenGLLibraries(onlyEs).canMakeContexts());
    const auto withoutGL = [](const char* name) {
        return std::string_view(name) != "libGL.so.1" && std::string_view(name) != "libOpenGL.so.0";
    };
    EXPECT_TRUE(findOpenGLLibraries(withoutGL).canMakeContexts());
    EXPECT_FALSE(findOpenGLLibraries(withoutGL).desktop);
    const auto oldGL = [](const char* name) { return std::string_view(name) == "libGL.so.1"; };
    EXPECT_TRUE(findOpenGLLibraries(oldGL).desktop);
}

TEST(OpenGLLibraries, NameWhatIsMissingAndItsPackage) {
    const OpenGLLibraries none = findOpenGLLibraries([](const char*) { return false; });
    EXPECT_THAT(none.missingText(), HasSubstr("libEGL.so.1 and libGL.so.1"));
    EXPECT_THAT(none.missingText(), HasSubstr("apt install libegl1 libgl1 libgl1-mesa-dri"));
    OpenGLLibraries noEgl = none;
    noEgl.desktop = true;
    EXPECT_THAT(noEgl.missingText(), HasSubstr("OpenGL needs libEGL.so.1, which"));
    EXPECT_THAT(noEgl.missingText(), HasSubstr("apt install libegl1 libgl1-mesa-dri"));
    OpenGLLibraries noGL = none;
    noGL.egl = true;
    EXPECT_THAT(noGL.missingText(), Not(HasSubstr("libEGL")));
    EXPECT_THAT(noGL.missingText(), HasSubstr("apt install libgl1 "));
}

TEST(OpenGLLibraries, AreAskedForWithAnException) {
    try {
        requireOpenGLLibraries(OpenGLLibraries{});
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), NSOpenGLException);
        EXPECT_EQ(exception.reason(), OpenGLLibraries{}.missingText());
    }
    EXPECT_NO_THROW(requireOpenGLLibraries()) << "the tests need OpenGL: " << openGLLibraries().missingText();
}
