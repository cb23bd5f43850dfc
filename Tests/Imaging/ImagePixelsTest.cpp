// What a graph puts on the pixels, read back one by one.

#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

using namespace ImagingTests;

namespace {

/// A flip, a quarter turn or both, and a move by whole pixels: its transform, and the same on plain numbers.
struct Step {
    int xx, yx, xy, yy;
    int tX, tY;

    NSAffineTransform transform() const {
        return matrix(static_cast<float>(xx), static_cast<float>(yx), static_cast<float>(xy),
                      static_cast<float>(yy), static_cast<float>(tX), static_cast<float>(tY));
    }
    Spot operator()(Spot p) const { return {xx * p.x + xy * p.y + tX, yx * p.x + yy * p.y + tY}; }
};

std::vector<Step> allTurnsAndFlips(int tX, int tY) {
    std::vector<Step> steps;
    for (const int a : {1, -1}) {
        for (const int b : {1, -1}) {
            steps.push_back({a, 0, 0, b, tX, tY});
            steps.push_back({0, a, b, 0, tX, tY});
        }
    }
    return steps;
}

/// The move that brings a placed picture with its lower left corner to (x, y).
template<class Place>
Step moveTo(int x, int y, const Grid& picture, const Place& place) {
    const Spot a = place(Spot{0, 0});
    const Spot b = place(Spot{1.0 * picture.width(), 1.0 * picture.height()});
    return {1, 0, 0, 1, x - static_cast<int>(std::min(a.x, b.x)), y - static_cast<int>(std::min(a.y, b.y))};
}

Grid flat(int width, int height, Rgba color) { return Grid(width, height, color); }

} // namespace

TEST(DrawnPixels, OfAPictureStandUprightWithTheFirstRowOnTop) {
    const Grid picture = distinctPicture(5, 3);
    const Grid drawn = drawnOn(9, 8, [&] { pictureNode(picture)->drawWithTransform(moved(2, 4), 2, 1); });
    EXPECT_EQ(drawn.at(2, 1), picture.at(0, 0)); // rows 4 to 7 from below are 1 to 3 from the top
    EXPECT_EQ(drawn.at(6, 1), picture.at(4, 0));
    EXPECT_EQ(drawn.at(2, 3), picture.at(0, 2));
    EXPECT_EQ(drawn.at(6, 3), picture.at(4, 2));
    Grid expected(9, 8);
    paint(expected, picture, [](Spot p) { return Spot{p.x + 2, p.y + 4}; });
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
}

TEST(DrawnPixels, HaveTheirCornersWhereAQuarterTurnTakesThem) {
    const Grid picture = distinctPicture(5, 3);
    // (x, y) becomes (6 - y, x + 2): the lower left corner goes to the lower right.
    const auto node = nodeOver({pictureNode(picture)}, matrix(0, 1, -1, 0, 6, 2));
    const Grid drawn = drawnOn(9, 8, [&] { node->drawWithTransform(NSAffineTransform(), 2, 1); });
    EXPECT_EQ(drawn.above(5, 2), picture.above(0, 0));
    EXPECT_EQ(drawn.above(5, 6), picture.above(4, 0));
    EXPECT_EQ(drawn.above(3, 2), picture.above(0, 2));
    EXPECT_EQ(drawn.above(3, 6), picture.above(4, 2));
}

TEST(DrawnPixels, AreExactUnderEveryPairOfNestedFlipsAndQuarterTurns) {
    const Grid picture = distinctPicture(5, 3);
    const auto source = pictureNode(picture);
    for (const Step& inner : allTurnsAndFlips(3, -2)) {
        for (const Step& outer : allTurnsAndFlips(-4, 5)) {
            const auto root = nodeOver({nodeOver({source}, inner.transform())}, outer.transform());
            const auto nested = [&](Spot p) { return outer(inner(p)); };
            const Step whole = moveTo(2, 1, picture, nested);
            const Grid drawn = drawnOn(9, 8, [&] { root->drawWithTransform(whole.transform(), 2, 1); });
            Grid expected(9, 8);
            paint(expected, picture, [&](Spot p) { return whole(nested(p)); });
            EXPECT_TRUE(Pixels::areAlike(drawn, expected))
                << "inner " << inner.xx << inner.yx << inner.xy << inner.yy << ", outer " << outer.xx
                << outer.yx << outer.xy << outer.yy;
        }
    }
}

