// Reads the headers of all versions first, checks that the pixels they tell of can be there, and then goes
// over rows, fields or runs.

#include "Platform/Codecs/Formats/BmpReader.h"

#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/SampleConversion.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace Imaging::Platform {

namespace {

constexpr std::string_view formatName = "BMP";
using namespace BmpHeaders;

/// Two bytes of run-length encoding make at most this many pixels. A picture with so few bytes that most of
/// it would be jumped over is not there.
constexpr std::uint64_t pixelsPerByte = 256;

[[noreturn]] void failAsUnsupported(const std::string& what) {
    throw CodecException(NSErrorCode::UnsupportedFormat, "BMP pictures " + what + " are not supported");
}

} // namespace

std::uint8_t BmpReader::Field::value(std::uint32_t pixel) const {
    if (largest == 0) return 0;
    const std::uint64_t sample = (pixel & mask) >> shift;
    return static_cast<std::uint8_t>((sample * 255 + largest / 2) / largest);
}

BmpReader::BmpReader(ByteView bytes) : m_bytes(bytes) {
    m_header.formatName = formatName;
    readSizes();
    readColors();
    readAppearance();
    constexpr std::uint64_t anything = std::numeric_limits<std::uint64_t>::max();
    checkPictureLimits(m_header, {anything, anything}); // not empty
}

/// A number of the headers; what is not in the data is a file cut short.
std::uint64_t BmpReader::number(std::size_t offset, std::size_t count) const {
    if (offset > m_bytes.size() || m_bytes.size() - offset < count) failForShortData(formatName);
    return littleEndian(m_bytes, offset, count);
}

std::uint64_t BmpReader::field(const BmpHeaders::Field& field) const {
    return number(fileHeader + field.offset, field.size);
}

void BmpReader::readSizes() {
    m_offset = number(pixelsOffset.offset, pixelsOffset.size);
    m_header_size = field(headerSize);
    number(fileHeader, m_header_size < 8 ? m_header_size : 8); // at least that much
    if (m_header_size > m_bytes.size() - fileHeader) failForShortData(formatName);
    if (m_header_size == coreHeader) {
        readCoreHeader();
        return;
    }
    const auto height = static_cast<std::int32_t>(field(infoHeight));
    const auto width = static_cast<std::int32_t>(field(infoWidth));
    if (width <= 0 || height == 0 || height == std::numeric_limits<std::int32_t>::min()) {
        failForDamage(formatName, "its size makes no sense");
    }
    m_is_top_down = height < 0;
    m_header.width = static_cast<std::uint32_t>(width);
    m_header.height = static_cast<std::uint32_t>(m_is_top_down ? -height : height);
    m_bits = static_cast<std::uint32_t>(field(infoBits));
    const bool hasCompression = m_header_size >= infoCompression.end();
    readCompression(hasCompression ? static_cast<std::uint32_t>(field(infoCompression)) : plain);
}

void BmpReader::readCoreHeader() {
    m_header.width = static_cast<std::uint32_t>(field(coreWidth));
    m_header.height = static_cast<std::uint32_t>(field(coreHeight));
    m_bits = static_cast<std::uint32_t>(field(coreBits));
    readCompression(plain);
}

void BmpReader::readCompression(std::uint32_t compression) {
    constexpr std::array<std::uint32_t, 7> depths = {1, 2, 4, 8, 16, 24, 32};
    if (std::find(depths.begin(), depths.end(), m_bits) == depths.end()) {
        failAsUnsupported("with " + std::to_string(m_bits) + " bits a pixel");
    }
    const bool isOS2 = m_header_size == os2Header || m_header_size < windowsHeader;
    m_has_runs = (compression == runs8 && m_bits == 8) || (compression == runs4 && m_bits == 4);
    const bool hasFields = !isOS2 && (compression == bitFields || compression == bitFieldsWithAlpha) &&
                           (m_bits == 16 || m_bits == 32);
    if (compression != plain && !m_has_runs && !hasFields) {
        failAsUnsupported("with compression " + std::to_string(compression) + " and " +
                          std::to_string(m_bits) + " bits a pixel");
    }
    if (m_has_runs && m_is_top_down) failForDamage(formatName, "its runs begin at the top");
    readFields(compression);
}

void BmpReader::setField(std::size_t index, std::uint32_t mask) {
    Field& field = m_fields[index];
    field.mask = mask;
    field.shift = mask == 0 ? 0 : std::countr_zero(mask);
    field.largest = mask >> field.shift;
    const bool isGapless = (std::uint64_t{field.largest} & (std::uint64_t{field.largest} + 1)) == 0;
    if (!isGapless) failForDamage(formatName, "its bit fields have gaps");
}

