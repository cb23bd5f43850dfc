#include "Platform/OpenGL/OpenGLFacts.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;

TEST(OpenGLFacts, FindAnExtensionByItsWholeName) {
    OpenGLFacts facts;
    facts.extensions = "GL_EXT_texture_rectangle GL_ARB_multitexture";
    EXPECT_TRUE(facts.hasExtension("GL_EXT_texture_rectangle"));
    EXPECT_TRUE(facts.hasExtension("GL_ARB_multitexture"));
    EXPECT_FALSE(facts.hasExtension("GL_EXT_texture"));
    EXPECT_FALSE(facts.hasExtension("texture_rectangle"));
    EXPECT_FALSE(facts.hasExtension(""));
    EXPECT_FALSE(OpenGLFacts{}.hasExtension("GL_EXT_texture"));
}

TEST(OpenGLFacts, AreDescribedByVersionAndProfile) {
    OpenGLFacts facts;
    facts.majorVersion = 2;
    facts.minorVersion = 1;
    EXPECT_EQ(describe(facts), "OpenGL 2.1 compatibility");
    facts.profile = OpenGLProfile::Core;
    EXPECT_EQ(describe(facts), "OpenGL 2.1 core");
    facts.profile = OpenGLProfile::ES;
    EXPECT_EQ(describe(facts), "OpenGL ES 2.1");
}
