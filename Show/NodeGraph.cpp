// Walks over a graph that come by every node once, first to last, with a stack of their own since archives
// may be deep; and what has to be asked of a graph before it is drawn.

#include "Show/NodeGraph.h"

#include "Platform/Foundation/Exception.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <unordered_map>
#include <unordered_set>

namespace Imaging {

using Platform::NSException;
using Platform::NSImage;
using Platform::NSInvalidArgumentException;

namespace {

/// What can be drawn in bearable time if the pictures are small.
constexpr std::uint64_t maximumWays = 100'000;

/// Visits each node once, first to last source, and gives them in the order in which the walk leaves them:
/// every node after its sources. Archives may be deep, so the walk keeps its own stack.
std::vector<std::shared_ptr<IMGImage>> nodesAfterTheirSources(const std::shared_ptr<IMGImage>& root) {
    struct Step {
        std::shared_ptr<IMGImage> node;
        std::size_t next = 0;
    };
    std::vector<std::shared_ptr<IMGImage>> left;
    std::unordered_set<const IMGImage*> seen = {root.get()};
    std::vector<Step> way = {{root}};
    while (!way.empty()) {
        Step& step = way.back();
        if (step.next == step.node->sources().size()) {
            left.push_back(std::move(step.node));
            way.pop_back();
            continue;
        }
        std::shared_ptr<IMGImage> source = step.node->sources()[step.next++];
        if (seen.insert(source.get()).second) way.push_back({std::move(source)});
    }
    return left;
}

} // namespace

std::unordered_map<const IMGImage*, std::uint64_t> waysBelow(const std::shared_ptr<IMGImage>& root) {
    std::unordered_map<const IMGImage*, std::uint64_t> ways;
    for (const std::shared_ptr<IMGImage>& node : nodesAfterTheirSources(root)) {
        std::uint64_t sum = 1;
        for (const std::shared_ptr<IMGImage>& source : node->sources()) {
            const std::uint64_t below = ways[source.get()];
            const bool fits = below <= std::numeric_limits<std::uint64_t>::max() - sum;
            sum = fits ? sum + below : std::numeric_limits<std::uint64_t>::max();
        }
        ways[node.get()] = sum;
    }
    return ways;
}

std::vector<std::shared_ptr<IMGImage>> nodesOf(const std::shared_ptr<IMGImage>& root) {
    std::vector<std::shared_ptr<IMGImage>> nodes = nodesAfterTheirSources(root);
    std::reverse(nodes.begin(), nodes.end());
    return nodes;
}

std::vector<std::shared_ptr<IMGImageFromNSImage>> picturesOf(const std::shared_ptr<IMGImage>& root) {
    std::vector<std::shared_ptr<IMGImageFromNSImage>> pictures;
    for (const std::shared_ptr<IMGImage>& node : nodesAfterTheirSources(root)) {
        if (auto picture = std::dynamic_pointer_cast<IMGImageFromNSImage>(node)) pictures.push_back(picture);
    }
    return pictures;
}

void requirePictures(const std::shared_ptr<IMGImage>& root) {
    for (const std::shared_ptr<IMGImageFromNSImage>& node : picturesOf(root)) {
        const std::optional<std::string> why = node->whyPictureIsMissing();
        if (!why.has_value()) continue;
        const std::string which =
            node->fileName().has_value() ? "its picture " + *node->fileName() : "a picture in it";
        throw NSException(NSInvalidArgumentException, which + " cannot be used: " + *why);
    }
}

namespace {

void requireSources(const std::shared_ptr<IMGImage>& root) {
    for (const std::shared_ptr<IMGImage>& node : nodesOf(root)) {
        if (!node->sources().empty() || !node->needsSource()) continue;
        throw NSException(NSInvalidArgumentException, "a node of the graph (" + node->archiveClassName() +
                                                          ") has nothing below it, so it cannot be drawn");
    }
}

} // namespace

void requireDrawable(const std::shared_ptr<IMGImage>& root) {
    requirePictures(root);
    requireSources(root);
    if (waysBelow(root).at(root.get()) > maximumWays) {
        throw NSException(NSInvalidArgumentException,
                          "its nodes are shared so often that drawing would take more than " +
                              std::to_string(maximumWays) + " steps; make the graph simpler");
    }
}

Platform::NSRect drawableBounds(const IMGImage& node) {
    Platform::NSRect bounds;
    try {
        bounds = node.imageBoundsRect();
    } catch (const NSException&) { // which nodes without sources raise, in words for programmers
        throw NSException(NSInvalidArgumentException,
                          "a node of the graph has nothing below it, so the graph has no size");
    }
    const Platform::NSSize size = bounds.size;
    const bool isDrawable = size.width > 0 && size.height > 0 && size.width < 1e9F && size.height < 1e9F;
    if (!isDrawable) {
        throw NSException(NSInvalidArgumentException,
                          "the graph covers no area, so there is nothing to draw");
    }
    return bounds;
}

} // namespace Imaging
