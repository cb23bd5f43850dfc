// Which commands belong to the context that is current is kept for each thread.

#include "Platform/OpenGL/OpenGLCommands.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <utility>

namespace Imaging::Platform {

namespace {

thread_local std::shared_ptr<OpenGLCommands> currentCommands;

} // namespace

OpenGLCommands::~OpenGLCommands() = default;

OpenGLCommands& OpenGLCommands::current() {
    if (!currentCommands) {
        throw NSException(NSOpenGLException, "no OpenGL context is current on this thread; "
                                             "call makeCurrentContext on one before drawing");
    }
    return *currentCommands;
}

std::shared_ptr<OpenGLCommands> OpenGLCommands::currentOrNull() { return currentCommands; }

void OpenGLCommands::setCurrent(std::shared_ptr<OpenGLCommands> commands) {
    // What was current may be destroyed by this, and must find the new one in place.
    std::swap(currentCommands, commands);
}

} // namespace Imaging::Platform
