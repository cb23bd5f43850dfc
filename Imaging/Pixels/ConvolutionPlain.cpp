// Convolution one pixel after another, each sum from all its taps: what the vector code is compared with, and
// what treats pixels near the edges.

#include "Imaging/Pixels/ConvolutionPlain.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Imaging::Plain {

namespace {

/// How many bytes from the start of its row a pixel lies.
template<class Pixel>
std::size_t offsetOf(std::int64_t x) {
    return static_cast<std::size_t>(x) * sizeof(Pixel);
}

/// Copies pixels of one row from x on; none for a count that is not positive, as small pictures have.
template<class Pixel>
void copyPixels(const PixelRecord& record, std::int64_t x, std::int64_t y, std::int64_t count) {
    if (count <= 0) return;
    std::memcpy(destinationRow(record, y) + offsetOf<Pixel>(x), sourceRow(record, y) + offsetOf<Pixel>(x),
                offsetOf<Pixel>(count));
}

/// Adds every sample of a pixel, alpha included, to its own sum.
template<class Pixel, class Sum>
void addWeighted(Sum& sum, std::int32_t tap, const std::uint8_t* pixel) {
    for (std::size_t i = 0; i < sum.samples.size(); ++i) {
        sum.samples[i] += static_cast<std::uint32_t>(tap) * pixel[i];
    }
}

template<class Sum>
void store(const Sum& sum, std::int32_t divisor, std::uint8_t* pixel) {
    for (std::size_t i = 0; i < sum.samples.size(); ++i) pixel[i] = sampleOfSum(sum.samples[i], divisor);
}

} // namespace

std::int64_t convolve2Columns(const Convolve2Record& record) {
    const std::int64_t halfWidth = record.kernelWidth / 2;
    const std::int64_t halfHeight = record.kernelHeight / 2;
    // They are counted by half the height but written from half the width on: a wide kernel has some behind
    // the row.
    return std::max<std::int64_t>(
        0, std::min(record.width - 2 * halfHeight, std::int64_t{record.width} - halfWidth));
}

template<class Pixel, class Sum>
void convolve2Span(const Convolve2Record& record, std::int64_t row, std::int64_t from, std::int64_t to) {
    const std::int64_t halfWidth = record.kernelWidth / 2;
    const std::int64_t halfHeight = record.kernelHeight / 2;
    for (std::int64_t j = from; j < to; ++j) {
        Sum sum;
        const std::int32_t* tap = record.taps;
        for (std::int64_t ky = 0; ky < record.kernelHeight; ++ky) {
            const std::int64_t y =
                std::clamp<std::int64_t>(row - halfHeight + ky, 0, std::int64_t{record.height} - 1);
            for (std::int64_t kx = 0; kx < record.kernelWidth; ++kx) {
                const std::int64_t x = std::clamp<std::int64_t>(j + (halfHeight - halfWidth) + kx, 0,
                                                                std::int64_t{record.width} - 1);
                addWeighted<Pixel>(sum, *tap++, sourceRow(record, y) + offsetOf<Pixel>(x));
            }
        }
        store(sum, record.divisor, destinationRow(record, row) + offsetOf<Pixel>(halfWidth + j));
    }
}

template<class Pixel, class Sum>
void convolve2(const Convolve2Record& record) {
    const std::int64_t halfWidth = record.kernelWidth / 2;
    const std::int64_t columns = convolve2Columns(record);
    // The width, where one would expect the height: see the header.
    for (std::int64_t y = halfWidth + record.firstRow; y < record.height - halfWidth; y += record.rowStep) {
        convolve2Span<Pixel, Sum>(record, y, 0, columns);
    }
}

template<class Pixel, class Sum>
void convolve1a(const Convolve1Record& record) {
    const std::int64_t width = record.width;
    const std::int64_t half = record.kernelLength / 2;
    for (std::int64_t y = record.firstRow; y < record.height; y += record.rowStep) {
        copyPixels<Pixel>(record, 0, y, std::min(half, width));
        std::int64_t x = half; // in rows shorter than the kernel this is where the copying of the rest begins
        for (; x < width - half; ++x) {
            Sum sum;
            for (std::int64_t k = 0; k < record.kernelLength; ++k) {
                addWeighted<Pixel>(sum, record.taps[k], sourceRow(record, y) + offsetOf<Pixel>(x - half + k));
            }
            store(sum, record.divisor, destinationRow(record, y) + offsetOf<Pixel>(x));
        }
        copyPixels<Pixel>(record, x, y, width - x);
    }
}

