#include "Platform/OpenGL/Native/KeptState.h"

#include "Platform/OpenGL/Native/ContextFacts.h"
#include "Tests/Platform/OpenGL/Application.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

class KeptStateIn : public InEveryContext {};

struct Value {
    const char* name;
    GLenum number;
};

#define VALUE(name)                                                                                          \
    { #name, name }

constexpr Value numbers[] = {VALUE(GL_BLEND_SRC_RGB),
                             VALUE(GL_BLEND_SRC_ALPHA),
                             VALUE(GL_BLEND_DST_RGB),
                             VALUE(GL_BLEND_DST_ALPHA),
                             VALUE(GL_BLEND_EQUATION_RGB),
                             VALUE(GL_BLEND_EQUATION_ALPHA),
                             VALUE(GL_BLEND_COLOR),
                             VALUE(GL_COLOR_WRITEMASK),
                             VALUE(GL_DEPTH_WRITEMASK),
                             VALUE(GL_DEPTH_FUNC),
                             VALUE(GL_CULL_FACE_MODE),
                             VALUE(GL_FRONT_FACE),
                             VALUE(GL_COLOR_CLEAR_VALUE),
                             VALUE(GL_VIEWPORT),
                             VALUE(GL_SCISSOR_BOX),
                             VALUE(GL_UNPACK_ROW_LENGTH),
                             VALUE(GL_UNPACK_SKIP_ROWS),
                             VALUE(GL_UNPACK_SKIP_PIXELS),
                             VALUE(GL_UNPACK_ALIGNMENT),
                             VALUE(GL_PACK_ROW_LENGTH),
                             VALUE(GL_PACK_ALIGNMENT),
                             VALUE(GL_ACTIVE_TEXTURE),
                             VALUE(GL_TEXTURE_BINDING_2D),
                             VALUE(GL_SAMPLER_BINDING),
                             VALUE(GL_CURRENT_PROGRAM),
                             VALUE(GL_VERTEX_ARRAY_BINDING),
                             VALUE(GL_ARRAY_BUFFER_BINDING),
                             VALUE(GL_PIXEL_UNPACK_BUFFER_BINDING),
                             VALUE(GL_PIXEL_PACK_BUFFER_BINDING),
                             VALUE(GL_DRAW_FRAMEBUFFER_BINDING),
                             VALUE(GL_READ_FRAMEBUFFER_BINDING),
                             VALUE(GL_READ_BUFFER)};
constexpr Value desktopNumbers[] = {VALUE(GL_POLYGON_MODE), VALUE(GL_UNPACK_SWAP_BYTES),
                                    VALUE(GL_TEXTURE_BINDING_RECTANGLE)};
constexpr Value fixedNumbers[] = {
    VALUE(GL_MATRIX_MODE),           VALUE(GL_MODELVIEW_MATRIX),      VALUE(GL_PROJECTION_MATRIX),
    VALUE(GL_TEXTURE_MATRIX),        VALUE(GL_CURRENT_COLOR),         VALUE(GL_LINE_WIDTH),
    VALUE(GL_SHADE_MODEL),           VALUE(GL_ATTRIB_STACK_DEPTH),    VALUE(GL_CLIENT_ATTRIB_STACK_DEPTH),
    VALUE(GL_MODELVIEW_STACK_DEPTH), VALUE(GL_PROJECTION_STACK_DEPTH)};
constexpr Value switches[] = {VALUE(GL_BLEND),
                              VALUE(GL_CULL_FACE),
                              VALUE(GL_DEPTH_TEST),
                              VALUE(GL_SCISSOR_TEST),
                              VALUE(GL_STENCIL_TEST),
                              VALUE(GL_POLYGON_OFFSET_FILL),
                              VALUE(GL_SAMPLE_ALPHA_TO_COVERAGE)};
constexpr Value fixedSwitches[] = {VALUE(GL_LIGHTING),   VALUE(GL_FOG),         VALUE(GL_ALPHA_TEST),
                                   VALUE(GL_TEXTURE_2D), VALUE(GL_LINE_SMOOTH), VALUE(GL_COLOR_LOGIC_OP)};

using Snapshot = std::map<std::string, std::vector<float>>;

void addNumber(Snapshot& snapshot, const Value& value) {
    std::vector<float> values(16, -12345);
    glGetFloatv(value.number, values.data());
    snapshot[value.name] = values;
}

/// The state as OpenGL tells it.
Snapshot snapshotOf(OpenGLProfile profile) {
    Snapshot snapshot;
    for (const Value& value : numbers) addNumber(snapshot, value);
    for (const Value& value : switches)
        snapshot[value.name] = {glIsEnabled(value.number) == GL_TRUE ? 1.0f : 0.0f};
    if (profile != OpenGLProfile::ES) {
        for (const Value& value : desktopNumbers) addNumber(snapshot, value);
    }
    if (profile != OpenGLProfile::Compatibility) return snapshot;
    for (const Value& value : fixedNumbers) addNumber(snapshot, value);
    for (const Value& value : fixedSwitches) {
        snapshot[value.name] = {glIsEnabled(value.number) == GL_TRUE ? 1.0f : 0.0f};
    }
    return snapshot;
}

/// State as some application might have left it, far from all defaults.
void makeStateUnusual(OpenGLProfile profile) {
    for (const Value& value : switches) glEnable(value.number);
    glBlendFuncSeparate(GL_DST_COLOR, GL_ZERO, GL_ONE, GL_SRC_ALPHA);
    glBlendEquationSeparate(GL_FUNC_REVERSE_SUBTRACT, GL_MAX);
    glBlendColor(0.1f, 0.2f, 0.3f, 0.4f);
    glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
    glDepthMask(GL_FALSE);
    glDepthFunc(GL_GREATER);
    glCullFace(GL_FRONT);
    glFrontFace(GL_CW);
    glClearColor(0.5f, 0.25f, 1, 0);
    glScissor(1, 2, 3, 4);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 77);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 2);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 3);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, 99);
    glPixelStorei(GL_PACK_ALIGNMENT, 8);
    GLuint names[4] = {};
    glGenBuffers(3, names);
    glBindBuffer(GL_ARRAY_BUFFER, names[0]);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, names[1]);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, names[2]);
    glGenVertexArrays(1, names);
    glBindVertexArray(names[0]);
    glGenTextures(2, names);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, names[0]);
    glGenSamplers(1, names);
    glBindSampler(0, names[0]);
    if (profile != OpenGLProfile::ES) {
        glBindTexture(GL_TEXTURE_RECTANGLE, names[1]);
        glPixelStorei(GL_UNPACK_SWAP_BYTES, 1);
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    }
    glActiveTexture(GL_TEXTURE2);
    glBindTexture(GL_TEXTURE_2D, names[1] + 50);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
}

