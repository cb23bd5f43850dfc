#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Color.h"
#include "Show/Placement.h"

#include <functional>
#include <memory>
#include <string>

/// Pictures that are drawn rather than read.
///
/// Example:
/// @code
/// const NSRect whole = NSMakeRect(0, 0, 64, 48);
/// const auto bitmap = drawnOnCanvas({64, 48}, "make it smaller", [&] {
///     paint(whole, NSColor::whiteColor());
///     return whole;
/// });
/// @endcode
namespace Imaging {

/// Draws on a new transparent canvas, one point a pixel, (0, 0) at the lower left, and gives the part of it
/// that `drawAndSelect` returns, in whole pixels, as 8-bit premultiplied RGBA. While `drawAndSelect` runs the
/// canvas is the calling thread's current context.
///
/// Throws an NSException (NSInvalidArgumentException) whose reason says the size and ends with `advice` when
/// that is beyond what can be drawn or the limits on pictures, before anything is drawn; one
/// (NSGenericException) when the canvas could not be read back; and what `drawAndSelect` throws.
IMAGING_EXPORT std::shared_ptr<Platform::NSBitmapImageRep>
drawnOnCanvas(PixelSize size, const std::string& advice,
              const std::function<Platform::NSRect()>& drawAndSelect);

/// Throws what `drawnOnCanvas` would throw for the size.
IMAGING_EXPORT void requireCanvas(PixelSize size, const std::string& advice);

/// Covers a rectangle of the calling thread's current context with a colour, source-over, and leaves that
/// colour set.
IMAGING_EXPORT void paint(Platform::NSRect rect, const Platform::NSColor& color);

} // namespace Imaging
