#pragma once

// Internal: nodes that draw themselves into a picture and keep it. Not installed.

#include "Imaging/Image.h"

#include <memory>

namespace Imaging {

/// What a node draws by walking down, without its own transform, on a new picture of a size, from (0, 0),
/// with the node's default operation and fraction. Null for a size without finite area. Throws an NSException
/// for one beyond the picture limits, and what drawing throws.
std::shared_ptr<CCImage> renderedNode(IMGImage& node, NSSize size);

} // namespace Imaging