TEST(DrawnPixels, AreExactInARectangleOfTheNodesOwnSize) {
    const Grid picture = distinctPicture(5, 3);
    for (const Step& step : allTurnsAndFlips(11, 13)) {
        const auto node = nodeOver({pictureNode(picture)}, step.transform());
        const bool upright = step.xx != 0;
        const float width = upright ? 5 : 3;
        const float height = upright ? 3 : 5;
        const Grid drawn = drawnOn(9, 8, [&] { node->drawInRect(NSMakeRect(3, 2, width, height), false); });
        const Step fit = moveTo(3, 2, picture, step);
        Grid expected(9, 8);
        paint(expected, picture, [&](Spot p) { return fit(step(p)); });
        EXPECT_TRUE(Pixels::areAlike(drawn, expected));
    }
}

TEST(DrawnPixels, AreCutAtTheEdgesOfTheTarget) {
    const Grid picture = distinctPicture(5, 3);
    const Grid drawn = drawnOn(4, 4, [&] { pictureNode(picture)->drawWithTransform(moved(-2, 2), 2, 1); });
    Grid expected(4, 4);
    paint(expected, picture, [](Spot p) { return Spot{p.x - 2, p.y + 2}; });
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
    EXPECT_EQ(drawn.above(0, 2), picture.above(2, 0));
}

TEST(DrawnPixels, OfLaterSourcesCoverThoseOfEarlierOnes) {
    const Grid below = distinctPicture(5, 3);
    const Grid above = distinctPicture(3, 4, 120);
    const auto root =
        nodeOver({nodeOver({pictureNode(below)}, moved(1, 1)), nodeOver({pictureNode(above)}, moved(4, 2))});
    const Grid drawn = drawnOn(9, 8, [&] { root->drawWithTransform(NSAffineTransform(), 2, 1); });
    Grid expected(9, 8);
    paint(expected, below, [](Spot p) { return Spot{p.x + 1, p.y + 1}; });
    paint(expected, above, [](Spot p) { return Spot{p.x + 4, p.y + 2}; });
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
}

TEST(DrawnPixels, OfOtherSourcesDoNotSufferFromOneThatThrows) {
    const Grid picture = distinctPicture(5, 3);
    const auto failing = watchedPicture(distinctPicture(2, 2));
    failing->throwsOnDraw = Thrown::Exception;
    // The picture that throws stands turned and scaled, which must not last.
    const auto broken = nodeOver({Imaging::imagingImage(failing)}, matrix(0, 3, -2, 0, 5, 5));
    const auto root = nodeOver({broken, pictureNode(picture)});
    const Grid drawn = drawnOn(9, 8, [&] { root->drawWithTransform(moved(2, 4), 2, 1); });
    EXPECT_EQ(failing->drawings.size(), 1U);
    Grid expected(9, 8);
    paint(expected, picture, [](Spot p) { return Spot{p.x + 2, p.y + 4}; });
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
}

TEST(DrawnPixels, FillARectangleToWhichTheNodeIsStretched) {
    const Rgba red{210, 10, 20, 255};
    const Rgba blue{15, 25, 220, 255};
    const auto left = nodeOver({pictureNode(flat(4, 3, red))}, moved(5, 7));
    const auto right = nodeOver({pictureNode(flat(2, 2, blue))}, moved(9, 7));
    const auto root = nodeOver({left, right}); // at (5, 7, 6, 3)
    const Grid drawn = drawnOn(16, 12, [&] { root->drawInRect(NSMakeRect(2, 1, 12, 9), false); });
    // Twice as wide and three times as high: x 2 to 10 and 10 to 14, y 1 to 10 and 1 to 7.
    Grid expected(16, 12);
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 16; ++x) {
            const int up = 11 - y;
            if (x >= 2 && x < 10 && up >= 1 && up < 10) expected.at(x, y) = red;
            if (x >= 10 && x < 14 && up >= 1 && up < 7) expected.at(x, y) = blue;
        }
    }
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
}

