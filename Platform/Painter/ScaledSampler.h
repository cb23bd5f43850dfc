#pragma once

// Internal: the sampler of scalings along the axes. Not installed.

#include "Platform/Painter/PixelRect.h"
#include "Platform/Painter/PlacedLevel.h"
#include "Platform/Painter/RowSampler.h"

namespace Imaging::Platform {

/// For inverses without rotation or slant whose steps are at most `maximumScaledStep` pixels.
constexpr double maximumScaledStep = 16;
std::unique_ptr<RowSampler> makeScaledSampler(const PlacedLevel& level, PixelRect area);

} // namespace Imaging::Platform
