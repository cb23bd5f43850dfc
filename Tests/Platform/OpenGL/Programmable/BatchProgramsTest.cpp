#include "Platform/OpenGL/Programmable/BatchPrograms.h"

#include "Platform/OpenGL/Native/ContextFacts.h"
#include "Tests/Platform/OpenGL/Application.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

class BatchProgramsIn : public InEveryContext {};

/// A triangle that covers the whole viewport.
std::vector<BatchVertex> everything(std::array<float, 4> color, std::array<float, 4> edge) {
    return {{{-1, -1, 0, 1}, color, {}, edge},
            {{3, -1, 0, 1}, color, {}, edge},
            {{-1, 3, 0, 1}, color, {}, edge}};
}

} // namespace

TEST_P(BatchProgramsIn, DrawColoursByTheirCoverage) {
    Application application(GetParam());
    BatchPrograms programs(factsOfCurrentContext());
    programs.bind();
    programs.draw(BatchKind::Polygons, everything({1, 0, 0, 1}, BatchVertex{}.edge), RenderState{});
    EXPECT_TRUE(areAlike(application.pixels(), Application::greenAround(red)));
    // A quarter of a pixel is left to the end across, and half along.
    programs.draw(BatchKind::WideLines, everything({0, 0, 1, 1}, {-1.75f, 4.5f, 2, 5}), RenderState{});
    EXPECT_TRUE(areAlike(application.pixels(), Application::greenAround({0, 0, 255, 32}), 1));
    programs.release();
}

TEST_P(BatchProgramsIn, LeaveBoundWhatIs) {
    const Application application(GetParam());
    GLuint names[2] = {};
    glGenVertexArrays(1, &names[0]);
    glGenBuffers(1, &names[1]);
    glBindVertexArray(names[0]);
    glBindBuffer(GL_ARRAY_BUFFER, names[1]);
    BatchPrograms programs(factsOfCurrentContext());
    GLint bound[2] = {};
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &bound[0]);
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &bound[1]);
    EXPECT_EQ(bound[0], static_cast<GLint>(names[0]));
    EXPECT_EQ(bound[1], static_cast<GLint>(names[1]));
    programs.release();
}

INSTANTIATE_TEST_SUITE_P(Contexts, BatchProgramsIn,
                         testing::Values(NSOpenGLProfileVersion3_2Core, NSOpenGLProfileVersionES3_0),
                         profileName);
