// A window that is never on a screen: a size and a view.

#include "Platform/OpenGL/Window.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/View.h"

namespace Imaging::Platform {

NSWindow::NSWindow(NSRect contentRect, unsigned styleMask, int backing, bool)
    : m_frame(contentRect), m_content_view(std::make_shared<NSView>(NSRect{NSZeroPoint, contentRect.size})) {
    if (styleMask == NSBorderlessWindowMask && backing == NSBackingStoreBuffered) return;
    throw NSException(NSInvalidArgumentException,
                      "windows are borderless (style mask 0) and buffered (backing 2); "
                      "a window on a screen is the application's toolkit's to make");
}

NSWindow::~NSWindow() = default;

} // namespace Imaging::Platform
