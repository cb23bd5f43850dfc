#pragma once

// Offscreen contexts for tests, drawn on by the machine's software, and their pixels.

#include "Platform/OpenGL/OpenGLCommands.h"
#include "Platform/OpenGL/OpenGLContext.h"
#include "Platform/OpenGL/OpenGLPixelFormat.h"
#include "Platform/OpenGL/Recording/ConstantNames.h"
#include "Platform/OpenGL/View.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Pixels {

inline std::shared_ptr<const Imaging::Platform::NSOpenGLPixelFormat>
formatWithProfile(Imaging::Platform::NSOpenGLProfile profile) {
    using namespace Imaging::Platform;
    const std::array<std::uint32_t, 10> attributes{NSOpenGLPFAOffScreen,
                                                   NSOpenGLPFAColorSize,
                                                   32,
                                                   NSOpenGLPFAAlphaSize,
                                                   8,
                                                   NSOpenGLPFADepthSize,
                                                   24,
                                                   NSOpenGLPFAOpenGLProfile,
                                                   profile,
                                                   0};
    return NSOpenGLPixelFormat::pixelFormatWithAttributes(attributes);
}

/// What was drawn, the top row first.
inline Grid pixelsOf(Imaging::Platform::OpenGLCommands& commands, int width, int height, int x = 0,
                     int y = 0) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    commands.readBufferBack();
    commands.readPixels(x, y, width, height, bytes.data());
    Grid grid(width, height);
    const std::uint8_t* byte = bytes.data();
    for (int row = height - 1; row >= 0; --row) {
        for (int column = 0; column < width; ++column, byte += 4) {
            grid.at(column, row) = {byte[0], byte[1], byte[2], byte[3]};
        }
    }
    return grid;
}

/// A view of a size on no screen, cleared to transparent black, with its context current until the end. That
/// it cannot be made fails the test with what is missing, and so does an OpenGL error that nobody asked for.
class OpenGLSurface {
public:
    OpenGLSurface(Imaging::Platform::NSOpenGLProfile profile, int width, int height)
        : m_width(width),
          m_height(height),
          m_view(std::make_shared<Imaging::Platform::NSView>(
              Imaging::Platform::NSMakeRect(0, 0, static_cast<float>(width), static_cast<float>(height)))),
          m_context(Imaging::Platform::NSOpenGLContext::contextWithFormat(formatWithProfile(profile))) {
        m_context->setView(m_view);
        m_context->makeCurrentContext();
        commands().viewport(0, 0, width, height);
        commands().clear(Imaging::Platform::OpenGL::ClearBits::Color |
                         Imaging::Platform::OpenGL::ClearBits::Depth);
    }
    ~OpenGLSurface() {
        if (m_context->currentContext() != m_context) return;
        EXPECT_EQ(nameOf(commands().getError()), "GL_NO_ERROR");
        Imaging::Platform::NSOpenGLContext::clearCurrentContext();
    }
    OpenGLSurface(const OpenGLSurface&) = delete;
    OpenGLSurface& operator=(const OpenGLSurface&) = delete;

    Imaging::Platform::OpenGLCommands& commands() { return Imaging::Platform::OpenGLCommands::current(); }
    Imaging::Platform::NSOpenGLContext& context() { return *m_context; }
    const std::shared_ptr<Imaging::Platform::NSOpenGLContext>& sharedContext() { return m_context; }
    Imaging::Platform::NSView& view() { return *m_view; }
    Grid pixels() { return pixelsOf(commands(), m_width, m_height); }

private:
    int m_width;
    int m_height;
    std::shared_ptr<Imaging::Platform::NSView> m_view;
    std::shared_ptr<Imaging::Platform::NSOpenGLContext> m_context;
};

/// Tests that are the same in every kind of context.
class InEveryContext : public testing::TestWithParam<Imaging::Platform::NSOpenGLProfile> {};

inline std::string profileName(const testing::TestParamInfo<Imaging::Platform::NSOpenGLProfile>& info) {
    switch (info.param) {
    case Imaging::Platform::NSOpenGLProfileVersionLegacy:
        return "Compatibility";
    case Imaging::Platform::NSOpenGLProfileVersion3_2Core:
        return "Core";
    case Imaging::Platform::NSOpenGLProfileVersionES3_0:
        return "ES";
    }
    return "Unknown";
}

inline auto everyProfile() {
    using namespace Imaging::Platform;
    return testing::Values(NSOpenGLProfileVersionLegacy, NSOpenGLProfileVersion3_2Core,
                           NSOpenGLProfileVersionES3_0);
}

} // namespace Pixels
