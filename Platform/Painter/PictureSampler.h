#pragma once

// Internal: a picture under a transform, read as rows of device pixels. Not installed.

#include "Platform/Painter/DrawablePicture.h"

#include <cairo.h>
#include <cstdint>
#include <memory>

namespace Imaging::Platform {

/// Pixels of a device from (left, top) up to but without (right, bottom), y downward.
struct PixelRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool isEmpty() const { return left >= right || top >= bottom; }
};

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

/// One colour everywhere.
std::unique_ptr<RowSampler> makeColorSampler(std::uint32_t word);

/// A picture's pixels under `placement`, which maps them (0 to width and height, y downward) to device
/// pixels, sampled for the pixels of `area` at their centres. Beyond the picture's edges its outermost pixels
/// go on.
///
/// Whole-pixel moves, quarter turns and flips give every pixel as it is. Other scalings along the axes
/// average all of the picture that falls on a device pixel, and interpolate linearly where less than one
/// pixel does. All other transforms interpolate bilinearly, with several samples a device pixel where more
/// than one pixel of the picture falls on it. Where the picture is reduced, its halved levels take part: 1
/// to 2 pixels of the level (2 to 4 under scalings along the axes below a quarter) fall on one of the device
/// along the axis that is reduced less.
///
/// Null when the transform has no inverse or draws the picture out so far in one direction against the other
/// that coordinates lose their meaning. Throws like PixelImage::transparent when a level cannot be made.
std::unique_ptr<RowSampler> makePictureSampler(DrawablePicture& picture, const cairo_matrix_t& placement,
                                               PixelRect area);

} // namespace Imaging::Platform
