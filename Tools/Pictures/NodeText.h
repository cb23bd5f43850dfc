#pragma once

#include "Imaging/Image.h"

#include <string>

namespace Imaging::Tool {

/// A node's class and what is particular to it: "IMGRotationOp 30 degrees about 50,25".
std::string nodeInWords(const IMGImage& node);

/// "bounds X,Y WxH": the rectangle around the node, y upward from the lower left corner. Where that is not
/// the whole story, the rectangle that lies in it under which transform. Or why there are none.
std::string boundsInWords(const IMGImage& node);

} // namespace Imaging::Tool
