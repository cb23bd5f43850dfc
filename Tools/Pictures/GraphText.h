#pragma once

#include "Imaging/Image.h"

#include <memory>
#include <string>

/// Graphs in words, for people who debug them. Both take a time in proportion to the number of nodes, and
/// print a node that is shared once only; bounds that would take much longer are left out, and said to be.
namespace Imaging::Tool {

/// A line for each node, indented below the node that it is a source of.
std::string treeOf(const std::shared_ptr<Imaging::IMGImage>& root);

/// The same as a directed graph in Graphviz' language, edges from a node to its sources.
std::string dotOf(const std::shared_ptr<Imaging::IMGImage>& root);

} // namespace Imaging::Tool
