// JPEG with libjpeg. Pictures come out as gray or RGB of 8 bits; CMYK and YCCK become RGB by the plain
// product of convertInks, without their profile. A profile whose pieces do not fit together is left out.

#include "Platform/Codecs/Formats/JpegCodec.h"

#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/ExifOrientation.h"
#include "Platform/Codecs/Support/SampleConversion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio> // jpeglib.h wants FILE declared

#include <jpeglib.h>

#include <jerror.h> // after jpeglib.h, whose settings decide on the numbers of the messages

namespace Imaging::Platform {

namespace {

/// Every scan of a progressive file goes over the whole picture however few bytes it has. Sensible files have
/// about ten scans; more than this many are an attack on the reader's time.
constexpr int maximumScans = 100;

/// The most that the library can give at one call: a row of blocks at the largest sampling.
constexpr JDIMENSION rowsAtOnce = DCTSIZE * MAX_SAMP_FACTOR;

constexpr int exifMarker = JPEG_APP0 + 1;
constexpr int profileMarker = JPEG_APP0 + 2;
constexpr unsigned int maximumMarkerLength = 0xffff;
constexpr std::array<std::uint8_t, 6> exifPrefix = {'E', 'x', 'i', 'f', 0, 0};

/// What the library's callbacks leave for us. They run inside C code, so nothing here allocates.
struct JpegErrors {
    jpeg_error_mgr manager{};
    std::jmp_buf failed{};
    NSErrorCode code = NSErrorCode::CorruptData;
    bool cutShort = false;
    bool tooManyScans = false;
    char message[JMSG_LENGTH_MAX] = {};
};

JpegErrors& errorsOf(j_common_ptr info) { return *static_cast<JpegErrors*>(info->client_data); }

NSErrorCode codeOf(int message) {
    switch (message) {
    case JERR_ARITH_NOTIMPL:
    case JERR_BAD_PRECISION:
    case JERR_CCIR601_NOTIMPL:
    case JERR_COMPONENT_COUNT:
    case JERR_CONVERSION_NOTIMPL:
    case JERR_FRACT_SAMPLE_NOTIMPL:
    case JERR_NOTIMPL:
    case JERR_NOT_COMPILED:
    case JERR_SOF_UNSUPPORTED:
        return NSErrorCode::UnsupportedFormat;
    case JERR_IMAGE_TOO_BIG:
    case JERR_OUT_OF_MEMORY:
    case JERR_WIDTH_OVERFLOW:
        return NSErrorCode::TooLarge;
    default:
        return NSErrorCode::CorruptData;
    }
}

/// Warnings about things that leave the pixels as they should be. All others mean that samples were guessed.
bool isHarmless(int message) {
    return message == JWRN_EXTRANEOUS_DATA || message == JWRN_ADOBE_XFORM || message == JWRN_JFIF_MAJOR ||
           message == JWRN_NOT_SEQUENTIAL || message == JWRN_BOGUS_ICC;
}

[[noreturn]] void onError(j_common_ptr info) {
    JpegErrors& errors = errorsOf(info);
    const int message = info->err->msg_code;
    errors.code = codeOf(message);
    errors.cutShort = message == JWRN_JPEG_EOF || message == JERR_INPUT_EOF || message == JERR_INPUT_EMPTY;
    (*info->err->format_message)(info, errors.message);
    std::longjmp(errors.failed, 1);
}

void onMessage(j_common_ptr info, int level) {
    const bool isWarning = level < 0;
    if (isWarning && !isHarmless(info->err->msg_code)) onError(info);
}

void onProgress(j_common_ptr info) {
    const auto* reader = static_cast<jpeg_decompress_struct*>(static_cast<void*>(info));
    if (reader->input_scan_number <= maximumScans) return;
    errorsOf(info).tooManyScans = true;
    std::longjmp(errorsOf(info).failed, 1);
}

[[noreturn]] void raise(const JpegErrors& errors) {
    if (errors.tooManyScans) {
        throw CodecException(NSErrorCode::TooLarge, "the JPEG data has more than " +
                                                        std::to_string(maximumScans) +
                                                        " scans, which no sensible picture needs");
    }
    if (errors.cutShort) {
        throw CodecException(errors.code,
                             "the JPEG data ends before the picture is complete; the file may be cut short");
    }
    const std::string reason = " (" + oneLine(errors.message) + ")";
    switch (errors.code) {
    case NSErrorCode::UnsupportedFormat:
        throw CodecException(errors.code, "JPEG pictures of this kind are not supported" + reason);
    case NSErrorCode::TooLarge:
        throw CodecException(errors.code, "the JPEG picture is too large" + reason);
    default:
        throw CodecException(errors.code, "the JPEG data is damaged" + reason);
    }
}

void setUp(JpegErrors& errors) {
    jpeg_std_error(&errors.manager);
    errors.manager.error_exit = onError;
    errors.manager.emit_message = onMessage;
}

class JpegReader {
public:
    explicit JpegReader(ByteView bytes) : m_bytes(bytes) {
        setUp(m_errors);
        m_info.err = &m_errors.manager;
        m_info.client_data = &m_errors;
        m_progress.progress_monitor = onProgress;
    }
    ~JpegReader() {
        jpeg_destroy_decompress(&m_info);
        std::free(m_profile);
    }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    PictureHeader readHeader();
    DecodedPicture decode(const PictureLimits& limits);
    void check(const PictureLimits& limits);

private:
    template<class Steps>
    void run(Steps steps) {
        if (!ranToTheEnd(m_errors.failed, steps)) raise(m_errors);
    }
    void readUpToPixels();
    bool hasInks() const {
        return m_info.jpeg_color_space == JCS_CMYK || m_info.jpeg_color_space == JCS_YCCK;
    }
    SampleColor color() const;
    ExifFacts exifFacts() const;
    std::uint64_t workingBytes() const;
    void prepareDecoding();
    void readRows(DecodedPicture& picture, std::uint8_t* inks);
    void passRows(std::uint8_t* row);

