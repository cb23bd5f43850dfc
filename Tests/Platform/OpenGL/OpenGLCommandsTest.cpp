#include "Platform/OpenGL/OpenGLCommands.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/OpenGLException.h"
#include "Platform/OpenGL/Recording/RecordingCommands.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;

TEST(OpenGLCommands, ThrowWhereNoContextIsCurrentAndSayWhatToDo) {
    EXPECT_EQ(OpenGLCommands::currentOrNull(), nullptr);
    try {
        OpenGLCommands::current();
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), NSOpenGLException);
        EXPECT_NE(exception.reason().find("makeCurrentContext"), std::string::npos);
    }
}

TEST(OpenGLCommands, AreCurrentOnOneThreadOnly) {
    const auto recorder = std::make_shared<RecordingCommands>();
    OpenGLCommands::setCurrent(recorder);
    EXPECT_EQ(&OpenGLCommands::current(), recorder.get());
    std::thread([] { EXPECT_EQ(OpenGLCommands::currentOrNull(), nullptr); }).join();
    OpenGLCommands::setCurrent(nullptr);
    EXPECT_EQ(OpenGLCommands::currentOrNull(), nullptr);
    EXPECT_EQ(recorder.use_count(), 1);
}

TEST(OpenGLConstants, JoinBitsAndFindAnyOfThem) {
    constexpr AttribBits bits = AttribBits::Current | AttribBits::Texture;
    EXPECT_EQ(static_cast<unsigned>(bits), 0x40001u);
    EXPECT_TRUE(contains(bits, AttribBits::Current));
    EXPECT_TRUE(contains(bits, AttribBits::Line | AttribBits::Texture));
    EXPECT_FALSE(contains(bits, AttribBits::Line | AttribBits::Enable));
    EXPECT_EQ(static_cast<unsigned>(ClearBits::Color | ClearBits::Depth), 0x4100u);
    EXPECT_EQ(capabilityOf(TextureTarget::Rectangle), Capability::TextureRectangle);
    EXPECT_EQ(capabilityOf(TextureTarget::Texture2D), Capability::Texture2D);
}
