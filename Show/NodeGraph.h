#pragma once

#include "Imaging/CachedImage.h"
#include "Imaging/Image.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// Looking through graphs of nodes before they are drawn. Everything takes time in proportion to the number
/// of nodes, however often they are shared. A graph is looked at on one thread at a time.
///
/// Example:
/// @code
/// const auto root = imagingImage(std::make_shared<NSImage>(NSMakeSize(4, 3)));
/// requireDrawable(root);
/// const std::size_t count = nodesOf(root).size(); // 1
/// static_cast<void>(count);
/// @endcode
namespace Imaging {

/// All nodes of a graph, each once, every node after all that lie above it, the root first.
IMAGING_EXPORT std::vector<std::shared_ptr<IMGImage>> nodesOf(const std::shared_ptr<IMGImage>& root);

/// How many nodes a draw comes by from each node of a graph down, itself included, each counted once for
/// every way that leads to it; at most what 64 bits hold.
IMAGING_EXPORT std::unordered_map<const IMGImage*, std::uint64_t>
waysBelow(const std::shared_ptr<IMGImage>& root);

/// The nodes among them that are pictures, in the order in which they are drawn first.
IMAGING_EXPORT std::vector<std::shared_ptr<IMGImageFromNSImage>>
picturesOf(const std::shared_ptr<IMGImage>& root);

/// Throws an NSException (NSInvalidArgumentException) that names the first missing picture.
IMAGING_EXPORT void requirePictures(const std::shared_ptr<IMGImage>& root);

/// Throws an NSException (NSInvalidArgumentException) unless all pictures are there and can be drawn, and
/// drawing walks a number of ways that can be waited for: a graph of a hundred nodes may have more of them
/// than there are seconds. Drawing itself passes over nodes that fail, so this has to be asked before.
IMAGING_EXPORT void requireDrawable(const std::shared_ptr<IMGImage>& root);

/// The rectangle around a node as `drawInRect` fits it, in the node's own space. Throws an NSException
/// (NSInvalidArgumentException) when the node has none, or one without area.
IMAGING_EXPORT Platform::NSRect drawableBounds(const IMGImage& node);

} // namespace Imaging
