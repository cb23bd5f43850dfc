#include "Imaging/OpenGL/TileGrid.h"

#include "Imaging/OpenGLTexture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

using Imaging::OpenGLTexture;
using Imaging::Tile;
using Imaging::tilesOf;
using testing::ElementsAre;

namespace {

/// The sides of tiles along a row or column, taken one after another.
std::vector<unsigned> sidesOf(int dimension, int maximum, bool anySide) {
    std::vector<unsigned> sides;
    for (int i = OpenGLTexture::getTextureNumFromTextureDim(dimension, maximum, anySide); i > 0; --i) {
        sides.push_back(OpenGLTexture::getNextTextureSizeForLength(dimension, maximum, anySide));
        dimension -= static_cast<int>(sides.back());
    }
    EXPECT_EQ(dimension, 0);
    return sides;
}

} // namespace

TEST(TileGrid, SplitsADimensionIntoPowersOfTwoWithoutTheExtension) {
    EXPECT_THAT(sidesOf(1000, 512, false), ElementsAre(512, 256, 128, 64, 32, 8));
    EXPECT_THAT(sidesOf(600, 512, false), ElementsAre(512, 64, 16, 8));
    EXPECT_THAT(sidesOf(1600, 512, false), ElementsAre(512, 512, 512, 64));
    EXPECT_THAT(sidesOf(7, 512, false), ElementsAre(4, 2, 1));
    EXPECT_THAT(sidesOf(1, 512, false), ElementsAre(1));
    EXPECT_THAT(sidesOf(0, 512, false), ElementsAre());
}

TEST(TileGrid, LeavesTheRestToTheLastTileWithTheExtension) {
    EXPECT_THAT(sidesOf(1000, 512, true), ElementsAre(512, 488));
    EXPECT_THAT(sidesOf(600, 512, true), ElementsAre(512, 88));
    EXPECT_THAT(sidesOf(1024, 512, true), ElementsAre(512, 512));
    EXPECT_THAT(sidesOf(1025, 512, true), ElementsAre(512, 512, 1));
    EXPECT_THAT(sidesOf(3, 2, true), ElementsAre(2, 1));
}

TEST(TileGrid, CountsOneTileForAnEmptyDimensionOnlyWithTheExtension) {
    EXPECT_EQ(OpenGLTexture::getTextureNumFromTextureDim(0, 512, true), 1);
    EXPECT_EQ(OpenGLTexture::getTextureNumFromTextureDim(0, 512, false), 0);
    EXPECT_EQ(OpenGLTexture::getNextTextureSizeForLength(0, 512, true), 0U);
    EXPECT_EQ(OpenGLTexture::getNextTextureSizeForLength(0, 512, false), 0U);
}

TEST(TileGrid, HasOneTileForWhatIsNoLargerThanTheMaximum) {
    EXPECT_THAT(sidesOf(512, 512, true), ElementsAre(512));
    EXPECT_THAT(sidesOf(512, 512, false), ElementsAre(512));
    EXPECT_THAT(sidesOf(511, 512, true), ElementsAre(511));
}

TEST(TileGrid, EndsWhereNoTileMayHaveASide) {
    EXPECT_EQ(OpenGLTexture::getTextureNumFromTextureDim(9, 0, true), 0);
    EXPECT_EQ(OpenGLTexture::getTextureNumFromTextureDim(9, 0, false), 0);
    EXPECT_TRUE(tilesOf(9, 9, 0, true).empty());
}

TEST(TileGrid, CountsAsManyTilesAsAreTakenOffOneByOne) {
    for (const int maximum : {1, 2, 8, 64}) {
        for (int dimension = 0; dimension < 300; ++dimension) {
            int count = 0;
            int rest = dimension;
            while (rest > maximum) {
                ++count;
                rest -= maximum;
            }
            EXPECT_EQ(OpenGLTexture::getTextureNumFromTextureDim(dimension, maximum, true), count + 1);

            int greedy = 0;
            rest = dimension;
            for (int side = maximum; side >= 1;) {
                if (side <= rest) {
                    rest -= side;
                    ++greedy;
                } else {
                    side /= 2;
                }
            }
            EXPECT_EQ(OpenGLTexture::getTextureNumFromTextureDim(dimension, maximum, false), greedy);
        }
    }
}

TEST(TileGrid, NumbersNamesDownTheColumnsAndLoadsAlongTheRows) {
    const std::vector<Tile> tiles = tilesOf(10, 7, 4, true); // 4 + 4 + 2 across, 4 + 3 down
    ASSERT_EQ(tiles.size(), 6U);
    const std::vector<std::vector<unsigned>> expected = {
        // x, y, width, height, name, load
        {0, 0, 4, 4, 0, 0}, {0, 4, 4, 3, 1, 3}, {4, 0, 4, 4, 2, 1},
        {4, 4, 4, 3, 3, 4}, {8, 0, 2, 4, 4, 2}, {8, 4, 2, 3, 5, 5},
    };
    for (std::size_t i = 0; i < tiles.size(); ++i) {
        const Tile& t = tiles[i];
        EXPECT_EQ((std::vector<unsigned>{t.x, t.y, t.width, t.height, t.nameIndex, t.loadIndex}), expected[i])
            << i;
    }
}
