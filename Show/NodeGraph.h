#pragma once

#include "Imaging/CachedImage.h"
#include "Imaging/Image.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

/// Looking through graphs of nodes before they are drawn. Everything takes time in proportion to the number
/// of nodes, however often they are shared.
namespace Imaging::Tool {

/// All nodes of a graph, each once, every node after all that lie above it, the root first.
std::vector<std::shared_ptr<Imaging::IMGImage>> nodesOf(const std::shared_ptr<Imaging::IMGImage>& root);

/// How many nodes a draw comes by from each node of a graph down, itself included, each counted once for
/// every way that leads to it; at most what 64 bits hold.
std::unordered_map<const Imaging::IMGImage*, std::uint64_t>
waysBelow(const std::shared_ptr<Imaging::IMGImage>& root);

/// The nodes among them that are pictures, in the order in which they are drawn first.
std::vector<std::shared_ptr<Imaging::IMGImageFromNSImage>>
picturesOf(const std::shared_ptr<Imaging::IMGImage>& root);

/// Why a node has no picture; nullopt when it has one.
std::optional<std::string> whyPictureIsMissing(Imaging::IMGImageFromNSImage& node);

/// Throws a Failure for `name` that names the first missing picture.
void requirePictures(const std::shared_ptr<Imaging::IMGImage>& root, const std::string& name);

/// Throws a Failure unless all pictures are there and can be drawn, and drawing walks a number of ways that
/// can be waited for: a graph of a hundred nodes may have more of them than there are seconds. Drawing itself
/// passes over nodes that fail, so this has to be asked before.
void requireDrawable(const std::shared_ptr<Imaging::IMGImage>& root, const std::string& name);

} // namespace Imaging::Tool
