#pragma once

#include "Imaging/OpenGLUtilities.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <string>

/// Decorations drawn into the current 2-D context. Without a current context nothing is drawn; every function
/// leaves the graphics state as it found it.
///
/// Example:
/// @code
/// const NSRect place = NSMakeRect(20, 20, 300, 200);
/// DrawFocusRingInside(place);
/// HintTextInFrame(place, "Drop a picture here");
/// @endcode
namespace Imaging {

using Platform::NSRect;

/// The border around the place of an empty or selected picture: nine pictures "box_topleft", "box_top", …
/// "box_bottomright" from the library's resources, the corners in their own size, the edges and the middle
/// stretched between them. They are read on first use and kept for the life of the process. The middle's size
/// is what the bottom-left and the top-right corner leave, and the right edge is as wide as the left piece.
/// In a rectangle smaller than the corners the sizes between them are negative, and there is nothing there to
/// draw. Throws an NSException that names the file when a picture cannot be read.
IMAGING_EXPORT void DrawFrameInside(NSRect rect);

/// A line of width 2 in the colour of the keyboard focus, 8 inside the rectangle.
IMAGING_EXPORT void DrawFocusRingInside(NSRect rect);

/// The text (UTF-8, of any script that the fonts cover) in bold system font of size 18 and light gray, its
/// middle in the middle of the rectangle; neither wrapped nor clipped.
IMAGING_EXPORT void HintTextInFrame(NSRect rect, const std::string& text);

} // namespace Imaging
