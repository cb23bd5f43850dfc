#include "Platform/OpenGL/Contexts/EglConfig.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <vector>

using namespace Imaging::Platform;

namespace {

std::optional<EGLConfig> chosen(const std::vector<std::uint32_t>& attributes) {
    const auto format = NSOpenGLPixelFormat::pixelFormatWithAttributes(attributes);
    return chooseEglConfig(EglDisplay::headless(), *format, EGL_OPENGL_BIT, EGL_PBUFFER_BIT);
}

EGLint valueOf(EGLConfig config, EGLint attribute) {
    EGLint value = -1;
    eglGetConfigAttrib(EglDisplay::headless().handle(), config, attribute, &value);
    return value;
}

} // namespace

TEST(EglConfig, HasWhatTheFormatAsksFor) {
    const std::optional<EGLConfig> config = chosen({8, 32, 11, 8, 12, 24, 13, 8, 0});
    ASSERT_TRUE(config);
    EXPECT_EQ(valueOf(*config, EGL_RED_SIZE), 8);
    EXPECT_EQ(valueOf(*config, EGL_BLUE_SIZE), 8);
    EXPECT_EQ(valueOf(*config, EGL_ALPHA_SIZE), 8);
    EXPECT_GE(valueOf(*config, EGL_DEPTH_SIZE), 24);
    EXPECT_GE(valueOf(*config, EGL_STENCIL_SIZE), 8);
    EXPECT_EQ(valueOf(*config, EGL_SAMPLES), 0);
}

TEST(EglConfig, LowersDepthThatIsNotToBeHad) {
    const std::optional<EGLConfig> config = chosen({8, 32, 11, 8, 12, 128, 0});
    ASSERT_TRUE(config);
    EXPECT_GE(valueOf(*config, EGL_DEPTH_SIZE), 24);
    EXPECT_EQ(valueOf(*config, EGL_RED_SIZE), 8);
}

TEST(EglConfig, DoesWithOneSampleWhereSoManyAreNotToBeHad) {
    const std::optional<EGLConfig> config = chosen({8, 32, 55, 1, 56, 128, 0});
    ASSERT_TRUE(config);
    EXPECT_EQ(valueOf(*config, EGL_SAMPLES), 0);
}

TEST(EglConfig, IsNothingWhereColourIsNotToBeHad) { EXPECT_FALSE(chosen({8, 128, 0})); }
