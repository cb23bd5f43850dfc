// Also tests: Platform/Painter/WholePixelSampler.cpp

#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <string>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

/// A map of whole pixels in a space with y upward: x' = a·x + c·y + tx, y' = b·x + d·y + ty for points.
struct WholeMap {
    std::string name;
    int a;
    int b;
    int c;
    int d;
    int tx;
    int ty;

    NSAffineTransform transform() const {
        const auto number = [](int value) { return static_cast<float>(value); };
        return NSAffineTransform({number(a), number(b), number(c), number(d), number(tx), number(ty)});
    }
};

constexpr int canvasWidth = 21;
constexpr int canvasHeight = 19;

/// Where each pixel of a picture comes to lie. A pixel is the square whose centre is (x + ½, y + ½); twice
/// the centre is a whole number, so no rounding takes part.
Grid mapped(const Grid& picture, int left, int bottom, const WholeMap& map) {
    Grid result(canvasWidth, canvasHeight);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int twiceX = 2 * (left + x) + 1;
            const int twiceY = 2 * (bottom + y) + 1;
            const int toX = (map.a * twiceX + map.c * twiceY + 2 * map.tx - 1) / 2;
            const int toY = (map.b * twiceX + map.d * twiceY + 2 * map.ty - 1) / 2;
            const int row = canvasHeight - 1 - toY;
            if (result.contains(toX, row)) result.at(toX, row) = picture.above(x, y);
        }
    }
    return result;
}

/// The picture drawn into a new picture that has focus, and what that shows then.
Grid drawn(const Grid& picture, int left, int bottom, const WholeMap& map) {
    const auto image = imageOf(picture);
    NSImage target(NSMakeSize(canvasWidth, canvasHeight));
    target.lockFocus();
    NSGraphicsContext::currentContext()->concat(map.transform());
    image->drawInRect(NSMakeRect(static_cast<float>(left), static_cast<float>(bottom),
                                 static_cast<float>(picture.width()), static_cast<float>(picture.height())),
                      NSZeroRect, NSCompositeSourceOver, 1);
    target.unlockFocus();
    return shownBy(target, canvasWidth, canvasHeight);
}

/// All turns and flips about whole-pixel centres.
std::vector<WholeMap> wholeMaps() {
    // About (10, 9): the translation is what brings the centre back to where it was.
    return {{"moved", 1, 0, 0, 1, 3, -2},
            {"turned by 90 degrees", 0, 1, -1, 0, 19, -1},
            {"turned by 180 degrees", -1, 0, 0, -1, 20, 18},
            {"turned by 270 degrees", 0, -1, 1, 0, 1, 19},
            {"flipped left to right", -1, 0, 0, 1, 20, 0},
            {"flipped top to bottom", 1, 0, 0, -1, 0, 18},
            {"mirrored at a diagonal", 0, 1, 1, 0, 1, -1},
            {"mirrored at the other diagonal", 0, -1, -1, 0, 19, 19}};
}

} // namespace

TEST(DrawingExactness, CopiesEveryPixelUnderWholePixelMovesQuarterTurnsAndFlips) {
    Random random(42);
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{7, 5}, {1, 1}, {5, 8}, {11, 3}}) {
        for (const WholeMap& map : wholeMaps()) {
            for (int round = 0; round < 4; ++round) {
                const Grid picture = random.grid(width, height);
                const int left = random.integer(-4, 14);
                const int bottom = random.integer(-4, 14);
                EXPECT_TRUE(areAlike(drawn(picture, left, bottom, map), mapped(picture, left, bottom, map)))
                    << width << " x " << height << " at " << left << ", " << bottom << ", " << map.name;
            }
        }
    }
}

TEST(DrawingExactness, TheFirstRowInMemoryIsTheTopOne) {
    Grid picture(3, 2, black);
    picture.at(0, 0) = red; // the first pixel in memory
    picture.at(2, 0) = green;
    picture.at(0, 1) = blue;
    picture.at(2, 1) = white;
    const Grid shown = drawn(picture, 4, 10, {"", 1, 0, 0, 1, 0, 0});
    EXPECT_EQ(shown.above(4, 11), red) << "upper left";
    EXPECT_EQ(shown.above(6, 11), green) << "upper right";
    EXPECT_EQ(shown.above(4, 10), blue) << "lower left";
    EXPECT_EQ(shown.above(6, 10), white) << "lower right";
    EXPECT_EQ(shown.above(3, 10), transparent);
    EXPECT_EQ(shown.above(4, 12), transparent);
}

