#pragma once

// Internal: how a picture is divided into tiles. Not installed.

#include <cstdint>
#include <vector>

namespace Imaging {

/// One tile of a picture. Offsets count from the picture's upper left pixel, where its memory begins.
struct Tile {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t nameIndex = 0; ///< its place among the texture names, which count down the columns
    std::uint32_t loadIndex = 0; ///< its number for loads of some tiles, which count along the rows
};

/// The side of the next tile where `length` pixels (not negative) are left and tiles have at most `maximum`:
/// all that is left where sides are free, else the largest of maximum, maximum / 2, maximum / 4, … that fits.
/// 0 where none fits.
std::uint32_t nextTileSide(int length, int maximum, bool anySide);

/// How many tiles cover a dimension that way. Where sides are free an empty dimension has one tile, of no
/// side. 0 for a maximum below 1.
int tileCount(int dimension, int maximum, bool anySide);

/// All tiles of a picture in the order in which they are walked: column after column from the left, each
/// from its first row.
std::vector<Tile> tilesOf(std::uint32_t pixelsWide, std::uint32_t pixelsHigh, int maximum, bool anySide);

} // namespace Imaging
