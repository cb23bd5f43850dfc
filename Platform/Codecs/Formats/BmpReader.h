#pragma once

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/Formats/BmpHeaders.h"

#include <array>

namespace Imaging::Platform {

/// A BMP file in memory: 1, 2, 4, 8, 16, 24 or 32 bits a pixel, plain or with bit fields, 4 and 8 bits also
/// run-length encoded; with the headers of OS/2 1.x and 2.x and of Windows up to version 5. Pictures come out
/// as RGB of 8 bits, with alpha where the bit fields have it. Pixels that run-length encoding jumps over have
/// the first colour. Functions throw CodecExceptions.
class BmpReader {
public:
    /// Reads the headers. The bytes must outlive the reader.
    explicit BmpReader(ByteView bytes);

    const PictureHeader& header() const { return m_header; }

    DecodedPicture decode(const PictureLimits& limits) const;

private:
    struct Field {
        std::uint32_t mask = 0;
        int shift = 0;
        std::uint32_t largest = 0;

        std::uint8_t value(std::uint32_t pixel) const;
    };

    void readSizes();
    void readCoreHeader();
    void readCompression(std::uint32_t compression);
    void readFields(std::uint32_t compression);
    void setField(std::size_t index, std::uint32_t mask);
    void readColors();
    void readAppearance();
    void readProfile();
    std::size_t rowBytes() const;
    ByteView pixels() const { return m_bytes.subspan(m_offset); }
    const std::array<std::uint8_t, 3>& color(std::size_t index) const;
    void readRow(const std::uint8_t* from, std::uint8_t* to) const;
    void readIndices(const std::uint8_t* from, std::uint8_t* to) const;
    void readFieldPixels(const std::uint8_t* from, std::uint8_t* to) const;
    void readRuns(DecodedPicture& picture) const;
    std::uint64_t number(std::size_t offset, std::size_t count) const;
    std::uint64_t field(const BmpHeaders::Field& field) const; ///< of the second header

    ByteView m_bytes;
    PictureHeader m_header;
    std::size_t m_header_size = 0; // of the second header, which begins at byte 14
    std::size_t m_offset = 0;      // of the pixels
    std::uint32_t m_bits = 0;
    bool m_is_top_down = false;
    bool m_has_runs = false;
    std::size_t m_extra_masks = 0; // bytes between the header and the colours
    std::array<Field, 4> m_fields; // red, green, blue, alpha
    std::vector<std::array<std::uint8_t, 3>> m_colors;
};

} // namespace Imaging::Platform