TEST(DrawingExactness, ATurnByAPositiveAngleIsCounterClockwise) {
    Grid picture(4, 4, black);
    picture.at(3, 0) = red; // upper right
    const auto image = imageOf(picture);
    Canvas canvas(4, 4);
    NSAffineTransform turn;
    turn.translateXBy(2, 2);
    turn.rotateByDegrees(90);
    turn.translateXBy(-2, -2);
    canvas.context().concat(turn);
    image->drawInRect(NSMakeRect(0, 0, 4, 4), NSZeroRect, NSCompositeCopy, 1);
    EXPECT_EQ(canvas.pixels().at(0, 0), red) << "upper left";
    EXPECT_EQ(canvas.pixels().at(3, 0), black);
}

TEST(DrawingExactness, APartOfThePictureIsCountedFromItsLowerLeftCorner) {
    Random random(43);
    const Grid picture = random.grid(9, 7);
    const auto image = imageOf(picture);
    Canvas canvas(12, 12);
    image->drawInRect(NSMakeRect(5, 6, 3, 4), NSMakeRect(2, 1, 3, 4), NSCompositeSourceOver, 1);
    Grid expected(12, 12);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 3; ++x) expected.at(5 + x, 11 - (6 + y)) = picture.above(2 + x, 1 + y);
    }
    EXPECT_TRUE(areAlike(canvas.pixels(), expected));
}

TEST(DrawingExactness, MagnificationByWholeNumbersKeepsPixelCentresAndNeverLeavesTheDestination) {
    // Bilinear weights at the centre of a pixel that is enlarged threefold are 1 for the pixel itself; Cairo
    // cuts them off at 1/128, which on both axes together costs up to four steps of 255.
    Random random(44);
    const Grid picture = random.grid(6, 5);
    Canvas canvas(30, 25, blue);
    imageOf(picture)->drawInRect(NSMakeRect(3, 6, 18, 15), NSZeroRect, NSCompositeCopy, 1);
    const Grid shown = canvas.pixels();
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 6; ++x) {
            EXPECT_LE(difference(shown.above(3 + 3 * x + 1, 6 + 3 * y + 1), picture.above(x, y)), 4);
        }
    }
    for (int x = 0; x < 30; ++x) {
        EXPECT_EQ(shown.above(x, 5), blue);
        EXPECT_EQ(shown.above(x, 21), blue);
    }
}

TEST(DrawingExactness, MagnificationIsBilinearBetweenPixelCentresAndConstantBeyondTheLast) {
    Random random(45);
    const Grid picture = random.grid(5, 4);
    constexpr int factor = 8;
    Canvas canvas(5 * factor, 4 * factor);
    imageOf(picture)->drawInRect(NSMakeRect(0, 0, 5 * factor, 4 * factor), NSZeroRect, NSCompositeCopy, 1);
    const Grid shown = canvas.pixels();
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            const double u = std::clamp((x + 0.5) / factor - 0.5, 0.0, 4.0);
            const double v = std::clamp((y + 0.5) / factor - 0.5, 0.0, 3.0);
            const int left = std::min(static_cast<int>(u), 3);
            const int top = std::min(static_cast<int>(v), 2);
            const auto sample = [&](std::uint8_t Rgba::*channel) {
                const auto at = [&](int dx, int dy) { return picture.at(left + dx, top + dy).*channel; };
                const double upper = at(0, 0) * (1 - (u - left)) + at(1, 0) * (u - left);
                const double lower = at(0, 1) * (1 - (u - left)) + at(1, 1) * (u - left);
                return upper * (1 - (v - top)) + lower * (v - top);
            };
            // Weights of 1/128 on two axes cost up to four steps of 255.
            EXPECT_NEAR(shown.at(x, y).r, sample(&Rgba::r), 4) << x << ", " << y;
            EXPECT_NEAR(shown.at(x, y).a, sample(&Rgba::a), 4) << x << ", " << y;
        }
    }
}

TEST(DrawingExactness, OneColourStaysThatColourAtEverySizeAndAngle) {
    const Rgba color{40, 100, 7, 200};
    const auto image = imageOf(Grid(37, 23, color));
    for (const float scale : {0.01F, 0.07F, 0.3F, 0.77F, 1.0F, 1.3F, 9.0F, 300.0F}) {
        for (const float angle : {0.0F, 33.0F, 90.0F}) {
            Canvas canvas(11, 11);
            NSAffineTransform transform;
            transform.translateXBy(5.5F, 5.5F);
            transform.rotateByDegrees(angle);
            transform.scaleBy(scale);
            canvas.context().concat(transform);
            image->drawInRect(NSMakeRect(-18.5F, -11.5F, 37, 23), NSZeroRect, NSCompositeSourceOver, 1);
            const Rgba middle = canvas.pixels().at(5, 5);
            // What one pixel in the middle is covered by, at most all of it.
            const double cover = std::min(1.0, 37.0 * scale) * std::min(1.0, 23.0 * scale);
            EXPECT_NEAR(middle.a, 200 * cover, angle == 33.0F && cover < 1 ? 12 : 2)
                << scale << ", " << angle;
            EXPECT_NEAR(middle.g, 100 * cover, angle == 33.0F && cover < 1 ? 6 : 2) << scale << ", " << angle;
        }
    }
}

