#pragma once

// What the tests of OpenGL drawing share: a recorder that is current while a test runs, and the log.

#include "Imaging/OpenGLTexture.h"
#include "Platform/Foundation/Log.h"
#include "Platform/OpenGL/Recording/RecordingCommands.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ImagingTests {

using Imaging::Platform::OpenGLCommands;
using Imaging::Platform::OpenGLFacts;
using Imaging::Platform::RecordingCommands;
using Lines = std::vector<std::string>;

/// What the recorder's context can do.
struct Abilities {
    bool rectangles = true;
    bool clientStorage = false;
    int largestSide = 512;
};

inline OpenGLFacts factsOf(const Abilities& abilities) {
    OpenGLFacts facts;
    facts.majorVersion = 2;
    facts.minorVersion = 1;
    facts.rectangleTextures = abilities.rectangles;
    facts.clientStorage = abilities.clientStorage;
    facts.bgraUploads = facts.smoothLines = facts.anyTextureSize = true;
    facts.maximumTextureSize = abilities.largestSide;
    facts.maximumRectangleTextureSize = abilities.rectangles ? abilities.largestSide : 0;
    facts.extensions = "GL_ARB_multitexture";
    if (abilities.rectangles) facts.extensions += " GL_EXT_texture_rectangle";
    if (abilities.clientStorage) facts.extensions += " GL_APPLE_client_storage";
    return facts;
}

/// A recorder is current on the test's thread. At the end nothing that it counts is left over, and nothing
/// was logged that the test did not take.
class RecorderTest : public testing::Test {
protected:
    RecorderTest() {
        begin({});
        Imaging::Platform::setLogSink([this](const std::string& line) { m_log.push_back(line); });
    }

    ~RecorderTest() override {
        Imaging::Platform::setLogSink(nullptr);
        EXPECT_EQ(gl->liveNames().size(), 0U) << "names are left";
        EXPECT_EQ(gl->attribDepth(), 0U);
        EXPECT_EQ(gl->matrixDepth(Imaging::Platform::OpenGL::MatrixMode::ModelView), 0U);
        EXPECT_EQ(gl->matrixDepth(Imaging::Platform::OpenGL::MatrixMode::Projection), 0U);
        EXPECT_FALSE(gl->isInsideBegin());
        EXPECT_THAT(m_log, testing::IsEmpty());
        Imaging::OpenGLTexture::forgetHardwareAnswers();
        OpenGLCommands::setCurrent(nullptr);
    }

    /// Goes on with a fresh recorder.
    void begin(const Abilities& abilities) {
        gl = std::make_shared<RecordingCommands>(factsOf(abilities));
        OpenGLCommands::setCurrent(gl);
        Imaging::OpenGLTexture::forgetHardwareAnswers();
    }

    Lines takeLog() { return std::exchange(m_log, {}); }

    std::shared_ptr<RecordingCommands> gl;

private:
    Lines m_log;
};

inline Lines joined(const std::vector<Lines>& parts) {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// A number as the recorder writes it.
inline std::string word(double value) {
    std::array<char, 64> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), static_cast<float>(value));
    return {text.data(), result.ptr};
}

} // namespace ImagingTests
