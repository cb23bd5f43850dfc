#pragma once

#include "Platform/Foundation/Data.h"

namespace Imaging::Platform {

/// What the segments of a JPEG 2000 codestream say of its picture (ISO/IEC 15444-1, annex A), read without
/// decoding anything.
struct Jpeg2000Codestream {
    /// One component.
    struct Component {
        std::uint32_t bits = 8;
        std::uint32_t stepX = 1; ///< the distance of its samples in pixels
        std::uint32_t stepY = 1;
    };

    std::uint32_t width = 0; ///< of the first component
    std::uint32_t height = 0;
    std::uint64_t tiles = 0;
    std::vector<Component> components;

    /// What openjpeg takes for the tiles and for the smallest pieces that samples are stored in, in bytes:
    /// each piece takes some hundred bytes however few samples it has, so that this may be far more than the
    /// picture itself.
    std::uint64_t structureBytes = 0;
};

/// Throws a CodecException (CorruptData) when the sizes make no sense or the codestream does not reach to its
/// end marker.
Jpeg2000Codestream readJpeg2000Codestream(ByteView bytes);

} // namespace Imaging::Platform
