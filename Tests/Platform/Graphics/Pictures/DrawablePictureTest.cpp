// Also tests: Platform/Graphics/PictureMemory.cpp
// Also tests: Platform/Painter/PictureLevels.cpp
// Also tests: Platform/Pixels/Rows/PixelImage.cpp

#include "Platform/Graphics/Pictures/DrawablePicture.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Tests/Platform/Graphics/DrawnPictures.h"

#include <gtest/gtest.h>

#include <map>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

/// Half as many pixels by the plain rule: means of four, halves up, a last odd pixel counting as two.
Grid halvedPlainly(const Grid& grid) {
    return pictureOf((grid.width() + 1) / 2, (grid.height() + 1) / 2, [&](double x, double y) {
        const int left = 2 * static_cast<int>(x);
        const int top = 2 * static_cast<int>(y);
        const int right = std::min(left + 1, grid.width() - 1);
        const int bottom = std::min(top + 1, grid.height() - 1);
        const auto mean = [&](std::uint8_t Rgba::*sample) {
            const double sum = grid.at(left, top).*sample + grid.at(right, top).*sample +
                               grid.at(left, bottom).*sample + grid.at(right, bottom).*sample;
            return static_cast<std::uint8_t>(std::floor(sum / 4 + 0.5));
        };
        return Rgba{mean(&Rgba::r), mean(&Rgba::g), mean(&Rgba::b), mean(&Rgba::a)};
    });
}

struct Counted {
    explicit Counted(const Grid& grid, bool opaque = false)
        : rows(std::make_shared<GridRows>(grid, opaque)),
          picture(std::make_shared<DrawablePicture>(rows, wholeOf(grid.width(), grid.height()))) {}

    std::shared_ptr<GridRows> rows;
    std::shared_ptr<DrawablePicture> picture;
};

const std::vector<std::pair<int, int>> someSizes = {{1, 1},   {1, 9},   {9, 1},  {2, 2},    {3, 3},  {5, 8},
                                                    {16, 16}, {17, 31}, {33, 1}, {129, 64}, {255, 3}};

/// The picture drawn in the lower left corner of a canvas.
Grid drawnSmall(DrawablePicture& picture, float width, float height, int canvas = 40) {
    Canvas target(canvas, canvas);
    drawPicture(target.context(), picture, NSMakeRect(0, 0, width, height), picture.bounds(), NSCompositeCopy,
                1);
    return target.pixels();
}

} // namespace

TEST(DrawablePicture, LevelsAreMeansOfTwoByTwoPixelsDownToASingleOne) {
    Random random(351);
    for (const auto& [width, height] : someSizes) {
        const auto picture = drawableOf(random.grid(width, height));
        Grid expected = gridOf(*picture->level(0));
        for (int k = 1; k < picture->levelCount(); ++k) {
            expected = halvedPlainly(expected);
            ASSERT_TRUE(areAlike(gridOf(*picture->level(k)), expected))
                << width << " x " << height << ", level " << k;
        }
        EXPECT_EQ(expected.width(), 1) << width << " x " << height;
        EXPECT_EQ(expected.height(), 1) << width << " x " << height;
    }
}

TEST(DrawablePicture, TheFirstLevelStraightFromRowsIsTheOneFromPixels) {
    Random random(352);
    for (const auto& [width, height] : someSizes) {
        const Grid grid = random.grid(width, height);
        const auto straight = drawableOf(grid);
        const auto overPixels = drawableOf(grid);
        if (straight->levelCount() < 2) continue;
        const auto level = straight->level(1);
        EXPECT_TRUE(areAlike(gridOf(*overPixels->level(0)), grid));
        EXPECT_TRUE(areAlike(gridOf(*level), gridOf(*overPixels->level(1)))) << width << " x " << height;
    }
}

TEST(DrawablePicture, LargeLevelsThatSeveralThreadsMakeAreTheSame) {
    Random random(353);
    const Grid grid = random.grid(1201, 403);
    const auto picture = drawableOf(grid);
    const Grid first = halvedPlainly(grid);
    EXPECT_TRUE(areAlike(gridOf(*picture->level(1)), first));
    EXPECT_TRUE(areAlike(gridOf(*picture->level(2)), halvedPlainly(first)));
    EXPECT_TRUE(areAlike(gridOf(*picture->level(0)), grid));
}

