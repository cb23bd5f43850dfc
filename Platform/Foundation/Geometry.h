#pragma once

#include "Platform/Foundation/Export.h"

#include <string>

/// Points, sizes and rectangles of 32-bit floats, and the rectangle functions over them.
///
/// Units are points of whatever space the caller works in; x grows to the right, y grows upward, and a
/// rectangle's origin is its lower left corner. All functions are pure and may be called on any thread.
/// Results are computed in 32-bit floats. Comparisons are exact; a value that is not a number equals nothing.
///
/// Example:
/// @code
/// const NSRect page = NSMakeRect(0, 0, 210, 297);
/// const NSRect inside = NSInsetRect(page, 20, 20);
/// const std::string text = NSStringFromRect(inside); // {{20, 20}, {170, 257}}
/// @endcode
namespace Imaging::Platform {

struct NSPoint {
    float x = 0;
    float y = 0;
};

struct NSSize {
    float width = 0;
    float height = 0;
};

struct NSRect {
    NSPoint origin;
    NSSize size;
};

constexpr NSPoint NSMakePoint(float x, float y) { return {x, y}; }
constexpr NSSize NSMakeSize(float width, float height) { return {width, height}; }
constexpr NSRect NSMakeRect(float x, float y, float width, float height) { return {{x, y}, {width, height}}; }

inline constexpr NSPoint NSZeroPoint{};
inline constexpr NSSize NSZeroSize{};
inline constexpr NSRect NSZeroRect{};

constexpr bool NSEqualPoints(NSPoint a, NSPoint b) { return a.x == b.x && a.y == b.y; }
constexpr bool NSEqualSizes(NSSize a, NSSize b) { return a.width == b.width && a.height == b.height; }
constexpr bool NSEqualRects(NSRect a, NSRect b) {
    return NSEqualPoints(a.origin, b.origin) && NSEqualSizes(a.size, b.size);
}

constexpr float NSMinX(NSRect r) { return r.origin.x; }
constexpr float NSMinY(NSRect r) { return r.origin.y; }
constexpr float NSMaxX(NSRect r) { return r.origin.x + r.size.width; }
constexpr float NSMaxY(NSRect r) { return r.origin.y + r.size.height; }
constexpr float NSMidX(NSRect r) { return r.origin.x + r.size.width * 0.5f; }
constexpr float NSMidY(NSRect r) { return r.origin.y + r.size.height * 0.5f; }

/// True when the rectangle has no area: a width or height that is zero, negative or not a number.
constexpr bool NSIsEmptyRect(NSRect r) { return !(r.size.width > 0 && r.size.height > 0); }

/// The smallest rectangle around both. An empty rectangle contributes nothing, wherever it lies; of two
/// empty rectangles the union is the zero rectangle.
IMAGING_EXPORT NSRect NSUnionRect(NSRect a, NSRect b);

/// What both have in common, or the zero rectangle when they share no area.
IMAGING_EXPORT NSRect NSIntersectionRect(NSRect a, NSRect b);

/// True when the two share some area; touching edges do not count.
IMAGING_EXPORT bool NSIntersectsRect(NSRect a, NSRect b);

/// The rectangle moved inwards by dx at the left and right and by dy at the bottom and top. Negative insets
/// grow it. An inset larger than half the size gives a negative extent; it is not clamped.
IMAGING_EXPORT NSRect NSInsetRect(NSRect r, float dx, float dy);

IMAGING_EXPORT NSRect NSOffsetRect(NSRect r, float dx, float dy);

/// The smallest rectangle with whole coordinates around r; the zero rectangle when r is empty.
IMAGING_EXPORT NSRect NSIntegralRect(NSRect r);

/// True when the point lies in the rectangle. The left and bottom edges belong to it, the others do not.
IMAGING_EXPORT bool NSPointInRect(NSPoint p, NSRect r);

/// True when `inner` is not empty and lies wholly in `outer`, edges included.
IMAGING_EXPORT bool NSContainsRect(NSRect outer, NSRect inner);

/// For logs: "{width, height}" and "{{x, y}, {width, height}}" with up to six significant digits and a
/// decimal point whatever the locale.
IMAGING_EXPORT std::string NSStringFromSize(NSSize size);
IMAGING_EXPORT std::string NSStringFromRect(NSRect rect);

} // namespace Imaging::Platform
