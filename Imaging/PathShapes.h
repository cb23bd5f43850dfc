#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/BezierPath.h"

/// Small shapes: paths of them, and drawings of handles, arrows and of a path's own construction.
///
/// Coordinates are points of the space that is drawn in, y upward; angles are radians, counter-clockwise.
/// Sums are formed in 32-bit floats unless a declaration says otherwise. What draws goes to the calling
/// thread's current context (nothing happens without one), antialiased and source-over unless it says
/// otherwise, and leaves the graphics state as it found it. Nothing is drawn of shapes whose coordinates are
/// not finite.
///
/// Example:
/// @code
/// NSBezierPath handle = bezierPathWithRoundedRect(NSMakeRect(10, 20, 60, 30), 8);
/// handle.stroke();
/// strokeArrowFromPoint(NSMakePoint(40, 35), NSMakePoint(90, 35));
/// @endcode
namespace Imaging {

class ColorFunction;
using Platform::NSBezierPath;
using Platform::NSPoint;
using Platform::NSRect;

/// The rectangle with rounded corners, counter-clockwise from (x + radius, y) and back there, without a
/// close-path element. A corner is one curve with both control points on the corner itself, which is tighter
/// than an arc of the radius. The radius is not compared with the size: sides longer than the rectangle's
/// overlap, and a radius of 0 leaves curves without length in the corners.
IMAGING_EXPORT NSBezierPath bezierPathWithRoundedRect(NSRect rect, float radius);

/// The closed path through the middles of the sides: left, top, right, bottom. Halves are added in double.
IMAGING_EXPORT NSBezierPath bezierPathWithDiamondInRect(NSRect rect);

/// Draws, with the current colour, a line of width 1 and at its end a triangle, stroked and filled, whose
/// other corners lie 7.071068 back along the line and 3.535534 to its sides. Points in the same place have no
/// direction, and nothing is drawn.
IMAGING_EXPORT void strokeArrowFromPoint(NSPoint from, NSPoint to);

/// Appends a closed triangle to a path: from its current point, which is the tip and stays the current point,
/// two sides of length size / sqrt(2) that run back from it at angle ± arrowAngle, so that the tip points
/// along the angle. Sines, cosines and sums in double. Throws an NSException (NSGenericException) when the
/// path has no current point.
IMAGING_EXPORT void appendArrowAtAngle(NSBezierPath& path, float angle, float size, float arrowAngle);

/// Draws a path as a shaded knob, in five steps over its bounds (x, y, w, h):
/// - three shadows of dark gray with alpha 0.2, the path made i = 1, 2, 3 wider and i / 2 higher about its
///   middle and moved down by i / 2;
/// - cut to the path, a row of height 1 from y + j in `colorForParam(j / h)` for each whole j below h. The
///   rows' colours replace what is there, alpha included;
/// - over them, for each whole k below w, a column of width 1 from x + k in black of alpha
///   |w / 2 − k| / w / 2;
/// - the path stroked in dark gray with its own line attributes.
/// The function is asked from the bottom row upward, each row once, also where nothing of it shows. Time is
/// in proportion to height and width. `Platform::appearance` says what dark gray is.
IMAGING_EXPORT void drawAsKnob(const NSBezierPath& path, const ColorFunction& function);

/// Shows how a path is made: each element stroked with width 1 and a tiny x where it ends, the elements of
/// even index in black, those of odd index in purple. A move-to has its x alone; a curve has the lines
/// from its ends to their control points in cyan; a close-path is the line to the subpath's start.
/// `Platform::appearance` says what purple and cyan are.
IMAGING_EXPORT void strokeDebug(const NSBezierPath& path);

/// Strokes the diagonals of the square of side 4 around a point with width 1 and the current colour.
IMAGING_EXPORT void drawTinyX(NSPoint point);

} // namespace Imaging
