#pragma once

// Internal: what is painted, read as rows of device pixels. Not installed.

#include <cstdint>
#include <memory>

namespace Imaging::Platform {

/// Reads rows for one thread. It may remember what it needs for the rows that follow.
class RowReader {
public:
    virtual ~RowReader() = default;

    /// `count` pixels of device row y from x on, all within the sampler's area: `words` filled with them, or
    /// the place where they stand anyway, which is valid until the next call.
    virtual const std::uint32_t* read(int x, int y, int count, std::uint32_t* words) = 0;
};

/// What is painted: premultiplied words for every pixel of an area of the device. A sampler does not change,
/// and its readers may be used by different threads at a time.
class RowSampler {
public:
    virtual ~RowSampler() = default;

    /// Whether every pixel is known to be opaque.
    virtual bool isOpaque() const = 0;
    virtual std::unique_ptr<RowReader> reader() const = 0;
};

} // namespace Imaging::Platform