template<class Pixel, class Sum>
void convolve1b(const Convolve1Record& record) {
    const std::int64_t height = record.height;
    const std::int64_t half = record.kernelLength / 2;
    for (std::int64_t x = record.firstRow; x < record.width; x += record.rowStep) {
        for (std::int64_t y = 0; y < std::min(half, height); ++y) {
            copyPixels<Pixel>(record, x, y, 1);
        }
        for (std::int64_t y = half; y < height - half; ++y) {
            Sum sum;
            for (std::int64_t k = 0; k < record.kernelLength; ++k) {
                addWeighted<Pixel>(sum, record.taps[k], sourceRow(record, y - half + k) + offsetOf<Pixel>(x));
            }
            store(sum, record.divisor, destinationRow(record, y) + offsetOf<Pixel>(x));
        }
        // In columns shorter than the kernel some are copied a second time.
        for (std::int64_t y = std::max<std::int64_t>(0, height - half); y < height; ++y) {
            copyPixels<Pixel>(record, x, y, 1);
        }
    }
}

template<class Pixel>
void copy_edges(const Convolve2Record& record) {
    const std::int64_t width = record.width;
    const std::int64_t height = record.height;
    // Pictures smaller than the kernel are all edge.
    const std::int64_t rows = std::min<std::int64_t>(record.kernelHeight / 2, height);
    const std::int64_t columns = std::min<std::int64_t>(record.kernelWidth / 2, width);
    for (std::int64_t i = 0; i < rows; ++i) {
        copyPixels<Pixel>(record, 0, i, width);
        copyPixels<Pixel>(record, 0, height - 1 - i, width);
    }
    for (std::int64_t y = 0; y < height; ++y) {
        copyPixels<Pixel>(record, 0, y, columns);
        copyPixels<Pixel>(record, width - columns, y, columns);
    }
}

// There is no generic pixel, so these are all that are ever needed.

template void convolve2<GPixel, GPixelSum>(const Convolve2Record&);
template void convolve2<GAPixel, GAPixelSum>(const Convolve2Record&);
template void convolve2<RGBPixel, RGBPixelSum>(const Convolve2Record&);
template void convolve2<RGBAPixel, RGBAPixelSum>(const Convolve2Record&);

template void convolve2Span<GPixel, GPixelSum>(const Convolve2Record&, std::int64_t, std::int64_t,
                                               std::int64_t);
template void convolve2Span<GAPixel, GAPixelSum>(const Convolve2Record&, std::int64_t, std::int64_t,
                                                 std::int64_t);
template void convolve2Span<RGBPixel, RGBPixelSum>(const Convolve2Record&, std::int64_t, std::int64_t,
                                                   std::int64_t);
template void convolve2Span<RGBAPixel, RGBAPixelSum>(const Convolve2Record&, std::int64_t, std::int64_t,
                                                     std::int64_t);

template void convolve1a<GPixel, GPixelSum>(const Convolve1Record&);
template void convolve1a<GAPixel, GAPixelSum>(const Convolve1Record&);
template void convolve1a<RGBPixel, RGBPixelSum>(const Convolve1Record&);
template void convolve1a<RGBAPixel, RGBAPixelSum>(const Convolve1Record&);

template void convolve1b<GPixel, GPixelSum>(const Convolve1Record&);
template void convolve1b<GAPixel, GAPixelSum>(const Convolve1Record&);
template void convolve1b<RGBPixel, RGBPixelSum>(const Convolve1Record&);
template void convolve1b<RGBAPixel, RGBAPixelSum>(const Convolve1Record&);

template void copy_edges<GPixel>(const Convolve2Record&);
template void copy_edges<GAPixel>(const Convolve2Record&);
template void copy_edges<RGBPixel>(const Convolve2Record&);
template void copy_edges<RGBAPixel>(const Convolve2Record&);

} // namespace Imaging::Plain
