// Has openjpeg decode the picture, then brings components of any depth, sign and subsampling together to
// pixels.

#include "Platform/Codecs/Formats/Jpeg2000Reader.h"

#include "Platform/Codecs/Formats/IsoBoxes.h"
#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/SampleConversion.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Imaging::Platform {

namespace {

constexpr std::string_view formatName = "JPEG 2000";

// Numbers of colour spaces in the colour box (ISO/IEC 15444-1, I.5.3.3).
constexpr std::uint64_t enumeratedCmyk = 12;
constexpr std::uint64_t enumeratedRgb = 16;
constexpr std::uint64_t enumeratedGray = 17;
constexpr std::uint64_t enumeratedYcc = 18;

[[noreturn]] void failAsUnsupported(const std::string& what) {
    throw CodecException(NSErrorCode::UnsupportedFormat, "JPEG 2000 pictures " + what + " are not supported");
}

bool hasSpace(const NSData& profile, std::string_view space) {
    constexpr std::size_t at = 16;
    return profile.size() >= at + 4 && std::equal(space.begin(), space.end(), profile.begin() + at);
}

} // namespace

Jpeg2000Reader::Jpeg2000Reader(ByteView bytes) : m_bytes(bytes) {
    m_is_file = bytes.size() < 2 || bytes[0] != 0xff;
    if (m_is_file) {
        readBoxes();
    } else {
        m_codestream = readJpeg2000Codestream(bytes);
    }
    describe();
}

void Jpeg2000Reader::readBoxes() {
    ByteView unread = m_bytes;
    IsoBox box;
    while (takeBox(unread, box)) {
        if (!box.isComplete) failForShortData(formatName);
        if (box.type == "jp2c") {
            m_codestream = readJpeg2000Codestream(box.contents);
            return;
        }
        if (box.type != "jp2h") continue;
        readColor(findBox(box.contents, "colr"));
        readPalette(findBox(box.contents, "pclr"));
        readChannels(findBox(box.contents, "cdef"));
        readResolution(findBox(box.contents, "res "));
    }
    failForShortData(formatName);
}

void Jpeg2000Reader::readColor(ByteView box) {
    constexpr std::size_t contents = 3; // behind method, precedence and approximation
    if (box.size() <= contents) return;
    if (box[0] == 1 && box.size() >= contents + 4) m_enumerated_color = bigEndian(box, contents, 4);
    if (box[0] == 2) m_profile.assign(box.begin() + contents, box.end());
}

void Jpeg2000Reader::readPalette(ByteView box) {
    if (box.size() < 3) return;
    m_palette_columns = box[2];
    if (m_palette_columns == 0 || box.size() < 3 + m_palette_columns) {
        failForDamage(formatName, "its palette makes no sense");
    }
    for (std::size_t i = 0; i < m_palette_columns; ++i) {
        m_palette_bits = std::max(m_palette_bits, (std::uint32_t{box[3 + i]} & 0x7f) + 1);
    }
}

/// The first channel that is the opacity of the whole picture is its alpha.
void Jpeg2000Reader::readChannels(ByteView box) {
    if (box.size() < 2) return;
    const std::uint64_t count = bigEndian(box, 0, 2);
    for (std::size_t i = 0; i < count && 2 + (i + 1) * 6 <= box.size() && !m_header.hasAlpha; ++i) {
        const std::uint64_t kind = bigEndian(box, 2 + i * 6 + 2, 2);
        m_header.hasAlpha = kind == 1 || kind == 2;
        m_is_premultiplied = kind == 2;
    }
}

/// Two fractions with a power of 10 each, in pixels a metre, vertical first: how the picture is meant to be
/// shown, or else how it was taken.
void Jpeg2000Reader::readResolution(ByteView box) {
    ByteView fractions = findBox(box, "resd");
    if (fractions.empty()) fractions = findBox(box, "resc");
    constexpr std::size_t size = 10;
    if (fractions.size() < size) return;
    const auto perInch = [&](std::size_t fraction, std::size_t exponent) {
        const double numerator = static_cast<double>(bigEndian(fractions, fraction, 2));
        const double denominator = static_cast<double>(bigEndian(fractions, fraction + 2, 2));
        const double scale = std::pow(10.0, static_cast<std::int8_t>(fractions[exponent]));
        const double value = denominator > 0 ? numerator / denominator * scale * metresPerInch : 0;
        return std::isfinite(value) && value > 0 ? value : 0;
    };
    const double y = perInch(0, 8);
    const double x = perInch(4, 9);
    if (x <= 0 || y <= 0) return;
    m_header.resolutionX = x;
    m_header.resolutionY = y;
}

