#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/URL.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace Imaging::Platform {

/// How long and how much a transfer may take before it is given up.
struct URLLimits {
    std::chrono::milliseconds connectTimeout{15'000};
    std::chrono::milliseconds stallTimeout{30'000}; ///< no byte arrived for this long
    std::chrono::milliseconds totalTimeout{300'000};
    std::uint64_t maximumBytes = 1ULL << 30;
    int maximumRedirects = 8;
};

/// The limits for the whole process. Safe on every thread; a transfer keeps those that it began with.
///
/// Example:
/// @code
/// URLLimits limits = urlLimits();
/// limits.totalTimeout = std::chrono::seconds(20);
/// setURLLimits(limits);
/// @endcode
IMAGING_EXPORT URLLimits urlLimits();
IMAGING_EXPORT void setURLLimits(const URLLimits& limits);

/// What a URL names: `file:` is read directly, `http:` and `https:` are fetched, and no other scheme is
/// known, also not by way of a redirect. An answer that is not 2xx is a failure. Blocks; safe on every
/// thread. On failure nullopt and the reason.
IMAGING_EXPORT std::optional<NSData> dataWithContentsOfURL(const NSURL& url, NSError* error = nullptr);

} // namespace Imaging::Platform
