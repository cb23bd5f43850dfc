#include "Platform/OpenGL/OpenGLContext.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/OpenGLException.h"
#include "Platform/OpenGL/Recording/RecordingCommands.h"
#include "Platform/OpenGL/Window.h"
#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

std::shared_ptr<NSOpenGLContext> contextOnRecorder(const std::shared_ptr<RecordingCommands>& recorder) {
    const auto context = NSOpenGLContext::contextWithFormat(NSOpenGLPixelFormat::defaultPixelFormat());
    context->setView(NSView::viewWithCommands(NSMakeRect(0, 0, 30, 20), recorder));
    return context;
}

void clearTo(OpenGLCommands& commands, float red, float green, float blue, float alpha) {
    commands.clearColor(red, green, blue, alpha);
    commands.clear(ClearBits::Color);
}

class OpenGLContextIn : public InEveryContext {};

} // namespace

TEST(OpenGLContext, IsNullWithoutAFormat) { EXPECT_EQ(NSOpenGLContext::contextWithFormat(nullptr), nullptr); }

TEST(OpenGLContext, IsCurrentFromWhenItIsMadeSoUntilItIsCleared) {
    EXPECT_EQ(NSOpenGLContext::currentContext(), nullptr);
    const auto recorder = std::make_shared<RecordingCommands>();
    const auto context = contextOnRecorder(recorder);
    EXPECT_EQ(NSOpenGLContext::currentContext(), nullptr) << "a view alone makes nothing current";
    EXPECT_TRUE(context->makeCurrentContext());
    EXPECT_EQ(NSOpenGLContext::currentContext(), context);
    EXPECT_EQ(&OpenGLCommands::current(), recorder.get());
    NSOpenGLContext::clearCurrentContext();
    EXPECT_EQ(NSOpenGLContext::currentContext(), nullptr);
    EXPECT_EQ(OpenGLCommands::currentOrNull(), nullptr);
    NSOpenGLContext::clearCurrentContext();
}

TEST(OpenGLContext, LeavesTheThreadWhenItIsDestroyed) {
    auto context = contextOnRecorder(std::make_shared<RecordingCommands>());
    context->makeCurrentContext();
    context.reset();
    EXPECT_EQ(NSOpenGLContext::currentContext(), nullptr);
    EXPECT_EQ(OpenGLCommands::currentOrNull(), nullptr);
}

TEST(OpenGLContext, GivesWayToAnother) {
    const auto first = std::make_shared<RecordingCommands>();
    const auto second = std::make_shared<RecordingCommands>();
    const auto one = contextOnRecorder(first);
    const auto other = contextOnRecorder(second);
    one->makeCurrentContext();
    other->makeCurrentContext();
    EXPECT_EQ(NSOpenGLContext::currentContext(), other);
    EXPECT_EQ(&OpenGLCommands::current(), second.get());
    one->flushBuffer();
    EXPECT_TRUE(first->lines().empty()) << "only what is current is flushed";
    other->flushBuffer();
    EXPECT_THAT(second->lines(), testing::ElementsAre("glFlush()"));
    NSOpenGLContext::clearCurrentContext();
}

TEST(OpenGLContext, TakesOnTheViewsSize) {
    const auto recorder = std::make_shared<RecordingCommands>();
    const auto context = contextOnRecorder(recorder);
    context->makeCurrentContext();
    EXPECT_EQ(recorder->drawable(), (OpenGLDrawable{0, 0, 30, 20, false}));
    context->view()->setFrame(NSMakeRect(5, 5, 12.25f, 9));
    EXPECT_EQ(recorder->drawable(), (OpenGLDrawable{0, 0, 30, 20, false}));
    context->update();
    EXPECT_EQ(recorder->drawable(), (OpenGLDrawable{0, 0, 13, 9, false}));
    context->clearDrawable();
    EXPECT_EQ(context->view(), nullptr);
    EXPECT_EQ(recorder->drawable(), OpenGLDrawable{});
    NSOpenGLContext::clearCurrentContext();
}

TEST(OpenGLContext, KeepsItsSwapInterval) {
    const auto context = contextOnRecorder(std::make_shared<RecordingCommands>());
    EXPECT_EQ(context->getValues(NSOpenGLCPSwapInterval), 1);
    context->setValues(0, NSOpenGLCPSwapInterval);
    EXPECT_EQ(context->getValues(222), 0);
    EXPECT_THROW(context->setValues(-1, NSOpenGLCPSwapInterval), NSException);
    EXPECT_THROW(context->setValues(1, 221), NSException);
    EXPECT_THROW(context->getValues(221), NSException);
}

