#pragma once

// Internal: the sampler of rotations, slants and all else. Not installed.

#include "Platform/Painter/PlacedLevel.h"
#include "Platform/Painter/RowSampler.h"

namespace Imaging::Platform {

/// For any inverse; each device pixel is the mean of `across` by `down` samples, at most 16 each.
std::unique_ptr<RowSampler> makeAffineSampler(const PlacedLevel& level, int across, int down);

} // namespace Imaging::Platform
