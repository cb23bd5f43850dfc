#include "Platform/OpenGL/Native/ContextFacts.h"

#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

class ContextFactsIn : public InEveryContext {};

} // namespace

TEST_P(ContextFactsIn, FitTheProfile) {
    OpenGLSurface surface(GetParam(), 4, 4);
    const OpenGLFacts facts = factsOfCurrentContext();
    const bool isES = GetParam() == NSOpenGLProfileVersionES3_0;
    EXPECT_EQ(facts.profile == OpenGLProfile::ES, isES);
    EXPECT_GE(10 * facts.majorVersion + facts.minorVersion, isES ? 30 : 14);
    EXPECT_EQ(facts.rectangleTextures, !isES) << "every desktop driver here has them";
    EXPECT_EQ(facts.maximumRectangleTextureSize > 0, !isES);
    EXPECT_EQ(facts.bgraUploads, !isES);
    EXPECT_EQ(facts.smoothLines, GetParam() == NSOpenGLProfileVersionLegacy);
    EXPECT_GE(facts.maximumTextureSize, 64);
    EXPECT_FALSE(facts.renderer.empty());
    EXPECT_FALSE(facts.clientStorage);
}

TEST_P(ContextFactsIn, SayRectangleTexturesUnderTheNameThatCallersLookFor) {
    OpenGLSurface surface(GetParam(), 4, 4);
    const std::string extensions = surface.commands().getString(StringName::Extensions);
    const bool isNamed = extensions.find("GL_EXT_texture_rectangle") != std::string::npos;
    EXPECT_EQ(isNamed, surface.commands().facts().rectangleTextures);
    EXPECT_EQ(surface.commands().facts().hasExtension("GL_EXT_texture_rectangle"), isNamed);
    EXPECT_THAT(extensions, testing::HasSubstr(" GL_")) << "more than one name, with spaces between";
}

TEST_P(ContextFactsIn, AnswerQuestionsForLimitsAndStrings) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    EXPECT_EQ(commands.getMaxTextureSize(), commands.facts().maximumTextureSize);
    EXPECT_EQ(commands.getMaxRectangleTextureSize(), commands.facts().maximumRectangleTextureSize);
    EXPECT_EQ(commands.getString(StringName::Renderer), commands.facts().renderer);
    EXPECT_EQ(commands.getString(StringName::Vendor), commands.facts().vendor);
    EXPECT_EQ(commands.getString(StringName::Version), commands.facts().version);
}

INSTANTIATE_TEST_SUITE_P(Contexts, ContextFactsIn, everyProfile(), profileName);
