#include "Platform/OpenGL/Contexts/ThreadedContext.h"

#include "Platform/Foundation/Exception.h"
#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

class ThreadedContextIn : public InEveryContext {};

/// A texture of one colour, uploaded in full.
unsigned textureOf(OpenGLCommands& commands, Rgba color, int size) {
    const std::vector<Rgba> pixels(static_cast<std::size_t>(size) * static_cast<std::size_t>(size), color);
    unsigned name = 0;
    commands.genTextures(1, &name);
    commands.bindTexture(TextureTarget::Texture2D, name);
    commands.texParameteri(TextureTarget::Texture2D, TexParameter::MinFilter, TexParameterValue::Nearest);
    commands.texParameteri(TextureTarget::Texture2D, TexParameter::MagFilter, TexParameterValue::Nearest);
    commands.texImage2D(TextureTarget::Texture2D, size, size, PixelFormat::Rgba, PixelType::UnsignedByte,
                        pixels.data());
    commands.bindTexture(TextureTarget::Texture2D, 0);
    commands.finish();
    EXPECT_EQ(commands.getError(), Error::None);
    return name;
}

void drawTexture(OpenGLCommands& commands, unsigned name) {
    commands.enable(Capability::Texture2D);
    commands.bindTexture(TextureTarget::Texture2D, name);
    commands.color4f(1, 1, 1, 1);
    commands.begin(Primitive::Polygon);
    const std::array<std::array<float, 2>, 4> corners{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
    for (const auto& [x, y] : corners) {
        commands.texCoord2f(x, y);
        commands.vertex2f(2 * x - 1, 2 * y - 1);
    }
    commands.end();
    commands.disable(Capability::Texture2D);
}

} // namespace

TEST_P(ThreadedContextIn, DrawsWhatAnotherThreadUploaded) {
    OpenGLSurface surface(GetParam(), 6, 6);
    const OpenGLCommands* const drawing = &surface.commands();
    const std::shared_ptr<NSOpenGLContext> context = surface.sharedContext();
    unsigned name = 0;
    std::thread([&] {
        ASSERT_TRUE(context->makeCurrentContext());
        EXPECT_NE(&OpenGLCommands::current(), drawing) << "a native context is current on one thread only";
        name = textureOf(OpenGLCommands::current(), {10, 200, 30, 255}, 4);
    }).join();
    drawTexture(surface.commands(), name);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(6, 6, {10, 200, 30, 255})));
    surface.commands().deleteTextures(1, &name);
}

TEST_P(ThreadedContextIn, UploadsAndDrawsUnderALockThatChangesHands) {
    OpenGLSurface surface(GetParam(), 5, 5);
    const std::shared_ptr<NSOpenGLContext> context = surface.sharedContext();
    std::mutex contextLock;
    std::vector<unsigned> names;
    std::atomic<bool> ended = false;
    std::thread uploader([&] {
        context->makeCurrentContext();
        for (int i = 0; i < 40; ++i) {
            const std::lock_guard guard(contextLock);
            names.push_back(
                textureOf(OpenGLCommands::current(), {static_cast<std::uint8_t>(i), 0, 99, 255}, 16));
        }
        ended = true;
    });
    std::size_t drawn = 0;
    while (!ended || drawn < 40) {
        std::this_thread::yield();
        const std::lock_guard guard(contextLock);
        for (; drawn < names.size(); ++drawn) {
            drawTexture(surface.commands(), names[drawn]);
            const Rgba expected{static_cast<std::uint8_t>(drawn), 0, 99, 255};
            EXPECT_TRUE(areAlike(surface.pixels(), Grid(5, 5, expected))) << "texture " << drawn;
        }
    }
    uploader.join();
    surface.commands().deleteTextures(names.size(), names.data());
}

TEST_P(ThreadedContextIn, GivesEachThreadItsOwnAndUsesThemAgain) {
    OpenGLSurface surface(GetParam(), 4, 4);
    const std::shared_ptr<NSOpenGLContext> context = surface.sharedContext();
    const OpenGLCommands* const drawing = &surface.commands();
    const OpenGLCommands* first = nullptr;
    std::thread([&] {
        context->makeCurrentContext();
        first = &OpenGLCommands::current();
        context->makeCurrentContext();
        EXPECT_EQ(&OpenGLCommands::current(), first);
        std::thread([&] {
            context->makeCurrentContext();
            EXPECT_NE(&OpenGLCommands::current(), first);
            EXPECT_NE(&OpenGLCommands::current(), drawing);
            EXPECT_EQ(NSOpenGLContext::currentContext(), context);
        }).join();
    }).join();
    const OpenGLCommands* again = nullptr;
    std::thread([&] {
        context->makeCurrentContext();
        again = &OpenGLCommands::current();
        NSOpenGLContext::clearCurrentContext();
    }).join();
    EXPECT_EQ(again, first);
}

TEST_P(ThreadedContextIn, DrawsOnTheThreadThatGaveItsView) {
    const auto context = NSOpenGLContext::contextWithFormat(formatWithProfile(GetParam()));
    const auto view = std::make_shared<NSView>(NSMakeRect(0, 0, 3, 3));
    std::thread([&] {
        context->setView(view);
        context->makeCurrentContext();
        EXPECT_EQ(OpenGLCommands::current().getError(), Error::None);
        OpenGLCommands::current().clearColor(0, 0, 1, 1);
        OpenGLCommands::current().clear(ClearBits::Color);
        EXPECT_TRUE(areAlike(pixelsOf(OpenGLCommands::current(), 3, 3), Grid(3, 3, blue)));
        std::thread([&] {
            EXPECT_THROW(context->setView(view), NSException) << "it is current over there";
            EXPECT_THROW(context->clearDrawable(), NSException);
        }).join();
    }).join();
    context->setView(view); // that thread has ended and let go of it
    EXPECT_TRUE(context->makeCurrentContext());
    NSOpenGLContext::clearCurrentContext();
}

TEST_P(ThreadedContextIn, LeavesTheThreadOnWhichItIsDestroyed) {
    auto context = NSOpenGLContext::contextWithFormat(formatWithProfile(GetParam()));
    context->setView(std::make_shared<NSView>(NSMakeRect(0, 0, 2, 2)));
    std::thread([&] {
        context->makeCurrentContext();
        context.reset();
        // The last owner is gone, and the thread has left it with its commands.
        EXPECT_EQ(OpenGLCommands::currentOrNull(), nullptr);
    }).join();
}

INSTANTIATE_TEST_SUITE_P(Contexts, ThreadedContextIn, everyProfile(), profileName);
