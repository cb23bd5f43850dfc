#include "Tools/Pictures/GraphText.h"

#include "Show/NodeGraph.h"
#include "Tools/Pictures/NodeText.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace Imaging::Tool {

using Imaging::IMGImage;

namespace {

/// Bounds are computed anew for each node, by walking every way down from it.
class BoundsTexts {
public:
    explicit BoundsTexts(const std::shared_ptr<IMGImage>& root) : m_ways(waysBelow(root)) {}

    std::string of(const IMGImage& node) {
        const std::uint64_t cost = m_ways.at(&node);
        if (cost > m_steps_left) return "bounds not computed: there are too many ways down from here";
        m_steps_left -= cost;
        return boundsInWords(node);
    }

private:
    std::unordered_map<const IMGImage*, std::uint64_t> m_ways;
    std::uint64_t m_steps_left = 50'000'000; // a few seconds at most
};

/// How often each node is a source.
std::unordered_map<const IMGImage*, int> timesUsed(const std::shared_ptr<IMGImage>& root) {
    std::unordered_map<const IMGImage*, int> times;
    for (const std::shared_ptr<IMGImage>& node : nodesOf(root)) {
        for (const std::shared_ptr<IMGImage>& source : node->sources()) ++times[source.get()];
    }
    return times;
}

/// `"` and `\` would end or change a text in quotes.
std::string quoted(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result;
}

} // namespace

std::string treeOf(const std::shared_ptr<IMGImage>& root) {
    struct Line {
        std::shared_ptr<IMGImage> node;
        std::size_t depth;
    };
    BoundsTexts bounds(root);
    const std::unordered_map<const IMGImage*, int> times = timesUsed(root);
    std::unordered_map<const IMGImage*, std::size_t> numbers; // of shared nodes
    std::string text;
    std::vector<Line> left = {{root, 0}};
    while (!left.empty()) {
        const Line line = left.back();
        left.pop_back();
        text += std::string(2 * line.depth, ' ') + nodeInWords(*line.node);
        const auto used = times.find(line.node.get());
        if (used != times.end() && used->second > 1) {
            const auto [entry, isNew] = numbers.try_emplace(line.node.get(), numbers.size() + 1);
            text += " #" + std::to_string(entry->second);
            if (!isNew) {
                text += " (see above)\n";
                continue;
            }
        }
        text += "  " + bounds.of(*line.node) + "\n";
        const IMGImage::Sources& sources = line.node->sources();
        for (auto source = sources.rbegin(); source != sources.rend(); ++source) {
            left.push_back({*source, line.depth + 1});
        }
    }
    return text;
}

std::string dotOf(const std::shared_ptr<IMGImage>& root) {
    BoundsTexts bounds(root);
    std::unordered_map<const IMGImage*, std::size_t> numbers;
    const std::vector<std::shared_ptr<IMGImage>> nodes = nodesOf(root);
    for (const std::shared_ptr<IMGImage>& node : nodes) numbers.try_emplace(node.get(), numbers.size() + 1);
    const auto name = [&numbers](const IMGImage& node) { return "n" + std::to_string(numbers.at(&node)); };
    std::string text = "digraph imaging {\n  node [shape=box];\n";
    for (const std::shared_ptr<IMGImage>& node : nodes) {
        text += "  " + name(*node) + " [label=\"" + quoted(nodeInWords(*node)) + "\\n" +
                quoted(bounds.of(*node)) + "\"];\n";
        const IMGImage::Sources& sources = node->sources();
        for (std::size_t i = 0; i < sources.size(); ++i) {
            text += "  " + name(*node) + " -> " + name(*sources[i]);
            // Which source is drawn first is not told by an arrow.
            text += sources.size() > 1 ? " [label=\"" + std::to_string(i) + "\"];\n" : ";\n";
        }
    }
    return text + "}\n";
}

} // namespace Imaging::Tool
