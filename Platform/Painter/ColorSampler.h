#pragma once

// Internal: what is painted where a shape is filled. Not installed.

#include "Platform/Painter/RowSampler.h"

namespace Imaging::Platform {

/// One colour everywhere, a premultiplied word.
std::unique_ptr<RowSampler> makeColorSampler(std::uint32_t word);

} // namespace Imaging::Platform
