// TIFF with libtiff: the first picture of a file in memory, both byte orders, BigTIFF too.
//
// What is written keeps every sample bit for bit and is not compressed, because TIFF is also how programs
// hand pictures to one another in memory. A synthetic photograph of 12 megapixels (48 MB) takes 0.02 seconds
// each way so; LZW with its predictor takes 0.5 and 0.15 for half of the size, deflate 4.5 and 0.1 for a
// little less than that. Who wants small lossless files has PNG.

#include "Platform/Codecs/Formats/TiffCodec.h"

#include "Platform/Codecs/Formats/TiffHandle.h"
#include "Platform/Codecs/Formats/TiffReader.h"
#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Imaging::Platform {

namespace {

/// Writers may choose their strips. This is large enough for strips to cost nothing and small enough for
/// readers that hold one at a time.
constexpr std::uint64_t bytesPerStrip = 1ULL << 20;

/// From here on the offsets of classic TIFF, which have 32 bits, might not do. 16 MiB are for all the rest.
constexpr std::uint64_t classicTiffBytes = (1ULL << 32) - (16ULL << 20);

/// What the first directory may make libtiff allocate at once: every value is in the data, and the widest
/// change that libtiff makes to one is from 8 to 64 bits.
std::uint64_t directoryAllocation(ByteView bytes) { return 8 * std::uint64_t{bytes.size()} + (1ULL << 20); }

class TiffWriter {
public:
    explicit TiffWriter(const PictureView& picture)
        : m_picture(picture), m_row_bytes(picture.header.width * picture.header.bytesPerPixel()) {
        m_memory.output = &m_bytes;
    }

    NSData encode();

private:
    void describe();
    void describeAppearance();
    void writeStrips();
    template<class... Values>
    void set(std::uint32_t tag, Values... values) {
        if (TIFFSetField(m_tiff.get(), tag, values...) == 0) fail();
    }
    [[noreturn]] void fail() const {
        throw CodecException(NSErrorCode::TooLarge,
                             "the picture cannot be written as TIFF (" + oneLine(m_log.message) + ")");
    }
    int rowsPerStrip() const {
        const std::uint64_t rows = std::max<std::uint64_t>(1, bytesPerStrip / m_row_bytes);
        return static_cast<int>(std::min<std::uint64_t>(rows, m_picture.header.height));
    }

