#include "Platform/OpenGL/Window.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/View.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;

TEST(Window, HasAContentViewOfItsSizeForOthers) {
    const NSWindow window(NSMakeRect(30, -20, 64, 48), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    EXPECT_TRUE(NSEqualRects(window.frame(), NSMakeRect(30, -20, 64, 48)));
    EXPECT_TRUE(NSEqualRects(window.contentView()->frame(), NSMakeRect(0, 0, 64, 48)));
    const auto view = std::make_shared<NSView>(NSMakeRect(1, 1, 10, 10));
    window.contentView()->addSubview(view);
    EXPECT_EQ(view->superview(), window.contentView());
}

TEST(Window, HasNoBorderAndIsBuffered) {
    const NSRect rect = NSMakeRect(0, 0, 8, 8);
    EXPECT_THROW(NSWindow(rect, 1, NSBackingStoreBuffered, false), NSException);
    EXPECT_THROW(NSWindow(rect, NSBorderlessWindowMask, 0, false), NSException);
    EXPECT_NO_THROW(NSWindow(rect, NSBorderlessWindowMask, NSBackingStoreBuffered, true));
}