TEST(DrawablePicture, NothingIsReadBeforeItIsNeededAndNothingTwice) {
    Random random(354);
    const Counted counted(random.grid(40, 30));
    EXPECT_EQ(counted.rows->reads(), 0);
    EXPECT_EQ(counted.picture->levelCount(), 7); // 40, 20, 10, 5, 3, 2, 1
    EXPECT_FALSE(counted.picture->holds(nullptr));
    counted.picture->level(2);
    EXPECT_EQ(counted.rows->reads(), 30); // for level 1, of which level 2 is made
    const auto again = counted.picture->level(2);
    EXPECT_EQ(counted.picture->level(2), again);
    counted.picture->level(1);
    counted.picture->level(6);
    EXPECT_EQ(counted.rows->reads(), 30);
    counted.picture->level(0);
    EXPECT_EQ(counted.rows->reads(), 60);
    counted.picture->level(0);
    EXPECT_EQ(counted.rows->reads(), 60);
}

TEST(DrawablePicture, SmallDrawsReadThePictureOnceAndMakeNoFullSize) {
    Random random(355);
    const Counted counted(random.grid(80, 80));
    for (int i = 0; i < 3; ++i) drawnSmall(*counted.picture, 20, 20);
    drawnSmall(*counted.picture, 7, 9);
    EXPECT_EQ(counted.rows->reads(), 80);
    drawnSmall(*counted.picture, 80, 80); // all of it now
    EXPECT_EQ(counted.rows->reads(), 160);
}

TEST(DrawablePicture, WhatWasLetGoIsMadeAgainAndWhoHoldsItKeepsIt) {
    Random random(356);
    const Grid grid = random.grid(20, 10);
    const Counted counted(grid);
    const auto whole = counted.picture->level(0);
    const auto half = counted.picture->level(1);
    const Grid before = gridOf(*half);
    counted.picture->letGo();
    EXPECT_EQ(whole.use_count(), 1);
    EXPECT_EQ(half.use_count(), 1);
    EXPECT_TRUE(areAlike(gridOf(*whole), grid));
    EXPECT_TRUE(areAlike(gridOf(*counted.picture->level(1)), before));
    EXPECT_EQ(counted.rows->reads(), 20);
    releasePictureMemory();
    counted.picture->level(1);
    EXPECT_EQ(counted.rows->reads(), 30);
}

TEST(DrawablePicture, PixelsThatCannotBeMadeAgainStay) {
    const auto pixels = PixelImage::transparent(9, 9);
    pixels->row(4)[4] = 0xffffffff;
    DrawablePicture picture(pixels, wholeOf(9, 9));
    const std::weak_ptr<const PixelImage> half = picture.level(1);
    releasePictureMemory();
    EXPECT_TRUE(half.expired());
    EXPECT_EQ(picture.level(0)->row(4)[4], 0xffffffff);
    EXPECT_TRUE(picture.holds(pixels->row(0)));
    EXPECT_FALSE(picture.holds(pixels->row(1)));
}

TEST(DrawablePicture, LevelsTakeAThirdOfThePixelsTogether) {
    const auto bytesOf = [](int width, int height) {
        const auto picture = drawableOf(Grid(width, height));
        std::int64_t bytes = 0;
        for (int k = 0; k < picture->levelCount(); ++k) {
            bytes += std::int64_t{4} * picture->level(k)->width() * picture->level(k)->height();
        }
        return static_cast<double>(bytes) / width / height;
    };
    EXPECT_LE(bytesOf(256, 256), 16.0 / 3 + 0.001);
    EXPECT_LE(bytesOf(1024, 512), 16.0 / 3 + 0.001);
    EXPECT_LE(bytesOf(600, 400), 16.0 / 3 * 1.01); // what odd sizes add
    EXPECT_LE(bytesOf(1, 512), 8.0);               // of which only one side can be halved
}

