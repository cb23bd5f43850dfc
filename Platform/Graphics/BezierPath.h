#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/PathElement.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace Imaging::Platform {

enum class NSLineCapStyle { Butt = 0, Round = 1, Square = 2 };
enum class NSLineJoinStyle { Miter = 0, Round = 1, Bevel = 2 };

/// A path of lines and cubic curves in points of the space that it is drawn in, y upward, with the
/// attributes of its stroke. A value: copies are independent.
///
/// Drawing goes to the calling thread's current graphics context; without one nothing is drawn. Paths know
/// nothing of contexts, so what draws them is found in GraphicsContext.cpp.
///
/// Example:
/// @code
/// NSBezierPath roof;
/// roof.moveToPoint({0, 40});
/// roof.lineToPoint({30, 60});
/// roof.lineToPoint({60, 40});
/// roof.closePath();
/// roof.fill();
/// @endcode
class IMAGING_EXPORT NSBezierPath {
public:
    /// The closed path (x, y), (x + w, y), (x + w, y + h), (x, y + h).
    static NSBezierPath bezierPathWithRect(NSRect rect);

    /// The ellipse that touches the rectangle's sides, of four curves, counter-clockwise from its
    /// right-most point. Their distance from the true ellipse stays below 0.03 % of its radius.
    static NSBezierPath bezierPathWithOvalInRect(NSRect rect);

    /// Strokes a line of width 1 with butt ends at once, with the current context's colour.
    static void strokeLine(NSPoint from, NSPoint to);

    void moveToPoint(NSPoint point);

    /// These three need a current point and throw an NSException (NSGenericException) without one.
    void lineToPoint(NSPoint point);
    void curveToPoint(NSPoint end, NSPoint controlPoint1, NSPoint controlPoint2);
    void relativeLineToPoint(NSPoint delta);

    /// Joins the current point to the subpath's start, which is the current point afterwards. Nothing
    /// happens on an empty path.
    void closePath();

    void appendBezierPathWithRect(NSRect rect);
    void appendBezierPath(const NSBezierPath& path);
    void removeAllPoints();

    bool isEmpty() const { return m_elements.empty(); }
    std::size_t elementCount() const { return m_elements.size(); }

    /// The element's kind; `points` (may be null) receives its points: one for a move or line, the two
    /// control points and the end for a curve, the subpath's start for a close. Throws an NSException
    /// (NSRangeException) past the end.
    NSBezierPathElement elementAtIndex(std::size_t index, std::array<NSPoint, 3>* points = nullptr) const;

    /// All of them, valid until the path changes.
    const std::vector<PathElement>& elements() const { return m_elements; }

    /// nullopt on an empty path.
    std::optional<NSPoint> currentPoint() const;

    /// The smallest rectangle around all points, the curves' control points included; zero when empty.
    NSRect controlPointBounds() const;

    /// The smallest rectangle around the path itself, without the width of a stroke; zero when empty.
    NSRect bounds() const;

    void transformUsingAffineTransform(const NSAffineTransform& transform);

    /// Whether the point lies inside by the path's winding rule; open subpaths count as closed.
    bool containsPoint(NSPoint point) const;

    NSWindingRule windingRule() const { return m_winding_rule; }
    void setWindingRule(NSWindingRule rule) { m_winding_rule = rule; }
    float lineWidth() const { return m_line_width; }
    void setLineWidth(float width) { m_line_width = width; }
    NSLineCapStyle lineCapStyle() const { return m_line_cap; }
    void setLineCapStyle(NSLineCapStyle style) { m_line_cap = style; }
    NSLineJoinStyle lineJoinStyle() const { return m_line_join; }
    void setLineJoinStyle(NSLineJoinStyle style) { m_line_join = style; }
    float miterLimit() const { return m_miter_limit; }
    void setMiterLimit(float limit) { m_miter_limit = limit; }

    /// Fill or stroke with the context's colour and compositing operation, antialiased.
    void fill() const;
    void stroke() const;

    /// Cuts the context's clip to what also lies inside the path.
    void addClip() const;

private:
    void needCurrentPoint() const;

    std::vector<PathElement> m_elements;
    NSPoint m_subpath_start;
    NSWindingRule m_winding_rule = NSWindingRule::NonZero;
    NSLineCapStyle m_line_cap = NSLineCapStyle::Butt;
    NSLineJoinStyle m_line_join = NSLineJoinStyle::Miter;
    float m_line_width = 1;
    float m_miter_limit = 10;
};

} // namespace Imaging::Platform
