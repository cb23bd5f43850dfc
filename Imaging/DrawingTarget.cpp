// The seam between nodes and what they are drawn with; all of it is declared in the header.

#include "Imaging/DrawingTarget.h"

namespace Imaging {

IMGDrawingTarget::~IMGDrawingTarget() = default;

} // namespace Imaging