Jpeg2000Reader::Kind Jpeg2000Reader::kindOfColor() const {
    switch (m_enumerated_color) {
    case 0:
        break;
    case enumeratedCmyk:
        return Kind::CMYK;
    case enumeratedRgb:
        return Kind::RGB;
    case enumeratedGray:
        return Kind::Gray;
    case enumeratedYcc:
        return Kind::YCC;
    default:
        failAsUnsupported("of colour space " + std::to_string(m_enumerated_color));
    }
    if (hasSpace(m_profile, "CMYK")) return Kind::CMYK;
    if (hasSpace(m_profile, "GRAY")) return Kind::Gray;
    if (hasSpace(m_profile, "RGB ")) return Kind::RGB;
    const auto& components = m_codestream.components;
    const std::size_t channelCount = m_palette_columns > 0 ? m_palette_columns : components.size();
    if (channelCount - (m_header.hasAlpha ? 1 : 0) < 3) return Kind::Gray;
    const bool isReduced = m_palette_columns == 0 && components[1].stepX > components[0].stepX;
    return isReduced ? Kind::YCC : Kind::RGB;
}

void Jpeg2000Reader::describe() {
    m_kind = kindOfColor();
    const std::size_t channelCount =
        m_palette_columns > 0 ? m_palette_columns : m_codestream.components.size();
    if (channelCount < colorSamples() + (m_header.hasAlpha ? 1 : 0)) {
        failForDamage(formatName, "it has too few components for its colours");
    }
    std::uint32_t bits = m_palette_bits;
    for (const auto& component : m_codestream.components) {
        if (m_palette_columns == 0) bits = std::max(bits, component.bits);
    }
    if (bits > 16) failAsUnsupported("of " + std::to_string(bits) + " bits a sample");
    m_header.formatName = formatName;
    m_header.width = m_codestream.width;
    m_header.height = m_codestream.height;
    m_header.bitsPerSample = bits > 8 ? 16 : 8;
    m_header.color = m_kind == Kind::Gray ? SampleColor::White : SampleColor::RGB;
    if (m_kind == Kind::Gray || m_kind == Kind::RGB) {
        m_header.colorProfile = matchingProfile(m_profile, m_header.color);
    }
    constexpr std::uint64_t anything = std::numeric_limits<std::uint64_t>::max();
    checkPictureLimits(m_header, {anything, anything}); // not empty
}

/// Every sample takes four bytes as it is decoded and four more in the picture that comes of it.
std::uint64_t Jpeg2000Reader::workingBytes() const {
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    const auto& first = m_codestream.components.front();
    const double pixels = 1.0 * m_header.width * m_header.height * first.stepX * first.stepY;
    double samples = 1.0 * m_header.width * m_header.height * static_cast<double>(m_palette_columns);
    for (const auto& component : m_codestream.components)
        samples += pixels / component.stepX / component.stepY;
    const double bytes = samples * 8 + static_cast<double>(m_codestream.structureBytes);
    return bytes < 9e18 ? static_cast<std::uint64_t>(bytes) : most;
}

