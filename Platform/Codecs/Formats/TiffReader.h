#pragma once

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/Formats/TiffHandle.h"

namespace Imaging::Platform {

/// The first picture of a TIFF file in memory. Gray, RGB and CMYK of 8 and 16 bits are read sample by sample;
/// CMYK becomes RGB by the plain product of convertInks. All else that libtiff can show (palettes, few bits,
/// YCbCr, L*a*b*, LogLuv) becomes RGB of 8 bits through libtiff's own conversion. Functions throw
/// CodecExceptions.
class TiffReader {
public:
    /// How libtiff gets at the bytes. Copying hides from the decoders what comes behind a piece. It fails for
    /// some pictures, though; see needsMapping.
    enum class Access { Copied, Mapped };

    /// Reads the first directory. The bytes must outlive the reader. `maximumAllocation` bounds what libtiff
    /// may allocate at once, in bytes.
    TiffReader(ByteView bytes, Access access, std::uint64_t maximumAllocation);

    /// Whether the pixels can only be read with mapped access: libtiff 4.5 compares the size of an
    /// uncompressed tile with that of its own buffer, which it rounds up where it copies, before it converts
    /// to RGB.
    bool needsMapping() const { return m_way == Way::Raster && m_is_tiled && !m_is_compressed; }

    const PictureHeader& header() const { return m_header; }

    /// Checks that all compressed pieces lie within the data and together are no larger than they could
    /// sensibly be, so that shared ones cannot be used to keep a reader busy for hours.
    void checkPieces() const;

    /// What decoding takes beside the picture itself, in bytes.
    std::uint64_t workingBytes() const;

    /// Decodes into a picture that was allocated for this header.
    void readPixels(DecodedPicture& picture);

private:
    enum class Way { Samples, Inks, Raster };

    void readLayout();
    void readColor();
    void readAlpha(std::uint32_t colors);
    void readAppearance();
    void requireRaster();
    std::uint64_t pieceBytes(std::uint64_t rows) const;
    bool copiesWholeRows() const;
    std::uint32_t bytesPerSample() const { return m_bits / 8U; }
    void readPiece(std::uint32_t x, std::uint32_t y, std::uint16_t plane, std::uint8_t* to,
                   std::uint64_t size);
    void readStripsInPlace(DecodedPicture& picture);
    void readPieces(DecodedPicture& picture);
    void gatherPiece(std::uint32_t x, std::uint32_t y, std::uint8_t* scratch, std::uint8_t* to,
                     std::size_t bytesPerRow, const PictureHeader& piece);
    void readRaster(DecodedPicture& picture);
    [[noreturn]] void fail() const;

    TiffMemory m_memory;
    TiffLog m_log;
    TiffHandle m_tiff;
    PictureHeader m_header;
    Way m_way = Way::Raster;
    std::uint16_t m_bits = 1;
    std::uint16_t m_samples = 1;
    std::uint16_t m_photometric = 0;
    bool m_is_tiled = false;
    bool m_is_compressed = false;
    bool m_is_separate = false;
    bool m_is_straight = false;         // alpha is not in the colours yet
    std::vector<std::uint16_t> m_taken; // the file's samples that are used, in their order in the result
    std::uint32_t m_piece_width = 0;    // of a tile, or a strip's whole width
    std::uint32_t m_piece_height = 0;
};

} // namespace Imaging::Platform
