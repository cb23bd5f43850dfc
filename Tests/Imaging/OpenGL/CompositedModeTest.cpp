// Also tests: Imaging/OpenGL/OpenGLErrors.cpp

#include "Imaging/GraphicsUtilities.h"
#include "Imaging/OpenGL/OpenGLErrors.h"
#include "Tests/Imaging/OpenGL/RecorderFixture.h"

using namespace ImagingTests;
using Imaging::MapPointGL;
using Imaging::MapRectGL;
using Imaging::SetCompositedModeGL;
using testing::ElementsAre;

namespace {

class CompositedMode : public RecorderTest {};

} // namespace

TEST_F(CompositedMode, CopyReplacesWhatIsThereWhateverTheFraction) {
    SetCompositedModeGL(1, 0.25F);
    EXPECT_THAT(gl->takeLines(), ElementsAre("glEnable(GL_BLEND)", "glBlendFunc(GL_ONE, GL_ZERO)"));
}

TEST_F(CompositedMode, SourceOverScalesTheTextureByTheFraction) {
    SetCompositedModeGL(2, 0.25F);
    EXPECT_THAT(gl->takeLines(),
                ElementsAre("glEnable(GL_BLEND)", "glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA)",
                            "glColor4f(0.25, 0.25, 0.25, 0.25)"));
}

TEST_F(CompositedMode, DestinationOverScalesTheTextureByTheFraction) {
    SetCompositedModeGL(6, 0.5F);
    EXPECT_THAT(gl->takeLines(),
                ElementsAre("glEnable(GL_BLEND)", "glBlendFunc(GL_ONE_MINUS_DST_ALPHA, GL_ONE)",
                            "glColor4f(0.5, 0.5, 0.5, 0.5)"));
}

TEST_F(CompositedMode, PlusLighterHasAConstantAlphaAndLeavesTheColour) {
    SetCompositedModeGL(13, 0.75F);
    EXPECT_THAT(gl->takeLines(), ElementsAre("glEnable(GL_BLEND)", "glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE)",
                                             "glBlendColor(1, 1, 1, 0.75)"));
}

TEST_F(CompositedMode, EveryOtherOperationLeavesTheBlendFunctionInForce) {
    for (const int operation : {0, 3, 4, 5, 7, 8, 9, 10, 11, 12, 14, -1}) {
        SetCompositedModeGL(operation, 0.5F);
        EXPECT_THAT(gl->takeLines(), ElementsAre("glEnable(GL_BLEND)")) << operation;
    }
}

TEST_F(CompositedMode, LogsWhatOpenGLReportsAndGoesOn) {
    gl->answerWithError(Imaging::Platform::OpenGL::Error::InvalidEnum);
    SetCompositedModeGL(2, 1);
    EXPECT_EQ(gl->takeLines().size(), 3U);
    EXPECT_THAT(takeLog(), ElementsAre("gl error Imaging/GraphicsUtilities 285 1280"));
}

TEST_F(CompositedMode, ReportsAnErrorOnceAndNothingWithoutOne) {
    gl->answerWithError(Imaging::Platform::OpenGL::Error::OutOfMemory);
    Imaging::reportOpenGLError(*gl);
    Imaging::reportOpenGLError(*gl);
    EXPECT_THAT(takeLog(), ElementsAre("gl error Imaging/GraphicsUtilities 285 1285"));
}

TEST_F(CompositedMode, NeedsACurrentContext) {
    OpenGLCommands::setCurrent(nullptr);
    EXPECT_THROW(SetCompositedModeGL(2, 1), NSException);
}

TEST(MapGL, MapsPointsFromOneRectangleToTheSamePlaceOfAnother) {
    const NSRect from = NSMakeRect(10, 20, 40, 80);
    const NSRect unit = NSMakeRect(-1, -1, 2, 2);
    EXPECT_TRUE(isPoint(MapPointGL({10, 20}, from, unit), -1, -1));
    EXPECT_TRUE(isPoint(MapPointGL({50, 100}, from, unit), 1, 1));
    EXPECT_TRUE(isPoint(MapPointGL({20, 80}, from, unit), -0.5F, 0.5F));
    EXPECT_TRUE(isPoint(MapPointGL({0, 0}, from, NSMakeRect(100, 200, 20, 40)), 95, 190));
}

TEST(MapGL, MapsRectanglesByOriginAndSize) {
    const NSRect from = NSMakeRect(10, 20, 40, 80);
    EXPECT_TRUE(isRect(MapRectGL(NSMakeRect(20, 40, 10, 20), from, NSMakeRect(-1, -1, 2, 2)), -0.5F, -0.5F,
                       0.5F, 0.5F));
    EXPECT_TRUE(
        isRect(MapRectGL(NSMakeRect(30, 60, -20, 8), from, NSMakeRect(5, 7, 80, 40)), 45, 27, -40, 4));
}
