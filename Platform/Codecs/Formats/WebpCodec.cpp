// WebP with libwebp, lossy and lossless, as RGB of 8 bits with alpha where the file has it; of an animation
// the first picture, on a transparent canvas. Files are only read.

#include "Platform/Codecs/Formats/WebpCodec.h"

#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/ExifOrientation.h"
#include "Platform/Codecs/Support/SampleConversion.h"

#include <cstring>

#include <webp/decode.h>
#include <webp/demux.h>

namespace Imaging::Platform {

namespace {

constexpr std::string_view formatName = "WebP";

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};

class WebpReader {
public:
    explicit WebpReader(ByteView bytes);

    const PictureHeader& header() const { return m_header; }
    DecodedPicture decode(const PictureLimits& limits) const;

private:
    void readRecords();
    NSData chunk(const char* name) const;
    std::uint64_t workingBytes() const;
    bool coversCanvas() const {
        return m_left == 0 && m_top == 0 && m_width == m_header.width && m_height == m_header.height;
    }

    ByteView m_bytes;
    std::unique_ptr<WebPDemuxer, DeleteDemuxer> m_demuxer;
    PictureHeader m_header;
    ByteView m_frame; // a whole file of its own to the decoder
    WebPBitstreamFeatures m_features{};
    std::uint32_t m_left = 0;
    std::uint32_t m_top = 0;
    std::uint32_t m_width = 0;
    std::uint32_t m_height = 0;
};

WebpReader::WebpReader(ByteView bytes) : m_bytes(bytes) {
    const WebPData data{bytes.data(), bytes.size()};
    WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
    m_demuxer.reset(WebPDemuxPartial(&data, &state));
    if (state == WEBP_DEMUX_PARSE_ERROR) failForDamage(formatName, "its chunks make no sense");
    if (m_demuxer == nullptr || state != WEBP_DEMUX_DONE) failForShortData(formatName);
    WebPIterator frame{};
    if (WebPDemuxGetFrame(m_demuxer.get(), 1, &frame) == 0)
        failForDamage(formatName, "there is no picture in it");
    m_frame = {frame.fragment.bytes, frame.fragment.size};
    m_left = static_cast<std::uint32_t>(frame.x_offset);
    m_top = static_cast<std::uint32_t>(frame.y_offset);
    m_width = static_cast<std::uint32_t>(frame.width);
    m_height = static_cast<std::uint32_t>(frame.height);
    const bool isComplete = frame.complete != 0;
    WebPDemuxReleaseIterator(&frame); // the bytes stay
    if (!isComplete) failForShortData(formatName);
    if (WebPGetFeatures(m_frame.data(), m_frame.size(), &m_features) != VP8_STATUS_OK) {
        failForDamage(formatName, "its picture has no header");
    }
    m_header.formatName = formatName;
    m_header.width = WebPDemuxGetI(m_demuxer.get(), WEBP_FF_CANVAS_WIDTH);
    m_header.height = WebPDemuxGetI(m_demuxer.get(), WEBP_FF_CANVAS_HEIGHT);
    m_header.hasAlpha = m_features.has_alpha != 0 || !coversCanvas();
    readRecords();
}

NSData WebpReader::chunk(const char* name) const {
    WebPChunkIterator found{};
    NSData bytes;
    if (WebPDemuxGetChunk(m_demuxer.get(), name, 1, &found) != 0) {
        bytes.assign(found.chunk.bytes, found.chunk.bytes + found.chunk.size);
        WebPDemuxReleaseChunkIterator(&found);
    }
    return bytes;
}

void WebpReader::readRecords() {
    m_header.colorProfile = matchingProfile(chunk("ICCP"), m_header.color);
    NSData exif = chunk("EXIF");
    // Some programs write the record as JPEG has it, with its prefix.
    if (exif.size() >= 6 && std::memcmp(exif.data(), "Exif\0\0", 6) == 0)
        exif.erase(exif.begin(), exif.begin() + 6);
    if (exif.empty()) return;
    const ExifFacts facts = readExif(exif);
    m_header.orientation = facts.orientation;
    m_header.resolutionX = facts.resolutionX;
    m_header.resolutionY = facts.resolutionY;
}

/// A lossless picture is unpacked into 32-bit pixels with sixteen rows more; a lossy one takes a few rows,
/// and a plane for its alpha, which is a lossless picture of its own.
std::uint64_t WebpReader::workingBytes() const {
    const std::uint64_t pixels = std::uint64_t{m_width} * (m_height + 17U);
    constexpr int lossless = 2;
    if (m_features.format == lossless) return pixels * 4;
    return m_features.has_alpha != 0 ? pixels * 5 : 0;
}

DecodedPicture WebpReader::decode(const PictureLimits& limits) const {
    if (m_left + m_width > m_header.width || m_top + m_height > m_header.height) {
        failForDamage(formatName, "its picture leaves the canvas");
    }
    DecodedPicture picture = allocatePicture(m_header, limits, workingBytes());
    WebPDecoderConfig config;
    if (WebPInitDecoderConfig(&config) == 0) failForDamage(formatName, "the library is another one");
    const std::size_t offset = m_top * picture.bytesPerRow + m_left * m_header.bytesPerPixel();
    config.output.colorspace = m_header.hasAlpha ? MODE_RGBA : MODE_RGB;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = picture.pixels.data() + offset;
    config.output.u.RGBA.stride = static_cast<int>(picture.bytesPerRow);
    config.output.u.RGBA.size = picture.pixels.size() - offset;
    const VP8StatusCode status = WebPDecode(m_frame.data(), m_frame.size(), &config);
    if (status == VP8_STATUS_OUT_OF_MEMORY) {
        throw CodecException(NSErrorCode::TooLarge, "there is not enough memory to decode the WebP picture");
    }
    if (status == VP8_STATUS_NOT_ENOUGH_DATA || status == VP8_STATUS_SUSPENDED) failForShortData(formatName);
    if (status != VP8_STATUS_OK) failForDamage(formatName, "its pixels cannot be unpacked");
    for (std::size_t y = 0; y < m_header.height; ++y) {
        premultiplyRow(m_header, picture.pixels.data() + y * picture.bytesPerRow);
    }
    return picture;
}

class WebpCodec final : public Codec {
public:
    std::string_view formatName() const override { return Platform::formatName; }

    bool recognises(ByteView bytes) const override {
        return bytes.size() >= 12 && std::memcmp(bytes.data(), "RIFF", 4) == 0 &&
               std::memcmp(bytes.data() + 8, "WEBP", 4) == 0;
    }

    PictureHeader readHeader(ByteView bytes) const override { return WebpReader(bytes).header(); }

    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        return WebpReader(bytes).decode(limits);
    }

    NSData encode(const PictureView&, const EncodeOptions&) const override { failAsReadOnly(formatName()); }
};

} // namespace

std::shared_ptr<const Codec> makeWebpCodec() { return std::make_shared<WebpCodec>(); }

} // namespace Imaging::Platform
