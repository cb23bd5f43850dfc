#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <array>
#include <string>

/// Decorations drawn into the current 2-D context, and what renderers share. Without a current context
/// nothing is drawn; every function leaves the graphics state as it found it.
namespace Imaging {

using Platform::NSPoint;
using Platform::NSRect;

/// The frame of an empty or selected picture: nine pictures "box_topleft", "box_top", … "box_bottomright"
/// from the library's resources, the corners in their own size, the edges and the middle stretched between
/// them. They are read on first use and kept for the life of the process. The middle's size is what the
/// bottom-left and the top-right corner leave, and the right edge is as wide as the left piece. In a
/// rectangle smaller than the corners the sizes between them are negative, and there is nothing there to
/// draw. Throws an NSException that names the file when a picture cannot be read.
IMAGING_EXPORT void DrawFrameInside(NSRect rect);

/// A line of width 2 in the colour of the keyboard focus, 8 inside the rectangle.
IMAGING_EXPORT void DrawFocusRingInside(NSRect rect);

/// The text (UTF-8, of any script that the fonts cover) in bold system font of size 18 and light gray, its
/// middle in the middle of the rectangle; neither wrapped nor clipped.
IMAGING_EXPORT void HintTextInFrame(NSRect rect, const std::string& text);

/// The format of reports of OpenGL errors: a path, a line and the code.
IMAGING_EXPORT extern const char* CheckOpenGLErrorFormat;

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
