// Tries each of OpenGL's libraries once and keeps the answer, before any function of theirs is called.

#include "Platform/OpenGL/Contexts/OpenGLLibraries.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <dlfcn.h>

namespace Imaging::Platform {

namespace {

bool loadLibrary(const char* name) { return dlopen(name, RTLD_LAZY | RTLD_LOCAL) != nullptr; }

} // namespace

OpenGLLibraries findOpenGLLibraries(LibraryLoader load) {
    OpenGLLibraries found;
    found.egl = load("libEGL.so.1");
    found.desktop = load("libOpenGL.so.0") || load("libGL.so.1");
    found.es = load("libGLESv2.so.2");
    return found;
}

const OpenGLLibraries& openGLLibraries() {
    static const OpenGLLibraries found = findOpenGLLibraries(loadLibrary);
    return found;
}

std::string OpenGLLibraries::missingText() const {
    std::string libraries;
    std::string packages;
    if (!egl) {
        libraries = "libEGL.so.1";
        packages = "libegl1";
    }
    if (!desktop && !es) {
        libraries += libraries.empty() ? "" : " and ";
        libraries += "libGL.so.1 (or libGLESv2.so.2)";
        packages += (packages.empty() ? "" : " ") + std::string("libgl1");
    }
    return "OpenGL needs " + libraries + ", which cannot be loaded; on Debian: apt install " + packages +
           " libgl1-mesa-dri";
}

void requireOpenGLLibraries(const OpenGLLibraries& libraries) {
    if (!libraries.canMakeContexts()) throw NSException(NSOpenGLException, libraries.missingText());
}

} // namespace Imaging::Platform
