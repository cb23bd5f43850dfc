#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <array>

/// What drawing with OpenGL needs beside the commands themselves: reports of errors, corners, coordinates and
/// compositing. All but `SetCompositedModeGL` call no OpenGL, so they are there on every machine, and are
/// safe on every thread.
///
/// Example:
/// @code
/// const unsigned invalidOperation = 0x0502;
/// ReportError(invalidOperation, __FILE__, __LINE__);
/// const auto corner = MakePoint3D(-1, 1, 0.5F);
/// @endcode
namespace Imaging {

using Platform::NSPoint;
using Platform::NSRect;

/// The format of reports of OpenGL errors: a path, a line and the code.
inline constexpr const char* CheckOpenGLErrorFormat = "gl error %s %d %d";

/// Writes a line to the log for an OpenGL error code other than 0. The line names this module's path and line
/// 285 whoever calls, so that reports of different callers compare equal; `file` and `line` are not used.
IMAGING_EXPORT void ReportError(unsigned error, const char* file, int line);

/// x, y and z: a corner of the cube.
IMAGING_EXPORT std::array<float, 3> MakePoint3D(float x, float y, float z);

/// A point of the rectangle `from` at the same place of the rectangle `to`. Sides of `from` without length
/// give coordinates that are infinite or no numbers. 32-bit floats.
IMAGING_EXPORT NSPoint MapPointGL(NSPoint point, NSRect from, NSRect to);

/// A rectangle's origin mapped like a point, its size scaled by the same factors.
IMAGING_EXPORT NSRect MapRectGL(NSRect rect, NSRect from, NSRect to);

/// Makes what is drawn next with OpenGL combine with what is there by an NSCompositingOperation and a
/// fraction from 0 to 1, for textures whose colours are multiplied by their alpha: blending is switched on
/// and
///
/// - copy replaces what is there;
/// - source-over and destination-over get their blend function, and (f, f, f, f) as the colour, which
///   textures are multiplied with;
/// - plus-lighter adds to what is there in proportion to a constant alpha, f, and leaves the colour as it is;
/// - every other operation leaves the blend function of whoever drew before.
///
/// On the thread where an OpenGL context is current; throws an NSException (NSOpenGLException) without one.
/// OpenGL's errors go to `ReportError`.
///
/// Example:
/// @code
/// const NSRect unit = NSMakeRect(-1, -1, 2, 2);
/// const NSRect mapped = MapRectGL(NSMakeRect(0, 0, 50, 50), NSMakeRect(0, 0, 100, 50), unit);
/// const NSPoint middle = MapPointGL({50, 25}, NSMakeRect(0, 0, 100, 50), unit);
/// @endcode
IMAGING_EXPORT void SetCompositedModeGL(int operation, float fraction);

} // namespace Imaging