TEST(DrawablePicture, ChangesShowInLevelsWhileTheyAreMadeAndAfterwards) {
    const Counted counted(Grid(16, 16, black));
    counted.picture->level(2);
    const auto pixels = counted.picture->pixels();
    counted.picture->beginChanges();
    const auto fill = [&](std::uint32_t word) {
        for (int y = 0; y < 16; ++y) std::fill_n(pixels->row(y), 16, word);
    };
    fill(0xff00ff00);
    EXPECT_EQ(counted.picture->level(2)->row(1)[1], 0xff00ff00);
    fill(0xff0000ff);
    EXPECT_EQ(counted.picture->level(2)->row(1)[1], 0xff0000ff);
    counted.picture->endChanges(true);
    EXPECT_EQ(counted.picture->level(2)->row(1)[1], 0xff0000ff);
    EXPECT_EQ(counted.picture->level(2), counted.picture->level(2));
    const int reads = counted.rows->reads();
    releasePictureMemory(); // the rows are no longer what the picture shows
    EXPECT_EQ(counted.picture->level(0)->row(3)[3], 0xff0000ff);
    EXPECT_EQ(counted.rows->reads(), reads);
}

TEST(DrawablePicture, WithoutChangesItsPixelsCanBeTakenBackAndReadAgain) {
    Random random(356);
    const Grid grid = random.grid(16, 16);
    const Counted counted(grid, true);
    counted.picture->beginChanges();
    releasePictureMemory(); // what is drawn into stays
    const int reads = counted.rows->reads();
    counted.picture->level(0);
    EXPECT_EQ(counted.rows->reads(), reads);
    counted.picture->endChanges(false);
    EXPECT_TRUE(counted.picture->isOpaque());
    releasePictureMemory();
    EXPECT_TRUE(areAlike(gridOf(*counted.picture->level(0)), grid));
    EXPECT_EQ(counted.rows->reads(), reads + 16);
}

TEST(DrawablePicture, IsOpaqueOnlyWhereItsRowsSaySoAndNobodyDrewIntoIt) {
    EXPECT_TRUE(drawableOf(Grid(2, 2, red), true)->isOpaque());
    EXPECT_FALSE(drawableOf(Grid(2, 2, red))->isOpaque());
    const auto drawnInto = drawableOf(Grid(2, 2, red), true);
    drawnInto->beginChanges();
    EXPECT_FALSE(drawnInto->isOpaque());
    drawnInto->endChanges(true);
    EXPECT_FALSE(drawnInto->isOpaque());
    EXPECT_FALSE(DrawablePicture(PixelImage::transparent(1, 1), wholeOf(1, 1)).isOpaque());
}

TEST(DrawablePicture, ACopyHasPixelsOfItsOwnAndOtherBoundsShareThem) {
    Random random(357);
    const Grid grid = random.grid(11, 7);
    const auto picture = drawableOf(grid);
    const auto copy = picture->copy();
    copy->pixels()->row(0)[0] ^= 0xff;
    EXPECT_TRUE(areAlike(gridOf(*picture->level(0)), grid));
    EXPECT_FALSE(areAlike(gridOf(*copy->level(0)), grid));
    EXPECT_TRUE(NSEqualRects(copy->bounds(), picture->bounds()));
    const auto elsewhere = picture->withBounds(NSMakeRect(1, 2, 3, 4));
    EXPECT_EQ(elsewhere->level(0), picture->level(0));
    EXPECT_TRUE(NSEqualRects(elsewhere->bounds(), NSMakeRect(1, 2, 3, 4)));
}

TEST(DrawablePicture, PicturesOfOnePixelAlongAnAxisDrawAtAnySize) {
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{1, 1}, {1, 50}, {50, 1}}) {
        const auto picture = drawableOf(Grid(width, height, {10, 200, 30, 255}));
        for (const float size : {0.5F, 1.0F, 2.0F, 3.0F, 12.5F, 40.0F}) {
            const Grid shown = drawnSmall(*picture, size, size);
            const int whole = static_cast<int>(size);
            for (int y = 0; y < whole; ++y) {
                for (int x = 0; x < whole; ++x) EXPECT_EQ(shown.above(x, y), (Rgba{10, 200, 30, 255}));
            }
        }
    }
    const auto ends = drawableOf(pictureOf(1, 2, [](double, double y) { return y < 1 ? white : black; }));
    const Grid shown = drawnSmall(*ends, 1, 8);
    EXPECT_EQ(shown.above(0, 7), white);
    EXPECT_EQ(shown.above(0, 0), black);
    EXPECT_EQ(shown.above(0, 4), gray(255 * 0.625)); // an eighth above the middle between the two centres
}

