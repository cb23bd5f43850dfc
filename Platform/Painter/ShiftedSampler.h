#pragma once

// Internal: the sampler of moves by parts of a pixel. Not installed.

#include "Platform/Painter/PixelRect.h"
#include "Platform/Painter/PlacedLevel.h"
#include "Platform/Painter/RowSampler.h"

namespace Imaging::Platform {

/// For inverses that move the picture, by whatever part of a pixel: null for all others. The same mixes as
/// the scaled sampler's, at less cost.
std::unique_ptr<RowSampler> makeShiftedSampler(const PlacedLevel& level, PixelRect area);

} // namespace Imaging::Platform
