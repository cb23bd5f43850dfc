#pragma once

#include "Platform/Codecs/Codec.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Imaging::Platform {

/// Colours for pixels that have no room for their own, and the number of each pixel's.
struct IndexedPicture {
    std::vector<std::array<std::uint8_t, 3>> colors; ///< 1 to 256; the transparent one is black
    int transparent = -1;                            ///< the number of the transparent colour, or -1
    NSData indices;                                  ///< row after row without padding
};

/// Reduces a picture to at most 256 colours. Pixels with an alpha below one half become transparent and
/// all others opaque in their straight colour. Up to 256 colours (255 where something is transparent) are
/// kept exactly. More are chosen by cutting the box of colours with the largest sum of squared distances in
/// two until there are enough, and then moved to the mean of the pixels nearest to them three times. A
/// pixel's colour is the nearest one; with `diffusesErrors` what is left over goes to the neighbours as
/// R. Floyd and L. Steinberg described it in 1976. Throws a CodecException (TooLarge) without memory.
IndexedPicture reduceColors(const PictureView& picture, bool diffusesErrors);

} // namespace Imaging::Platform
