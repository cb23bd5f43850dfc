#pragma once

// Internal: work on the rows of pictures, split over the processor's cores. Not installed.

#include <cstdint>
#include <functional>

namespace Imaging::Platform {

/// How many bands rows are split into at most: the cores that this process may run on, at least 1.
/// Thread-safe.
std::int64_t rowBandLimit();

/// Calls `body(first, end)` for bands of rows that together are 0 <= y < rows, each row in exactly one band,
/// and returns when all have ended. There are as many bands as `bandLimit` (at least 1) and
/// `minimumRowsPerBand` (at least 1) allow; their lengths differ by one row at most. All but the first run
/// on threads of their own, so `body` is called at the same time for different bands; with one band nothing
/// but the caller's thread takes part. Without rows `body` is not called.
///
/// Where a thread cannot be started, the caller's thread does that band. What bands throw reaches the caller
/// when all have ended: of several exceptions that of the first band that threw. Bands may call this again.
/// Throws std::bad_alloc, before any band has begun. Call it from any thread; a lock that the caller holds
/// is not held by the other bands' threads.
void forEachRowBand(std::int64_t rows, std::int64_t minimumRowsPerBand,
                    const std::function<void(std::int64_t first, std::int64_t end)>& body,
                    std::int64_t bandLimit = rowBandLimit());

} // namespace Imaging::Platform
