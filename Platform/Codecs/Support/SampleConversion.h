#pragma once

#include "Platform/Codecs/Codec.h"

/// Arithmetic on one row of samples, laid out as a DecodedPicture's. Rows are aligned for their samples. With
/// `max` the largest sample (255 or 65535), every division is of whole numbers.
namespace Imaging::Platform {

/// Colour times alpha, rounded to nearest: (c * a + max / 2) / max. There are no ties, because max is odd.
void premultiplyRow(const PictureHeader& header, std::uint8_t* row);

/// Colour divided by alpha, rounded to nearest with ties upwards: (c * max + a / 2) / a, at most max; 0 where
/// alpha is 0. Premultiplying the result again gives the row back if no colour exceeded its alpha.
void unpremultiplyRow(const PictureHeader& header, std::uint8_t* row);

/// Gray samples between 0 = white and 0 = black: max - c, or a - c (at least 0) where they are premultiplied,
/// so that what is transparent stays 0.
void invertGrayRow(const PictureHeader& header, std::uint8_t* row, bool premultiplied);

/// The colour samples alone with 8 bits each: alpha is left out, 16-bit samples are rounded to nearest
/// ((c + 128) / 257).
void copyOpaqueBytes(const PictureHeader& header, const std::uint8_t* row, std::uint8_t* to);

/// Cyan, magenta, yellow and black (and alpha, where the header has it) to red, green and blue (and alpha) by
/// the plain product (1 - ink) * (1 - black), each rounded to nearest: (x * y + max / 2) / max. No profile
/// takes part. `inverted` samples are what is left of the paper's white (0 is full ink), as Adobe writes
/// them. `header` describes the result.
void convertInks(const PictureHeader& header, const std::uint8_t* inks, bool inverted, std::uint8_t* to);

} // namespace Imaging::Platform
