#pragma once

// Internal: the implementation of the commands that fits a context. Not installed.

#include "Platform/OpenGL/Native/NativeCommands.h"

#include <memory>

namespace Imaging::Platform {

/// The commands for the context that is current on this thread, by what it can do. Throws an NSException
/// (NSOpenGLException) for a context that the library cannot draw with.
std::shared_ptr<NativeCommands> commandsOfCurrentContext();

} // namespace Imaging::Platform
