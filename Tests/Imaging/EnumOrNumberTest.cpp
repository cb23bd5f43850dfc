#include "Imaging/EnumOrNumber.h"

#include "Imaging/TransitionDirection.h"

#include <gtest/gtest.h>

using Imaging::EnumOrNumber;
using Imaging::IMGTransitionDirection;

namespace {

std::int32_t numberOf(EnumOrNumber<IMGTransitionDirection> direction) {
    return static_cast<IMGTransitionDirection>(direction);
}

} // namespace

TEST(EnumOrNumber, TakesEitherAndIsTheEnumeration) {
    EXPECT_EQ(numberOf(Imaging::IMGTransitionDirectionUp), 3);
    EXPECT_EQ(numberOf(3), 3);
    const EnumOrNumber<IMGTransitionDirection> down = 4;
    EXPECT_TRUE(down == Imaging::IMGTransitionDirectionDown);
}

TEST(EnumOrNumber, KeepsNumbersWithoutANameAsTheyAre) {
    EXPECT_EQ(numberOf(0), 0);
    EXPECT_EQ(numberOf(-7), -7);
    EXPECT_EQ(numberOf(2147483647), 2147483647);
}
