#pragma once

// Internal: the painter, which puts rows of pixels onto a target. Not installed.
//
//   PictureLevels ─── levels ─→ RowSampler ─ rows of words ─→ blendRow ─→ PixelTarget
//                                                        Coverage ─┘

#include "Platform/Painter/Coverage.h"
#include "Platform/Painter/PixelTarget.h"
#include "Platform/Painter/RowSampler.h"
#include "Platform/Pixels/CompositingOperation.h"

namespace Imaging::Platform {

/// Paints what is covered of a target with what a sampler gives, scaled by `fraction` (0 to 1, clamped;
/// not-a-number counts as 0) and combined by `operation`: what is there changes in proportion to the
/// coverage, and pixels that are not covered stay as they are. `within` limits the sampler's picture: outside
/// of it, and in proportion, there is nothing to paint; null for a picture without end.
///
/// Large areas are painted by all cores, the result not depending on how many there are. For rounding see
/// `blendRow`.
void paint(const PixelTarget& target, const Coverage& coverage, const RowSampler& sampler,
           NSCompositingOperation operation, double fraction, const Coverage* within = nullptr);

} // namespace Imaging::Platform