/// Without fields of their own, 16 bits are 5 for each colour and 32 are 8, and what is left means nothing.
void BmpReader::readFields(std::uint32_t compression) {
    if (m_bits != 16 && m_bits != 32) return;
    if (compression == plain) {
        for (std::size_t i = 0; i < 3; ++i) {
            const std::uint32_t blue = m_bits == 16 ? 0x1f : 0xff;
            const std::size_t shift = (2 - i) * (m_bits == 16 ? 5 : 8);
            setField(i, blue << shift);
        }
        return;
    }
    const bool masksFollow = m_header_size < headerWithColorMasks;
    const bool hasAlpha = m_header_size >= headerWithAlphaMask || compression == bitFieldsWithAlpha;
    const std::size_t count = hasAlpha ? 4 : 3;
    if (masksFollow) m_extra_masks = count * 4;
    std::uint32_t taken = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto mask = static_cast<std::uint32_t>(number(fileHeader + windowsHeader + i * 4, 4));
        if ((mask & taken) != 0) failForDamage(formatName, "its bit fields overlap");
        taken |= mask;
        setField(i, mask);
    }
    m_header.hasAlpha = m_fields[3].mask != 0;
}

void BmpReader::readColors() {
    const std::size_t colorsAt = fileHeader + m_header_size + m_extra_masks;
    if (m_offset > m_bytes.size()) failForShortData(formatName);
    if (m_offset < colorsAt) failForDamage(formatName, "its pixels begin within its header");
    if (m_bits > 8) return;
    const std::size_t entry = m_header_size == coreHeader ? 3 : 4;
    const std::uint64_t most = 1U << m_bits;
    const std::uint64_t used = m_header_size >= colorsUsed.end() ? field(colorsUsed) : 0;
    // Some programs count no colours and write fewer than there could be.
    const std::uint64_t room = (m_offset - colorsAt) / entry;
    const std::uint64_t count = std::min({used == 0 ? most : used, most, room});
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* from = m_bytes.data() + colorsAt + i * entry;
        m_colors.push_back({from[2], from[1], from[0]});
    }
    if (m_colors.empty()) failForDamage(formatName, "it has no colours");
}

void BmpReader::readAppearance() {
    if (m_header_size >= pixelsPerMetreY.end()) {
        const auto x = static_cast<std::int32_t>(field(pixelsPerMetreX));
        const auto y = static_cast<std::int32_t>(field(pixelsPerMetreY));
        if (x > 0 && y > 0) {
            m_header.resolutionX = x * metresPerInch;
            m_header.resolutionY = y * metresPerInch;
        }
    }
    if (m_header_size >= headerVersion5) readProfile();
}

/// Only profiles in the file count. Names of files elsewhere are never followed.
void BmpReader::readProfile() {
    if (field(colorSpace) != hasProfile) return;
    const std::uint64_t offset = fileHeader + field(profileOffset);
    const std::uint64_t size = field(profileSize);
    if (offset > m_bytes.size() || size > m_bytes.size() - offset) failForShortData(formatName);
    m_header.colorProfile = matchingProfile(m_bytes.subspan(offset, size), m_header.color);
}

/// Fits: fewer than 2^31 pixels of at most 32 bits.
std::size_t BmpReader::rowBytes() const { return BmpHeaders::rowBytes(m_header.width, m_bits); }

const std::array<std::uint8_t, 3>& BmpReader::color(std::size_t index) const {
    if (index >= m_colors.size()) failForDamage(formatName, "a pixel has no colour");
    return m_colors[index];
}

void BmpReader::readIndices(const std::uint8_t* from, std::uint8_t* to) const {
    const std::uint32_t mask = (1U << m_bits) - 1;
    for (std::size_t x = 0; x < m_header.width; ++x, to += 3) {
        const std::size_t bit = x * m_bits;
        const std::uint32_t index = (std::uint32_t{from[bit / 8]} >> (8 - m_bits - bit % 8)) & mask;
        std::copy_n(color(index).data(), 3, to);
    }
}

void BmpReader::readFieldPixels(const std::uint8_t* from, std::uint8_t* to) const {
    const std::size_t pixelBytes = m_bits / 8;
    const auto samples = static_cast<std::size_t>(m_header.samplesPerPixel());
    for (std::size_t x = 0; x < m_header.width; ++x, from += pixelBytes) {
        const auto pixel = static_cast<std::uint32_t>(littleEndian({from, pixelBytes}, 0, pixelBytes));
        for (std::size_t i = 0; i < samples; ++i) *to++ = m_fields[i].value(pixel);
    }
}

