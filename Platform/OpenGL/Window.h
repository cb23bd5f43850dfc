#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <memory>

namespace Imaging::Platform {

class NSView;

/// The numbers are the platform's own. Windows with borders are the application's toolkit's to make.
inline constexpr unsigned NSBorderlessWindowMask = 0;
inline constexpr int NSBackingStoreBuffered = 2;

/// A borderless window that is never on a screen: a place for views to draw in without any display server.
class IMAGING_EXPORT NSWindow {
public:
    /// `contentRect` is in the screen's space. Whether the window's making is deferred makes no difference.
    /// Throws an NSException (NSInvalidArgumentException) for any other style than borderless or backing than
    /// buffered.
    NSWindow(NSRect contentRect, unsigned styleMask, int backing, bool defer);
    ~NSWindow();
    NSWindow(const NSWindow&) = delete;
    NSWindow& operator=(const NSWindow&) = delete;

    NSRect frame() const { return m_frame; }

    /// A view of the content's size, made with the window, to add others to.
    const std::shared_ptr<NSView>& contentView() const { return m_content_view; }

private:
    NSRect m_frame;
    std::shared_ptr<NSView> m_content_view;
};

} // namespace Imaging::Platform