TEST(DrawablePicture, APictureDrawnIntoItselfReadsWhatWasThereBefore) {
    Random random(358);
    const Grid before = random.grid(30, 20);
    for (const bool halfSize : {false, true}) {
        NSImage image(NSMakeSize(30, 20));
        image.lockFocus();
        imageOf(before)->drawInRect(wholeOf(30, 20), NSZeroRect, NSCompositeCopy, 1);
        const float scale = halfSize ? 0.5F : 1.0F;
        image.drawInRect(NSMakeRect(4, 3, 30 * scale, 20 * scale), NSZeroRect, NSCompositeCopy, 1);
        image.unlockFocus();
        const Grid moved = halfSize ? halvedPlainly(before) : before;
        const Grid shown = shownBy(image, 30, 20);
        for (int y = 0; y < 20; ++y) {
            for (int x = 0; x < 30; ++x) {
                const bool inside = x >= 4 && x < 4 + moved.width() && y >= 3 && y < 3 + moved.height();
                const Rgba expected = inside ? moved.above(x - 4, y - 3) : before.above(x, y);
                ASSERT_LE(difference(shown.above(x, y), expected), halfSize ? 1 : 0) << x << ", " << y;
            }
        }
    }
}

TEST(DrawablePicture, ChangesUnderFocusShowInSmallDrawsDuringFocusAndAfterIt) {
    NSImage image(NSMakeSize(64, 64));
    const auto small = [&image] {
        Canvas canvas(8, 8);
        image.drawInRect(wholeOf(8, 8), NSZeroRect, NSCompositeCopy, 1);
        return canvas.pixels();
    };
    image.lockFocus();
    for (const Rgba color : {red, green, blue}) {
        NSColor::colorWithCalibratedRed(color.r / 255.0F, color.g / 255.0F, color.b / 255.0F, 1).set();
        NSRectFill(wholeOf(64, 64));
        EXPECT_TRUE(areAlike(small(), Grid(8, 8, color)));
    }
    image.unlockFocus();
    EXPECT_TRUE(areAlike(small(), Grid(8, 8, blue)));
    image.lockFocus();
    NSColor::whiteColor().set();
    NSRectFill(wholeOf(64, 64));
    image.unlockFocus();
    EXPECT_TRUE(areAlike(small(), Grid(8, 8, white)));
}

TEST(DrawablePicture, ABitmapThatChangedShowsAfterRecacheAndAtOnceWhereNothingIsKept) {
    const auto bitmap = bitmapOf(Grid(32, 32, red));
    NSImage image(NSMakeSize(32, 32));
    image.addRepresentation(bitmap);
    const auto small = [&image] {
        Canvas canvas(4, 4);
        image.drawInRect(wholeOf(4, 4), NSZeroRect, NSCompositeCopy, 1);
        return canvas.pixels();
    };
    const auto fill = [&bitmap](Rgba p) {
        for (int y = 0; y < 32; ++y) {
            for (int x = 0; x < 32; ++x) bitmap->setPixelAt(x, y, {p.r, p.g, p.b, p.a});
        }
    };
    EXPECT_TRUE(areAlike(small(), Grid(4, 4, red)));
    fill(green);
    EXPECT_TRUE(areAlike(small(), Grid(4, 4, red))) << "the levels are kept";
    image.recache();
    EXPECT_TRUE(areAlike(small(), Grid(4, 4, green)));
    fill(blue);
    releasePictureMemory();
    EXPECT_TRUE(areAlike(small(), Grid(4, 4, blue)));
    image.setCacheMode(NSImageCacheNever);
    fill(white);
    EXPECT_TRUE(areAlike(small(), Grid(4, 4, white)));
    fill(black);
    EXPECT_TRUE(areAlike(small(), Grid(4, 4, black))) << "nothing is kept from draw to draw";
}

TEST(DrawablePicture, PixelsBeyondTheLimitsAreRefused) {
    EXPECT_THROW(PixelImage::transparent(0, 5), NSException);
    EXPECT_THROW(PixelImage::transparent(5, -1), NSException);
    EXPECT_THROW(PixelImage::uninitialised(std::int64_t{1} << 40, std::int64_t{1} << 40), NSException);
    EXPECT_THROW(PixelImage::transparent(std::int64_t{1} << 31, 1), NSException);
}
