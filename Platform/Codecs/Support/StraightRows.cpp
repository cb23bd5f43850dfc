// A row is copied and straightened when it is asked for, so that a picture to be written never exists a
// second time.

#include "Platform/Codecs/Support/StraightRows.h"

#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/SampleConversion.h"

#include <algorithm>

namespace Imaging::Platform {

StraightRows::StraightRows(const PictureView& picture) : m_picture(picture) {
    const PictureHeader& header = picture.header;
    const bool isPlain = header.color != SampleColor::Black && !(header.hasAlpha && picture.premultiplied);
    if (!isPlain) m_copy = allocateWorkingBytes(header.width * header.bytesPerPixel());
}

const std::uint8_t* StraightRows::row(std::size_t y) {
    const PictureHeader& header = m_picture.header;
    const std::uint8_t* from = m_picture.pixels + y * m_picture.bytesPerRow;
    if (m_copy.empty()) return from;
    std::copy_n(from, header.width * header.bytesPerPixel(), m_copy.data());
    if (m_picture.premultiplied) unpremultiplyRow(header, m_copy.data());
    if (header.color == SampleColor::Black) invertGrayRow(header, m_copy.data(), false);
    return m_copy.data();
}

const std::uint8_t* StraightRows::rgba(std::size_t y) {
    const PictureHeader& header = m_picture.header;
    m_rgba.resize(std::size_t{header.width} * 4);
    const std::uint8_t* from = row(y);
    const auto samples = static_cast<std::size_t>(header.samplesPerPixel());
    const auto sample = [&](std::size_t index) {
        if (header.bitsPerSample == 8) return from[index];
        const auto* wide = static_cast<const std::uint16_t*>(static_cast<const void*>(from));
        return static_cast<std::uint8_t>((std::uint32_t{wide[index]} + 128) / 257);
    };
    const std::size_t colors = samples >= 3 ? 1 : 0; // the step from one colour to the next
    for (std::size_t x = 0; x < header.width; ++x) {
        std::uint8_t* const to = m_rgba.data() + x * 4;
        for (std::size_t i = 0; i < 3; ++i) to[i] = sample(x * samples + i * colors);
        to[3] = header.hasAlpha ? sample(x * samples + samples - 1) : std::uint8_t{255};
    }
    return m_rgba.data();
}

} // namespace Imaging::Platform
