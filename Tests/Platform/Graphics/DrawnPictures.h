#pragma once

// What tests of picture drawing share: pictures that are read row by row, pixels straight from tables, and
// exact areas.

#include "Platform/Graphics/Pictures/DrawablePicture.h"
#include "Platform/Graphics/Pictures/PictureDrawing.h"
#include "Tests/Platform/Pixels/VectorTargets.h"

#include <atomic>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

namespace Pixels {

using namespace Imaging::Platform;

/// Rows of a table, which counts how often they are read.
class GridRows : public PictureRows {
public:
    explicit GridRows(Grid grid, bool opaque = false) : m_grid(std::move(grid)), m_opaque(opaque) {}

    int width() const override { return m_grid.width(); }
    int height() const override { return m_grid.height(); }
    bool isOpaque() const override { return m_opaque; }
    void read(int y, std::uint32_t* words) const override {
        ++m_reads;
        for (int x = 0; x < m_grid.width(); ++x) words[x] = wordOf(m_grid.at(x, y));
    }

    int reads() const { return m_reads; }
    const Grid& grid() const { return m_grid; }

private:
    Grid m_grid;
    bool m_opaque;
    mutable std::atomic<int> m_reads = 0;
};

inline NSRect wholeOf(int width, int height) {
    return NSMakeRect(0, 0, static_cast<float>(width), static_cast<float>(height));
}

/// A picture of one point a pixel that is read from a table.
inline std::shared_ptr<DrawablePicture> drawableOf(Grid grid, bool opaque = false) {
    const NSRect bounds = wholeOf(grid.width(), grid.height());
    return std::make_shared<DrawablePicture>(std::make_shared<GridRows>(std::move(grid), opaque), bounds);
}

inline Grid gridOf(const PixelImage& image) {
    Grid grid(image.width(), image.height());
    for (int y = 0; y < grid.height(); ++y) {
        for (int x = 0; x < grid.width(); ++x) grid.at(x, y) = pixelOf(image.row(y)[x]);
    }
    return grid;
}

/// A picture from a formula, which gets the centre of each pixel, y downward.
template<class Formula>
Grid pictureOf(int width, int height, const Formula& formula) {
    Grid grid(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) grid.at(x, y) = formula(x + 0.5, y + 0.5);
    }
    return grid;
}

inline Rgba gray(double value) {
    const auto v = static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
    return {v, v, v, 255};
}

struct Point {
    double x = 0;
    double y = 0;
};

/// Where the part of a convex polygon with a·x + b·y <= c ends.
inline std::vector<Point> cut(const std::vector<Point>& polygon, double a, double b, double c) {
    std::vector<Point> result;
    const auto excess = [&](Point p) { return a * p.x + b * p.y - c; };
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point p = polygon[i];
        const Point q = polygon[(i + 1) % polygon.size()];
        const double ofP = excess(p);
        const double ofQ = excess(q);
        if (ofP <= 0) result.push_back(p);
        if ((ofP < 0 && ofQ > 0) || (ofP > 0 && ofQ < 0)) {
            const double t = ofP / (ofP - ofQ);
            result.push_back({p.x + (q.x - p.x) * t, p.y + (q.y - p.y) * t});
        }
    }
    return result;
}

/// The exact area that a convex polygon and the pixel with its upper left corner at (x, y) have in common.
inline double coverageOf(std::vector<Point> polygon, int x, int y) {
    polygon = cut(polygon, -1, 0, -x);
    polygon = cut(polygon, 1, 0, x + 1);
    polygon = cut(polygon, 0, -1, -y);
    polygon = cut(polygon, 0, 1, y + 1);
    double twice = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point p = polygon[i];
        const Point q = polygon[(i + 1) % polygon.size()];
        twice += p.x * q.y - q.x * p.y;
    }
    return std::abs(twice) / 2;
}

} // namespace Pixels
