#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <string>

/// Numbers and what is made of them in words, for people who look at graphs. Numbers have up to seven
/// significant digits and a point, whatever the language; what is as small as the smallest normal float,
/// which rectangles around points end at, is 0, and so is minus zero. Pure functions, on any thread.
///
/// Example:
/// @code
/// const std::string words = inWords(NSMakeRect(1.5F, -2, 30, 20)); // "1.5,-2 30x20"
/// @endcode
namespace Imaging {

/// "30" or "0.25" or "1e+20".
IMAGING_EXPORT std::string inWords(float number);

/// "50,25"
IMAGING_EXPORT std::string inWords(Platform::NSPoint point);

/// "640x480"
IMAGING_EXPORT std::string inWords(Platform::NSSize size);

/// "50,25 640x480": the lower left corner and the size.
IMAGING_EXPORT std::string inWords(Platform::NSRect rect);

/// "[1 0 0 1 50 25]": m11, m12, m21, m22, tX and tY.
IMAGING_EXPORT std::string inWords(const Platform::NSAffineTransform& transform);

} // namespace Imaging
