#pragma once

// Internal: a picture under a transform, read as rows of device pixels. Not installed.

#include "Platform/Painter/Affine.h"
#include "Platform/Painter/PictureLevels.h"
#include "Platform/Painter/PixelRect.h"
#include "Platform/Painter/RowSampler.h"

#include <memory>

namespace Imaging::Platform {

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
std::unique_ptr<RowSampler> makePictureSampler(PictureLevels& picture, const Affine& placement,
                                               PixelRect area);

} // namespace Imaging::Platform
