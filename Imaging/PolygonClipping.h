#pragma once

#include "Platform/Clipper/PolygonClipper.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <vector>

namespace Imaging::Platform {
class NSAffineTransform;
class NSBezierPath;
} // namespace Imaging::Platform

/// What joins rectangles, transforms and paths to the polygon clipper.
///
/// Polygons are changed in place and belong to the caller, who frees them with `gpc_free_polygon`. All
/// functions are pure but for their arguments, may be called on any thread, and throw std::bad_alloc when
/// memory runs out.
///
/// Example:
/// @code
/// gpc_owned_polygon polygon;
/// AddRectToPolygon(&polygon, NSMakeRect(10, 20, 100, 50));
/// AddRectToPolygon(&polygon, NSMakeRect(200, 20, 30, 50));
/// const int contours = polygon.num_contours;
/// @endcode
namespace Imaging {

using Platform::gpc_add_contour;
using Platform::gpc_free_polygon;
using Platform::gpc_op;
using Platform::gpc_owned_polygon;
using Platform::gpc_polygon;
using Platform::gpc_polygon_clip;
using Platform::gpc_vertex;
using Platform::gpc_vertex_list;
using Platform::NSAffineTransform;
using Platform::NSBezierPath;
using Platform::NSPoint;
using Platform::NSRect;

/// Lists of points, one for each part of a path.
using PointLists = std::vector<std::vector<NSPoint>>;

/// Adds one contour, not a hole, of the corners (x, y), (x + width, y), (x + width, y + height) and
/// (x, y + height) in this order. The sums are 32-bit floats. A negative width or height is taken as it is.
IMAGING_EXPORT void AddRectToPolygon(gpc_polygon* polygon, NSRect rect);

/// Maps every vertex of every contour. A vertex is rounded to 32-bit floats before and after. Contours keep
/// their order, hole flags and vertices, so a transform that mirrors turns them the other way round.
IMAGING_EXPORT void TransformPolygon(gpc_polygon* polygon, const NSAffineTransform& transform);

/// Replaces the polygon by what it has in common with the rectangle under the transform, which may be
/// nothing: an empty polygon. What the result is like, and how exact, `gpc_polygon_clip` says. A transform
/// that is not finite leaves nothing. Throws what `gpc_polygon_clip` throws, and the polygon is as it was
/// then.
IMAGING_EXPORT void ClipPolygonToTransformedRect(gpc_polygon* polygon, NSRect rect,
                                                 const NSAffineTransform& transform);

/// Appends the path's points to the lists, curves as points along them:
///
/// - A move begins a new list, unless the list so far holds its start alone: that point is kept, and the new
///   one comes after it.
/// - A line adds its end.
/// - A curve adds 20 points, at 0, 5, 10, … 95 % of its arc length (`PointAlongBezierCurve` within 1/1024).
///   The first is where the curve starts, and its end is left out: what follows the curve is joined to the
///   last point instead.
/// - A close adds the subpath's start. A curve after it, without a move, still starts where the pen was
///   before the close.
///
/// A list of fewer than two points at the end of the path is dropped.
IMAGING_EXPORT void GatherVertices(const NSBezierPath& path, PointLists& lists);

/// Makes a polygon of the path: one contour, not a hole, for each list that `GatherVertices` gives. The
/// polygon is overwritten without being freed, so it must be empty or freed. When this throws it is as it
/// was.
IMAGING_EXPORT void ConvertBezierPathToPolygon(const NSBezierPath& path, gpc_polygon* polygon);

} // namespace Imaging
