// Doubles become whole numbers of steps and come back. Vertices that rounding moved are kept in a sorted
// list, in which the way back looks them up.

#include "Platform/Clipper/Contours/ContourGrid.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace Imaging::Platform::Clipping {

namespace {

using ClipperLib::IntPoint;

/// The largest number of steps from the middle. Up to here the library computes with plain 64-bit products;
/// beyond, it takes 128 bits for those but doubles for all else, which then fall short. A few steps are kept
/// back for the middle's own rounding.
constexpr double range = static_cast<double>(ClipperLib::loRange) - 8;

bool isBefore(const IntPoint& a, const IntPoint& b) { return std::tie(a.X, a.Y) < std::tie(b.X, b.Y); }

} // namespace

ClipperLib::cInt ContourGrid::Axis::toGrid(double value) const {
    return std::llround((value - middle) / step);
}

double ContourGrid::Axis::fromGrid(ClipperLib::cInt steps) const {
    return middle + static_cast<double>(steps) * step;
}

std::optional<ContourGrid::Axis> ContourGrid::axisOver(double low, double high) {
    const double half = high / 2 - low / 2;
    if (!(half > 0)) return std::nullopt;
    int exponent = 0;
    static_cast<void>(std::frexp(half / range, &exponent));
    const double step = std::ldexp(1.0, exponent);
    if (step < std::numeric_limits<double>::min()) return std::nullopt;
    return Axis{std::rint((low / 2 + high / 2) / step) * step, step};
}

std::optional<ContourGrid> ContourGrid::over(const Box& box) {
    const std::optional<Axis> x = axisOver(box.low.x, box.high.x);
    const std::optional<Axis> y = axisOver(box.low.y, box.high.y);
    if (!x.has_value() || !y.has_value()) return std::nullopt;
    return ContourGrid(*x, *y);
}

ClipperLib::Paths ContourGrid::toGrid(const Contours& contours) {
    ClipperLib::Paths paths;
    paths.reserve(contours.size());
    for (const Contour& contour : contours) {
        ClipperLib::Path& path = paths.emplace_back();
        path.reserve(contour.size());
        for (const gpc_vertex& vertex : contour) {
            const IntPoint point(m_x.toGrid(vertex.x), m_y.toGrid(vertex.y));
            path.push_back(point);
            if (m_x.fromGrid(point.X) != vertex.x || m_y.fromGrid(point.Y) != vertex.y) {
                m_remembered.push_back({point, vertex});
            }
        }
    }
    return paths;
}

void ContourGrid::sortRemembered() {
    std::stable_sort(m_remembered.begin(), m_remembered.end(),
                     [](const Remembered& a, const Remembered& b) { return isBefore(a.point, b.point); });
}

gpc_vertex ContourGrid::vertexAt(const IntPoint& point) const {
    const auto found =
        std::lower_bound(m_remembered.begin(), m_remembered.end(), point,
                         [](const Remembered& r, const IntPoint& p) { return isBefore(r.point, p); });
    if (found != m_remembered.end() && found->point == point) return found->vertex;
    return {m_x.fromGrid(point.X), m_y.fromGrid(point.Y)};
}

Contour ContourGrid::fromGrid(const ClipperLib::Path& path) const {
    Contour contour;
    contour.reserve(path.size());
    for (const IntPoint& point : path) contour.push_back(vertexAt(point));
    return contour;
}

} // namespace Imaging::Platform::Clipping