TEST(DrawnPixels, FillARectangleTurnedAndSqueezed) {
    const Rgba red{210, 10, 20, 255};
    const Rgba blue{15, 25, 220, 255};
    Grid picture(6, 2, red);
    for (int x = 4; x < 6; ++x) picture.at(x, 0) = picture.at(x, 1) = blue;
    // (x, y) becomes (30 - y, 7 + x), so the picture lies at (28, 7, 2, 6) with its blue end on top.
    const auto node = nodeOver({pictureNode(picture)}, matrix(0, 1, -1, 0, 30, 7));
    const Grid drawn = drawnOn(9, 8, [&] { node->drawInRect(NSMakeRect(1, 3, 6, 3), false); });
    for (int x = 0; x < 9; ++x) {
        for (int up = 0; up < 8; ++up) {
            const Rgba expected = x < 1 || x >= 7 || up < 3 || up >= 6 ? Pixels::transparent
                                  : up >= 5                            ? blue
                                                                       : red;
            EXPECT_LE(Pixels::difference(drawn.above(x, up), expected), 1) << "(" << x << ", " << up << ")";
        }
    }
}

TEST(DrawnPixels, FollowTheOperationAndTheFraction) {
    const Rgba below{100, 40, 60, 255};
    const Rgba above{80, 200, 30, 255};
    const auto source = pictureNode(flat(3, 2, above));
    const auto drawnWith = [&](int operation, float fraction) {
        return drawnOn(5, 4, [&] {
            pictureNode(flat(5, 4, below))->drawWithTransform(NSAffineTransform(), 2, 1);
            nodeOver({source})->drawWithTransform(moved(1, 1), operation, fraction);
        });
    };
    // Plus-lighter at a half: 100 + 40, 40 + 100, 60 + 15.
    const Grid lighter = drawnWith(13, 0.5F);
    EXPECT_LE(Pixels::difference(lighter.above(1, 1), {140, 140, 75, 255}), 1);
    EXPECT_LE(Pixels::difference(lighter.above(3, 2), {140, 140, 75, 255}), 1);
    EXPECT_EQ(lighter.above(0, 1), below);
    EXPECT_EQ(lighter.above(4, 1), below);
    // Source-over at a quarter: 0.75 · 100 + 20, 0.75 · 40 + 50, 0.75 · 60 + 7.5.
    EXPECT_LE(Pixels::difference(drawnWith(2, 0.25F).above(2, 2), {95, 80, 53, 255}), 1);
    // Clear and copy
    EXPECT_EQ(drawnWith(0, 1).above(2, 1), Pixels::transparent);
    EXPECT_EQ(drawnWith(1, 1).above(2, 1), above);
    EXPECT_EQ(drawnWith(0, 1).above(0, 0), below);
}

TEST(DrawnPixels, OfARetainedDrawAreTheRenderedResultInTheRectangle) {
    const Grid picture = distinctPicture(5, 3);
    const auto node = leaf(NSMakeRect(0, 0, 5, 3), matrix(0, 1, -1, 0, 3, 0));
    node->extent->setTransform(node->ownTransform); // at (0, 0, 3, 5)
    node->rendered = CCImage::ccImageWithNSImage(Pixels::imageOf(picture));
    const Grid drawn = drawnOn(9, 8, [&] { node->drawInRect(NSMakeRect(4, 2, 3, 5)); });
    Grid expected(9, 8);
    paint(expected, picture, [](Spot p) { return Spot{4 + 3 - p.y, 2 + p.x}; });
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
}

TEST(DrawnPixels, OfAPictureNodeAreItsPictureRetainedOrNot) {
    const Grid picture = distinctPicture(5, 3);
    Grid expected(9, 8);
    paint(expected, picture, [](Spot p) { return Spot{p.x + 3, p.y + 2}; });
    for (const bool retained : {true, false}) {
        const Grid drawn =
            drawnOn(9, 8, [&] { pictureNode(picture)->drawInRect(NSMakeRect(3, 2, 5, 3), retained); });
        EXPECT_TRUE(Pixels::areAlike(drawn, expected));
    }
}
