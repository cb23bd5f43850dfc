#pragma once

// Internal: convolution one pixel after another, which the vector code and the passes must agree with bit for
// bit. Not installed.

#include "Imaging/Pixels/PixelTypes.h"
#include "Imaging/Pixels/PixelWorkers.h"

#include <cstdint>

namespace Imaging {

/// One thread's share of a two-dimensional pass. The taps stand row after row and are not owned; the divisor
/// is not 0.
struct Convolve2Record : PixelRecord {
    const std::int32_t* taps = nullptr;
    std::int32_t kernelWidth = 0;  ///< in taps
    std::int32_t kernelHeight = 0; ///< 0 makes every sample that is computed 0
    std::int32_t divisor = 1;
};

/// One thread's share of a one-dimensional pass. In the vertical one the first row and the step count
/// columns.
struct Convolve1Record : PixelRecord {
    const std::int32_t* taps = nullptr;
    std::int32_t kernelLength = 0; ///< in taps
    std::int32_t divisor = 1;
};

namespace Plain {

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

/// Copies the pixels of the outer kernelHeight / 2 rows and kernelWidth / 2 columns, whatever the record's
/// rows.
template<class Pixel>
void copy_edges(const Convolve2Record& record);

} // namespace Plain

} // namespace Imaging
