#include "Platform/OpenGL/View.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/Recording/RecordingCommands.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Imaging::Platform;

TEST(View, HasBoundsAtTheOriginOfItsFramesSize) {
    NSView view(NSMakeRect(7, -3, 40, 25));
    EXPECT_TRUE(NSEqualRects(view.bounds(), NSMakeRect(0, 0, 40, 25)));
    view.setFrame(NSMakeRect(1, 2, 3, 4));
    EXPECT_TRUE(NSEqualRects(view.frame(), NSMakeRect(1, 2, 3, 4)));
    EXPECT_TRUE(NSEqualRects(view.bounds(), NSMakeRect(0, 0, 3, 4)));
}

TEST(View, OwnsTheViewsInItInTheirOrder) {
    const auto outer = std::make_shared<NSView>(NSMakeRect(0, 0, 9, 9));
    const auto first = std::make_shared<NSView>(NSMakeRect(1, 1, 2, 2));
    const auto second = std::make_shared<NSView>(NSMakeRect(4, 4, 2, 2));
    outer->addSubview(first);
    outer->addSubview(second);
    ASSERT_EQ(outer->subviews().size(), 2u);
    EXPECT_EQ(outer->subviews()[0], first);
    EXPECT_EQ(outer->subviews()[1], second);
    EXPECT_EQ(first->superview(), outer);
    outer->addSubview(first); // to the front
    EXPECT_EQ(outer->subviews()[0], second);
    EXPECT_EQ(outer->subviews()[1], first);
}

TEST(View, LeavesItsOldPlaceForANewOne) {
    const auto one = std::make_shared<NSView>(NSMakeRect(0, 0, 9, 9));
    const auto other = std::make_shared<NSView>(NSMakeRect(0, 0, 9, 9));
    one->addSubview(std::make_shared<NSView>(NSMakeRect(1, 1, 2, 2)));
    other->addSubview(one->subviews()[0]);
    EXPECT_TRUE(one->subviews().empty());
    ASSERT_EQ(other->subviews().size(), 1u);
    const std::shared_ptr<NSView> moved = other->subviews()[0];
    moved->removeFromSuperview();
    moved->removeFromSuperview();
    EXPECT_TRUE(other->subviews().empty());
    EXPECT_EQ(moved->superview(), nullptr);
}

TEST(View, CannotHoldItselfOrNothing) {
    const auto outer = std::make_shared<NSView>(NSMakeRect(0, 0, 9, 9));
    const auto inner = std::make_shared<NSView>(NSMakeRect(0, 0, 9, 9));
    outer->addSubview(inner);
    EXPECT_THROW(inner->addSubview(outer), NSException);
    EXPECT_THROW(outer->addSubview(outer), NSException);
    EXPECT_THROW(outer->addSubview(nullptr), NSException);
    EXPECT_EQ(inner->superview(), outer);
}

TEST(View, OutlivesTheOneItWasIn) {
    auto outer = std::make_shared<NSView>(NSMakeRect(0, 0, 9, 9));
    const auto inner = std::make_shared<NSView>(NSMakeRect(0, 0, 9, 9));
    outer->addSubview(inner);
    outer.reset();
    EXPECT_EQ(inner->superview(), nullptr);
}

TEST(View, RefusesToDrawWithNoCommands) {
    EXPECT_THROW(NSView::viewWithCommands(NSMakeRect(0, 0, 1, 1), nullptr), NSException);
    EXPECT_NE(NSView::viewWithCommands(NSMakeRect(0, 0, 1, 1), std::make_shared<RecordingCommands>()),
              nullptr);
}
