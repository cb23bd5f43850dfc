#include "Platform/OpenGL/Contexts/AdoptedContext.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Log.h"
#include "Tests/Platform/OpenGL/Application.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

class AdoptedContextIn : public InEveryContext {};

std::shared_ptr<NSOpenGLContext> contextOn(const std::shared_ptr<NSView>& view) {
    const auto context = NSOpenGLContext::contextWithFormat(NSOpenGLPixelFormat::defaultPixelFormat());
    context->setView(view);
    return context;
}

void clearTo(Rgba color) {
    OpenGLCommands& commands = OpenGLCommands::current();
    commands.clearColor(static_cast<float>(color.r) / 255, static_cast<float>(color.g) / 255,
                        static_cast<float>(color.b) / 255, static_cast<float>(color.a) / 255);
    commands.clear(ClearBits::Color);
}

const NSRect frame = NSMakeRect(0, 0, 12, 10);

} // namespace

TEST_P(AdoptedContextIn, DrawsIntoTheBoundFrameBufferFromTheViewportsCorner) {
    Application application(GetParam());
    const auto context = contextOn(NSView::viewOnCurrentContext(frame));
    ASSERT_TRUE(context->makeCurrentContext());
    OpenGLCommands& commands = OpenGLCommands::current();
    EXPECT_EQ(commands.getViewport(), (std::array{0, 0, 12, 10}));
    clearTo(red);
    commands.color4f(0, 0, 1, 1);
    commands.viewport(0, 0, 6, 10);
    commands.rectf(-1, -1, 1, 1);
    EXPECT_EQ(pixelsOf(commands, 12, 10).above(5, 9), blue);
    EXPECT_EQ(pixelsOf(commands, 12, 10).above(6, 0), red);
    context->flushBuffer();
    Grid expected = Application::greenAround(red);
    for (int y = 3; y < 13; ++y) {
        for (int x = 5; x < 11; ++x) expected.at(x, Application::height - 1 - y) = blue;
    }
    EXPECT_TRUE(areAlike(application.pixels(), expected));
}

TEST_P(AdoptedContextIn, FollowsTheApplicationsFrameBufferAndViewport) {
    Application application(GetParam());
    const auto context = contextOn(NSView::viewOnCurrentContext(frame));
    ASSERT_TRUE(context->makeCurrentContext());
    clearTo(red);
    context->flushBuffer();
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    glViewport(2, 3, 4, 4);
    context->view()->setFrame(NSMakeRect(0, 0, 4, 4));
    ASSERT_TRUE(context->makeCurrentContext());
    clearTo(blue);
    context->flushBuffer();
    EXPECT_TRUE(areAlike(application.pixels(), Application::greenAround(red)));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    std::vector<Rgba> rows(64);
    glReadPixels(0, 0, 8, 8, GL_RGBA, GL_UNSIGNED_BYTE, rows.data());
    EXPECT_EQ(rows[8 * 3 + 2], blue);
    EXPECT_EQ(rows[8 * 6 + 5], blue);
    EXPECT_EQ(rows[8 * 3 + 1], transparent);
    EXPECT_EQ(rows[8 * 7 + 5], transparent);
}

TEST_P(AdoptedContextIn, IsLostWhenTheApplicationComesWithAnother) {
    std::vector<std::string> messages;
    setLogSink([&](const std::string& message) { messages.push_back(message); });
    {
        const auto context = contextOn(NSView::viewOnCurrentContext(frame));
        {
            Application first(GetParam());
            ASSERT_TRUE(context->makeCurrentContext());
            context->flushBuffer();
            first.context().makeCurrent();
            Application second(GetParam());
            EXPECT_FALSE(context->makeCurrentContext());
            EXPECT_TRUE(context->isLost());
            EXPECT_FALSE(context->makeCurrentContext());
            EXPECT_EQ(OpenGLCommands::currentOrNull(), nullptr);
            EXPECT_EQ(messages.size(), 1u) << "once is enough";
            context->setView(context->view());
            EXPECT_FALSE(context->isLost());
            second.context().makeCurrent();
            ASSERT_TRUE(context->makeCurrentContext());
            clearTo(red);
            context->flushBuffer();
            EXPECT_TRUE(areAlike(second.pixels(), Application::greenAround(red)));
        }
    }
    setLogSink(nullptr);
}

TEST_P(AdoptedContextIn, GetsACompanionFromEglForAnotherThread) {
    Application application(GetParam());
    const auto context = contextOn(NSView::viewOnCurrentContext(frame));
    ASSERT_TRUE(context->makeCurrentContext());
    unsigned name = 0;
    std::thread([&] {
        ASSERT_TRUE(context->makeCurrentContext());
        OpenGLCommands& commands = OpenGLCommands::current();
        commands.genTextures(1, &name);
        commands.bindTexture(TextureTarget::Texture2D, name);
        commands.texParameteri(TextureTarget::Texture2D, TexParameter::MinFilter, TexParameterValue::Nearest);
        commands.texImage2D(TextureTarget::Texture2D, 1, 1, PixelFormat::Rgba, PixelType::UnsignedByte,
                            &blue);
        commands.finish();
        EXPECT_EQ(commands.getError(), Error::None);
    }).join();
    OpenGLCommands& commands = OpenGLCommands::current();
    commands.enable(Capability::Texture2D);
    commands.bindTexture(TextureTarget::Texture2D, name);
    commands.color4f(1, 1, 1, 1);
    commands.rectf(-1, -1, 1, 1);
    commands.disable(Capability::Texture2D);
    commands.deleteTextures(1, &name);
    context->flushBuffer();
    EXPECT_TRUE(areAlike(application.pixels(), Application::greenAround(blue)));
}

TEST_P(AdoptedContextIn, TakesTheApplicationsCompanionWhereItGivesOne) {
    Application application(GetParam());
    const auto companion = application.context().makeCompanion();
    int released = 0;
    NSAdoptedContext adopted;
    adopted.makeCompanionCurrent = [&] { return companion->makeCurrent(); };
    adopted.releaseCompanion = [&] {
        companion->release();
        ++released;
    };
    const auto context = contextOn(NSView::viewOnCurrentContext(frame, adopted));
    ASSERT_TRUE(context->makeCurrentContext());
    std::thread([&] {
        ASSERT_TRUE(context->makeCurrentContext());
        unsigned name = 0;
        OpenGLCommands::current().genTextures(1, &name);
        EXPECT_NE(name, 0u);
        OpenGLCommands::current().deleteTextures(1, &name);
        EXPECT_EQ(OpenGLCommands::current().getError(), Error::None);
    }).join();
    EXPECT_EQ(released, 1);
    context->flushBuffer();
}

TEST(AdoptedContext, NeedsAContextThatIsCurrent) {
    const auto context = contextOn(NSView::viewOnCurrentContext(frame));
    try {
        context->makeCurrentContext();
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_NE(exception.reason().find("make the application's context current"), std::string::npos);
    }
    EXPECT_EQ(OpenGLCommands::currentOrNull(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Contexts, AdoptedContextIn, everyProfile(), profileName);
