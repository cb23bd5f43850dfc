// JPEG 2000 with openjpeg. What is written is a JP2 file with straight alpha, of the picture's own depth: of
// quality 1 without any loss, below that with the signal-to-noise ratio of decibelsOf. A picture without a
// profile is stated to be sRGB, or gray with its curve.

#include "Platform/Codecs/Formats/Jpeg2000Codec.h"

#include "Platform/Codecs/Formats/IsoBoxes.h"
#include "Platform/Codecs/Formats/Jpeg2000Reader.h"
#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/StraightRows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

namespace Imaging::Platform {

namespace {

/// From 28 dB, where everything is blurred, to 52 dB, where nothing is to be seen any more.
double decibelsOf(double quality) {
    constexpr double worst = 28;
    constexpr double best = 52;
    return worst + (best - worst) * std::clamp(quality, 0.0, 1.0);
}

/// A resolution in pixels a metre as JP2 writes it.
struct Fraction {
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 1;
    std::uint32_t exponent = 0;
};

/// The nearest such fraction to a value from 0.001 to 10^12, most of which can be met within a millionth.
Fraction nearestFraction(double value) {
    Fraction best;
    double least = std::numeric_limits<double>::max();
    for (std::uint32_t exponent = 0; exponent < 12; ++exponent) {
        const double scaled = value / std::pow(10.0, exponent);
        for (std::uint32_t denominator = 1; denominator <= 1000; ++denominator) {
            const double numerator = std::round(scaled * denominator);
            if (numerator < 1 || numerator > 65535) continue;
            const double difference = std::abs(numerator / denominator - scaled) / scaled;
            if (difference >= least) continue;
            least = difference;
            best = {static_cast<std::uint32_t>(numerator), denominator, exponent};
        }
    }
    return best;
}

void appendNumber(NSData& to, std::uint64_t value, int count) {
    for (int i = count - 1; i >= 0; --i) to.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void append(NSData& to, ByteView bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

/// One of 4 GiB and more runs to the end of the file, as only the last one can.
NSData boxOf(std::string_view type, ByteView contents) {
    constexpr std::size_t header = 8;
    const std::uint64_t size = contents.size() + header;
    NSData box;
    box.reserve(size);
    appendNumber(box, size > std::numeric_limits<std::uint32_t>::max() ? 0 : size, 4);
    box.insert(box.end(), type.begin(), type.end());
    append(box, contents);
    return box;
}

class Jpeg2000Writer {
public:
    Jpeg2000Writer(const PictureView& picture, double quality) : m_rows(picture), m_header(picture.header) {
        m_quality = quality >= 0 ? std::min(quality, 1.0) : 0; // and for NaN as well
    }

    NSData encode();

private:
    Jpeg2000Image image();
    void fill(const opj_image_t& image);
    opj_cparameters_t parameters() const;
    NSData resolutionBox() const;
    NSData profileBox() const;
    NSData completed(ByteView file) const;
    [[noreturn]] void fail() const {
        throw CodecException(NSErrorCode::TooLarge,
                             "the picture cannot be written as JPEG 2000 (" + oneLine(m_log.message) + ")");
    }

    StraightRows m_rows;
    const PictureHeader& m_header;
    double m_quality = 0;
    Jpeg2000Log m_log;
};

Jpeg2000Image Jpeg2000Writer::image() {
    std::array<opj_image_cmptparm_t, 4> components{};
    for (opj_image_cmptparm_t& component : components) {
        component.dx = component.dy = 1;
        component.w = m_header.width;
        component.h = m_header.height;
        component.prec = static_cast<OPJ_UINT32>(m_header.bitsPerSample);
    }
    const auto count = static_cast<OPJ_UINT32>(m_header.samplesPerPixel());
    const bool isColor = m_header.color == SampleColor::RGB;
    Jpeg2000Image made(
        opj_image_create(count, components.data(), isColor ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY));
    if (made == nullptr) throw std::bad_alloc();
    made->x1 = m_header.width;
    made->y1 = m_header.height;
    if (m_header.hasAlpha) made->comps[count - 1].alpha = 1;
    fill(*made);
    return made;
}

void Jpeg2000Writer::fill(const opj_image_t& image) {
    const auto samples = static_cast<std::size_t>(m_header.samplesPerPixel());
    for (std::size_t y = 0; y < m_header.height; ++y) {
        const std::uint8_t* const row = m_rows.row(y);
        const auto* const wide = static_cast<const std::uint16_t*>(static_cast<const void*>(row));
        for (std::size_t i = 0; i < samples; ++i) {
            OPJ_INT32* const to = image.comps[i].data + y * m_header.width;
            for (std::size_t x = 0; x < m_header.width; ++x) {
                to[x] = m_header.bitsPerSample == 16 ? wide[x * samples + i] : row[x * samples + i];
            }
        }
    }
}

opj_cparameters_t Jpeg2000Writer::parameters() const {
    opj_cparameters_t chosen;
    opj_set_default_encoder_parameters(&chosen);
    const std::uint32_t shorter = std::min(m_header.width, m_header.height);
    chosen.numresolution =
        std::min(6, static_cast<int>(std::bit_width(shorter))); // the smallest has a pixel at least
    chosen.tcp_numlayers = 1;
    chosen.tcp_mct = m_header.color == SampleColor::RGB ? 1 : 0;
    if (m_quality >= 1) {
        chosen.cp_disto_alloc = 1; // by rate, and 0 is all that there is
    } else {
        chosen.irreversible = 1;
        chosen.cp_fixed_quality = 1;
        chosen.tcp_distoratio[0] = static_cast<float>(decibelsOf(m_quality));
    }
    return chosen;
}

NSData Jpeg2000Writer::resolutionBox() const {
    const auto fits = [](double value) { return value > 1e-3 && value < 1e9; };
    if (!fits(m_header.resolutionX) || !fits(m_header.resolutionY)) return {};
    const Fraction x = nearestFraction(m_header.resolutionX / metresPerInch);
    const Fraction y = nearestFraction(m_header.resolutionY / metresPerInch);
    NSData contents;
    for (const Fraction& fraction : {y, x}) {
        appendNumber(contents, fraction.numerator, 2);
        appendNumber(contents, fraction.denominator, 2);
    }
    appendNumber(contents, y.exponent, 1);
    appendNumber(contents, x.exponent, 1);
    return boxOf("res ", boxOf("resd", contents));
}

NSData Jpeg2000Writer::profileBox() const {
    const NSData profile = matchingProfile(m_header.colorProfile, m_header.color);
    if (profile.empty()) return {};
    NSData contents = {2, 0, 0}; // a profile, without precedence and approximation
    contents.insert(contents.end(), profile.begin(), profile.end());
    return boxOf("colr", contents);
}

/// openjpeg writes neither profiles nor resolutions, so the box that describes the picture, which lies before
/// the pixels, is made anew.
NSData Jpeg2000Writer::completed(ByteView file) const {
    const NSData profile = profileBox();
    NSData result;
    IsoBox box;
    while (takeBox(file, box)) {
        if (box.type != "jp2h") {
            append(result, boxOf(box.type, box.contents));
            continue;
        }
        NSData contents;
        ByteView unread = box.contents;
        for (IsoBox part; takeBox(unread, part);) {
            const bool isReplaced = part.type == "colr" && !profile.empty();
            append(contents, isReplaced ? profile : boxOf(part.type, part.contents));
        }
        append(contents, resolutionBox());
        append(result, boxOf(box.type, contents));
    }
    return result;
}

NSData Jpeg2000Writer::encode() {
    const Jpeg2000Image pixels = image();
    opj_cparameters_t chosen = parameters();
    NSData bytes;
    Jpeg2000Memory memory{{}, &bytes};
    {
        const Jpeg2000Stream stream = openJpeg2000Stream(memory);
        const Jpeg2000Handle codec(opj_create_compress(OPJ_CODEC_JP2));
        listenTo(codec, m_log);
        const bool done = opj_setup_encoder(codec.get(), &chosen, pixels.get()) == OPJ_TRUE &&
                          opj_start_compress(codec.get(), pixels.get(), stream.get()) == OPJ_TRUE &&
                          opj_encode(codec.get(), stream.get()) == OPJ_TRUE &&
                          opj_end_compress(codec.get(), stream.get()) == OPJ_TRUE;
        if (!done) fail();
    }
    return completed(bytes);
}

class Jpeg2000Codec final : public Codec {
public:
    std::string_view formatName() const override { return "JPEG 2000"; }

    /// The signature box, or a codestream's first two markers.
    bool recognises(ByteView bytes) const override {
        constexpr std::array<std::uint8_t, 12> box = {0, 0, 0, 12, 'j', 'P', ' ', ' ', 13, 10, 0x87, 10};
        constexpr std::array<std::uint8_t, 4> markers = {0xff, 0x4f, 0xff, 0x51};
        const auto beginsWith = [&](const auto& start) {
            return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
        };
        return beginsWith(box) || beginsWith(markers);
    }

    PictureHeader readHeader(ByteView bytes) const override { return Jpeg2000Reader(bytes).header(); }

    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        return Jpeg2000Reader(bytes).decode(limits);
    }

    NSData encode(const PictureView& picture, const EncodeOptions& options) const override {
        checkEncodable(picture);
        try {
            return Jpeg2000Writer(picture, options.quality).encode();
        } catch (const std::bad_alloc&) {
            throw CodecException(NSErrorCode::TooLarge,
                                 "there is not enough memory to write the picture as JPEG 2000");
        }
    }
};

} // namespace

std::shared_ptr<const Codec> makeJpeg2000Codec() { return std::make_shared<Jpeg2000Codec>(); }

} // namespace Imaging::Platform
