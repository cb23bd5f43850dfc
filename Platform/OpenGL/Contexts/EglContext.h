#pragma once

// Internal: native contexts of EGL. Not installed.

#include "Platform/OpenGL/Contexts/EglDisplay.h"
#include "Platform/OpenGL/Contexts/NativeContext.h"
#include "Platform/OpenGL/Contexts/NativeIdentity.h"
#include "Platform/OpenGL/Native/NativeCommands.h"
#include "Platform/OpenGL/OpenGLPixelFormat.h"

namespace Imaging::Platform {

/// A view that EGL draws on. Surfaces belong to the context that asked for them.
class EglBacking : public ViewBacking {
public:
    virtual const EglDisplay& display() = 0;

    /// EGL_PBUFFER_BIT or EGL_WINDOW_BIT.
    virtual EGLint surfaceBit() const = 0;

    /// EGL_NO_SURFACE when EGL refuses.
    virtual EGLSurface makeSurface(EGLConfig config, PixelSize size) = 0;

    /// Another size for a surface of this view; false when a new surface is needed for it.
    virtual bool resizeSurface(PixelSize size) = 0;

    std::unique_ptr<NativeContext> makeContext(const NSOpenGLPixelFormat& format,
                                               NativeContext* share) override;
};

/// Which of EGL's APIs a context speaks, and how it is asked for.
struct EglApi {
    OpenGLProfile profile;
    EGLenum api;
    EGLint renderableBit;
    const EGLint* attributes; ///< for eglCreateContext
};

/// That of a profile, in the lowest version that the library draws with.
const EglApi& eglApiOf(OpenGLProfile profile);

/// Context, configuration and surface. The display outlives it.
class EglContext final : public NativeContext {
public:
    /// Null when EGL makes no such context.
    static std::unique_ptr<EglContext> make(const EglDisplay& display, EGLConfig config, const EglApi& api,
                                            const EglContext* share);

    /// A context of the same API that shares with one of the application's, and draws on nothing.
    static std::unique_ptr<EglContext> makeSharing(const EglOrigin& origin, const OpenGLFacts& facts);
    ~EglContext() override;

    const EglApi& api() const { return m_api; }
    const EglDisplay& display() const { return m_display; }

    std::unique_ptr<NativeContext> makeCompanion() override;
    void attach(ViewBacking& backing, PixelSize size) override;
    void detach() override;
    bool makeCurrent() override;
    void release() override;
    bool flush() override;
    void setSwapInterval(int interval) override;
    std::shared_ptr<OpenGLCommands> commands() override { return m_commands; }

private:
    static std::unique_ptr<EglContext> makeWith(const EglDisplay& display, EGLConfig config,
                                                const EglApi& api, EGLContext shared);
    EglContext(const EglDisplay& display, EGLConfig config, const EglApi& api, EGLContext context)
        : m_display(display), m_config(config), m_api(api), m_context(context) {}
    EGLSurface surfaceForNothing();
    bool bind();
    void prepareCommands();
    void releaseObjects();

    EglDisplay m_display;
    EGLConfig m_config;
    EglApi m_api;
    EGLContext m_context;
    EGLSurface m_surface = EGL_NO_SURFACE; // null also where a context needs none to be current
    ViewBacking* m_backing = nullptr;      // only to compare with
    PixelSize m_size;
    bool m_is_window = false;
    int m_swap_interval = 1;
    bool m_swap_interval_changed = false;
    std::shared_ptr<NativeCommands> m_commands;
};

} // namespace Imaging::Platform
