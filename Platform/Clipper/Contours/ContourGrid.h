#pragma once

// Internal: the whole numbers in which polygons are clipped. Not installed.

#include "Platform/Clipper/Contours/ContourCutting.h"

#include <clipper.hpp>

#include <optional>
#include <vector>

namespace Imaging::Platform::Clipping {

/// Carries contours between doubles and whole numbers of steps from the middle of a box. Steps are powers of
/// two and the middle a multiple of them, so coordinates with few enough digits come back as they were; all
/// other vertices that were carried over are remembered, and come back as they were too.
class ContourGrid {
public:
    /// Nothing for a box without area, or one so small that its steps could not be told apart.
    static std::optional<ContourGrid> over(const Box& box);

    ClipperLib::Paths toGrid(const Contours& contours);

    /// To be called once all was carried over, before the first way back.
    void sortRemembered();

    Contour fromGrid(const ClipperLib::Path& path) const;

private:
    struct Axis {
        double middle;
        double step;

        ClipperLib::cInt toGrid(double value) const;
        double fromGrid(ClipperLib::cInt steps) const;
    };
    struct Remembered {
        ClipperLib::IntPoint point;
        gpc_vertex vertex;
    };

    ContourGrid(const Axis& x, const Axis& y) : m_x(x), m_y(y) {}
    static std::optional<Axis> axisOver(double low, double high);
    gpc_vertex vertexAt(const ClipperLib::IntPoint& point) const;

    Axis m_x;
    Axis m_y;
    std::vector<Remembered> m_remembered;
};

} // namespace Imaging::Platform::Clipping
