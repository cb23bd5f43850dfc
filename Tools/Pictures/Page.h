#pragma once

#include "Platform/Foundation/Data.h"
#include "Tools/Command/Values.h"
#include "Tools/Files/Output.h"

#include <functional>
#include <string>

namespace Imaging::Tool {

/// Draws on a new transparent page of a size in points, (0, 0) at its lower left, and gives the whole file of
/// the format, which is not None. Paths and text stay vectors; pictures are embedded, with up to 8 of their
/// pixels a point. Throws a Failure for `name`, with `advice` at its end, when readers of the format would
/// refuse the size.
Platform::NSData drawnOnPage(PageFormat format, PixelSize size, const std::string& name,
                             const std::string& advice, const std::function<void()>& draw);

} // namespace Imaging::Tool
