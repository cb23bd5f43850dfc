#pragma once

// Internal: where the painter's pictures come from. Not installed.

#include <cstdint>

namespace Imaging::Platform {

/// Something that is read row by row as premultiplied words in the sRGB colour space. It can be read from
/// several threads at a time.
class PictureRows {
public:
    virtual ~PictureRows() = default;

    virtual int width() const = 0;
    virtual int height() const = 0;

    /// Whether every pixel is known to be opaque.
    virtual bool isOpaque() const = 0;

    /// Row y, counted from the top, into `width` words.
    virtual void read(int y, std::uint32_t* words) const = 0;
};

} // namespace Imaging::Platform