    PictureView m_picture;
    std::uint64_t m_row_bytes;
    NSData m_bytes;
    TiffMemory m_memory;
    TiffLog m_log;
    TiffHandle m_tiff;
};

void TiffWriter::describe() {
    const PictureHeader& header = m_picture.header;
    int photometric = PHOTOMETRIC_RGB;
    if (header.color == SampleColor::White) photometric = PHOTOMETRIC_MINISBLACK;
    if (header.color == SampleColor::Black) photometric = PHOTOMETRIC_MINISWHITE;
    set(TIFFTAG_IMAGEWIDTH, header.width);
    set(TIFFTAG_IMAGELENGTH, header.height);
    set(TIFFTAG_BITSPERSAMPLE, header.bitsPerSample);
    set(TIFFTAG_SAMPLESPERPIXEL, header.samplesPerPixel());
    set(TIFFTAG_PHOTOMETRIC, photometric);
    set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    set(TIFFTAG_ROWSPERSTRIP, rowsPerStrip());
    set(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (header.hasAlpha) {
        const std::array<std::uint16_t, 1> kind = {static_cast<std::uint16_t>(
            m_picture.premultiplied ? EXTRASAMPLE_ASSOCALPHA : EXTRASAMPLE_UNASSALPHA)};
        set(TIFFTAG_EXTRASAMPLES, 1, kind.data());
    }
}

void TiffWriter::describeAppearance() {
    const PictureHeader& header = m_picture.header;
    const auto fits = [](double value) {
        return value > 0 && value < std::numeric_limits<std::uint32_t>::max();
    };
    if (fits(header.resolutionX) && fits(header.resolutionY)) {
        set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        set(TIFFTAG_XRESOLUTION, header.resolutionX);
        set(TIFFTAG_YRESOLUTION, header.resolutionY);
    }
    const NSData profile = profileToWrite(header);
    set(TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.size()), profile.data());
}

/// Samples that are not compressed and in the machine's byte order are written as they lie in memory.
void TiffWriter::writeStrips() {
    const PictureHeader& header = m_picture.header;
    const auto rowsAtOnce = static_cast<std::uint64_t>(rowsPerStrip());
    const bool isPadded = m_picture.bytesPerRow != m_row_bytes;
    PixelBuffer packed;
    if (isPadded) packed = allocateWorkingBytes(rowsAtOnce * m_row_bytes);
    std::uint32_t strip = 0;
    for (std::uint64_t y = 0; y < header.height; y += rowsAtOnce) {
        const std::uint64_t rows = std::min(rowsAtOnce, header.height - y);
        const std::uint8_t* from = m_picture.pixels + y * m_picture.bytesPerRow;
        for (std::uint64_t row = 0; row < rows && isPadded; ++row) {
            std::copy_n(from + row * m_picture.bytesPerRow, m_row_bytes, packed.data() + row * m_row_bytes);
        }
        auto* source = isPadded ? packed.data() : const_cast<std::uint8_t*>(from); // which is only read
        const auto size = static_cast<tmsize_t>(rows * m_row_bytes);
        if (TIFFWriteRawStrip(m_tiff.get(), strip++, source, size) != size) fail();
    }
}

NSData TiffWriter::encode() {
    const std::uint64_t pixels = m_row_bytes * m_picture.header.height;
    const std::uint64_t size = pixels + m_picture.header.colorProfile.size();
    m_bytes.reserve(size + 4096 + 16 * (pixels / bytesPerStrip));
    constexpr std::uint64_t unlimited = 0;
    m_tiff = openTiff(m_memory, m_log, size < classicTiffBytes ? "w" : "w8", unlimited);
    if (m_tiff == nullptr) fail();
    describe();
    describeAppearance();
    writeStrips();
    if (TIFFWriteDirectory(m_tiff.get()) == 0) fail();
    m_tiff.reset();
    return std::move(m_bytes);
}

class TiffCodec final : public Codec {
public:
    std::string_view formatName() const override { return "TIFF"; }

    bool recognises(ByteView bytes) const override {
        if (bytes.size() < 4) return false;
        const auto is = [&](std::uint8_t order, std::size_t low, std::size_t high) {
            const bool isVersion = bytes[low] == 42 || bytes[low] == 43; // classic and BigTIFF
            return bytes[0] == order && bytes[1] == order && isVersion && bytes[high] == 0;
        };
        return is('I', 2, 3) || is('M', 3, 2);
    }

    PictureHeader readHeader(ByteView bytes) const override {
        return TiffReader(bytes, TiffReader::Access::Copied, directoryAllocation(bytes)).header();
    }

    /// Opens the file twice: libtiff may take much memory at once only when the directory is known to be
    /// sane.
    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        const TiffReader checked(bytes, TiffReader::Access::Copied, directoryAllocation(bytes));
        checkPictureLimits(checked.header(), limits);
        checked.checkPieces();
        DecodedPicture picture = allocatePicture(checked.header(), limits, checked.workingBytes());
        const std::uint64_t atOnce =
            std::max({limits.maximumBytes, directoryAllocation(bytes), std::uint64_t{uncountedWorkingBytes}});
        const bool mapped = checked.needsMapping();
        const auto access = mapped ? TiffReader::Access::Mapped : TiffReader::Access::Copied;
        TiffReader(bytes, access, atOnce).readPixels(picture);
        return picture;
    }

    NSData encode(const PictureView& picture, const EncodeOptions&) const override {
        checkEncodable(picture);
        return TiffWriter(picture).encode();
    }
};

} // namespace

std::shared_ptr<const Codec> makeTiffCodec() { return std::make_shared<TiffCodec>(); }

} // namespace Imaging::Platform
