// Takes samples as they are stored wherever their layout is one of ours, piece by piece; what needs more
// than that libtiff converts to 32-bit pixels.

#include "Platform/Codecs/Formats/TiffReader.h"

#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/ExifOrientation.h"
#include "Platform/Codecs/Support/SampleConversion.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>

namespace Imaging::Platform {

namespace {

[[noreturn]] void failAsUnsupported(const std::string& what) {
    throw CodecException(NSErrorCode::UnsupportedFormat, "TIFF pictures " + what + " are not supported");
}

template<class Value>
Value field(const TiffHandle& tiff, std::uint32_t tag, Value absent) {
    Value value{};
    return TIFFGetFieldDefaulted(tiff.get(), tag, &value) != 0 ? value : absent;
}

/// One sample of each pixel of a row; steps are in samples.
template<class Sample>
void copySamples(const std::uint8_t* from, std::size_t fromStep, std::uint8_t* to, std::size_t toStep,
                 std::size_t count) {
    const auto* source = static_cast<const Sample*>(static_cast<const void*>(from));
    auto* target = static_cast<Sample*>(static_cast<void*>(to));
    for (std::size_t i = 0; i < count; ++i) target[i * toStep] = source[i * fromStep];
}

/// libtiff's conversion of any kind of picture to 32-bit pixels, in the order in which rows are stored.
class Raster {
public:
    explicit Raster(const TiffHandle& tiff) {
        constexpr int stopOnError = 1;
        if (TIFFRGBAImageOK(tiff.get(), m_message) == 0 ||
            TIFFRGBAImageBegin(&m_image, tiff.get(), stopOnError, m_message) == 0) {
            failAsUnsupported("of this kind (" + oneLine(m_message) + ")");
        }
        m_image.req_orientation = m_image.orientation; // no turning
    }
    ~Raster() { TIFFRGBAImageEnd(&m_image); }
    Raster(const Raster&) = delete;
    Raster& operator=(const Raster&) = delete;

