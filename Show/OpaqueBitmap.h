#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Graphics/BitmapImageRep.h"

#include <memory>

namespace Imaging {

/// The colour of a bitmap of 8-bit red, green, blue and alpha alone, as a new bitmap of RGB; null where not
/// all of it is opaque, or memory runs out. What has no alpha is drawn without looking at what lies below
/// it. One thread at a time for a bitmap.
///
/// Example:
/// @code
/// const auto bitmap = NSBitmapImageRep::bitmapWithDescription({.pixelsWide = 2, .pixelsHigh = 2});
/// const auto opaque = withoutNeedlessAlpha(*bitmap); // null: a new bitmap is clear
/// @endcode
IMAGING_EXPORT std::shared_ptr<Platform::NSBitmapImageRep>
withoutNeedlessAlpha(const Platform::NSBitmapImageRep& bitmap);

} // namespace Imaging
