#pragma once

// Internal: the records of a draw, for leaves that draw with 2-D graphics. Not installed.

#include "Imaging/Bounds.h"

namespace Imaging {

/// Cuts the current context's clip by the records' clip rectangles, each under the transforms up to its own
/// record, and gives the transform of all of them together, which is not concatenated to the context.
NSAffineTransform addRecordClips(const TransformAndClipList& list);

} // namespace Imaging
