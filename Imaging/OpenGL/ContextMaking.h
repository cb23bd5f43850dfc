#pragma once

// Internal: the OpenGL context of a drawing target. Not installed.

#include "Platform/OpenGL/OpenGLPixelFormat.h"

#include <memory>
#include <optional>

namespace Imaging::Platform {
class NSOpenGLContext;
class NSView;
} // namespace Imaging::Platform

namespace Imaging {

/// A context that draws into the view, which may be null for none yet, and speaks the OpenGL of a profile or
/// whatever the machine has. On a screen it is double buffered and waits for the refresh. Throws an
/// NSException (NSOpenGLException) that says what is missing.
std::shared_ptr<Platform::NSOpenGLContext> makeContext(Platform::NSView* view, bool isOffscreen,
                                                       std::optional<Platform::NSOpenGLProfile> profile);

/// A view that is given by its address.
std::shared_ptr<Platform::NSView> sharedView(Platform::NSView* view);

} // namespace Imaging