void makeFixedFunctionUnusual() {
    for (const Value& value : fixedSwitches) glEnable(value.number);
    glLogicOp(GL_XOR);
    glAlphaFunc(GL_LESS, 0.5f);
    glMatrixMode(GL_TEXTURE);
    glActiveTexture(GL_TEXTURE0);
    glEnable(GL_TEXTURE_2D);
    glTranslatef(3, 4, 5);
    glActiveTexture(GL_TEXTURE2);
    glMatrixMode(GL_MODELVIEW);
    glRotatef(33, 1, 2, 3);
    glMatrixMode(GL_PROJECTION);
    glScalef(3, 4, 5);
    glColor4f(0.1f, 0.2f, 0.3f, 0.4f);
    glLineWidth(5);
    glShadeModel(GL_FLAT);
}

/// What a frame of ours may do.
void drawSomething(OpenGLCommands& commands) {
    commands.clearColor(1, 0, 0, 1);
    commands.clear(OpenGL::ClearBits::Color);
    unsigned name = 0;
    const std::array<Rgba, 4> texels{blue, blue, blue, blue};
    commands.genTextures(1, &name);
    commands.enable(OpenGL::Capability::Texture2D);
    commands.bindTexture(OpenGL::TextureTarget::Texture2D, name);
    commands.texParameteri(OpenGL::TextureTarget::Texture2D, OpenGL::TexParameter::MinFilter,
                           OpenGL::TexParameterValue::Linear);
    commands.texImage2D(OpenGL::TextureTarget::Texture2D, 2, 2, OpenGL::PixelFormat::Rgba,
                        OpenGL::PixelType::UnsignedByte, texels.data());
    commands.enable(OpenGL::Capability::Blend);
    commands.blendFunc(OpenGL::BlendFactor::One, OpenGL::BlendFactor::OneMinusSrcAlpha);
    commands.blendColor(1, 1, 1, 0.5f);
    commands.enable(OpenGL::Capability::LineSmooth);
    commands.color4f(1, 1, 1, 1);
    commands.rectf(-1, -1, 1, 1);
    commands.deleteTextures(1, &name);
    commands.disable(OpenGL::Capability::Texture2D);
}

} // namespace

TEST_P(KeptStateIn, IsTheApplicationsAgainAfterAFrame) {
    Application application(GetParam());
    const OpenGLProfile profile = factsOfCurrentContext().profile;
    int flushes = 0;
    const auto view =
        NSView::viewOnCurrentContext(NSMakeRect(0, 0, 12, 10), {[&] { ++flushes; }, nullptr, nullptr});
    const auto context = NSOpenGLContext::contextWithFormat(NSOpenGLPixelFormat::defaultPixelFormat());
    context->setView(view);
    makeStateUnusual(profile);
    if (profile == OpenGLProfile::Compatibility) makeFixedFunctionUnusual();
    const Snapshot before = snapshotOf(profile);
    for (int frame = 1; frame <= 2; ++frame) {
        ASSERT_TRUE(context->makeCurrentContext());
        drawSomething(OpenGLCommands::current());
        EXPECT_EQ(nameOf(OpenGLCommands::current().getError()), "GL_NO_ERROR");
        context->flushBuffer();
        EXPECT_EQ(flushes, frame);
        const Snapshot after = snapshotOf(profile);
        for (const auto& [name, values] : before)
            EXPECT_EQ(after.at(name), values) << name << ", frame " << frame;
    }
    ASSERT_TRUE(context->makeCurrentContext());
    drawSomething(OpenGLCommands::current());
    NSOpenGLContext::clearCurrentContext();
    EXPECT_TRUE(snapshotOf(profile) == before);
    EXPECT_EQ(flushes, 2);
    application.context().makeCurrent();
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    EXPECT_TRUE(areAlike(application.pixels(), Application::greenAround(blue)))
        << "the application's state disturbed the drawing";
}

INSTANTIATE_TEST_SUITE_P(Contexts, KeptStateIn, everyProfile(), profileName);
