#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <string>

namespace Imaging::Platform {
class NSImage;
}

/// Helpers for points, sizes, rectangles and affine transforms.
///
/// Units are points of whatever space the caller works in; x grows to the right, y grows upward, and a
/// rectangle's origin is its lower left corner, so "top" is y + height. Everything is computed in 32-bit
/// floats unless it says "in double", which means computed in double precision and rounded once to a float.
/// The functions are pure, may be called on any thread, and check nothing: values that are not numbers,
/// infinities and negative extents go through the arithmetic as they are.
///
/// Example:
/// @code
/// const NSRect page = RectFromSize(NSMakeSize(640, 480));
/// const NSRect wide = FitRect(page, 16.0F / 9.0F);
/// const NSPoint middle = RectMidpoint(wide);
/// @endcode
namespace Imaging {

using Platform::NSAffineTransform;
using Platform::NSImage;
using Platform::NSPoint;
using Platform::NSRect;
using Platform::NSSize;

/// A cubic Bezier curve. Imaging/Bezier.h has its mathematics.
struct BezierCurve {
    NSPoint start;
    NSPoint control1;
    NSPoint control2;
    NSPoint end;
};

// Comparisons

/// True when each component differs by less than the tolerance. A difference equal to the tolerance is too
/// much, so nothing is almost equal with tolerance 0.
IMAGING_EXPORT bool EqualPointsAlmost(NSPoint p, NSPoint q, float tolerance);
IMAGING_EXPORT bool EqualSizesAlmost(NSSize a, NSSize b, float tolerance);
IMAGING_EXPORT bool EqualRectsAlmost(NSRect r, NSRect s, float tolerance);

/// The distance of two points, in double.
IMAGING_EXPORT float Distance(NSPoint p, NSPoint q);

/// True when the distance of p and q is below radius + 0.5: half a unit of slack, for hit testing.
IMAGING_EXPORT bool IsPointWithinRadius(NSPoint p, NSPoint q, float radius);

/// True when the point lies in the rectangle. The left and bottom edges belong to it, the others do not;
/// nothing lies in a rectangle with a negative extent.
IMAGING_EXPORT bool RectContainsPoint(NSRect r, NSPoint p);

// Rectangles

/// The rectangle moved by p.x to the right and by p.y upward.
IMAGING_EXPORT NSRect OffsetRectByPoint(NSRect r, NSPoint p);

/// The same rectangle with extents that are not negative: where one is, the origin moves to the other side.
IMAGING_EXPORT NSRect FixRect(NSRect r);

/// The mean of two rectangles: of their x, y, widths and heights, each by itself.
IMAGING_EXPORT NSRect MidRect(NSRect r, NSRect s);

/// The largest rectangle whose width is `aspect` times its height, centred in r. The side that is shortened
/// is computed in floats, its half difference to r's side and the origin in double. A rectangle without
/// height is infinitely wide, so that its width becomes aspect · 0.
IMAGING_EXPORT NSRect FitRect(NSRect r, float aspect);

/// The smallest rectangle around two points.
IMAGING_EXPORT NSRect RectFromPoints(NSPoint p, NSPoint q);

/// The rectangle with lower left corner p and size z.
IMAGING_EXPORT NSRect RectFromPointAndSize(NSPoint p, NSSize z);

/// The rectangle of a size at the origin, such as a picture's own.
IMAGING_EXPORT NSRect RectFromSize(NSSize z);

/// The corners of a rectangle, the midpoints of its sides and its centre. What lies half way along a side is
/// computed in double.
IMAGING_EXPORT NSPoint RectTopLeft(NSRect r);
IMAGING_EXPORT NSPoint RectTopMidpoint(NSRect r);
IMAGING_EXPORT NSPoint RectTopRight(NSRect r);
IMAGING_EXPORT NSPoint RectMidpointLeft(NSRect r);
IMAGING_EXPORT NSPoint RectMidpoint(NSRect r);
IMAGING_EXPORT NSPoint RectMidpointRight(NSRect r);
IMAGING_EXPORT NSPoint RectBottomLeft(NSRect r);
IMAGING_EXPORT NSPoint RectBottomMidpoint(NSRect r);
IMAGING_EXPORT NSPoint RectBottomRight(NSRect r);

// Points

/// p + (q - p) · t. Values of t outside 0…1 lie on the line beyond the points.
IMAGING_EXPORT NSPoint PointAlong(NSPoint p, NSPoint q, float t);

/// p + (q - p) · 0.5.
IMAGING_EXPORT NSPoint Midpoint(NSPoint p, NSPoint q);

/// p + q, under two names.
IMAGING_EXPORT NSPoint AddPoint(NSPoint p, NSPoint q);
IMAGING_EXPORT NSPoint OffsetPoint(NSPoint p, NSPoint q);

/// p - q.
IMAGING_EXPORT NSPoint SubtractPoint(NSPoint p, NSPoint q);

/// Both components times k, or by k; division by 0 gives infinities and values that are not numbers.
IMAGING_EXPORT NSPoint MultiplyPoint(NSPoint p, float k);
IMAGING_EXPORT NSPoint DividePoint(NSPoint p, float k);

/// The same two floats under the other type: width and x, height and y.
IMAGING_EXPORT NSPoint SizeToPoint(NSSize z);
IMAGING_EXPORT NSSize PointToSize(NSPoint p);

// Affine transforms

/// The identity after three calls: `translateXBy` by minus the centre of `from`, `scaleXBy` by the ratio of
/// the sizes (to / from), `translateXBy` by the centre of `to`. Each call prepends, so a point is moved by
/// the centre of `to` first, then scaled, then moved by minus the centre of `from`: rectangles centred on the
/// origin are mapped onto each other, others in general are not. The ratio of two extents that are both 0 is
/// 1; where only `from` has none, entries are not finite. Centres are computed in double.
IMAGING_EXPORT NSAffineTransform transformFrom(NSRect from, NSRect to);

/// The rectangle whose origin is r's transformed as a point and whose size is r's transformed as a vector,
/// with extents made positive as by `FixRect`. Exact where the transform neither turns nor shears; otherwise
/// this is not the bounding box, for which see `IMGBounds::boundingRect`.
IMAGING_EXPORT NSRect transformRect(const NSAffineTransform& transform, NSRect r);

/// The curve of the transformed points.
IMAGING_EXPORT BezierCurve transformCurve(const NSAffineTransform& transform, const BezierCurve& curve);

/// The inverse; the argument stays as it is. Throws an NSException when there is none.
IMAGING_EXPORT NSAffineTransform invertedTransform(const NSAffineTransform& transform);

/// One line for logs: the class, the low 32 bits of the object's address as eight hexadecimal digits, and
/// the entries with six decimals, whatever the locale:
/// "NSAffineTransform <0x0012ab40> { m11=1.000000 m21=0.000000 m12=… m22=… tX=… tY=… }".
IMAGING_EXPORT std::string description(const NSAffineTransform& transform);

// Pictures

/// `RectFromSize` of the picture's size.
IMAGING_EXPORT NSRect bounds(const NSImage& image);

} // namespace Imaging
