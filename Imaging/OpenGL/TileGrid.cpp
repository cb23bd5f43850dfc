// Plain arithmetic over sides: nothing here knows OpenGL. Sides are taken greedily from the largest down, so
// a picture's last tiles are its smallest.

#include "Imaging/OpenGL/TileGrid.h"

#include <algorithm>

namespace Imaging {

namespace {

struct Span {
    std::uint32_t offset;
    std::uint32_t side;
};

std::vector<Span> spansOf(std::uint32_t dimension, int maximum, bool anySide) {
    std::vector<Span> spans;
    const int count = tileCount(static_cast<int>(dimension), maximum, anySide);
    std::uint32_t offset = 0;
    for (int i = 0; i < count; ++i) {
        const std::uint32_t side = nextTileSide(static_cast<int>(dimension - offset), maximum, anySide);
        spans.push_back({offset, side});
        offset += side;
    }
    return spans;
}

} // namespace

std::uint32_t nextTileSide(int length, int maximum, bool anySide) {
    if (anySide) return static_cast<std::uint32_t>(std::max(std::min(length, maximum), 0));
    int side = maximum;
    while (side > 0 && side > length) side >>= 1;
    return static_cast<std::uint32_t>(std::max(side, 0));
}

int tileCount(int dimension, int maximum, bool anySide) {
    if (maximum < 1) return 0;
    if (anySide) {
        // As many as are taken off before the rest fits, and that rest.
        return dimension <= maximum ? 1 : (dimension - 1) / maximum + 1;
    }
    int count = 0;
    for (int side = maximum; side >= 1; side >>= 1) {
        // The same side again and again while it fits.
        if (dimension >= side) {
            count += dimension / side;
            dimension %= side;
        }
    }
    return count;
}

std::vector<Tile> tilesOf(std::uint32_t pixelsWide, std::uint32_t pixelsHigh, int maximum, bool anySide) {
    const std::vector<Span> columns = spansOf(pixelsWide, maximum, anySide);
    const std::vector<Span> rows = spansOf(pixelsHigh, maximum, anySide);
    const auto countX = static_cast<std::uint32_t>(columns.size());
    std::vector<Tile> tiles;
    tiles.reserve(columns.size() * rows.size());
    for (std::uint32_t column = 0; column < countX; ++column) {
        for (std::uint32_t row = 0; row < rows.size(); ++row) {
            tiles.push_back({columns[column].offset, rows[row].offset, columns[column].side, rows[row].side,
                             static_cast<std::uint32_t>(tiles.size()), row * countX + column});
        }
    }
    return tiles;
}

} // namespace Imaging
