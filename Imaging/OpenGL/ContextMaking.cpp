// Asks for the buffers that drawing targets want, and for less where those are not to be had.

#include "Imaging/OpenGL/ContextMaking.h"

#include "Platform/OpenGL/OpenGLContext.h"
#include "Platform/OpenGL/View.h"

#include <cstdint>
#include <vector>

namespace Imaging {

using Platform::NSOpenGLContext;
using Platform::NSOpenGLPixelFormat;
using Platform::NSOpenGLProfile;

namespace {

std::shared_ptr<const NSOpenGLPixelFormat> formatFor(bool isOffscreen,
                                                     std::optional<NSOpenGLProfile> profile) {
    for (const std::uint32_t depth : {32U, 24U}) {
        std::vector<std::uint32_t> attributes = {isOffscreen ? Platform::NSOpenGLPFAOffScreen
                                                             : Platform::NSOpenGLPFADoubleBuffer,
                                                 Platform::NSOpenGLPFADepthSize,
                                                 depth,
                                                 Platform::NSOpenGLPFAColorSize,
                                                 32,
                                                 Platform::NSOpenGLPFAAlphaSize,
                                                 8};
        if (profile.has_value()) {
            attributes.insert(attributes.end(), {Platform::NSOpenGLPFAOpenGLProfile, *profile});
        }
        attributes.push_back(0);
        if (auto format = NSOpenGLPixelFormat::pixelFormatWithAttributes(attributes)) return format;
    }
    return NSOpenGLPixelFormat::defaultPixelFormat();
}

} // namespace

std::shared_ptr<Platform::NSView> sharedView(Platform::NSView* view) {
    return view != nullptr ? view->shared_from_this() : nullptr;
}

std::shared_ptr<NSOpenGLContext> makeContext(Platform::NSView* view, bool isOffscreen,
                                             std::optional<NSOpenGLProfile> profile) {
    std::shared_ptr<NSOpenGLContext> context =
        NSOpenGLContext::contextWithFormat(formatFor(isOffscreen, profile));
    context->setView(sharedView(view));
    if (!isOffscreen) context->setValues(1, Platform::NSOpenGLCPSwapInterval);
    return context;
}

} // namespace Imaging