TEST(DrawingExactness, ReductionAveragesAllPixelsThatFallOnOne) {
    // Of the columns that fall on one pixel the first quarter is white, so that looking at those in the
    // middle alone would see nothing of it; Cairo by itself looks at 16 at most.
    for (const int factor : {4, 8, 16, 32, 64, 200}) {
        Grid picture(factor * 7, 3 * factor, black);
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (x % factor < factor / 4) picture.at(x, y) = white;
            }
        }
        Canvas canvas(7, 3);
        imageOf(picture)->drawInRect(NSMakeRect(0, 0, 7, 3), NSZeroRect, NSCompositeCopy, 1);
        const Grid shown = canvas.pixels();
        for (int y = 0; y < 3; ++y) {
            for (int x = 1; x < 6; ++x) {
                EXPECT_NEAR(shown.at(x, y).r, 255.0 / 4, 10) << factor << " to 1, column " << x;
                EXPECT_EQ(shown.at(x, y).a, 255);
            }
        }
    }
}

TEST(DrawingExactness, ReductionKeepsEveryPartInItsPlace) {
    // Four quarters of four colours, reduced until each is one pixel; odd sizes leave part of a block over.
    for (const int length : {32, 33, 100, 257, 1001}) {
        Grid picture(length, length);
        for (int y = 0; y < length; ++y) {
            for (int x = 0; x < length; ++x) {
                const bool left = x < length / 2;
                picture.at(x, y) = y < length / 2 ? (left ? red : green) : (left ? blue : white);
            }
        }
        Canvas canvas(6, 6);
        imageOf(picture)->drawInRect(NSMakeRect(1, 1, 4, 4), NSZeroRect, NSCompositeSourceOver, 1);
        const Grid shown = canvas.pixels();
        EXPECT_LE(difference(shown.at(1, 1), red), 2) << length;
        EXPECT_LE(difference(shown.at(4, 1), green), 2) << length;
        EXPECT_LE(difference(shown.at(1, 4), blue), 2) << length;
        EXPECT_LE(difference(shown.at(4, 4), white), 2) << length;
        EXPECT_EQ(shown.at(0, 0), transparent);
        EXPECT_EQ(shown.at(5, 5), transparent);
    }
}

TEST(DrawingExactness, EdgesOnFractionsOfPixelsAreMixedByCoverage) {
    Canvas canvas(6, 6, black);
    imageOf(Grid(4, 4, white))->drawInRect(NSMakeRect(1.5F, 1.25F, 3, 3), NSZeroRect, NSCompositeCopy, 1);
    const Grid shown = canvas.pixels();
    EXPECT_NEAR(shown.above(1, 2).r, 255 * 0.5, 2);
    EXPECT_NEAR(shown.above(4, 2).r, 255 * 0.5, 2);
    EXPECT_NEAR(shown.above(2, 1).r, 255 * 0.75, 2);
    EXPECT_NEAR(shown.above(2, 4).r, 255 * 0.25, 2);
    EXPECT_EQ(shown.above(2, 2), white);
    EXPECT_EQ(shown.above(0, 2), black);
    EXPECT_EQ(shown.above(5, 2), black);
}

TEST(DrawingExactness, WhereASourceReachesBeyondThePictureThereIsNothing) {
    Random random(46);
    const Grid picture = random.grid(4, 3);
    for (const int operation :
         {NSCompositeSourceOver, NSCompositeCopy, NSCompositeSourceIn, NSCompositeDestinationIn,
          NSCompositeDestinationAtop, NSCompositeXOR, NSCompositePlusDarker}) {
        const Grid destination = random.grid(10, 10);
        Canvas canvas(destination);
        // The picture's (0, 0) comes to lie at (3, 4).
        imageOf(picture)->drawInRect(NSMakeRect(1, 2, 8, 7), NSMakeRect(-2, -2, 8, 7), operation, 1);
        Grid expected = destination;
        for (int y = 2; y < 9; ++y) {
            for (int x = 1; x < 9; ++x) {
                const bool inside = x >= 3 && x < 7 && y >= 4 && y < 7;
                const Rgba source = inside ? picture.above(x - 3, y - 4) : transparent;
                expected.at(x, 9 - y) = rounded(composed(operation, source, destination.above(x, y), 1, 1));
            }
        }
        EXPECT_TRUE(areAlike(canvas.pixels(), expected, 1)) << "operation " << operation;
    }
}
