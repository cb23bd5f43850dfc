// BMP by our own code, since no library for it is at hand. What is written has a header of version 5, which
// states sRGB or holds a profile, and 8 bits a pixel for gray, 24 for colour, and 32 in bit fields with
// straight alpha. Gray becomes RGB there, so a gray profile cannot go along; see rgbProfileToWrite.

#include "Platform/Codecs/Formats/BmpCodec.h"

#include "Platform/Codecs/Formats/BmpHeaders.h"
#include "Platform/Codecs/Formats/BmpReader.h"
#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/StraightRows.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Imaging::Platform {

namespace {

using namespace BmpHeaders;

class BmpWriter {
public:
    explicit BmpWriter(const PictureView& picture) : m_rows(picture), m_header(picture.header) {
        const bool isGray = m_header.color != SampleColor::RGB;
        m_bits = m_header.hasAlpha ? 32 : isGray ? 8 : 24;
        m_row_bytes = rowBytes(m_header.width, m_bits);
        m_states_srgb = matchingProfile(m_header.colorProfile, m_header.color).empty();
        if (!m_states_srgb) m_profile = rgbProfileToWrite(m_header);
    }

    NSData encode();

private:
    void number(std::uint64_t value, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            m_bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
    void writeHeaders();
    void writeColorSpace();
    void writeRow(const std::uint8_t* rgba);
    std::uint64_t colorCount() const { return m_bits == 8 ? 256 : 0; }
    std::uint64_t pixelsAt() const { return fileHeader + headerVersion5 + colorCount() * 4; }
    std::uint64_t profileAt() const { return pixelsAt() + m_row_bytes * m_header.height; }

    StraightRows m_rows;
    const PictureHeader& m_header;
    std::uint32_t m_bits = 24;
    std::uint64_t m_row_bytes = 0;
    bool m_states_srgb = false;
    NSData m_profile;
    NSData m_bytes;
};

void BmpWriter::writeHeaders() {
    m_bytes.push_back('B');
    m_bytes.push_back('M');
    number(profileAt() + m_profile.size(), 4);
    number(0, 4);
    number(pixelsAt(), 4);
    number(headerVersion5, 4);
    number(m_header.width, 4);
    number(m_header.height, 4);
    number(1, 2); // planes
    number(m_bits, 2);
    number(m_bits == 32 ? bitFields : plain, 4);
    number(m_row_bytes * m_header.height, 4);
    for (const double resolution : {m_header.resolutionX, m_header.resolutionY}) {
        const double perMetre = resolution / metresPerInch;
        const bool fits = perMetre >= 0.5 && perMetre < std::numeric_limits<std::int32_t>::max();
        number(fits ? static_cast<std::uint64_t>(std::lround(perMetre)) : 0, 4);
    }
    number(colorCount(), 4);
    number(0, 4); // all colours are important
    for (const std::uint32_t mask : {0xff0000U, 0xff00U, 0xffU, 0xff000000U})
        number(m_bits == 32 ? mask : 0, 4);
    writeColorSpace();
    for (std::uint64_t gray = 0; gray < colorCount(); ++gray) number(gray * 0x10101, 4);
}

/// The end of a header of version 5, from its colour space on.
void BmpWriter::writeColorSpace() {
    constexpr std::uint32_t forPictures = 4; // the intent: perceptual
    const std::uint32_t withoutProfile = m_states_srgb ? isSRGB : isUnstated;
    number(m_profile.empty() ? withoutProfile : hasProfile, 4);
    for (int i = 0; i < 12; ++i) number(0, 4); // end points and gammas count for calibrated colours only
    number(forPictures, 4);
    number(m_profile.empty() ? 0 : profileAt() - fileHeader, 4);
    number(m_profile.size(), 4);
    number(0, 4);
}

void BmpWriter::writeRow(const std::uint8_t* rgba) {
    const std::uint64_t end = m_bytes.size() + m_row_bytes;
    for (std::size_t x = 0; x < m_header.width; ++x, rgba += 4) {
        if (m_bits == 8) {
            m_bytes.push_back(rgba[0]);
            continue;
        }
        for (const std::size_t i : {2U, 1U, 0U}) m_bytes.push_back(rgba[i]);
        if (m_bits == 32) m_bytes.push_back(rgba[3]);
    }
    m_bytes.resize(end);
}

NSData BmpWriter::encode() {
    m_bytes.reserve(profileAt() + m_profile.size());
    writeHeaders();
    for (std::size_t y = m_header.height; y > 0; --y) writeRow(m_rows.rgba(y - 1));
    m_bytes.insert(m_bytes.end(), m_profile.begin(), m_profile.end());
    return std::move(m_bytes);
}

class BmpCodec final : public Codec {
public:
    std::string_view formatName() const override { return "BMP"; }

    /// The two letters alone begin many a text, so the size of the second header has to make sense.
    bool recognises(ByteView bytes) const override {
        if (bytes.size() < fileHeader + 4 || bytes[0] != 'B' || bytes[1] != 'M') return false;
        const std::uint64_t size = littleEndian(bytes, fileHeader, 4);
        return size == 12 || (size >= 16 && size <= 64) || size == 108 || size == headerVersion5;
    }

    PictureHeader readHeader(ByteView bytes) const override { return BmpReader(bytes).header(); }

    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        return BmpReader(bytes).decode(limits);
    }

    NSData encode(const PictureView& picture, const EncodeOptions&) const override {
        checkEncodable(picture);
        const PictureHeader& header = picture.header;
        const auto bytes = checkedProduct({header.width, header.height, 4});
        // Offsets have 32 bits, and sizes 31; a row's filling and the profile have to fit, too.
        constexpr std::uint64_t most = (1ULL << 31) - (64ULL << 20);
        if (!bytes || *bytes > most || header.height > most / 4 || header.colorProfile.size() > (16U << 20)) {
            throw CodecException(NSErrorCode::TooLarge, "the picture is too large for BMP; use PNG or TIFF");
        }
        return BmpWriter(picture).encode();
    }
};

} // namespace

std::shared_ptr<const Codec> makeBmpCodec() { return std::make_shared<BmpCodec>(); }

} // namespace Imaging::Platform
