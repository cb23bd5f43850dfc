#pragma once

// Where something was drawn, for tests that must not depend on what exactly (such as a font's shapes).

#include "Tests/Support/Pixels.h"

#include <algorithm>
#include <ostream>

namespace Pixels {

/// The pixels that differ from the ground, in a space with y upward: from (left, bottom) to below (right,
/// top).
struct Ink {
    int left = 0;
    int bottom = 0;
    int right = 0;
    int top = 0;
    int count = 0;

    bool isEmpty() const { return count == 0; }
    int width() const { return right - left; }
    int height() const { return top - bottom; }
    double middleX() const { return (left + right) / 2.0; }
    double middleY() const { return (bottom + top) / 2.0; }
};

inline std::ostream& operator<<(std::ostream& out, const Ink& ink) {
    return out << ink.count << " pixels from (" << ink.left << ", " << ink.bottom << ") to (" << ink.right
               << ", " << ink.top << ")";
}

inline Ink inkOf(const Grid& grid, Rgba ground = transparent) {
    Ink ink{grid.width(), grid.height(), 0, 0, 0};
    for (int y = 0; y < grid.height(); ++y) {
        for (int x = 0; x < grid.width(); ++x) {
            if (grid.above(x, y) == ground) continue;
            ink.left = std::min(ink.left, x);
            ink.bottom = std::min(ink.bottom, y);
            ink.right = std::max(ink.right, x + 1);
            ink.top = std::max(ink.top, y + 1);
            ++ink.count;
        }
    }
    return ink.count > 0 ? ink : Ink{};
}

/// The part of a table from (x, y) on, y upward.
inline Grid partOf(const Grid& grid, int x, int y, int width, int height) {
    Grid part(width, height);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            part.at(column, height - 1 - row) = grid.above(x + column, y + row);
        }
    }
    return part;
}

} // namespace Pixels
