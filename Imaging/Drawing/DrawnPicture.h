#pragma once

// Internal: drawing into a new picture. Not installed.

#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/Image.h"

#include <functional>
#include <memory>

namespace Imaging {

/// A new picture of a size, in points, with what `draw` draws while the picture has focus on the calling
/// thread; `draw` gets the whole picture as a rectangle at (0, 0). The picture belongs to the caller. What
/// `draw` and the focus throw passes on, an NSException for a size beyond the picture limits among it.
std::shared_ptr<Platform::NSImage>
drawnPicture(Platform::NSSize size, const std::function<void(Platform::NSRect)>& draw,
             Platform::NSImageCacheMode cacheMode = Platform::NSImageCacheDefault);

} // namespace Imaging