void BmpReader::readRow(const std::uint8_t* from, std::uint8_t* to) const {
    if (m_bits <= 8) {
        readIndices(from, to);
    } else if (m_bits == 24) {
        for (std::size_t x = 0; x < m_header.width; ++x, from += 3, to += 3) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        }
    } else {
        readFieldPixels(from, to);
        premultiplyRow(m_header, to);
    }
}

/// Runs and literal pixels from the bottom row upwards. A count and a value are that many pixels; a 0 and 0,
/// 1 or 2 end the row or the picture or jump, and a 0 and a larger count begin literal pixels, which are
/// filled up to an even number of bytes.
class BmpRuns {
public:
    BmpRuns(ByteView bytes, std::uint32_t width, std::uint32_t height)
        : m_unread(bytes), m_width(width), m_height(height) {}

    /// Calls `put(x, y, value)` for each pixel, y counting from the bottom.
    template<class Put>
    void read(bool isNibbles, Put put) {
        for (;;) {
            const std::uint32_t count = next();
            const std::uint32_t value = next();
            if (count > 0) {
                for (std::uint32_t i = 0; i < count; ++i) putNext(nibble(value, i, isNibbles), put);
            } else if (value == 0) {
                m_x = 0;
                ++m_y;
            } else if (value == 1) {
                return;
            } else if (value == 2) {
                m_x += next();
                m_y += next();
            } else {
                readLiterals(value, isNibbles, put);
            }
        }
    }

private:
    std::uint32_t next() {
        if (m_unread.empty()) failForShortData(formatName);
        const std::uint8_t byte = m_unread.front();
        m_unread = m_unread.subspan(1);
        return byte;
    }

    static std::uint32_t nibble(std::uint32_t byte, std::uint32_t index, bool isNibbles) {
        if (!isNibbles) return byte;
        return index % 2 == 0 ? byte >> 4 : byte & 15;
    }

    template<class Put>
    void putNext(std::uint32_t value, Put put) {
        if (m_x >= m_width || m_y >= m_height) failForDamage(formatName, "a run leaves the picture");
        put(static_cast<std::uint32_t>(m_x++), static_cast<std::uint32_t>(m_y), value);
    }

    template<class Put>
    void readLiterals(std::uint32_t count, bool isNibbles, Put put) {
        const std::uint32_t bytes = isNibbles ? (count + 1) / 2 : count;
        std::uint32_t byte = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            if (!isNibbles || i % 2 == 0) byte = next();
            putNext(nibble(byte, i, isNibbles), put);
        }
        if (bytes % 2 != 0) next();
    }

    ByteView m_unread;
    std::uint64_t m_x = 0;
    std::uint64_t m_y = 0;
    std::uint32_t m_width;
    std::uint32_t m_height;
};

void BmpReader::readRuns(DecodedPicture& picture) const {
    const std::array<std::uint8_t, 3>& first = color(0);
    if (first != std::array<std::uint8_t, 3>{}) {
        for (std::size_t i = 0; i < picture.pixels.size(); i += 3) {
            std::copy_n(first.data(), 3, picture.pixels.data() + i);
        }
    }
    BmpRuns(pixels(), m_header.width, m_header.height)
        .read(m_bits == 4, [&](std::uint32_t x, std::uint32_t y, std::uint32_t value) {
            const std::size_t row = m_header.height - 1 - y;
            std::copy_n(color(value).data(), 3,
                        picture.pixels.data() + row * picture.bytesPerRow + std::size_t{x} * 3);
        });
}

DecodedPicture BmpReader::decode(const PictureLimits& limits) const {
    checkPictureLimits(m_header, limits);
    const std::size_t stored = rowBytes();
    const std::uint64_t count = std::uint64_t{m_header.width} * m_header.height;
    const auto needed = m_has_runs ? count / pixelsPerByte : checkedProduct({stored, m_header.height});
    if (!needed || *needed > pixels().size()) failForShortData(formatName);
    if (m_has_runs) {
        DecodedPicture picture = allocatePicture(m_header, limits, 0);
        readRuns(picture);
        return picture;
    }
    DecodedPicture picture = allocateUnwrittenPicture(m_header, limits, 0);
    for (std::size_t y = 0; y < m_header.height; ++y) {
        const std::size_t row = m_is_top_down ? y : m_header.height - 1 - y;
        readRow(pixels().data() + y * stored, picture.pixels.data() + row * picture.bytesPerRow);
    }
    return picture;
}

} // namespace Imaging::Platform
