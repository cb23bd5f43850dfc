#pragma once

// Internal: what the native context that is current on this thread can do. Not installed.

#include "Platform/OpenGL/OpenGLFacts.h"

namespace Imaging::Platform {

/// Asks the context that is current on this thread, of which OpenGL must be able to load the functions.
/// Throws an NSException (NSOpenGLException) that names what it found when the version is below what the
/// library draws with.
OpenGLFacts factsOfCurrentContext();

} // namespace Imaging::Platform
