// Asks EGL for configurations with less and less, until there is one.

#include "Platform/OpenGL/Contexts/EglConfig.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace Imaging::Platform {

namespace {

struct Wishes {
    int color; ///< bits of each of red, green and blue
    int alpha;
    int depth;
    int stencil;
    int samples;
};

/// EGL puts the configurations with the most bits of colour first; what was asked for is preferred to more.
std::optional<EGLConfig> exactColor(const EglDisplay& display, const std::vector<EGLConfig>& configs,
                                    int color) {
    for (EGLConfig config : configs) {
        EGLint red = 0;
        eglGetConfigAttrib(display.handle(), config, EGL_RED_SIZE, &red);
        if (red == color) return config;
    }
    return configs.empty() ? std::nullopt : std::optional(configs.front());
}

std::optional<EGLConfig> choose(const EglDisplay& display, const Wishes& wishes, EGLint renderableBit,
                                EGLint surfaceBit) {
    const std::array<EGLint, 21> attributes{EGL_RENDERABLE_TYPE,
                                            renderableBit,
                                            EGL_SURFACE_TYPE,
                                            surfaceBit,
                                            EGL_RED_SIZE,
                                            wishes.color,
                                            EGL_GREEN_SIZE,
                                            wishes.color,
                                            EGL_BLUE_SIZE,
                                            wishes.color,
                                            EGL_ALPHA_SIZE,
                                            wishes.alpha,
                                            EGL_DEPTH_SIZE,
                                            wishes.depth,
                                            EGL_STENCIL_SIZE,
                                            wishes.stencil,
                                            EGL_SAMPLES,
                                            wishes.samples,
                                            EGL_SAMPLE_BUFFERS,
                                            wishes.samples > 0 ? 1 : 0,
                                            EGL_NONE};
    EGLint count = 0;
    if (eglChooseConfig(display.handle(), attributes.data(), nullptr, 0, &count) == EGL_FALSE)
        return std::nullopt;
    std::vector<EGLConfig> configs(static_cast<std::size_t>(std::max(count, 0)));
    eglChooseConfig(display.handle(), attributes.data(), configs.data(), count, &count);
    return exactColor(display, configs, wishes.color);
}

} // namespace

std::optional<EGLConfig> chooseEglConfig(const EglDisplay& display, const NSOpenGLPixelFormat& format,
                                         EGLint renderableBit, EGLint surfaceBit) {
    // 32 bits of colour count the alpha; more than 8 a sample are a wish of their own.
    const int color = format.colorSize() <= 32 ? std::min(format.colorSize() / 3, 8) : format.colorSize() / 4;
    std::vector<int> samples{format.samples()};
    if (format.samples() > 0) samples.push_back(0);
    for (const int count : samples) {
        for (const int depth : {format.depthSize(), 24, 16, 0}) {
            if (depth > format.depthSize()) continue;
            const Wishes wishes{color, format.alphaSize(), depth, format.stencilSize(), count};
            const std::optional<EGLConfig> found = choose(display, wishes, renderableBit, surfaceBit);
            if (found) return found;
        }
    }
    return std::nullopt;
}

} // namespace Imaging::Platform
