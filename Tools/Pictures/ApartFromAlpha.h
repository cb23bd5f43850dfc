#pragma once

#include "Imaging/Image.h"

#include <functional>
#include <memory>

namespace Imaging::Tool {

/// Puts a node over a picture that changes its colours, and leaves its transparency alone.
///
/// `source` is plain pixels, RGB with premultiplied alpha. `make` gets a node of the same size in RGB without
/// alpha that holds the colours themselves, round(sample * 255 / alpha), and puts a node over it that keeps
/// layout and size. Of that one's samples the result is made: round(sample * alpha / 255), and the alpha of
/// the source. So a pixel at a soft edge gets the colour that an opaque one of its own colour gets, and where
/// the colours stay as they are so do the samples, to the bit. What is fully transparent stays zero.
std::shared_ptr<Imaging::IMGImage> apartFromAlpha(
    const std::shared_ptr<Imaging::IMGImage>& source,
    const std::function<std::shared_ptr<Imaging::IMGImage>(std::shared_ptr<Imaging::IMGImage>)>& make);

} // namespace Imaging::Tool
