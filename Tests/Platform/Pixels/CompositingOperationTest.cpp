#include "Platform/Pixels/CompositingOperation.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Pixels;

TEST(CompositingOperation, HasTheNumberThatGraphsCarry) {
    EXPECT_EQ(compositingOperation(0), NSCompositeClear);
    EXPECT_EQ(compositingOperation(2), NSCompositeSourceOver);
    EXPECT_EQ(compositingOperation(9), NSCompositeDestinationAtop);
    EXPECT_EQ(compositingOperation(13), NSCompositePlusLighter);
}

TEST(CompositingOperation, KeepsNumbersThatNameNone) {
    EXPECT_EQ(static_cast<int>(compositingOperation(99)), 99);
    EXPECT_EQ(static_cast<int>(compositingOperation(-7)), -7);
}

TEST(CompositingOperation, IsTakenByNumberAndByName) {
    const auto filledBy = [](auto operation) {
        Canvas canvas(Grid(8, 5, {90, 60, 30, 120}));
        canvas.context().setColor(NSColor::colorWithCalibratedRed(0, 1, 0, 0.5F));
        canvas.context().fillRect(NSMakeRect(2, 1, 3, 2), operation);
        return canvas.pixels();
    };
    EXPECT_EQ(difference(filledBy(NSCompositeXOR), filledBy(10)).largest, 0);
    EXPECT_EQ(difference(filledBy(NSCompositeSourceOver), filledBy(99)).largest, 0);
    EXPECT_NE(difference(filledBy(NSCompositeXOR), filledBy(NSCompositeSourceOver)).largest, 0);
}
