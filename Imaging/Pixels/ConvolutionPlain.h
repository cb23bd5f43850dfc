#pragma once

// Internal: convolution of 8-bit samples, one pixel at a time. This is what every faster way must give bit
// for bit. Not installed.

#include "Imaging/Pixels/PixelTypes.h"

#include <cstddef>
#include <cstdint>

namespace Imaging {

/// What one thread of a two-dimensional pass is given. Sizes in taps and pixels, row lengths in bytes.
struct Convolve2Record {
    const std::int32_t* taps = nullptr;
    std::int32_t kernelWidth = 0;
    std::int32_t kernelHeight = 0;
    std::int32_t divisor = 1;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::size_t sourceRowBytes = 0;
    std::size_t destinationRowBytes = 0;
    const std::uint8_t* source = nullptr;
    std::uint8_t* destination = nullptr;
    std::int32_t firstRow = 0;
    std::int32_t rowStep = 1;
};

/// What one thread of a one-dimensional pass is given. A line is a row of the horizontal pass and a column of
/// the vertical one.
struct Convolve1Record {
    const std::int32_t* taps = nullptr;
    std::int32_t kernelLength = 0;
    std::int32_t divisor = 1;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::size_t sourceRowBytes = 0;
    std::size_t destinationRowBytes = 0;
    const std::uint8_t* source = nullptr;
    std::uint8_t* destination = nullptr;
    std::int32_t firstLine = 0;
    std::int32_t lineStep = 1;
};

/// A weighted sum as a sample: divided with truncation toward zero, then limited to 0 … 255.
inline std::uint8_t sampleOfSum(std::uint32_t wrappedSum, std::int32_t divisor) {
    // In 64 bits, since -2^31 / -1 does not fit in 32.
    const std::int64_t quotient = std::int64_t{static_cast<std::int32_t>(wrappedSum)} / divisor;
    return static_cast<std::uint8_t>(quotient < 0 ? 0 : quotient > 255 ? 255 : quotient);
}

/// Convolves with a kernel of any width and height, as it is stored. Rows start at half the kernel's WIDTH
/// and columns are counted by half its HEIGHT; for square kernels that leaves all pixels that the kernel
/// covers. For others, samples beyond an edge read as the nearest edge pixel, and columns beyond the row are
/// not written. Pixels outside stay as they are.
template<class Pixel, class Sum>
void convolve2(const Convolve2Record& record);

/// The output pixels number `from` to `to` - 1 of one row of the above; pixel 0 lies in column kernelWidth
/// / 2.
template<class Pixel, class Sum>
void convolve2Span(const Convolve2Record& record, std::int64_t row, std::int64_t from, std::int64_t to);

/// How many output pixels each row of the above has; those beyond the row are left out.
std::int64_t convolve2Columns(const Convolve2Record& record);

/// Convolves rows with a single row of taps. Half the kernel's length at both ends is copied, and so are rows
/// that are shorter than the kernel.
template<class Pixel, class Sum>
void convolve1a(const Convolve1Record& record);

/// The same for columns.
template<class Pixel, class Sum>
void convolve1b(const Convolve1Record& record);

/// Copies the pixels of the outer kernelHeight / 2 rows and kernelWidth / 2 columns.
template<class Pixel>
void copy_edges(std::int32_t width, std::int32_t height, std::size_t sourceRowBytes,
                std::size_t destinationRowBytes, const std::uint8_t* source, std::uint8_t* destination,
                std::int32_t kernelWidth, std::int32_t kernelHeight);

} // namespace Imaging
