#pragma once

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/Formats/Jpeg2000Codestream.h"
#include "Platform/Codecs/Formats/Jpeg2000Library.h"

namespace Imaging::Platform {

/// A JPEG 2000 picture, as a JP2 file or a bare codestream: gray and RGB of 8 bits, or of 16 where the file
/// has more; palettes, YCbCr and CMYK become RGB (see convertInks), and reduced components are spread by
/// taking the sample that covers a pixel. Functions throw CodecExceptions.
class Jpeg2000Reader {
public:
    /// Reads what the boxes and segments say, by our own means: openjpeg takes memory for whatever they
    /// promise. The bytes must outlive the reader.
    explicit Jpeg2000Reader(ByteView bytes);

    const PictureHeader& header() const { return m_header; }

    DecodedPicture decode(const PictureLimits& limits);

private:
    enum class Kind { Gray, RGB, YCC, CMYK };

    void readBoxes();
    void readColor(ByteView box);
    void readPalette(ByteView box);
    void readChannels(ByteView box);
    void readResolution(ByteView box);
    Kind kindOfColor() const;
    void describe();
    std::size_t colorSamples() const { return m_kind == Kind::Gray ? 1 : m_kind == Kind::CMYK ? 4 : 3; }
    std::uint64_t workingBytes() const;
    Jpeg2000Image decodedImage();
    std::vector<const opj_image_comp_t*> channels(const opj_image_t& image) const;
    void copyChannel(const opj_image_comp_t& channel, const opj_image_comp_t& first, std::size_t y,
                     std::uint16_t* to) const;
    void writeRow(std::vector<std::uint16_t>& row, std::uint8_t* to) const;
    void convertYcc(std::vector<std::uint16_t>& row) const;

    ByteView m_bytes;
    bool m_is_file = true; // and no bare codestream
    PictureHeader m_header;
    Jpeg2000Codestream m_codestream;
    Jpeg2000Log m_log;
    std::size_t m_palette_columns = 0; // 0 without a palette
    std::uint32_t m_palette_bits = 0;
    std::uint64_t m_enumerated_color = 0; // of the colour box, or 0
    NSData m_profile;
    bool m_is_premultiplied = false;
    Kind m_kind = Kind::RGB;
};

} // namespace Imaging::Platform
