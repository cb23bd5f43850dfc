#include "Platform/Painter/Affine.h"

#include "Tests/Support/Pixels.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

cairo_matrix_t cairoOf(const Affine& m) { return {m.xx, m.yx, m.xy, m.yy, m.x0, m.y0}; }

/// Equal entry by entry; +0 equals -0, which maps no point elsewhere.
void expectSame(const Affine& ours, const cairo_matrix_t& theirs) {
    EXPECT_EQ(ours.xx, theirs.xx);
    EXPECT_EQ(ours.yx, theirs.yx);
    EXPECT_EQ(ours.xy, theirs.xy);
    EXPECT_EQ(ours.yy, theirs.yy);
    EXPECT_EQ(ours.x0, theirs.x0);
    EXPECT_EQ(ours.y0, theirs.y0);
}

Affine anyMap(Random& random, bool alongAxes) {
    const auto number = [&random] {
        return std::ldexp(random.integer(-100000, 100000), random.integer(-20, 3));
    };
    Affine map{number(), number(), number(), number(), number(), number()};
    if (alongAxes) map.yx = map.xy = 0;
    return map;
}

} // namespace

TEST(Affine, MapsOneAfterTheOther) {
    const Affine first{2, 0, 0, 3, 10, 20}; // (x, y) to (2x + 10, 3y + 20)
    const Affine next{0, 1, -1, 0, 5, 7};   // (x, y) to (5 - y, x + 7)
    const Affine both = first.then(next);   // so (x, y) to (-3y - 15, 2x + 17)
    EXPECT_EQ(both.xx, 0);
    EXPECT_EQ(both.xy, -3);
    EXPECT_EQ(both.x0, -15);
    EXPECT_EQ(both.yx, 2);
    EXPECT_EQ(both.yy, 0);
    EXPECT_EQ(both.y0, 17);
}

TEST(Affine, ComesBackByItsInverse) {
    const Affine map{0, 2, -4, 0, 5, 7}; // (x, y) to (5 - 4y, 2x + 7)
    const Affine back = map.inverse().value();
    EXPECT_EQ(back.xx, 0);
    EXPECT_EQ(back.xy, 0.5);
    EXPECT_EQ(back.x0, -3.5);
    EXPECT_EQ(back.yx, -0.25);
    EXPECT_EQ(back.yy, 0);
    EXPECT_EQ(back.y0, 1.25);
}

TEST(Affine, HasNoInverseWhereAnAxisVanishesOrTheDeterminantIsNotFinite) {
    EXPECT_FALSE(Affine::scaling(0, 1).inverse().has_value());
    EXPECT_FALSE(Affine::scaling(1, 0).inverse().has_value());
    EXPECT_FALSE((Affine{1, 2, 2, 4, 5, 6}).inverse().has_value());
    EXPECT_FALSE((Affine{infinity, 1, 1, 1, 0, 0}).inverse().has_value());
    EXPECT_FALSE((Affine{std::nan(""), 1, 1, 1, 0, 0}).inverse().has_value());
}

TEST(Affine, IsFiniteOnlyWithAllItsEntries) {
    EXPECT_TRUE(Affine::translation(1e300, -1e300).isFinite());
    EXPECT_FALSE(Affine::translation(infinity, 0).isFinite());
    EXPECT_FALSE(Affine::translation(0, std::nan("")).isFinite());
    EXPECT_FALSE((Affine{1, -infinity, 0, 1, 0, 0}).isFinite());
}

TEST(Affine, GivesTheProductsAndInversesOfTheContextsThatPicturesAreDrawnOn) {
    Random random(2101);
    for (int round = 0; round < 20000; ++round) {
        const Affine a = anyMap(random, round % 3 == 0);
        const Affine b = anyMap(random, round % 5 == 0);
        const cairo_matrix_t ofA = cairoOf(a);
        const cairo_matrix_t ofB = cairoOf(b);
        cairo_matrix_t product;
        cairo_matrix_multiply(&product, &ofA, &ofB);
        expectSame(a.then(b), product);
        cairo_matrix_t inverse = ofA;
        const bool hasInverse = cairo_matrix_invert(&inverse) == CAIRO_STATUS_SUCCESS;
        const std::optional<Affine> ours = a.inverse();
        ASSERT_EQ(ours.has_value(), hasInverse) << "round " << round;
        if (hasInverse) expectSame(*ours, inverse);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}
