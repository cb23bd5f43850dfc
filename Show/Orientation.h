#pragma once

#include "Imaging/Image.h"
#include "Platform/Foundation/Export.h"

#include <memory>

namespace Imaging {

/// Whether a picture is drawn the way up that it declares or as it is stored.
enum class Upright { AsDeclared, AsStored };

/// The node that shows a picture the way up that its file declares (EXIF's orientation): the node itself
/// where nothing has to be done, otherwise one that turns or mirrors it. Only a node that is a picture itself
/// declares anything; pictures further down in a graph stay as they are stored. One thread at a
/// time for a graph.
///
/// Example:
/// @code
/// const auto shown = [](auto picture) { return orientedNode(picture, Upright::AsDeclared); };
/// static_cast<void>(shown);
/// @endcode
IMAGING_EXPORT std::shared_ptr<IMGImage> orientedNode(std::shared_ptr<IMGImage> node, Upright upright);

} // namespace Imaging
