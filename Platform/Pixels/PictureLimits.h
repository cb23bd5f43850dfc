#pragma once

#include "Platform/Foundation/Export.h"

#include <cstdint>

/// How much one picture may ask for, so that a damaged or malicious file cannot take all memory: everything
/// that makes room for pixels (codecs, bitmaps, drawn pictures) looks here first.
///
/// Example:
/// @code
/// PictureLimits limits = pictureLimits();
/// limits.maximumPixels = 50'000'000;
/// setPictureLimits(limits);
/// @endcode
namespace Imaging::Platform {

/// How much a picture may ask for. Headers are checked against these before memory is allocated.
struct PictureLimits {
    std::uint64_t maximumPixels = 268'435'456; ///< 2^28, a square of 16384
    std::uint64_t maximumBytes = 2ULL << 30;   ///< of the decoded picture
};

/// The limits for the whole process. Safe on every thread.
IMAGING_EXPORT PictureLimits pictureLimits();
IMAGING_EXPORT void setPictureLimits(const PictureLimits& limits);

} // namespace Imaging::Platform
