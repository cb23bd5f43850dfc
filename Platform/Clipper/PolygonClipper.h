#pragma once

#include "Platform/Clipper/Polygon.h"
#include "Platform/Foundation/Export.h"

/// Polygons of several contours, and what two of them have in common, under the names and with the plain
/// records that the field knows.
///
/// Coordinates are double-precision numbers of any space whose y axis points up. A point lies inside a
/// polygon by the even-odd rule over all its contours together, so contours may cross themselves and each
/// other, run either way round and hold one another; the last vertex of a contour is joined to the first,
/// whether or not it repeats it. All functions are pure but for their arguments and may be called on any
/// thread.
///
/// Example:
/// @code
/// gpc_vertex corners[] = {{1, 1}, {5, 1}, {5, 5}, {1, 5}};
/// const gpc_vertex_list square{4, corners};
/// gpc_owned_polygon subject;
/// gpc_add_contour(&subject, &square, 0);
/// gpc_owned_polygon common;
/// gpc_polygon_clip(GPC_INT, &subject, &subject, &common);
/// @endcode
namespace Imaging::Platform {

enum gpc_op {
    GPC_DIFF,  ///< inside the subject and outside the clip
    GPC_INT,   ///< inside both
    GPC_XOR,   ///< inside one of the two
    GPC_UNION, ///< inside either or both
};

/// Appends a copy of a contour. Throws std::bad_alloc, and leaves the polygon as it was then.
IMAGING_EXPORT void gpc_add_contour(gpc_polygon* polygon, const gpc_vertex_list* contour, int hole);

/// Frees the polygon's arrays and makes it empty, so that freeing it once more does no harm.
IMAGING_EXPORT void gpc_free_polygon(gpc_polygon* polygon);

/// Combines two polygons. The result is overwritten without being freed, so it must be empty or freed (or an
/// operand whose arrays somebody else still holds); the operands are only read.
///
/// The result's contours do not cross one another. Outer contours run counter-clockwise; holes are flagged,
/// run clockwise and lie inside an outer contour. No contour is without area or repeats its first vertex,
/// and vertices on a straight line may be left out.
///
/// Precision. A rectangle along the axes and a triangle or a convex quadrilateral of one contour each are
/// intersected in doubles: the result's coordinates are those of the operands, and crossings lie within a few
/// roundings of a double. All others are laid on a grid and clipped in integers. An intersection's grid spans
/// what the operands' bounding boxes have in common and a quarter more on every side, other operations' grid
/// spans both boxes; an axis is divided into 2^30 to 2^31 steps, a power of two wide each. So a vertex of the
/// result lies within about one step, less than a thousand-millionth of the common extent, of its true place,
/// and details finer than that may vanish or merge. Vertices of the operands that reach the result have their
/// exact coordinates. An edge that runs slantwise from far outside into the common extent is cut off in
/// doubles: its place is within some 2^-52 of the farther end's magnitude. Edges along an axis are cut
/// exactly, so a rectangle of 1e38 that stands for "no clip" costs nothing.
///
/// Time. For n vertices, n log n and n times the number of edges that a horizontal line meets, whichever is
/// more: outlines that it meets a few times are quick, combs of thousands of upright teeth take n squared.
///
/// Where contours that cross themselves many times also overlap along edges exactly, unions and exclusive ors
/// of them have been seen to lose a small piece, about one in ten thousand at random; intersections and
/// differences have not.
///
/// An operand with a coordinate that is not finite or lies beyond ±1e150 gives an empty result. Throws
/// std::bad_alloc when memory runs out, and an NSException (NSGenericException) should the clipping library
/// give up; the result is as it was then.
IMAGING_EXPORT void gpc_polygon_clip(gpc_op operation, const gpc_polygon* subject, const gpc_polygon* clip,
                                     gpc_polygon* result);

/// A polygon that frees itself at the end of its scope.
struct IMAGING_EXPORT gpc_owned_polygon : gpc_polygon {
    gpc_owned_polygon() : gpc_polygon{} {}
    ~gpc_owned_polygon() { gpc_free_polygon(this); }
    gpc_owned_polygon(const gpc_owned_polygon&) = delete;
    gpc_owned_polygon& operator=(const gpc_owned_polygon&) = delete;

    /// Hands the arrays over to a record, which is overwritten; this one is empty afterwards.
    void moveTo(gpc_polygon* polygon) {
        *polygon = *this;
        static_cast<gpc_polygon&>(*this) = gpc_polygon{};
    }
};

} // namespace Imaging::Platform
