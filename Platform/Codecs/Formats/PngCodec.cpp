// PNG with libpng. Gray of fewer than 8 bits becomes 8 bits, a palette RGB, and transparency alpha; colour
// is multiplied by alpha with the rule of premultiplyRow. Samples are otherwise as stored: neither a gamma
// nor a profile is applied, and an sRGB chunk alone gives no profile.

#include "Platform/Codecs/Formats/PngCodec.h"

#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/ExifOrientation.h"
#include "Platform/Codecs/Support/SampleConversion.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>

namespace Imaging::Platform {

namespace {

constexpr std::array<std::uint8_t, 8> signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

/// What any one chunk beside the pixels may take, packed or unpacked. Real profiles have about a megabyte;
/// one that unpacks to more than this is a bomb.
constexpr png_alloc_size_t maximumChunkBytes = 16U << 20;

/// Chunks whose content nobody here asks for. They are skipped, so that packed text costs no memory.
constexpr char skippedChunks[] = "hIST\0iTXt\0oFFs\0pCAL\0sCAL\0sPLT\0tEXt\0tIME\0zTXt";
constexpr int skippedChunkCount = sizeof(skippedChunks) / 5;

/// Of zlib. On a synthetic photograph of 12 megapixels with noise this takes a quarter of the time of the
/// default, 6 (1.8 against 6.8 seconds), for the same size within one part in a thousand; 3 saves a third of
/// that time again and makes files larger by an eighth.
constexpr int compressionLevel = 4;

constexpr double metresPerInch = 0.0254;

/// What the library's callbacks read and leave for us. They run inside C code, so nothing here allocates.
struct PngState {
    std::jmp_buf failed{};
    ByteView unread;
    bool cutShort = false;
    bool pixelsDamaged = false;
    bool profileTooLarge = false;
    char message[160] = {};
};

PngState& stateOf(png_structp png) { return *static_cast<PngState*>(png_get_error_ptr(png)); }

[[noreturn]] void onError(png_structp png, png_const_charp message) {
    PngState& state = stateOf(png);
    std::strncpy(state.message, message, sizeof(state.message) - 1);
    std::longjmp(state.failed, 1);
}

bool contains(const char* text, const char* part) { return std::strstr(text, part) != nullptr; }

/// The library goes on after some kinds of damage. Bytes after the last pixel are harmless.
void onWarning(png_structp png, png_const_charp message) {
    PngState& state = stateOf(png);
    const bool isLeftOver = contains(message, "Too much") || contains(message, "Extra compressed");
    if (contains(message, "iCCP") && contains(message, "exceeds")) state.profileTooLarge = true;
    if (std::strncmp(message, "IDAT", 4) != 0 || isLeftOver) return;
    state.pixelsDamaged = true;
    std::strncpy(state.message, message, sizeof(state.message) - 1);
}

void readBytes(png_structp png, png_bytep to, std::size_t count) {
    PngState& state = stateOf(png);
    if (count > state.unread.size()) {
        state.cutShort = true;
        png_error(png, "the data ends");
    }
    std::copy_n(state.unread.data(), count, to);
    state.unread = state.unread.subspan(count);
}

/// Why the library gave up.
[[noreturn]] void raise(const PngState& state) {
    if (state.cutShort) {
        throw CodecException(NSErrorCode::CorruptData,
                             "the PNG data ends before the picture is complete; the file may be cut short");
    }
    const bool isMemory =
        contains(state.message, "ut of memory") || contains(state.message, "nsufficient memory");
    if (isMemory) {
        throw CodecException(NSErrorCode::TooLarge, "there is not enough memory to decode the PNG picture");
    }
    throw CodecException(NSErrorCode::CorruptData,
                         "the PNG data is damaged (" + oneLine(state.message) + ")");
}

/// The data of the first chunk of a type wherever it is, or nothing. The library finds chunks after the
/// pixels only when it has decoded them, which reading a header must not. Checksums are left to decoding.
ByteView findChunk(ByteView bytes, std::string_view type) {
    constexpr std::size_t overhead = 12; // length, type and checksum
    std::size_t at = signature.size();
    while (at <= bytes.size() && bytes.size() - at >= overhead) {
        const std::uint8_t* chunk = bytes.data() + at;
        const std::size_t length = png_get_uint_32(chunk);
        if (length > bytes.size() - at - overhead) break;
        if (std::equal(type.begin(), type.end(), chunk + 4)) return bytes.subspan(at + 8, length);
        at += overhead + length;
    }
    return {};
}

class PngReader {
public:
    explicit PngReader(ByteView bytes) : m_bytes(bytes) { m_state.unread = bytes; }
    ~PngReader() { png_destroy_read_struct(&m_png, &m_info, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    PictureHeader readHeader();
    DecodedPicture decode(const PictureLimits& limits);

private:
    template<class Steps>
    void run(Steps steps) {
        if (!ranToTheEnd(m_state.failed, steps)) raise(m_state);
    }
    void open();
    void readRows(DecodedPicture& picture);
    void readResolution(PictureHeader& header) const;
    void readProfile(PictureHeader& header) const;

    ByteView m_bytes;
    PngState m_state;
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
};

void PngReader::open() {
    m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &m_state, onError, onWarning);
    m_info = m_png == nullptr ? nullptr : png_create_info_struct(m_png);
    if (m_info == nullptr) {
        std::strcpy(m_state.message, "out of memory");
        std::longjmp(m_state.failed, 1);
    }
    png_set_read_fn(m_png, &m_state, readBytes);
    png_set_user_limits(m_png, PNG_UINT_31_MAX, PNG_UINT_31_MAX); // ours are checked once the size is known
    png_set_chunk_cache_max(m_png, 64);
    png_set_chunk_malloc_max(m_png, maximumChunkBytes);
    png_set_crc_action(m_png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
    const auto* const skipped = static_cast<png_const_bytep>(static_cast<const void*>(skippedChunks));
    png_set_keep_unknown_chunks(m_png, PNG_HANDLE_CHUNK_NEVER, skipped, skippedChunkCount);
    png_read_info(m_png, m_info);
}

void PngReader::readResolution(PictureHeader& header) const {
    png_uint_32 x = 0;
    png_uint_32 y = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (png_get_pHYs(m_png, m_info, &x, &y, &unit) == 0 || unit != PNG_RESOLUTION_METER) return;
    if (x == 0 || y == 0) return;
    header.resolutionX = x * metresPerInch;
    header.resolutionY = y * metresPerInch;
}

void PngReader::readProfile(PictureHeader& header) const {
    if (m_state.profileTooLarge) {
        throw CodecException(NSErrorCode::TooLarge, "the PNG picture's colour profile unpacks to more than " +
                                                        std::to_string(maximumChunkBytes) + " bytes");
    }
    png_charp name = nullptr;
    png_bytep profile = nullptr;
    png_uint_32 size = 0;
    int method = 0;
    if (png_get_iCCP(m_png, m_info, &name, &method, &profile, &size) == 0) return;
    header.colorProfile = matchingProfile({profile, size}, header.color);
}

PictureHeader PngReader::readHeader() {
    run([this] { open(); });
    const int type = png_get_color_type(m_png, m_info);
    PictureHeader header;
    header.formatName = "PNG";
    header.width = png_get_image_width(m_png, m_info);
    header.height = png_get_image_height(m_png, m_info);
    header.bitsPerSample = png_get_bit_depth(m_png, m_info) == 16 ? 16 : 8;
    header.color = (type & PNG_COLOR_MASK_COLOR) != 0 ? SampleColor::RGB : SampleColor::White;
    header.hasAlpha = (type & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(m_png, m_info, PNG_INFO_tRNS) != 0;
    readResolution(header);
    readProfile(header);
    const ByteView exif = findChunk(m_bytes, "eXIf");
    if (!exif.empty()) header.orientation = readExif(exif).orientation;
    return header;
}

/// The rows of an interlaced picture are gone over seven times in place, so no second picture is needed.
void PngReader::readRows(DecodedPicture& picture) {
    png_set_expand(m_png); // palettes, few bits and transparency to plain samples
    if (std::endian::native == std::endian::little) png_set_swap(m_png);
    const int passes = png_set_interlace_handling(m_png);
    png_read_update_info(m_png, m_info);
    if (png_get_rowbytes(m_png, m_info) != picture.bytesPerRow) png_error(m_png, "unexpected row size");
    for (int pass = 0; pass < passes; ++pass) {
        for (std::size_t y = 0; y < picture.header.height; ++y) {
            png_read_row(m_png, picture.pixels.data() + y * picture.bytesPerRow, nullptr);
        }
    }
    png_read_end(m_png, nullptr);
}

DecodedPicture PngReader::decode(const PictureLimits& limits) {
    PictureHeader header = readHeader();
    // The library keeps three rows, each with room for 64 bits a pixel.
    const std::uint64_t workingBytes = std::uint64_t{header.width} * 8 * 3;
    DecodedPicture picture = allocatePicture(std::move(header), limits, workingBytes);
    run([this, &picture] { readRows(picture); });
    if (m_state.pixelsDamaged) raise(m_state);
    for (std::size_t y = 0; y < picture.header.height; ++y) {
        premultiplyRow(picture.header, picture.pixels.data() + y * picture.bytesPerRow);
    }
    return picture;
}

/// Exceptions must not pass through the library.
bool append(NSData& bytes, const std::uint8_t* from, std::size_t count) noexcept {
    try {
        bytes.insert(bytes.end(), from, from + count);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void writeBytes(png_structp png, png_bytep from, std::size_t count) {
    auto& bytes = *static_cast<NSData*>(png_get_io_ptr(png));
    if (!append(bytes, from, count)) png_error(png, "out of memory");
}

void flushBytes(png_structp) {}

class PngWriter {
public:
    explicit PngWriter(const PictureView& picture)
        : m_picture(picture), m_profile(matchingProfile(picture.header.colorProfile, picture.header.color)) {}
    ~PngWriter() { png_destroy_write_struct(&m_png, &m_info); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    NSData encode();

private:
    void open();
    void describe();
    void describeResolution();
    void writeRows(std::uint8_t* copy);
    bool isPlain() const {
        const PictureHeader& header = m_picture.header;
        return header.color != SampleColor::Black && !(header.hasAlpha && m_picture.premultiplied);
    }

    PictureView m_picture;
    NSData m_profile;
    NSData m_bytes;
    PngState m_state;
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
};

void PngWriter::open() {
    m_png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &m_state, onError, onWarning);
    m_info = m_png == nullptr ? nullptr : png_create_info_struct(m_png);
    if (m_info == nullptr) {
        std::strcpy(m_state.message, "out of memory");
        std::longjmp(m_state.failed, 1);
    }
    png_set_write_fn(m_png, &m_bytes, writeBytes, flushBytes);
    png_set_user_limits(m_png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    // A profile that the library finds fault with is then left out, as it would be by every reader.
    png_set_benign_errors(m_png, 1);
    png_set_compression_level(m_png, compressionLevel);
}

void PngWriter::describeResolution() {
    const double x = m_picture.header.resolutionX / metresPerInch;
    const double y = m_picture.header.resolutionY / metresPerInch;
    const auto fits = [](double value) { return value >= 0.5 && value < PNG_UINT_31_MAX; };
    if (!fits(x) || !fits(y)) return;
    png_set_pHYs(m_png, m_info, static_cast<png_uint_32>(std::lround(x)),
                 static_cast<png_uint_32>(std::lround(y)), PNG_RESOLUTION_METER);
}

void PngWriter::describe() {
    const PictureHeader& header = m_picture.header;
    int type = header.color == SampleColor::RGB ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY;
    if (header.hasAlpha) type |= PNG_COLOR_MASK_ALPHA;
    png_set_IHDR(m_png, m_info, header.width, header.height, header.bitsPerSample, type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    describeResolution();
    if (!m_profile.empty()) {
        png_set_iCCP(m_png, m_info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, m_profile.data(),
                     static_cast<png_uint_32>(m_profile.size()));
    } else {
        // The chunk that says sRGB, and for older readers its gamma and primaries; gray has the same curve.
        png_set_sRGB_gAMA_and_cHRM(m_png, m_info, PNG_sRGB_INTENT_PERCEPTUAL);
    }
}

void PngWriter::writeRows(std::uint8_t* copy) {
    const PictureHeader& header = m_picture.header;
    if (header.bitsPerSample == 16 && std::endian::native == std::endian::little) png_set_swap(m_png);
    for (std::size_t y = 0; y < header.height; ++y) {
        const std::uint8_t* row = m_picture.pixels + y * m_picture.bytesPerRow;
        if (copy != nullptr) {
            std::copy_n(row, header.width * header.bytesPerPixel(), copy);
            if (m_picture.premultiplied) unpremultiplyRow(header, copy);
            if (header.color == SampleColor::Black) invertGrayRow(header, copy, false);
            row = copy;
        }
        png_write_row(m_png, row);
    }
}

NSData PngWriter::encode() {
    const PictureHeader& header = m_picture.header;
    PixelBuffer copy;
    if (!isPlain()) copy = allocateWorkingBytes(header.width * header.bytesPerPixel());
    std::uint8_t* const copyRow = copy.data();
    const bool done = ranToTheEnd(m_state.failed, [this, copyRow] {
        open();
        describe();
        png_write_info(m_png, m_info);
        writeRows(copyRow);
        png_write_end(m_png, nullptr);
    });
    if (!done) {
        throw CodecException(NSErrorCode::TooLarge,
                             "the picture cannot be written as PNG (" + oneLine(m_state.message) + ")");
    }
    return std::move(m_bytes);
}

class PngCodec final : public Codec {
public:
    std::string_view formatName() const override { return "PNG"; }

    bool recognises(ByteView bytes) const override {
        return bytes.size() >= signature.size() &&
               std::equal(signature.begin(), signature.end(), bytes.begin());
    }

    PictureHeader readHeader(ByteView bytes) const override { return PngReader(bytes).readHeader(); }

    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        return PngReader(bytes).decode(limits);
    }

    NSData encode(const PictureView& picture, const EncodeOptions&) const override {
        checkEncodable(picture);
        return PngWriter(picture).encode();
    }
};

} // namespace

std::shared_ptr<const Codec> makePngCodec() { return std::make_shared<PngCodec>(); }

} // namespace Imaging::Platform
