#pragma once

// Internal: contours and boxes along the axes, in doubles. Not installed.

#include "Platform/Clipper/Polygon.h"

#include <optional>
#include <vector>

namespace Imaging::Platform::Clipping {

using Contour = std::vector<gpc_vertex>;
using Contours = std::vector<Contour>;

/// Empty, and so without area, until it includes something.
struct Box {
    gpc_vertex low;
    gpc_vertex high;

    static Box ofNothing();

    void include(gpc_vertex vertex);
    void include(const Box& other);
    bool contains(const Box& other) const;
    bool hasArea() const { return low.x < high.x && low.y < high.y; }
    Box common(const Box& other) const;

    /// With a part of its own width more at the left and right, and of its height below and above.
    Box enlarged(double part) const;
};

Box boxOf(const Contour& contour);
Box boxOf(const Contours& contours);

/// Positive for contours that run counter-clockwise, where y points up; 0 where it is no more than the
/// rounding of its parts.
double signedArea(const Contour& contour);

/// The box that is the contour, where that is a rectangle along the axes; it may be without area.
std::optional<Box> asRectangle(const Contour& contour);

/// Whether the contour is a triangle or a quadrilateral without straight, reflex or missing corners.
bool isConvexTriangleOrQuadrilateral(const Contour& contour);

/// What of the contour lies in the box. The even-odd region inside the box is that of the contour itself;
/// along the box's edges runs whatever closes it, which may cover itself and enclose nothing.
Contour cutToBox(const Contour& contour, const Box& box);

/// The same for all contours; those that lie in the box are only moved.
Contours cutToBox(Contours contours, const Box& box);

} // namespace Imaging::Platform::Clipping
