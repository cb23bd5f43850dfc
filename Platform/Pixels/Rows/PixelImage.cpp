// Words in a buffer, and their halves: two rows become one, two columns become one, or both.

#include "Platform/Pixels/Rows/PixelImage.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Pixels/PictureLimits.h"
#include "Platform/Pixels/Rows/ParallelRows.h"
#include "Platform/Pixels/Rows/SampleMixing.h"

#include <algorithm>
#include <limits>
#include <string>

namespace Imaging::Platform {

namespace {

/// The limits count bytes as they will be allocated. Sides are kept so short that a row's bytes fit in an
/// int, in which Cairo counts them.
std::size_t checkedBytes(std::int64_t width, std::int64_t height) {
    const std::string measures = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width <= 0 || height <= 0) {
        throw NSException(NSImageCacheException, "a picture of " + measures + " cannot be drawn");
    }
    const PictureLimits limits = pictureLimits();
    const auto pixels =
        checkedProduct({static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height)});
    constexpr std::int64_t longest = std::numeric_limits<int>::max() / 4;
    if (width > longest || height > longest || !pixels.has_value() || *pixels > limits.maximumPixels ||
        *pixels > limits.maximumBytes / 4) {
        throw NSException(NSImageCacheException,
                          "a picture of " + measures + " is beyond the picture limits");
    }
    return static_cast<std::size_t>(*pixels * 4);
}

} // namespace

std::shared_ptr<PixelImage> PixelImage::transparent(std::int64_t width, std::int64_t height) {
    PixelBuffer buffer = PixelBuffer::zeroed(checkedBytes(width, height));
    return std::shared_ptr<PixelImage>(
        new PixelImage(std::move(buffer), static_cast<int>(width), static_cast<int>(height)));
}

std::shared_ptr<PixelImage> PixelImage::uninitialised(std::int64_t width, std::int64_t height) {
    PixelBuffer buffer = PixelBuffer::uninitialised(checkedBytes(width, height));
    return std::shared_ptr<PixelImage>(
        new PixelImage(std::move(buffer), static_cast<int>(width), static_cast<int>(height)));
}

void halveRows(const std::uint32_t* above, const std::uint32_t* below, int width, bool acrossX,
               std::uint32_t* words) {
    if (!acrossX) {
        meanRow(above, below, words, static_cast<std::size_t>(width));
        return;
    }
    // The vector code takes whole pairs; an odd last column has no neighbour but itself.
    const std::size_t pairs = static_cast<std::size_t>(width) / 2;
    halveRow(above, below, words, pairs);
    if (width % 2 != 0) meanRow(above + 2 * pairs, below + 2 * pairs, words + pairs, 1);
}

std::shared_ptr<PixelImage> halved(const PixelImage& image, bool acrossX, bool acrossY) {
    const int width = acrossX ? (image.width() - 1) / 2 + 1 : image.width();
    const int height = acrossY ? (image.height() - 1) / 2 + 1 : image.height();
    std::shared_ptr<PixelImage> result = PixelImage::uninitialised(width, height);
    forEachRowBand(height, minimumRowsPerBand(image.width()), [&](std::int64_t first, std::int64_t end) {
        for (int y = static_cast<int>(first); y < end; ++y) {
            const int above = acrossY ? 2 * y : y;
            // An odd last row is halved with itself, which leaves it as it is.
            const int below = acrossY ? std::min(above + 1, image.height() - 1) : above;
            halveRows(image.row(above), image.row(below), image.width(), acrossX, result->row(y));
        }
    });
    return result;
}

} // namespace Imaging::Platform
