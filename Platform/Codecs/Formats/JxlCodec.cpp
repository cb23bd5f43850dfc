// JPEG XL with libjxl: gray or RGB, 8 bits where the file has no more than that and 16 otherwise, with
// alpha; of an animation the first picture. Files are only read.

#include "Platform/Codecs/Formats/JxlCodec.h"

#include "Platform/Codecs/Formats/IsoBoxes.h"
#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/ExifOrientation.h"
#include "Platform/Codecs/Support/SampleConversion.h"

#include <algorithm>
#include <limits>

#include <jxl/decode.h>

namespace Imaging::Platform {

namespace {

constexpr std::string_view formatName = "JPEG XL";

struct DestroyDecoder {
    void operator()(JxlDecoder* decoder) const { JxlDecoderDestroy(decoder); }
};

class JxlReader {
public:
    explicit JxlReader(ByteView bytes) : m_bytes(bytes) {}

    PictureHeader readHeader();
    DecodedPicture decode(const PictureLimits& limits);

private:
    void start(int events);
    void advanceTo(JxlDecoderStatus wanted);
    void check(JxlDecoderStatus status) const {
        if (status != JXL_DEC_SUCCESS) failForDamage(formatName, "the library refuses it");
    }
    void readProfile();
    void readExifRecord();
    JxlPixelFormat pixelFormat() const;
    std::uint64_t workingBytes() const;

    ByteView m_bytes;
    std::unique_ptr<JxlDecoder, DestroyDecoder> m_decoder;
    JxlBasicInfo m_info{};
    PictureHeader m_header;
};

/// The input is never said to be at its end, since the library prints what it misses then.
void JxlReader::start(int events) {
    m_decoder.reset(JxlDecoderCreate(nullptr));
    if (m_decoder == nullptr) throw std::bad_alloc();
    check(JxlDecoderSubscribeEvents(m_decoder.get(), events));
    check(JxlDecoderSetKeepOrientation(m_decoder.get(), JXL_TRUE));
    check(JxlDecoderSetInput(m_decoder.get(), m_bytes.data(), m_bytes.size()));
}

void JxlReader::advanceTo(JxlDecoderStatus wanted) {
    const JxlDecoderStatus status = JxlDecoderProcessInput(m_decoder.get());
    if (status == wanted) return;
    if (status == JXL_DEC_NEED_MORE_INPUT) failForShortData(formatName);
    failForDamage(formatName, "its parts make no sense");
}

PictureHeader JxlReader::readHeader() {
    start(JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE);
    advanceTo(JXL_DEC_BASIC_INFO);
    check(JxlDecoderGetBasicInfo(m_decoder.get(), &m_info));
    m_header.formatName = formatName;
    m_header.width = m_info.xsize;
    m_header.height = m_info.ysize;
    m_header.bitsPerSample = m_info.bits_per_sample > 8 ? 16 : 8;
    m_header.color = m_info.num_color_channels == 1 ? SampleColor::White : SampleColor::RGB;
    m_header.hasAlpha = m_info.alpha_bits > 0;
    const int orientation = m_info.orientation;
    if (orientation >= 1 && orientation <= 8) m_header.orientation = orientation;
    advanceTo(JXL_DEC_COLOR_ENCODING);
    readProfile();
    readExifRecord();
    return m_header;
}

/// Of the pixels as they come out, which are what the file's own profile describes or the library's choice.
void JxlReader::readProfile() {
    const JxlPixelFormat format = pixelFormat();
    std::size_t size = 0;
    constexpr auto target = JXL_COLOR_PROFILE_TARGET_DATA;
    if (JxlDecoderGetICCProfileSize(m_decoder.get(), &format, target, &size) != JXL_DEC_SUCCESS) return;
    NSData profile(size);
    if (JxlDecoderGetColorAsICCProfile(m_decoder.get(), &format, target, profile.data(), size) !=
        JXL_DEC_SUCCESS) {
        return;
    }
    m_header.colorProfile = matchingProfile(profile, m_header.color);
}

/// Its orientation does not count, since the picture has one of its own.
void JxlReader::readExifRecord() {
    constexpr std::size_t offsetSize = 4; // from which on the record begins
    const ByteView box = findBox(m_bytes, "Exif");
    if (box.size() <= offsetSize) return;
    const std::uint64_t offset = bigEndian(box, 0, offsetSize);
    if (offset >= box.size() - offsetSize) return;
    const ExifFacts facts = readExif(box.subspan(offsetSize + static_cast<std::size_t>(offset)));
    m_header.resolutionX = facts.resolutionX;
    m_header.resolutionY = facts.resolutionY;
}

JxlPixelFormat JxlReader::pixelFormat() const {
    const auto samples = static_cast<std::uint32_t>(m_header.samplesPerPixel());
    const JxlDataType type = m_header.bitsPerSample == 16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8;
    return {samples, type, JXL_NATIVE_ENDIAN, 0};
}

/// The library keeps every channel, wanted or not, as whole numbers and again as floating-point ones.
std::uint64_t JxlReader::workingBytes() const {
    const std::uint64_t channels = std::uint64_t{3} + m_info.num_extra_channels;
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    return checkedProduct({m_info.xsize, m_info.ysize, channels, 8}).value_or(most);
}

DecodedPicture JxlReader::decode(const PictureLimits& limits) {
    PictureHeader header = readHeader();
    DecodedPicture picture = allocatePicture(std::move(header), limits, workingBytes());
    advanceTo(JXL_DEC_NEED_IMAGE_OUT_BUFFER);
    const JxlPixelFormat format = pixelFormat();
    check(
        JxlDecoderSetImageOutBuffer(m_decoder.get(), &format, picture.pixels.data(), picture.pixels.size()));
    advanceTo(JXL_DEC_FULL_IMAGE);
    for (std::size_t y = 0; y < picture.header.height && m_info.alpha_premultiplied == JXL_FALSE; ++y) {
        premultiplyRow(picture.header, picture.pixels.data() + y * picture.bytesPerRow);
    }
    return picture;
}

class JxlCodec final : public Codec {
public:
    std::string_view formatName() const override { return Platform::formatName; }

    bool recognises(ByteView bytes) const override {
        const JxlSignature kind = JxlSignatureCheck(bytes.data(), bytes.size());
        return kind == JXL_SIG_CODESTREAM || kind == JXL_SIG_CONTAINER;
    }

    PictureHeader readHeader(ByteView bytes) const override { return JxlReader(bytes).readHeader(); }

    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        return JxlReader(bytes).decode(limits);
    }

    NSData encode(const PictureView&, const EncodeOptions&) const override { failAsReadOnly(formatName()); }
};

} // namespace

std::shared_ptr<const Codec> makeJxlCodec() { return std::make_shared<JxlCodec>(); }

} // namespace Imaging::Platform
