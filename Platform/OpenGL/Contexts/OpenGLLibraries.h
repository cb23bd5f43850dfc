#pragma once

// Internal: whether the machine has the libraries of OpenGL, which are looked for when they are first needed.
// Not installed.

#include <string>

namespace Imaging::Platform {

/// Which of the libraries are there. The library itself is linked with none of them, so it starts and draws
/// in 2-D without; calling any OpenGL or EGL function where its library is missing would end the program.
struct OpenGLLibraries {
    bool egl = false;     ///< libEGL.so.1
    bool desktop = false; ///< libOpenGL.so.0 or libGL.so.1
    bool es = false;      ///< libGLESv2.so.2

    bool canMakeContexts() const { return egl && (desktop || es); }

    /// What is missing and which packages have it, in one line.
    std::string missingText() const;
};

/// Loads a shared library for good and says whether it is there.
using LibraryLoader = bool (*)(const char* name);

OpenGLLibraries findOpenGLLibraries(LibraryLoader load);

/// Those of this machine, looked for once. Any thread.
const OpenGLLibraries& openGLLibraries();

/// Throws an NSException (NSOpenGLException) with the missing text unless contexts can be made.
void requireOpenGLLibraries(const OpenGLLibraries& libraries = openGLLibraries());

} // namespace Imaging::Platform
