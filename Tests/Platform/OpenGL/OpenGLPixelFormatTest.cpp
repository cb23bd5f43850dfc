#include "Platform/OpenGL/OpenGLPixelFormat.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

using namespace Imaging::Platform;

namespace {

std::shared_ptr<const NSOpenGLPixelFormat> formatOf(const std::vector<std::uint32_t>& attributes) {
    return NSOpenGLPixelFormat::pixelFormatWithAttributes(attributes);
}

} // namespace

TEST(OpenGLPixelFormat, ReadsTheListOfAView) {
    const auto format = formatOf({5, 12, 32, 8, 32, 11, 8, 0});
    ASSERT_TRUE(format);
    EXPECT_TRUE(format->isDoubleBuffered());
    EXPECT_FALSE(format->isOffScreen());
    EXPECT_EQ(format->depthSize(), 32);
    EXPECT_EQ(format->colorSize(), 32);
    EXPECT_EQ(format->alphaSize(), 8);
    EXPECT_EQ(format->stencilSize(), 0);
    EXPECT_EQ(format->samples(), 0);
    EXPECT_FALSE(format->profile());
}

TEST(OpenGLPixelFormat, ReadsTheListOfWhatIsOffScreen) {
    const auto format = formatOf({53, 13, 8, 55, 1, 56, 2, 99, 0x3200, 0});
    ASSERT_TRUE(format);
    EXPECT_FALSE(format->isDoubleBuffered());
    EXPECT_TRUE(format->isOffScreen());
    EXPECT_EQ(format->stencilSize(), 8);
    EXPECT_EQ(format->samples(), 2);
    EXPECT_EQ(format->profile(), NSOpenGLProfileVersion3_2Core);
}

TEST(OpenGLPixelFormat, HasSeveralSamplesOnlyWithASampleBuffer) {
    EXPECT_EQ(formatOf({56, 8, 0})->samples(), 0);
    EXPECT_EQ(formatOf({55, 1, 0})->samples(), 4);
    EXPECT_EQ(formatOf({55, 0, 56, 8, 0})->samples(), 0);
}

TEST(OpenGLPixelFormat, StopsAtTheZero) {
    const auto format = formatOf({8, 24, 0, 5, 4711});
    ASSERT_TRUE(format);
    EXPECT_FALSE(format->isDoubleBuffered());
    EXPECT_EQ(format->colorSize(), 24);
}

TEST(OpenGLPixelFormat, IsNullForListsThatMakeNoSense) {
    EXPECT_FALSE(formatOf({}));
    EXPECT_FALSE(formatOf({5}));
    EXPECT_FALSE(formatOf({8, 32}));
    EXPECT_FALSE(formatOf({8}));
    EXPECT_FALSE(formatOf({4711, 0}));
    EXPECT_FALSE(formatOf({12, 129, 0}));
    EXPECT_FALSE(formatOf({99, 0x9999, 0}));
    EXPECT_TRUE(formatOf({12, 128, 0}));
    EXPECT_TRUE(formatOf({0}));
}

TEST(OpenGLPixelFormat, OfAViewThatAsksForNothingIsDoubleBufferedWithAlphaAndDepth) {
    const auto format = NSOpenGLPixelFormat::defaultPixelFormat();
    ASSERT_TRUE(format);
    EXPECT_TRUE(format->isDoubleBuffered());
    EXPECT_EQ(format->colorSize(), 32);
    EXPECT_EQ(format->alphaSize(), 8);
    EXPECT_EQ(format->depthSize(), 24);
}
