// HEIC and AVIF with libheif: the primary picture, as RGB of 8 bits, or of 16 where the file has more, with
// alpha. Turning and cropping belong to these formats and are done here, so pictures are upright; the
// orientation in their EXIF record repeats them and does not count. Files are only read.

#include "Platform/Codecs/Formats/HeifCodec.h"

#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/ExifOrientation.h"
#include "Platform/Codecs/Support/SampleConversion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>

#include <libheif/heif.h>

namespace Imaging::Platform {

namespace {

constexpr std::string_view formatName = "HEIF";

struct FreeContext {
    void operator()(heif_context* context) const { heif_context_free(context); }
};
struct FreeHandle {
    void operator()(heif_image_handle* handle) const { heif_image_handle_release(handle); }
};
struct FreeImage {
    void operator()(heif_image* image) const { heif_image_release(image); }
};
struct FreeOptions {
    void operator()(heif_decoding_options* options) const { heif_decoding_options_free(options); }
};

void check(const heif_error& error) {
    const char* const message = error.message == nullptr ? "" : error.message;
    switch (error.code) {
    case heif_error_Ok:
        return;
    case heif_error_Unsupported_feature:
    case heif_error_Unsupported_filetype:
        throw CodecException(NSErrorCode::UnsupportedFormat,
                             "HEIF pictures of this kind are not supported (" + oneLine(message) + ")");
    case heif_error_Memory_allocation_error:
        throw CodecException(NSErrorCode::TooLarge,
                             "the HEIF picture is too large (" + oneLine(message) + ")");
    default:
        if (error.subcode == heif_suberror_End_of_data) failForShortData(formatName);
        failForDamage(formatName, message);
    }
}

class HeifReader {
public:
    explicit HeifReader(ByteView bytes);

    const PictureHeader& header() const { return m_header; }
    DecodedPicture decode(const PictureLimits& limits) const;

private:
    void readProfile();
    void readExifRecord();
    heif_chroma chroma() const;
    std::unique_ptr<heif_image, FreeImage> decodedImage() const;
    void copyRow(const std::uint8_t* from, std::uint8_t* to) const;

    std::unique_ptr<heif_context, FreeContext> m_context;
    std::unique_ptr<heif_image_handle, FreeHandle> m_handle;
    PictureHeader m_header;
    int m_bits = 8; // of the file's samples
};

HeifReader::HeifReader(ByteView bytes) : m_context(heif_context_alloc()) {
    if (m_context == nullptr) throw std::bad_alloc();
    check(heif_context_read_from_memory_without_copy(m_context.get(), bytes.data(), bytes.size(), nullptr));
    heif_image_handle* handle = nullptr;
    check(heif_context_get_primary_image_handle(m_context.get(), &handle));
    m_handle.reset(handle);
    m_bits = heif_image_handle_get_luma_bits_per_pixel(handle);
    if (m_bits < 1 || m_bits > 16) failForDamage(formatName, "its samples have no known size");
    m_header.formatName = formatName;
    m_header.width = static_cast<std::uint32_t>(std::max(heif_image_handle_get_width(handle), 0));
    m_header.height = static_cast<std::uint32_t>(std::max(heif_image_handle_get_height(handle), 0));
    m_header.bitsPerSample = m_bits > 8 ? 16 : 8;
    m_header.hasAlpha = heif_image_handle_has_alpha_channel(handle) != 0;
    readProfile();
    readExifRecord();
}

void HeifReader::readProfile() {
    const std::size_t size = heif_image_handle_get_raw_color_profile_size(m_handle.get());
    if (size == 0) return;
    NSData profile(size);
    if (heif_image_handle_get_raw_color_profile(m_handle.get(), profile.data()).code != heif_error_Ok) return;
    m_header.colorProfile = matchingProfile(profile, m_header.color);
}

void HeifReader::readExifRecord() {
    heif_item_id record = 0;
    if (heif_image_handle_get_list_of_metadata_block_IDs(m_handle.get(), "Exif", &record, 1) != 1) return;
    constexpr std::size_t offsetSize = 4; // from which on the record begins
    NSData bytes(heif_image_handle_get_metadata_size(m_handle.get(), record));
    if (bytes.size() <= offsetSize) return;
    if (heif_image_handle_get_metadata(m_handle.get(), record, bytes.data()).code != heif_error_Ok) return;
    const std::uint64_t offset = bigEndian(bytes, 0, offsetSize);
    if (offset >= bytes.size() - offsetSize) return;
    const ExifFacts facts = readExif(ByteView(bytes).subspan(offsetSize + static_cast<std::size_t>(offset)));
    m_header.resolutionX = facts.resolutionX;
    m_header.resolutionY = facts.resolutionY;
}

heif_chroma HeifReader::chroma() const {
    if (m_header.bitsPerSample == 8) {
        return m_header.hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
    }
    if (std::endian::native == std::endian::little) {
        return m_header.hasAlpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
    }
    return m_header.hasAlpha ? heif_chroma_interleaved_RRGGBBAA_BE : heif_chroma_interleaved_RRGGBB_BE;
}

std::unique_ptr<heif_image, FreeImage> HeifReader::decodedImage() const {
    const std::unique_ptr<heif_decoding_options, FreeOptions> options(heif_decoding_options_alloc());
    if (options == nullptr) throw std::bad_alloc();
    options->strict_decoding = 1;
    options->decoder_id = "aom"; // for AVIF; libheif 1.15 leaks pictures of damaged files with dav1d
    heif_image* image = nullptr;
    check(heif_decode_image(m_handle.get(), &image, heif_colorspace_RGB, chroma(), options.get()));
    std::unique_ptr<heif_image, FreeImage> result(image);
    constexpr auto plane = heif_channel_interleaved;
    const bool fits = heif_image_get_width(image, plane) == static_cast<int>(m_header.width) &&
                      heif_image_get_height(image, plane) == static_cast<int>(m_header.height);
    if (!fits) failForDamage(formatName, "its picture has another size than it says");
    return result;
}

/// Samples of 10 or 12 bits are spread over 16, so that the largest stays the largest.
void HeifReader::copyRow(const std::uint8_t* from, std::uint8_t* to) const {
    if (m_header.bitsPerSample == 8) {
        std::copy_n(from, m_header.width * m_header.bytesPerPixel(), to);
        return;
    }
    const std::uint32_t largest = (1U << m_bits) - 1;
    const std::size_t count = m_header.width * static_cast<std::size_t>(m_header.samplesPerPixel());
    for (std::size_t i = 0; i < count; ++i) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, from + 2 * i, 2);
        const std::uint32_t limited = std::min<std::uint32_t>(sample, largest);
        sample = static_cast<std::uint16_t>((limited * 65535ULL + largest / 2) / largest);
        std::memcpy(to + 2 * i, &sample, 2);
    }
}