Jpeg2000Image Jpeg2000Reader::decodedImage() {
    Jpeg2000Memory memory{m_bytes};
    const Jpeg2000Stream stream = openJpeg2000Stream(memory);
    const Jpeg2000Handle codec(opj_create_decompress(m_is_file ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
    listenTo(codec, m_log);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t* image = nullptr;
    bool done = opj_setup_decoder(codec.get(), &parameters) == OPJ_TRUE &&
                opj_decoder_set_strict_mode(codec.get(), OPJ_TRUE) == OPJ_TRUE &&
                opj_read_header(stream.get(), codec.get(), &image) == OPJ_TRUE;
    Jpeg2000Image result(image);
    done = done && opj_decode(codec.get(), stream.get(), image) == OPJ_TRUE &&
           opj_end_decompress(codec.get(), stream.get()) == OPJ_TRUE;
    if (!done) failForDamage(formatName, m_log.message);
    return result;
}

/// The colours in their order and then alpha.
std::vector<const opj_image_comp_t*> Jpeg2000Reader::channels(const opj_image_t& image) const {
    std::vector<const opj_image_comp_t*> found;
    const opj_image_comp_t* alpha = nullptr;
    for (std::uint32_t i = 0; i < image.numcomps; ++i) {
        const opj_image_comp_t& component = image.comps[i];
        const bool isSane = component.data != nullptr && component.w > 0 && component.h > 0 &&
                            component.dx > 0 && component.dy > 0 && component.prec >= 1 &&
                            component.prec <= 16;
        if (!isSane) failForDamage(formatName, "a component has no samples");
        const bool isAlpha = component.alpha == 1 || component.alpha == 2;
        if (isAlpha && alpha == nullptr) alpha = &component;
        if (!isAlpha && found.size() < colorSamples()) found.push_back(&component);
    }
    const bool fits = found.size() == colorSamples() && (alpha != nullptr) == m_header.hasAlpha &&
                      found.front()->w == m_header.width && found.front()->h == m_header.height;
    if (!fits) failForDamage(formatName, "its picture is another one than it says");
    if (alpha != nullptr) found.push_back(alpha);
    return found;
}

/// One row of samples, spread over all of 8 or 16 bits; `to` gets one for each pixel, and its step is the
/// count of samples in a pixel.
void Jpeg2000Reader::copyChannel(const opj_image_comp_t& channel, const opj_image_comp_t& first,
                                 std::size_t y, std::uint16_t* to) const {
    const std::size_t step = colorSamples() + (m_header.hasAlpha ? 1 : 0);
    const std::uint32_t largest = m_header.bitsPerSample == 16 ? 65535 : 255;
    const std::int64_t own = (std::int64_t{1} << channel.prec) - 1;
    const std::int64_t shift = channel.sgnd != 0 ? std::int64_t{1} << (channel.prec - 1) : 0;
    const std::size_t row = std::min<std::size_t>(y * first.dy / channel.dy, channel.h - 1);
    const OPJ_INT32* const from = channel.data + row * channel.w;
    for (std::size_t x = 0; x < m_header.width; ++x, to += step) {
        const std::size_t column = std::min<std::size_t>(x * first.dx / channel.dx, channel.w - 1);
        const std::int64_t value = std::clamp<std::int64_t>(from[column] + shift, 0, own);
        *to = static_cast<std::uint16_t>((value * largest + own / 2) / own);
    }
}

/// Full-range YCbCr with the weights of ITU-R BT.601.
void Jpeg2000Reader::convertYcc(std::vector<std::uint16_t>& row) const {
    const std::size_t step = m_header.hasAlpha ? 4 : 3;
    const double largest = m_header.bitsPerSample == 16 ? 65535 : 255;
    const double middle = (largest + 1) / 2;
    const auto rounded = [&](double value) {
        return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0, largest)));
    };
    for (std::size_t i = 0; i + step <= row.size(); i += step) {
        const double luma = row[i];
        const double blue = row[i + 1] - middle;
        const double red = row[i + 2] - middle;
        row[i] = rounded(luma + 1.402 * red);
        row[i + 1] = rounded(luma - 0.344136 * blue - 0.714136 * red);
        row[i + 2] = rounded(luma + 1.772 * blue);
    }
}

void Jpeg2000Reader::writeRow(std::vector<std::uint16_t>& row, std::uint8_t* to) const {
    if (m_kind == Kind::YCC) convertYcc(row);
    NSData bytes;
    const auto* samples = static_cast<const std::uint8_t*>(static_cast<const void*>(row.data()));
    if (m_header.bitsPerSample == 8) {
        bytes.assign(row.begin(), row.end());
        samples = bytes.data();
    }
    if (m_kind == Kind::CMYK) {
        convertInks(m_header, samples, false, to);
    } else {
        std::copy_n(samples, m_header.width * m_header.bytesPerPixel(), to);
    }
    if (!m_is_premultiplied) premultiplyRow(m_header, to);
}

DecodedPicture Jpeg2000Reader::decode(const PictureLimits& limits) {
    DecodedPicture picture = allocateUnwrittenPicture(m_header, limits, workingBytes());
    const Jpeg2000Image image = decodedImage();
    const auto found = channels(*image);
    std::vector<std::uint16_t> row(std::size_t{m_header.width} * found.size());
    for (std::size_t y = 0; y < m_header.height; ++y) {
        for (std::size_t i = 0; i < found.size(); ++i) copyChannel(*found[i], *found[0], y, row.data() + i);
        writeRow(row, picture.pixels.data() + y * picture.bytesPerRow);
    }
    return picture;
}

} // namespace Imaging::Platform
