#pragma once

#include "Imaging/Geometry.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

namespace Imaging::Platform {
class NSBezierPath;
}

/// Splitting and measuring cubic Bezier curves, and hit tests of points against segments, rectangles, curves
/// and paths.
///
/// Points, lengths, tolerances and precisions are in units of the caller's space; a parameter runs from 0 at
/// a curve's or segment's start to 1 at its end. Everything is computed in 32-bit floats, with distances as
/// by `Distance`; a comparison "in double" widens both sides first. All functions are pure and may be called
/// on any thread.
///
/// Measuring and searching halve a curve until its pieces are flat or short enough for the tolerance or
/// precision, which are meant to be positive and well above the spacing of floats at the curve's
/// coordinates. They end for all others too, because a piece whose halves are no smaller than itself in
/// 32-bit floats (or hold values that are not finite) is not halved again. A tolerance that far down buys
/// rounding noise with time: up to some million pieces.
///
/// Example:
/// @code
/// const BezierCurve arch{{0, 0}, {0, 40}, {60, 40}, {60, 0}};
/// const float length = BezierCurveLength(arch, 0.1F);
/// const NSPoint half = PointAlongBezierCurve(arch, 0.5F, 0.1F); // near the top of the arch
/// @endcode
namespace Imaging {

using Platform::NSBezierPath;

// Splitting

/// The halves of the curve at parameter 0.5, by de Casteljau's construction. Either half may be the curve
/// itself.
IMAGING_EXPORT void SplitBezier(BezierCurve curve, BezierCurve& left, BezierCurve& right);

/// The pieces of the curve before and after parameter t, by products of the cubic's basis matrix. Values of t
/// outside 0…1 continue the curve's polynomial. At 0.5 the pieces equal those of `SplitBezier` up to
/// rounding.
IMAGING_EXPORT void SplitBezierAtParam(BezierCurve curve, BezierCurve& left, BezierCurve& right, float t);

// Measuring

/// The arc length: the sum of the chords of both halves of every piece, where a piece is halved until its
/// chord and its halves' chords differ by less than the tolerance (in double). The result is never above the
/// arc length but for rounding. A piece whose halves' chords happen to add up to its own, as in an S that is
/// symmetric about its middle, counts as straight. With tolerance 0, pieces are halved until the lengths are
/// equal.
IMAGING_EXPORT float BezierCurveLength(const BezierCurve& curve, float tolerance);

/// The point that lies an arc length of `position` from the start, within the tolerance along the curve. A
/// position beyond the curve gives the end point, and one that is not a number a point at the start. Throws
/// an NSException named "invalid parameter" for a negative position.
IMAGING_EXPORT NSPoint PointAtPositionAlongBezierCurve(const BezierCurve& curve, float position,
                                                       float tolerance);

/// The point at a fraction of the arc length, within the tolerance along the curve. A curve whose control
/// points lie within tolerance / 10 of their end points, in x and in y, is taken as the straight line and
/// the fraction may then be any number; otherwise a negative one throws as above and one beyond 1 gives the
/// end point.
IMAGING_EXPORT NSPoint PointAlongBezierCurve(const BezierCurve& curve, float fraction, float tolerance);

// Hit tests

/// True when the point lies within less than the tolerance of the segment from a to b; `param` (may be null)
/// then receives where the nearest point of the segment lies. A segment without length is hit within
/// tolerance + 0.5 (in double) and leaves `param` as it is, as does a miss. Segments longer than
/// about 1.8e19, whose length squared is beyond the largest float, are hit near a only or not at all.
IMAGING_EXPORT bool IsPointAlongWithParam(NSPoint point, NSPoint a, NSPoint b, float tolerance, float* param);

/// The same without the parameter.
IMAGING_EXPORT bool IsPointAlong(NSPoint point, NSPoint a, NSPoint b, float tolerance);

/// True when the distance of two points is below tolerance + 0.5 (in double).
IMAGING_EXPORT bool IsPointNear(NSPoint point, NSPoint other, float tolerance);

/// True when the point is along (`IsPointAlong`) one of the rectangle's four edges. The inside does not
/// count.
IMAGING_EXPORT bool IsPointOnRect(NSPoint point, NSRect rect, float tolerance);

/// True when the point lies within the tolerance of the curve. The curve stands for the chords of its pieces;
/// one is flat when its halves' chords are together less than 0.01 longer than its own (in double). The
/// middle of a flat piece of length c can lie up to about sqrt(c / 200) from its chord, and an S that is
/// symmetric about its middle is hit along its chord.
IMAGING_EXPORT bool IsPointAlongBezier(NSPoint point, const BezierCurve& curve, float tolerance);

/// Looks for the part of the curve nearest to the point and closer than the tolerance. The curve is halved
/// until the ends of each piece are less than `precision` apart; the distance of a piece is that of the
/// middle of its chord. When there is such a part, the result is true and `param` (may be null) is the
/// parameter of its middle; otherwise false, and `param` stays as it is. Of equally near parts the first
/// counts. A piece that returns to its start is short at once, so a closed loop is compared by its start.
IMAGING_EXPORT bool FindParamAlongBezierForPoint(NSPoint point, const BezierCurve& curve, float precision,
                                                 float tolerance, float* param);

/// The search that `FindParamAlongBezierForPoint` is made of, for a curve that covers the parameters t0 to
/// t1 of a longer one: the distance of the nearest part that is closer than `best`, or `best` when there is
/// none. `param` (may be null) is written only when there is one.
IMAGING_EXPORT float FindParamAlongBezierForPointSub(NSPoint point, const BezierCurve& curve, float precision,
                                                     float best, float t0, float t1, float* param);

/// True when the point lies within the distance of a line or curve of the path, tested in the path's order
/// by `IsPointAlongWithParam` and `IsPointAlongBezier`. `element` (may be null) then receives the index of
/// the element that was hit. The segment that a close-path adds is not tested.
///
/// `param` (may be null) receives where on the element the point is: as `IsPointAlongWithParam` says for a
/// line, and by `FindParamAlongBezierForPoint` with precision 1 for a curve. Every move-to and close-path on
/// the way sets it to 0, also when nothing is hit in the end; it keeps that value where those functions leave
/// it, that is on a line without length and on a curve that was hit closer than the search could confirm.
IMAGING_EXPORT bool intersectsPoint(const NSBezierPath& path, NSPoint point, int* element, float* param,
                                    float distance);

} // namespace Imaging
