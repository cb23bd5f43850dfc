#pragma once

// Internal: contexts on commands that somebody else supplies, a recorder for instance. Not installed.

#include "Platform/OpenGL/Contexts/NativeContext.h"

namespace Imaging::Platform {

/// All contexts of the view, companions too, use the given commands; being current means nothing but that
/// OpenGLCommands::current answers with them. They flush with `flush`, and sharing is with everybody.
std::shared_ptr<ViewBacking> suppliedCommandsBacking(std::shared_ptr<OpenGLCommands> commands);

} // namespace Imaging::Platform
