#pragma once

#include "Platform/Foundation/Geometry.h"

#include <array>

namespace Imaging::Platform {

enum class NSBezierPathElement { MoveTo = 0, LineTo = 1, CurveTo = 2, ClosePath = 3 };
enum class NSWindingRule { NonZero = 0, EvenOdd = 1 };

/// One step of a path in the path's own space: its point where it is a move or a line, the two control points
/// and the end of a curve, the subpath's start where it closes that. Points that are not used are zero.
struct PathElement {
    NSBezierPathElement kind = NSBezierPathElement::MoveTo;
    std::array<NSPoint, 3> points;
};

} // namespace Imaging::Platform