    ByteView m_bytes;
    jpeg_decompress_struct m_info{};
    JpegErrors m_errors;
    jpeg_progress_mgr m_progress{};
    JOCTET* m_profile = nullptr;
    unsigned int m_profile_size = 0;
};

void JpegReader::readUpToPixels() {
    jpeg_create_decompress(&m_info);
    m_info.progress = &m_progress;
    jpeg_mem_src(&m_info, m_bytes.data(), m_bytes.size());
    jpeg_save_markers(&m_info, exifMarker, maximumMarkerLength);
    jpeg_save_markers(&m_info, profileMarker, maximumMarkerLength);
    jpeg_read_header(&m_info, TRUE);
    // False without a profile and with one in pieces that do not fit together: there is none either way.
    jpeg_read_icc_profile(&m_info, &m_profile, &m_profile_size);
}

SampleColor JpegReader::color() const {
    switch (m_info.jpeg_color_space) {
    case JCS_GRAYSCALE:
        return SampleColor::White;
    case JCS_RGB:
    case JCS_YCbCr:
    case JCS_CMYK:
    case JCS_YCCK:
        return SampleColor::RGB;
    default:
        throw CodecException(NSErrorCode::UnsupportedFormat, "JPEG pictures with " +
                                                                 std::to_string(m_info.num_components) +
                                                                 " components are not supported");
    }
}

ExifFacts JpegReader::exifFacts() const {
    for (auto marker = m_info.marker_list; marker != nullptr; marker = marker->next) {
        const ByteView data(marker->data, marker->data_length);
        if (marker->marker != exifMarker || data.size() < exifPrefix.size()) continue;
        if (!std::equal(exifPrefix.begin(), exifPrefix.end(), data.begin())) continue;
        return readExif(data.subspan(exifPrefix.size()));
    }
    return {};
}

PictureHeader JpegReader::readHeader() {
    run([this] { readUpToPixels(); });
    PictureHeader header;
    header.formatName = "JPEG";
    header.width = m_info.image_width;
    header.height = m_info.image_height;
    header.color = color();
    const ExifFacts facts = exifFacts();
    header.orientation = facts.orientation;
    // Density units 1 and 2 are inches and centimetres; EXIF counts 2 and 3 for the same. 0 is a mere aspect.
    const bool hasDensity =
        m_info.saw_JFIF_marker && m_info.density_unit != 0 && m_info.X_density != 0 && m_info.Y_density != 0;
    const int unit = m_info.density_unit + 1;
    header.resolutionX = hasDensity ? pixelsPerInch(m_info.X_density, unit) : facts.resolutionX;
    header.resolutionY = hasDensity ? pixelsPerInch(m_info.Y_density, unit) : facts.resolutionY;
    if (!hasInks() && m_profile != nullptr) {
        header.colorProfile = matchingProfile({m_profile, m_profile_size}, header.color);
    }
    return header;
}

/// Files of several scans are kept as coefficients of 16 bits until the last scan is there; others take a few
/// rows only.
std::uint64_t JpegReader::workingBytes() const {
    if (!m_info.progressive_mode && m_info.comps_in_scan == m_info.num_components) return 0;
    std::uint64_t bytes = 0;
    for (int i = 0; i < m_info.num_components; ++i) {
        const jpeg_component_info& component = m_info.comp_info[i];
        // The library rounds up to whole groups of blocks; there are at most 65500 / 8 + 4 of them each way.
        const std::uint64_t across = component.width_in_blocks + std::uint64_t{MAX_SAMP_FACTOR};
        const std::uint64_t down = component.height_in_blocks + std::uint64_t{MAX_SAMP_FACTOR};
        bytes += across * down * sizeof(JBLOCK);
    }
    return bytes;
}

void JpegReader::prepareDecoding() {
    m_info.dct_method = JDCT_ISLOW;
    m_info.do_fancy_upsampling = TRUE;
    if (hasInks()) {
        m_info.out_color_space = JCS_CMYK;
    } else {
        m_info.out_color_space = m_info.jpeg_color_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_RGB;
    }
}

void JpegReader::readRows(DecodedPicture& picture, std::uint8_t* inks) {
    prepareDecoding();
    jpeg_start_decompress(&m_info);
    const bool adobe = m_info.saw_Adobe_marker != FALSE;
    while (m_info.output_scanline < m_info.output_height) {
        std::uint8_t* row = picture.pixels.data() + m_info.output_scanline * picture.bytesPerRow;
        if (inks != nullptr) {
            jpeg_read_scanlines(&m_info, &inks, 1);
            convertInks(picture.header, inks, adobe, row);
            continue;
        }
        // As many as the library makes at once, straight to where they stay.
        std::array<JSAMPROW, rowsAtOnce> targets{};
        const JDIMENSION left = std::min(m_info.output_height - m_info.output_scanline, rowsAtOnce);
        for (std::size_t i = 0; i < left; ++i) targets[i] = row + i * picture.bytesPerRow;
        jpeg_read_scanlines(&m_info, targets.data(), left);
    }
    jpeg_finish_decompress(&m_info); // reads to the end, so that a missing end is noticed
}

DecodedPicture JpegReader::decode(const PictureLimits& limits) {
    PictureHeader header = readHeader();
    // Every warning that the library goes on after ends the decoding here, so every row is written.
    DecodedPicture picture = allocateUnwrittenPicture(std::move(header), limits, workingBytes());
    PixelBuffer inks;
    if (hasInks()) inks = allocateWorkingBytes(std::uint64_t{picture.header.width} * 4);
    std::uint8_t* const inkRow = inks.data();
    run([this, &picture, inkRow] { readRows(picture, inkRow); });
    return picture;
}

/// Decodes an eighth of the size and no more colour than the file has: all of the encoded data is read, and
/// next to nothing is computed from it.
void JpegReader::passRows(std::uint8_t* row) {
    m_info.scale_num = 1;
    m_info.scale_denom = DCTSIZE;
    m_info.do_fancy_upsampling = FALSE;
    m_info.out_color_space = m_info.jpeg_color_space == JCS_YCbCr ? JCS_GRAYSCALE : m_info.jpeg_color_space;
    jpeg_start_decompress(&m_info);
    while (m_info.output_scanline < m_info.output_height) jpeg_read_scanlines(&m_info, &row, 1);
    jpeg_finish_decompress(&m_info);
}

void JpegReader::check(const PictureLimits& limits) {
    const PictureHeader header = readHeader();
    checkLimitsWithWorkingBytes(header, limits, workingBytes());
    PixelBuffer row = allocateWorkingBytes(std::uint64_t{header.width} * MAX_COMPONENTS);
    std::uint8_t* const bytes = row.data();
    run([this, bytes] { passRows(bytes); });
}

/// Where the library puts what it has encoded: into a vector that grows as needed.
struct JpegDestination {
    jpeg_destination_mgr manager{};
    NSData bytes;
};

/// Makes room after the first `used` bytes. Exceptions must not pass through the library.
bool makeRoom(JpegDestination& to, std::size_t used) noexcept {
    try {
        to.bytes.resize(std::max<std::size_t>(65536, used * 2));
    } catch (const std::exception&) {
        return false;
    }
    to.manager.next_output_byte = to.bytes.data() + used;
    to.manager.free_in_buffer = to.bytes.size() - used;
    return true;
}

JpegDestination& destinationOf(j_compress_ptr info) {
    return *static_cast<JpegDestination*>(static_cast<void*>(info->dest)); // its first member
}

void onDestinationStart(j_compress_ptr info) {
    if (!makeRoom(destinationOf(info), 0)) ERREXIT1(info, JERR_OUT_OF_MEMORY, 0);
}

boolean onDestinationFull(j_compress_ptr info) {
    JpegDestination& to = destinationOf(info);
    if (!makeRoom(to, to.bytes.size())) ERREXIT1(info, JERR_OUT_OF_MEMORY, 0);
    return TRUE;
}

void onDestinationEnd(j_compress_ptr info) {
    JpegDestination& to = destinationOf(info);
    to.bytes.resize(to.bytes.size() - to.manager.free_in_buffer); // gets shorter, which cannot fail
}

class JpegWriter {
public:
    JpegWriter(const PictureView& picture, double quality)
        : m_picture(picture), m_profile(profileToWrite(picture.header)) {
        // The comparison that is false for NaN as well.
        m_quality = quality >= 0 ? static_cast<int>(std::lround(std::min(quality, 1.0) * 100)) : 0;
        m_quality = std::max(m_quality, 1);
        m_full_color = quality >= 0.9;
        setUp(m_errors);
        m_info.err = &m_errors.manager;
        m_info.client_data = &m_errors;
        m_to.manager = {nullptr, 0, onDestinationStart, onDestinationFull, onDestinationEnd};
    }
    ~JpegWriter() { jpeg_destroy_compress(&m_info); }
    JpegWriter(const JpegWriter&) = delete;
    JpegWriter& operator=(const JpegWriter&) = delete;

