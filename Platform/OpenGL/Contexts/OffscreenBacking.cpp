// Views on no screen: a pixel buffer of EGL for each context.

#include "Platform/OpenGL/Contexts/EglContext.h"

#include <algorithm>
#include <array>

namespace Imaging::Platform {

namespace {

class OffscreenBacking final : public EglBacking {
public:
    const EglDisplay& display() override { return EglDisplay::headless(); }
    EGLint surfaceBit() const override { return EGL_PBUFFER_BIT; }

    EGLSurface makeSurface(EGLConfig config, PixelSize size) override {
        // A view without area has a context all the same.
        const std::array<EGLint, 5> attributes{EGL_WIDTH, std::max(size.width, 1), EGL_HEIGHT,
                                               std::max(size.height, 1), EGL_NONE};
        return eglCreatePbufferSurface(display().handle(), config, attributes.data());
    }

    bool resizeSurface(PixelSize) override { return false; }
};

} // namespace

std::shared_ptr<ViewBacking> offscreenBacking() {
    static const std::shared_ptr<ViewBacking> backing = std::make_shared<OffscreenBacking>();
    return backing;
}

} // namespace Imaging::Platform
