#pragma once

// An application with an OpenGL context of its own, in which it draws with OpenGL's own functions.

#include "Platform/OpenGL/Contexts/NativeContext.h"
#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <epoxy/gl.h>

#include <array>
#include <memory>

namespace Pixels {

/// A context that is current until the end, with a frame buffer of its own that is bound, cleared to green,
/// and a viewport that is only a part of it.
class Application {
public:
    static constexpr int width = 24;
    static constexpr int height = 20;
    static constexpr std::array<int, 4> viewport{5, 3, 12, 10};

    explicit Application(Imaging::Platform::NSOpenGLProfile profile)
        : m_context(
              Imaging::Platform::offscreenBacking()->makeContext(*formatWithProfile(profile), nullptr)) {
        m_context->attach(*Imaging::Platform::offscreenBacking(), {8, 8});
        m_context->makeCurrent();
        glGenTextures(1, &m_texture);
        glBindTexture(GL_TEXTURE_2D, m_texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        glBindTexture(GL_TEXTURE_2D, 0);
        glGenFramebuffers(1, &m_frame_buffer);
        glBindFramebuffer(GL_FRAMEBUFFER, m_frame_buffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_texture, 0);
        glClearColor(0, 1, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    }
    ~Application() {
        m_context->makeCurrent();
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        m_context->release();
    }
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    Imaging::Platform::NativeContext& context() { return *m_context; }
    unsigned frameBuffer() const { return m_frame_buffer; }

    /// What is in the frame buffer, read with OpenGL's own functions.
    Grid pixels() {
        std::vector<Rgba> rows(static_cast<std::size_t>(width * height));
        glBindFramebuffer(GL_READ_FRAMEBUFFER, m_frame_buffer);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, rows.data());
        Grid grid(width, height);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                grid.at(x, height - 1 - y) = rows[static_cast<std::size_t>(y * width + x)];
            }
        }
        return grid;
    }

    /// Green with another colour in the viewport's area.
    static Grid greenAround(Rgba color) {
        Grid grid(width, height, green);
        for (int y = 0; y < viewport[3]; ++y) {
            for (int x = 0; x < viewport[2]; ++x)
                grid.at(viewport[0] + x, height - 1 - viewport[1] - y) = color;
        }
        return grid;
    }

private:
    std::unique_ptr<Imaging::Platform::NativeContext> m_context;
    unsigned m_texture = 0;
    unsigned m_frame_buffer = 0;
};

} // namespace Pixels