    NSData encode();

private:
    void describe();
    void describeResolution();
    void writeRows(std::uint8_t* copy, std::uint8_t* opaque);

    PictureView m_picture;
    NSData m_profile;
    int m_quality = 0;
    bool m_full_color = false;
    JpegDestination m_to;
    jpeg_compress_struct m_info{};
    JpegErrors m_errors;
};

void JpegWriter::describeResolution() {
    const auto fits = [](double value) { return value >= 0.5 && value < 65535.5; };
    const PictureHeader& header = m_picture.header;
    if (!fits(header.resolutionX) || !fits(header.resolutionY)) return;
    m_info.density_unit = 1;
    m_info.X_density = static_cast<UINT16>(std::lround(header.resolutionX));
    m_info.Y_density = static_cast<UINT16>(std::lround(header.resolutionY));
}

void JpegWriter::describe() {
    const bool isColor = m_picture.header.color == SampleColor::RGB;
    m_info.dest = &m_to.manager;
    m_info.image_width = m_picture.header.width;
    m_info.image_height = m_picture.header.height;
    m_info.input_components = m_picture.header.colorSamples();
    m_info.in_color_space = isColor ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&m_info);
    jpeg_set_quality(&m_info, m_quality, TRUE);
    m_info.dct_method = JDCT_ISLOW;
    if (isColor) {
        m_info.comp_info[0].h_samp_factor = m_full_color ? 1 : 2;
        m_info.comp_info[0].v_samp_factor = m_full_color ? 1 : 2;
    }
    describeResolution();
}

/// Rows that are not bytes without alpha already are changed in `copy` and reduced into `opaque`.
void JpegWriter::writeRows(std::uint8_t* copy, std::uint8_t* opaque) {
    const PictureHeader& header = m_picture.header;
    while (m_info.next_scanline < m_info.image_height) {
        const std::uint8_t* row = m_picture.pixels + m_info.next_scanline * m_picture.bytesPerRow;
        if (copy != nullptr) {
            std::copy_n(row, header.width * header.bytesPerPixel(), copy);
            if (header.color == SampleColor::Black) invertGrayRow(header, copy, m_picture.premultiplied);
            if (!m_picture.premultiplied) premultiplyRow(header, copy);
            copyOpaqueBytes(header, copy, opaque);
            row = opaque;
        }
        JSAMPROW source = const_cast<JSAMPROW>(row); // the library only reads it
        jpeg_write_scanlines(&m_info, &source, 1);
    }
}

NSData JpegWriter::encode() {
    const PictureHeader& header = m_picture.header;
    const bool isPlain = header.bitsPerSample == 8 && !header.hasAlpha && header.color != SampleColor::Black;
    PixelBuffer copy;
    PixelBuffer opaque;
    if (!isPlain) {
        copy = allocateWorkingBytes(header.width * header.bytesPerPixel());
        opaque = allocateWorkingBytes(std::uint64_t{header.width} * 3);
    }
    std::uint8_t* const copyRow = copy.data();
    std::uint8_t* const opaqueRow = opaque.data();
    const bool done = ranToTheEnd(m_errors.failed, [this, copyRow, opaqueRow] {
        jpeg_create_compress(&m_info);
        describe();
        jpeg_start_compress(&m_info, TRUE);
        const auto size = static_cast<unsigned int>(m_profile.size());
        if (size != 0) jpeg_write_icc_profile(&m_info, m_profile.data(), size);
        writeRows(copyRow, opaqueRow);
        jpeg_finish_compress(&m_info);
    });
    if (!done) {
        throw CodecException(NSErrorCode::TooLarge,
                             "the picture cannot be written as JPEG (" + oneLine(m_errors.message) + ")");
    }
    return std::move(m_to.bytes);
}

void checkFitsJpeg(const PictureView& picture) {
    checkEncodable(picture);
    const PictureHeader& header = picture.header;
    if (header.width > JPEG_MAX_DIMENSION || header.height > JPEG_MAX_DIMENSION) {
        throw CodecException(NSErrorCode::TooLarge,
                             "JPEG holds at most " + std::to_string(JPEG_MAX_DIMENSION) +
                                 " pixels each way, and the picture is " + std::to_string(header.width) +
                                 " x " + std::to_string(header.height) + "; use PNG or TIFF");
    }
    // Pieces, numbered by a byte, and what each holds.
    constexpr std::size_t maximumProfile = std::size_t{255} * 65519;
    if (header.colorProfile.size() > maximumProfile) {
        throw CodecException(NSErrorCode::TooLarge, "the colour profile is too large for JPEG; use TIFF");
    }
}

class JpegCodec final : public Codec {
public:
    std::string_view formatName() const override { return "JPEG"; }

    bool recognises(ByteView bytes) const override {
        return bytes.size() >= 3 && bytes[0] == 0xff && bytes[1] == 0xd8 && bytes[2] == 0xff;
    }

    PictureHeader readHeader(ByteView bytes) const override { return JpegReader(bytes).readHeader(); }

    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        return JpegReader(bytes).decode(limits);
    }

    void check(ByteView bytes, const PictureLimits& limits) const override {
        JpegReader(bytes).check(limits);
    }

    bool checksWithoutPixels() const override { return true; }

    NSData encode(const PictureView& picture, const EncodeOptions& options) const override {
        checkFitsJpeg(picture);
        return JpegWriter(picture, options.quality).encode();
    }
};

} // namespace

std::shared_ptr<const Codec> makeJpegCodec() { return std::make_shared<JpegCodec>(); }

} // namespace Imaging::Platform
