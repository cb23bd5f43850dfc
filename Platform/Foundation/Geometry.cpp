// Rectangles by their edges. Comparisons are written so that what is not a number fails them.

#include "Platform/Foundation/Geometry.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Imaging::Platform {

namespace {

/// Edges come from comparisons and roundings; origin and size are what remains of them.
NSRect rectFromEdges(float minX, float minY, float maxX, float maxY) {
    return NSMakeRect(minX, minY, maxX - minX, maxY - minY);
}

/// std::to_chars rather than printf, which would write the locale's decimal comma.
std::string pairInBraces(float first, float second) {
    std::string text = "{";
    for (const float number : {first, second}) {
        std::array<char, 32> digits{};
        const auto [end, failure] = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                                  std::chars_format::general, 6);
        text.append(digits.data(), end);
        text += text.find(',') == std::string::npos ? ", " : "}";
    }
    return text;
}

} // namespace

// Whoever is empty has no say, so that unions can begin with the zero rectangle.
NSRect NSUnionRect(NSRect a, NSRect b) {
    if (NSIsEmptyRect(a)) return NSIsEmptyRect(b) ? NSZeroRect : b;
    if (NSIsEmptyRect(b)) return a;
    return rectFromEdges(std::min(NSMinX(a), NSMinX(b)), std::min(NSMinY(a), NSMinY(b)),
                         std::max(NSMaxX(a), NSMaxX(b)), std::max(NSMaxY(a), NSMaxY(b)));
}

NSRect NSIntersectionRect(NSRect a, NSRect b) {
    if (NSIsEmptyRect(a) || NSIsEmptyRect(b)) return NSZeroRect;
    const NSRect common = rectFromEdges(std::max(NSMinX(a), NSMinX(b)), std::max(NSMinY(a), NSMinY(b)),
                                        std::min(NSMaxX(a), NSMaxX(b)), std::min(NSMaxY(a), NSMaxY(b)));
    return NSIsEmptyRect(common) ? NSZeroRect : common;
}

bool NSIntersectsRect(NSRect a, NSRect b) { return !NSIsEmptyRect(NSIntersectionRect(a, b)); }

NSRect NSInsetRect(NSRect r, float dx, float dy) {
    return NSMakeRect(r.origin.x + dx, r.origin.y + dy, r.size.width - 2 * dx, r.size.height - 2 * dy);
}

NSRect NSOffsetRect(NSRect r, float dx, float dy) {
    return NSMakeRect(r.origin.x + dx, r.origin.y + dy, r.size.width, r.size.height);
}

NSRect NSIntegralRect(NSRect r) {
    if (NSIsEmptyRect(r)) return NSZeroRect;
    return rectFromEdges(std::floor(NSMinX(r)), std::floor(NSMinY(r)), std::ceil(NSMaxX(r)),
                         std::ceil(NSMaxY(r)));
}

bool NSPointInRect(NSPoint p, NSRect r) {
    return p.x >= NSMinX(r) && p.x < NSMaxX(r) && p.y >= NSMinY(r) && p.y < NSMaxY(r);
}

bool NSContainsRect(NSRect outer, NSRect inner) {
    return !NSIsEmptyRect(inner) && NSMinX(inner) >= NSMinX(outer) && NSMinY(inner) >= NSMinY(outer) &&
           NSMaxX(inner) <= NSMaxX(outer) && NSMaxY(inner) <= NSMaxY(outer);
}

std::string NSStringFromSize(NSSize size) { return pairInBraces(size.width, size.height); }

std::string NSStringFromRect(NSRect rect) {
    return "{" + pairInBraces(rect.origin.x, rect.origin.y) + ", " + NSStringFromSize(rect.size) + "}";
}

} // namespace Imaging::Platform
