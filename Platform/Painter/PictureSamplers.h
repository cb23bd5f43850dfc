#pragma once

// Internal: the kinds of picture samplers, of which `makePictureSampler` chooses. Not installed.

#include "Platform/Painter/PictureSampler.h"

namespace Imaging::Platform {

/// A level of a picture, and how device pixels map to its pixels.
struct PlacedLevel {
    std::shared_ptr<const PixelImage> image;
    cairo_matrix_t inverse; ///< device pixels to the level's pixels, both counted from their edges
    bool opaque = false;
};

/// For inverses that map pixels onto whole pixels: null for all others. A distance of up to 1/512 of a
/// pixel, which cannot be seen, counts as none.
std::unique_ptr<RowSampler> makeWholePixelSampler(const PlacedLevel& level, PixelRect area);

/// For inverses that move the picture, by whatever part of a pixel: null for all others. The same mixes as
/// the scaled sampler's, at less cost.
std::unique_ptr<RowSampler> makeShiftedSampler(const PlacedLevel& level, PixelRect area);

/// For inverses without rotation or slant whose steps are at most `maximumScaledStep` pixels.
constexpr double maximumScaledStep = 16;
std::unique_ptr<RowSampler> makeScaledSampler(const PlacedLevel& level, PixelRect area);

/// For any inverse; each device pixel is the mean of `across` by `down` samples, at most 16 each.
std::unique_ptr<RowSampler> makeAffineSampler(const PlacedLevel& level, int across, int down);

} // namespace Imaging::Platform
