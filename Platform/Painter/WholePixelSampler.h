#pragma once

// Internal: the sampler that copies pixels. Not installed.

#include "Platform/Painter/PixelRect.h"
#include "Platform/Painter/PlacedLevel.h"
#include "Platform/Painter/RowSampler.h"

namespace Imaging::Platform {

/// For inverses that map pixels onto whole pixels: null for all others. A distance of up to 1/512 of a
/// pixel, which cannot be seen, counts as none.
std::unique_ptr<RowSampler> makeWholePixelSampler(const PlacedLevel& level, PixelRect area);

} // namespace Imaging::Platform