    bool read(std::uint32_t firstRow, std::uint32_t rows, std::uint32_t* to) {
        m_image.row_offset = static_cast<int>(firstRow);
        return TIFFRGBAImageGet(&m_image, to, m_image.width, rows) != 0;
    }

private:
    TIFFRGBAImage m_image{};
    char m_message[1024] = {};
};

} // namespace

TiffReader::TiffReader(ByteView bytes, Access access, std::uint64_t maximumAllocation) : m_memory{bytes} {
    checkTiffDirectory(bytes);
    const char* const mode =
        access == Access::Copied ? "rmc" : "rc"; // c: never chop strips into smaller ones
    m_tiff = openTiff(m_memory, m_log, mode, maximumAllocation);
    if (m_tiff == nullptr) fail();
    m_header.formatName = "TIFF";
    readLayout();
    readColor();
    readAppearance();
}

void TiffReader::fail() const {
    const auto says = [&](const char* words) { return std::strstr(m_log.message, words) != nullptr; };
    if (says("byte limit") || says("nteger overflow")) {
        throw CodecException(NSErrorCode::TooLarge, "the TIFF picture takes more memory than it may (" +
                                                        oneLine(m_log.message) + ")");
    }
    throw CodecException(NSErrorCode::CorruptData,
                         "the TIFF data is damaged (" + oneLine(m_log.message) + ")");
}

void TiffReader::readLayout() {
    m_header.width = field<std::uint32_t>(m_tiff, TIFFTAG_IMAGEWIDTH, 0);
    m_header.height = field<std::uint32_t>(m_tiff, TIFFTAG_IMAGELENGTH, 0);
    constexpr std::uint64_t anything = std::numeric_limits<std::uint64_t>::max();
    checkPictureLimits(m_header, {anything, anything}); // not empty
    m_bits = field<std::uint16_t>(m_tiff, TIFFTAG_BITSPERSAMPLE, 1);
    m_samples = field<std::uint16_t>(m_tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    m_is_separate =
        field<std::uint16_t>(m_tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
    m_is_tiled = TIFFIsTiled(m_tiff.get()) != 0;
    if (m_is_tiled) {
        m_piece_width = field<std::uint32_t>(m_tiff, TIFFTAG_TILEWIDTH, 0);
        m_piece_height = field<std::uint32_t>(m_tiff, TIFFTAG_TILELENGTH, 0);
    } else {
        m_piece_width = m_header.width;
        m_piece_height = std::min(field<std::uint32_t>(m_tiff, TIFFTAG_ROWSPERSTRIP, 0), m_header.height);
    }
    if (m_piece_width == 0 || m_piece_height == 0 || m_samples == 0 || m_bits == 0) {
        throw CodecException(NSErrorCode::CorruptData, "the TIFF data is damaged (its pieces have no size)");
    }
    const auto compression = field<std::uint16_t>(m_tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    m_is_compressed = compression != COMPRESSION_NONE;
    if (TIFFIsCODECConfigured(compression) == 0) {
        failAsUnsupported("with compression " + std::to_string(compression));
    }
}

void TiffReader::readColor() {
    if (TIFFGetField(m_tiff.get(), TIFFTAG_PHOTOMETRIC, &m_photometric) == 0) {
        m_photometric = m_samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    }
    std::uint32_t colors = 0; // samples of colour, where we read them ourselves
    if (m_photometric == PHOTOMETRIC_MINISBLACK || m_photometric == PHOTOMETRIC_MINISWHITE) colors = 1;
    if (m_photometric == PHOTOMETRIC_RGB) colors = 3;
    const bool isCmyk = m_photometric == PHOTOMETRIC_SEPARATED &&
                        field<std::uint16_t>(m_tiff, TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK;
    if (isCmyk) colors = 4;
    const auto format = field<std::uint16_t>(m_tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    const bool isUnsigned = format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID;
    if (colors != 0 && !isUnsigned) failAsUnsupported("with signed or floating-point samples");
    if (colors == 0 || (m_bits != 8 && m_bits != 16)) {
        requireRaster();
        return;
    }
    if (m_samples < colors) {
        throw CodecException(NSErrorCode::CorruptData, "the TIFF data is damaged (samples are missing)");
    }
    m_way = isCmyk ? Way::Inks : Way::Samples;
    m_header.bitsPerSample = m_bits;
    if (colors == 1) {
        const bool whiteIsZero = m_photometric == PHOTOMETRIC_MINISWHITE;
        m_header.color = whiteIsZero ? SampleColor::Black : SampleColor::White;
    }
    m_taken.resize(colors);
    std::iota(m_taken.begin(), m_taken.end(), std::uint16_t{0});
    readAlpha(colors);
}

/// The first extra sample that says it is alpha. Without a word on its meaning a sample may be anything.
void TiffReader::readAlpha(std::uint32_t colors) {
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (TIFFGetFieldDefaulted(m_tiff.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) == 0) return;
    for (std::uint32_t i = 0; i < count && count <= m_samples; ++i) {
        const std::uint32_t sample = m_samples - count + i; // extra samples come last
        const bool isAlpha = kinds[i] == EXTRASAMPLE_ASSOCALPHA || kinds[i] == EXTRASAMPLE_UNASSALPHA;
        if (!isAlpha || sample < colors) continue;
        m_header.hasAlpha = true;
        m_is_straight = kinds[i] == EXTRASAMPLE_UNASSALPHA;
        if (m_way != Way::Raster) m_taken.push_back(static_cast<std::uint16_t>(sample));
        return;
    }
}

/// libtiff makes everything opaque that it has to convert, which would look wrong where there is alpha.
void TiffReader::requireRaster() {
    readAlpha(0);
    if (m_header.hasAlpha) failAsUnsupported("of this kind with alpha");
    if (m_header.height > static_cast<std::uint32_t>(std::numeric_limits<int>::max())) {
        throw CodecException(NSErrorCode::TooLarge, "the TIFF picture is too high");
    }
    const Raster supported(m_tiff);
}

void TiffReader::readAppearance() {
    const auto orientation = field<std::uint16_t>(m_tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (orientation >= 1 && orientation <= 8) m_header.orientation = orientation;
    const int unit = field<std::uint16_t>(m_tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    m_header.resolutionX = pixelsPerInch(field<float>(m_tiff, TIFFTAG_XRESOLUTION, 0), unit);
    m_header.resolutionY = pixelsPerInch(field<float>(m_tiff, TIFFTAG_YRESOLUTION, 0), unit);
    std::uint32_t size = 0;
    void* profile = nullptr;
    if (TIFFGetField(m_tiff.get(), TIFFTAG_ICCPROFILE, &size, &profile) != 0 && profile != nullptr) {
        m_header.colorProfile =
            matchingProfile({static_cast<const std::uint8_t*>(profile), size}, m_header.color);
    }
}

void TiffReader::checkPieces() const {
    const std::uint64_t size = m_memory.input.size();
    const std::uint64_t pixels = std::uint64_t{m_header.width} * m_header.height;
    // Compression may make a little larger than plain samples, never twice as large and more.
    const auto twiceTheSamples = checkedProduct({pixels / 4 + 1, m_bits, m_samples});
    const std::uint64_t most = size + std::min(twiceTheSamples.value_or(1ULL << 62), std::uint64_t{1} << 62);
    const std::uint32_t count =
        m_is_tiled ? TIFFNumberOfTiles(m_tiff.get()) : TIFFNumberOfStrips(m_tiff.get());
    std::uint64_t total = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        int failed = 0;
        const std::uint64_t offset = TIFFGetStrileOffsetWithErr(m_tiff.get(), i, &failed);
        if (failed != 0) fail();
        const std::uint64_t bytes = TIFFGetStrileByteCountWithErr(m_tiff.get(), i, &failed);
        if (failed != 0) fail();
        if (bytes > size || offset > size - bytes) failForShortTiff();
        total += bytes;
        if (total > most) {
            throw CodecException(NSErrorCode::CorruptData,
                                 "the TIFF data is damaged (its pieces overlap one another)");
        }
    }
}

/// The decoded bytes of `rows` rows of one piece, of one plane where planes are separate; the largest number
/// where that does not fit.
std::uint64_t TiffReader::pieceBytes(std::uint64_t rows) const {
    const std::uint64_t samples = m_is_separate ? 1 : m_samples;
    const auto bits = checkedProduct({m_piece_width, samples, m_bits});
    if (!bits || *bits > std::numeric_limits<std::uint64_t>::max() - 7) {
        return std::numeric_limits<std::uint64_t>::max();
    }
    return checkedProduct({(*bits + 7) / 8, rows}).value_or(std::numeric_limits<std::uint64_t>::max());
}

/// Whether the rows of a piece are those of the picture, byte for byte.
bool TiffReader::copiesWholeRows() const {
    return m_way == Way::Samples && m_taken.size() == m_samples && (!m_is_separate || m_samples == 1);
}

std::uint64_t TiffReader::workingBytes() const {
    if (copiesWholeRows() && !m_is_tiled) return 0;
    // Beside a decoded piece of each plane, at most four bytes for each of the piece's pixels (raster), or as
    // many as the taken samples have (inks).
    const std::uint64_t planes = m_way == Way::Raster && m_is_separate ? m_samples : 1;
    std::uint64_t perPixel = 0;
    if (m_way == Way::Raster) perPixel = 4;
    if (m_way == Way::Inks) perPixel = m_taken.size() * bytesPerSample();
    const std::uint32_t width = m_way == Way::Raster ? m_header.width : m_piece_width;
    const auto pieces = checkedProduct({pieceBytes(m_piece_height), planes});
    const auto pixels = checkedProduct({width, m_piece_height, perPixel});
    std::uint64_t sum = 0;
    if (!pieces || !pixels || __builtin_add_overflow(*pieces, *pixels, &sum)) {
        return std::numeric_limits<std::uint64_t>::max();
    }
    return sum;
}

void TiffReader::readPixels(DecodedPicture& picture) {
    m_log = {};
    if (m_way == Way::Raster) {
        readRaster(picture);
    } else if (copiesWholeRows() && !m_is_tiled) {
        readStripsInPlace(picture);
    } else {
        readPieces(picture);
    }
    if (m_log.hasDamage) fail();
    for (std::size_t y = 0; y < m_header.height && m_is_straight; ++y) {
        premultiplyRow(m_header, picture.pixels.data() + y * picture.bytesPerRow);
    }
}

void TiffReader::readPiece(std::uint32_t x, std::uint32_t y, std::uint16_t plane, std::uint8_t* to,
                           std::uint64_t size) {
    TIFF* const tiff = m_tiff.get();
    const auto wanted = static_cast<tmsize_t>(size);
    const tmsize_t got = m_is_tiled
                             ? TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, plane), to, wanted)
                             : TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, y, plane), to, wanted);
    if (got != wanted) fail();
}

void TiffReader::readStripsInPlace(DecodedPicture& picture) {
    for (std::uint64_t y = 0; y < m_header.height; y += m_piece_height) {
        const std::uint64_t rows = std::min<std::uint64_t>(m_piece_height, m_header.height - y);
        readPiece(0, static_cast<std::uint32_t>(y), 0, picture.pixels.data() + y * picture.bytesPerRow,
                  rows * picture.bytesPerRow);
    }
}

void TiffReader::readPieces(DecodedPicture& picture) {
    PixelBuffer scratch = allocateWorkingBytes(pieceBytes(m_piece_height));
    PictureHeader piece; // describes the part of a piece that lies within the picture
    piece.bitsPerSample = m_header.bitsPerSample;
    piece.color = m_header.color;
    piece.hasAlpha = m_header.hasAlpha;
    const std::size_t inkBytes = m_taken.size() * bytesPerSample();
    PixelBuffer inks;
    if (m_way == Way::Inks)
        inks = allocateWorkingBytes(std::uint64_t{m_piece_width} * m_piece_height * inkBytes);
    for (std::uint64_t y = 0; y < m_header.height; y += m_piece_height) {
        piece.height =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(m_piece_height, m_header.height - y));
        for (std::uint64_t x = 0; x < m_header.width; x += m_piece_width) {
            piece.width =
                static_cast<std::uint32_t>(std::min<std::uint64_t>(m_piece_width, m_header.width - x));
            const auto left = static_cast<std::uint32_t>(x);
            const auto top = static_cast<std::uint32_t>(y);
            std::uint8_t* to = picture.pixels.data() + y * picture.bytesPerRow + x * m_header.bytesPerPixel();
            if (m_way == Way::Samples) {
                gatherPiece(left, top, scratch.data(), to, picture.bytesPerRow, piece);
                continue;
            }
            const std::size_t inkRow = piece.width * inkBytes;
            gatherPiece(left, top, scratch.data(), inks.data(), inkRow, piece);
            for (std::size_t row = 0; row < piece.height; ++row) {
                convertInks(piece, inks.data() + row * inkRow, false, to + row * picture.bytesPerRow);
            }
        }
    }
}

/// Decodes one piece plane by plane and puts the taken samples beside one another.
void TiffReader::gatherPiece(std::uint32_t x, std::uint32_t y, std::uint8_t* scratch, std::uint8_t* to,
                             std::size_t bytesPerRow, const PictureHeader& piece) {
    const std::uint32_t bytes = bytesPerSample();
    // The last strip has only the rows that are left; tiles are always whole.
    const std::uint64_t size = pieceBytes(m_is_tiled ? m_piece_height : piece.height);
    const std::size_t scratchRow = pieceBytes(1);
    const std::size_t fromStep = m_is_separate ? 1 : m_samples;
    const std::size_t toStep = m_taken.size();
    if (!m_is_separate) readPiece(x, y, 0, scratch, size);
    for (std::size_t i = 0; i < m_taken.size(); ++i) {
        if (m_is_separate) readPiece(x, y, m_taken[i], scratch, size);
        const std::size_t first = m_is_separate ? 0 : std::size_t{m_taken[i]} * bytes;
        for (std::size_t row = 0; row < piece.height; ++row) {
            const std::uint8_t* from = scratch + row * scratchRow + first;
            std::uint8_t* target = to + row * bytesPerRow + i * bytes;
            if (bytes == 1) {
                copySamples<std::uint8_t>(from, fromStep, target, toStep, piece.width);
            } else {
                copySamples<std::uint16_t>(from, fromStep, target, toStep, piece.width);
            }
        }
    }
}

/// Row by row of pieces, so that each is decoded once and no second picture is needed.
void TiffReader::readRaster(DecodedPicture& picture) {
    Raster raster(m_tiff);
    const std::size_t width = m_header.width;
    PixelBuffer band = allocateWorkingBytes(std::uint64_t{width} * m_piece_height * sizeof(std::uint32_t));
    auto* const pixels = static_cast<std::uint32_t*>(static_cast<void*>(band.data()));
    for (std::uint64_t y = 0; y < m_header.height; y += m_piece_height) {
        const auto rows =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(m_piece_height, m_header.height - y));
        if (!raster.read(static_cast<std::uint32_t>(y), rows, pixels)) fail();
        std::uint8_t* to = picture.pixels.data() + y * picture.bytesPerRow;
        std::for_each_n(pixels, width * rows, [&](std::uint32_t pixel) {
            *to++ = static_cast<std::uint8_t>(TIFFGetR(pixel));
            *to++ = static_cast<std::uint8_t>(TIFFGetG(pixel));
            *to++ = static_cast<std::uint8_t>(TIFFGetB(pixel));
        });
    }
}

} // namespace Imaging::Platform
