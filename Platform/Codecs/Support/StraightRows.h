#pragma once

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The rows of a picture for formats that store straight colour: gray or red, green, blue, and then alpha
/// where the picture has it, with 0 for black, at the picture's own depth. Rows are read in place where they
/// lie like that already. Both views and copies last until the next row is asked for.
class StraightRows {
public:
    explicit StraightRows(const PictureView& picture);

    /// One row at the picture's depth and with its count of samples.
    const std::uint8_t* row(std::size_t y);

    /// One row as red, green, blue and alpha of 8 bits each: 16 bits are rounded to nearest, gray is spread.
    const std::uint8_t* rgba(std::size_t y);

    const PictureHeader& header() const { return m_picture.header; }

private:
    PictureView m_picture;
    PixelBuffer m_copy;
    NSData m_rgba;
};

} // namespace Imaging::Platform
