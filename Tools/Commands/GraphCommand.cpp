// Shows the graph that the same operations of `imaging apply` would draw, as a tree or for Graphviz.

#include "Tools/Command/StandardOutput.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Pictures/Canvas.h"
#include "Tools/Pictures/GraphText.h"
#include "Tools/Pictures/Operations.h"

namespace Imaging::Tool {

namespace {

const SubcommandText graphText = {
    "graph", "Show the nodes of a graph, for those who debug one", "[OPTION...] INPUT [OPERATION...]",
    R"(INPUT is a graph that 'imaging archive' made, or whatever 'imaging apply' takes.
What is shown is the graph that 'imaging apply' would draw with the same
operations: a line for each node, below it its sources in the order in which
they are drawn. A node that is a source several times gets a number and is
shown once.

Bounds are X,Y WxH of the rectangle around the node, in pixels, where y grows
upward from the lower edge of the input. Where a node is placed by a transform
there follow the rectangle before it and the entries [m11 m12 m21 m22 tX tY]:
a point (x, y) goes to (m11 x + m21 y + tX, m12 x + m22 y + tY).)",
    R"(  imaging graph layers.graph
  imaging graph photo.jpg --turn right --crop 10,10,200,100
  imaging graph layers.graph --dot | dot -Tsvg > layers.svg)"};

class GraphCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return graphText; }

protected:
    OptionTable options() override;
    void checkOperands() const override { requireOneOperand("an input"); }
    ExitStatus run() override;

private:
    std::shared_ptr<Imaging::IMGImage> graph(const std::string& input, const std::vector<Step>& steps) const;

    OperationOptions m_operations;
    bool m_dot = false;
    bool m_as_stored = false;
};

OptionTable GraphCommand::options() {
    return joined({m_operations.options(),
                   {{"--dot", "", "Write it in Graphviz' language", raise(m_dot)},
                    {"--no-orient", "",
                     "Leave a picture as it is stored, whatever way up it\n"
                     "declares",
                     raise(m_as_stored)}}});
}

/// Without operations a graph is shown even if it could not be drawn.
std::shared_ptr<Imaging::IMGImage> GraphCommand::graph(const std::string& input,
                                                       const std::vector<Step>& steps) const {
    const std::shared_ptr<Imaging::IMGImage> node =
        orientedNode(loadNode(input), m_as_stored ? Upright::AsStored : Upright::AsDeclared);
    if (steps.empty()) return node; // also where pictures are missing, which the graph then shows
    requireDrawable(node, input);
    return processed(node, input, steps).node();
}

ExitStatus GraphCommand::run() {
    const std::string& input = operands().front();
    const std::vector<Step> steps = m_operations.steps();
    const std::shared_ptr<Imaging::IMGImage> root = graph(input, steps);
    writeStandardOutput(m_dot ? dotOf(root) : treeOf(root));
    return Done;
}

} // namespace

std::unique_ptr<Subcommand> makeGraphCommand() { return std::make_unique<GraphCommand>(); }

} // namespace Imaging::Tool
