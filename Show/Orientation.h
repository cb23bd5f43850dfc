#pragma once

#include "Imaging/Image.h"

#include <memory>

namespace Imaging::Tool {

/// Whether a picture is drawn the way up that it declares or as it is stored.
enum class Upright { AsDeclared, AsStored };

/// The node that shows a picture the way up that its file declares (EXIF's orientation): the node itself
/// where nothing has to be done, otherwise one that turns or mirrors it. Only a node that is a picture itself
/// declares anything; pictures further down in a graph stay as they are stored.
std::shared_ptr<Imaging::IMGImage> orientedNode(std::shared_ptr<Imaging::IMGImage> node, Upright upright);

} // namespace Imaging::Tool
