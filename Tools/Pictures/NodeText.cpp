// A line for a node: its class and what the node itself says of its values, made safe to print.

#include "Tools/Pictures/NodeText.h"

#include "Imaging/Words.h"
#include "Platform/Foundation/Exception.h"
#include "Show/NodeGraph.h"
#include "Tools/Command/Messages.h"

namespace Imaging::Tool {

std::string nodeInWords(const IMGImage& node) {
    const std::string values = node.parameterDescription();
    return escaped(node.archiveClassName() + (values.empty() ? "" : " " + values));
}

std::string boundsInWords(const IMGImage& node) {
    try {
        const IMGBounds bounds = node.imageBounds();
        const std::string around = "bounds " + inWords(bounds.boundingRect());
        if (!bounds.transform().has_value() || bounds.transform()->isEqual(Platform::NSAffineTransform()))
            return around;
        return around + ", " + inWords(bounds.rectangle()) + " under " + inWords(*bounds.transform());
    } catch (const Platform::NSException&) { // which nodes without sources raise
        return "no bounds: a node has nothing below it";
    }
}

} // namespace Imaging::Tool