DecodedPicture HeifReader::decode(const PictureLimits& limits) const {
    // The planes of the file, once more in RGB, and once more where they are turned.
    const auto workingBytes = checkedProduct(
        {m_header.width, m_header.height, 12, static_cast<std::uint64_t>(m_header.bitsPerSample / 8)});
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    DecodedPicture picture = allocateUnwrittenPicture(m_header, limits, workingBytes.value_or(most));
    const auto image = decodedImage();
    int stride = 0;
    const std::uint8_t* const from =
        heif_image_get_plane_readonly(image.get(), heif_channel_interleaved, &stride);
    if (from == nullptr || stride <= 0) failForDamage(formatName, "it has no pixels");
    const bool isPremultiplied = heif_image_handle_is_premultiplied_alpha(m_handle.get()) != 0;
    for (std::size_t y = 0; y < m_header.height; ++y) {
        std::uint8_t* const to = picture.pixels.data() + y * picture.bytesPerRow;
        copyRow(from + y * static_cast<std::size_t>(stride), to);
        if (!isPremultiplied) premultiplyRow(m_header, to);
    }
    return picture;
}

class HeifCodec final : public Codec {
public:
    std::string_view formatName() const override { return Platform::formatName; }

    bool recognises(ByteView bytes) const override {
        constexpr std::array<std::string_view, 10> brands = {"heic", "heix", "heim", "heis", "hevc",
                                                             "hevx", "mif1", "msf1", "avif", "avis"};
        if (bytes.size() < 12) return false;
        const auto* const text = static_cast<const char*>(static_cast<const void*>(bytes.data()));
        const std::string_view brand(text + 8, 4);
        return std::string_view(text + 4, 4) == "ftyp" &&
               std::find(brands.begin(), brands.end(), brand) != brands.end();
    }

    PictureHeader readHeader(ByteView bytes) const override { return HeifReader(bytes).header(); }

    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        return HeifReader(bytes).decode(limits);
    }

    NSData encode(const PictureView&, const EncodeOptions&) const override { failAsReadOnly(formatName()); }
};

} // namespace

std::shared_ptr<const Codec> makeHeifCodec() { return std::make_shared<HeifCodec>(); }

} // namespace Imaging::Platform