TEST_P(OpenGLContextIn, DrawsWithoutAnyDisplay) {
    OpenGLSurface surface(GetParam(), 7, 5);
    clearTo(surface.commands(), 0, 1, 0, 1);
    surface.context().flushBuffer();
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(7, 5, green)));
}

TEST_P(OpenGLContextIn, DrawsIntoAViewInAWindow) {
    const NSWindow window(NSMakeRect(3, 4, 6, 6), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    const auto view = std::make_shared<NSView>(NSMakeRect(0, 0, 6, 6));
    window.contentView()->addSubview(view);
    const auto context = NSOpenGLContext::contextWithFormat(formatWithProfile(GetParam()));
    context->setView(view);
    ASSERT_TRUE(context->makeCurrentContext());
    clearTo(OpenGLCommands::current(), 1, 0, 0, 1);
    EXPECT_TRUE(areAlike(pixelsOf(OpenGLCommands::current(), 6, 6), Grid(6, 6, red)));
    NSOpenGLContext::clearCurrentContext();
}

TEST_P(OpenGLContextIn, GrowsWithItsView) {
    OpenGLSurface surface(GetParam(), 4, 4);
    surface.view().setFrame(NSMakeRect(0, 0, 50, 40));
    surface.context().makeCurrentContext();
    clearTo(surface.commands(), 0, 0, 1, 1);
    EXPECT_TRUE(areAlike(pixelsOf(surface.commands(), 50, 40), Grid(50, 40, blue)));
}

TEST_P(OpenGLContextIn, MovesToAnotherViewAndBack) {
    OpenGLSurface surface(GetParam(), 4, 4);
    const std::shared_ptr<NSView> first = surface.context().view();
    surface.context().clearDrawable();
    surface.context().setView(std::make_shared<NSView>(NSMakeRect(0, 0, 9, 3)));
    clearTo(surface.commands(), 1, 0, 0, 1);
    EXPECT_TRUE(areAlike(pixelsOf(surface.commands(), 9, 3), Grid(9, 3, red)));
    surface.context().setView(first);
    clearTo(surface.commands(), 0, 1, 0, 1);
    EXPECT_TRUE(areAlike(surface.pixels(), Grid(4, 4, green)));
}

TEST_P(OpenGLContextIn, NeedsNoViewToHoldTextures) {
    const auto context = NSOpenGLContext::contextWithFormat(formatWithProfile(GetParam()));
    ASSERT_TRUE(context->makeCurrentContext());
    OpenGLCommands& commands = OpenGLCommands::current();
    unsigned name = 0;
    commands.genTextures(1, &name);
    EXPECT_NE(name, 0u);
    commands.deleteTextures(1, &name);
    EXPECT_EQ(commands.getError(), Error::None);
    NSOpenGLContext::clearCurrentContext();
}

TEST_P(OpenGLContextIn, SharesTextureNamesWithTheOneItWasMadeFor) {
    OpenGLSurface surface(GetParam(), 4, 4);
    const auto second =
        NSOpenGLContext::contextWithFormat(formatWithProfile(GetParam()), surface.sharedContext());
    unsigned first = 0;
    surface.commands().genTextures(1, &first);
    ASSERT_TRUE(second->makeCurrentContext());
    unsigned other = 0;
    OpenGLCommands::current().genTextures(1, &other);
    EXPECT_NE(other, first);
    OpenGLCommands::current().deleteTextures(1, &first);
    EXPECT_EQ(OpenGLCommands::current().getError(), Error::None);
    surface.context().makeCurrentContext();
}

TEST_P(OpenGLContextIn, RefusesAViewOfAnotherKind) {
    OpenGLSurface surface(GetParam(), 4, 4);
    const auto foreign =
        NSView::viewWithCommands(NSMakeRect(0, 0, 4, 4), std::make_shared<RecordingCommands>());
    EXPECT_THROW(surface.context().setView(foreign), NSException);
    const auto recorded = contextOnRecorder(std::make_shared<RecordingCommands>());
    const auto sharing = NSOpenGLContext::contextWithFormat(formatWithProfile(GetParam()), recorded);
    EXPECT_THROW(sharing->setView(std::make_shared<NSView>(NSMakeRect(0, 0, 4, 4))), NSException);
}

TEST_P(OpenGLContextIn, HasTheProfileThatWasAskedFor) {
    OpenGLSurface surface(GetParam(), 4, 4);
    const OpenGLProfile profile = surface.commands().facts().profile;
    EXPECT_EQ(profile, GetParam() == NSOpenGLProfileVersionLegacy    ? OpenGLProfile::Compatibility
                       : GetParam() == NSOpenGLProfileVersion3_2Core ? OpenGLProfile::Core
                                                                     : OpenGLProfile::ES);
}

INSTANTIATE_TEST_SUITE_P(Contexts, OpenGLContextIn, everyProfile(), profileName);
