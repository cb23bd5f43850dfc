#pragma once

// Internal: the OpenGL context of a drawing target. Not installed.

#include <memory>

namespace Imaging::Platform {
class NSOpenGLContext;
class NSView;
} // namespace Imaging::Platform

namespace Imaging {

/// A context that draws into the view, which may be null for none yet. On a screen it is double buffered and
/// waits for the refresh. Throws an NSException (NSOpenGLException) that says what is missing.
std::shared_ptr<Platform::NSOpenGLContext> makeContext(Platform::NSView* view, bool isOffscreen);

/// A view that is given by its address.
std::shared_ptr<Platform::NSView> sharedView(Platform::NSView* view);

} // namespace Imaging
