#include "Show/Easing.h"

#include "Platform/Foundation/Exception.h"

#include <gmock/gmock.h>

using namespace Imaging;

namespace {

constexpr Easing allEasings[] = {Easing::Linear, Easing::In, Easing::Out, Easing::InOut};

} // namespace

TEST(Easing, FollowsTheCubeOfTime) {
    EXPECT_EQ(eased(Easing::Linear, 0.3), 0.3);
    EXPECT_EQ(eased(Easing::In, 0.5), 0.125);
    EXPECT_EQ(eased(Easing::In, 0.25), 1.0 / 64);
    EXPECT_EQ(eased(Easing::Out, 0.5), 0.875);
    EXPECT_EQ(eased(Easing::Out, 0.75), 63.0 / 64);
    // Each half is the cube in half the time and to half the height: 4 t^3.
    EXPECT_EQ(eased(Easing::InOut, 0.25), 0.0625);
    EXPECT_EQ(eased(Easing::InOut, 0.5), 0.5);
    EXPECT_EQ(eased(Easing::InOut, 0.75), 0.9375);
}

TEST(Easing, KeepsTheEndsAndNeverGoesBack) {
    for (const Easing easing : allEasings) {
        SCOPED_TRACE(textOf(easing));
        EXPECT_EQ(eased(easing, 0), 0);
        EXPECT_EQ(eased(easing, 1), 1);
        double before = 0;
        for (int i = 1; i <= 1000; ++i) {
            const double now = eased(easing, i / 1000.0);
            EXPECT_GT(now, before) << i;
            before = now;
        }
    }
}

TEST(Easing, OutIsInBackwards) {
    for (int i = 0; i <= 64; ++i) {
        const double time = i / 64.0;
        EXPECT_DOUBLE_EQ(eased(Easing::Out, time), 1 - eased(Easing::In, 1 - time));
        EXPECT_DOUBLE_EQ(eased(Easing::InOut, time), 1 - eased(Easing::InOut, 1 - time));
    }
}

TEST(Easing, GoesByItsWord) {
    for (const Easing easing : allEasings) EXPECT_EQ(easingNamed(textOf(easing)), easing);
    EXPECT_EQ(textOf(Easing::InOut), "in-out");
    try {
        easingNamed("inout");
        FAIL();
    } catch (const Platform::NSException& exception) {
        EXPECT_EQ(exception.name(), Platform::NSInvalidArgumentException);
        EXPECT_EQ(exception.reason(), "there is no easing named 'inout'; known are linear, in, out and "
                                      "in-out; did you mean 'in-out'?");
    }
}
