// Contexts for views of EGL: the first API that the machine has.

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/Contexts/EglConfig.h"
#include "Platform/OpenGL/Contexts/EglContext.h"
#include "Platform/OpenGL/Contexts/OpenGLLibraries.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <vector>

namespace Imaging::Platform {

namespace {

bool isWanted(const NSOpenGLPixelFormat& format, OpenGLProfile profile) {
    if (!format.profile()) return true;
    switch (*format.profile()) {
    case NSOpenGLProfileVersionLegacy:
        return profile == OpenGLProfile::Compatibility;
    case NSOpenGLProfileVersion3_2Core:
        return profile == OpenGLProfile::Core;
    case NSOpenGLProfileVersionES3_0:
        return profile == OpenGLProfile::ES;
    }
    return false;
}

/// What may be tried, the best first.
std::vector<EglApi> apisFor(const NSOpenGLPixelFormat& format, const EglContext* share) {
    if (share != nullptr) return {share->api()};
    const OpenGLLibraries& libraries = openGLLibraries();
    std::vector<EglApi> apis;
    for (const OpenGLProfile profile :
         {OpenGLProfile::Compatibility, OpenGLProfile::Core, OpenGLProfile::ES}) {
        const EglApi& api = eglApiOf(profile);
        const bool hasLibrary = api.profile == OpenGLProfile::ES ? libraries.es : libraries.desktop;
        if (hasLibrary && isWanted(format, api.profile)) apis.push_back(api);
    }
    return apis;
}

const EglContext* eglContext(NativeContext* share) {
    auto* const context = dynamic_cast<EglContext*>(share);
    if (share != nullptr && context == nullptr) {
        throw NSException(NSOpenGLException,
                          "a context cannot share textures with one of another kind of view");
    }
    return context;
}

} // namespace

std::unique_ptr<NativeContext> EglBacking::makeContext(const NSOpenGLPixelFormat& format,
                                                       NativeContext* share) {
    const EglContext* const shared = eglContext(share);
    const EglDisplay& opened = display(); // finds out whether there is EGL at all
    for (const EglApi& api : apisFor(format, shared)) {
        const std::optional<EGLConfig> config =
            chooseEglConfig(opened, format, api.renderableBit, surfaceBit());
        if (!config) continue;
        std::unique_ptr<EglContext> context = EglContext::make(opened, *config, api, shared);
        if (context) return context;
    }
    throw NSException(NSOpenGLException,
                      "EGL makes no context of the OpenGL that was asked for (" + eglErrorText() +
                          "); OpenGL 1.4 or 3.2 core or OpenGL ES 3.0 is needed, on Debian: "
                          "apt install libgl1 libgles2 libgl1-mesa-dri");
}

} // namespace Imaging::Platform
