// GIF with giflib. The first picture of a file is read, as RGB of 8 bits; what it leaves uncovered of the
// screen, and its transparent colour, have alpha 0, and there is alpha only where one of the two can be. A
// picture that lies outside the screen enlarges it. A profile is read from and written to the application
// extension "ICCRGBG1012". Whatever follows the first picture is not looked at.

#include "Platform/Codecs/Formats/GifCodec.h"

#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/Support/ColorReduction.h"
#include "Platform/Codecs/Support/StraightRows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include <gif_lib.h>

namespace Imaging::Platform {

namespace {

constexpr std::string_view formatName = "GIF";
constexpr std::string_view profileExtension = "ICCRGBG1012";
constexpr std::size_t maximumBlock = 255;
constexpr std::uint32_t maximumSide = 65535;

struct CloseReading {
    void operator()(GifFileType* file) const { DGifCloseFile(file, nullptr); }
};
struct CloseWriting {
    void operator()(GifFileType* file) const { EGifCloseFile(file, nullptr); }
};

/// giflib asks for bytes in order and takes fewer than it asked for as the end.
int readBytes(GifFileType* file, GifByteType* to, int count) {
    auto& unread = *static_cast<ByteView*>(file->UserData);
    const std::size_t there = std::min(unread.size(), static_cast<std::size_t>(std::max(count, 0)));
    std::copy_n(unread.data(), there, to);
    unread = unread.subspan(there);
    return static_cast<int>(there);
}

/// giflib's numbers as our exceptions.
[[noreturn]] void raise(int error) {
    switch (error) {
    case D_GIF_ERR_EOF_TOO_SOON:
    case D_GIF_ERR_READ_FAILED:
        failForShortData(formatName);
    case D_GIF_ERR_NOT_ENOUGH_MEM:
        throw CodecException(NSErrorCode::TooLarge, "there is not enough memory to decode the GIF picture");
    default:
        break;
    }
    const char* const words = GifErrorString(error);
    failForDamage(formatName, words == nullptr ? "the codes make no sense" : words);
}

class GifReader {
public:
    explicit GifReader(ByteView bytes) : m_unread(bytes) {
        int error = 0;
        m_file.reset(DGifOpen(&m_unread, readBytes, &error));
        if (m_file == nullptr) raise(error);
        readUpToPixels();
    }

    PictureHeader readHeader() const;
    DecodedPicture decode(const PictureLimits& limits);

private:
    void check(int result) const {
        if (result == GIF_ERROR) raise(m_file->Error);
    }
    void readUpToPixels();
    void readExtension();
    bool coversScreen() const;
    void readRow(DecodedPicture& picture, std::uint32_t y, NSData& indices);
    std::uint32_t left() const { return static_cast<std::uint32_t>(m_file->Image.Left); }
    std::uint32_t top() const { return static_cast<std::uint32_t>(m_file->Image.Top); }
    std::uint32_t width() const { return static_cast<std::uint32_t>(m_file->Image.Width); }
    std::uint32_t height() const { return static_cast<std::uint32_t>(m_file->Image.Height); }

    ByteView m_unread;
    std::unique_ptr<GifFileType, CloseReading> m_file;
    const ColorMapObject* m_colors = nullptr;
    int m_transparent = NO_TRANSPARENT_COLOR;
    NSData m_profile;
};

/// All records up to the first picture; its header is the last thing before its pixels.
void GifReader::readUpToPixels() {
    GifRecordType kind = UNDEFINED_RECORD_TYPE;
    while (kind != IMAGE_DESC_RECORD_TYPE) {
        check(DGifGetRecordType(m_file.get(), &kind));
        if (kind == EXTENSION_RECORD_TYPE) readExtension();
        if (kind == TERMINATE_RECORD_TYPE) failForDamage(formatName, "there is no picture in it");
    }
    check(DGifGetImageDesc(m_file.get()));
    m_colors = m_file->Image.ColorMap != nullptr ? m_file->Image.ColorMap : m_file->SColorMap;
    if (m_colors == nullptr) failForDamage(formatName, "it has no colours");
    if (width() == 0 || height() == 0) failForDamage(formatName, "its picture has no pixels");
}

/// Two kinds count: the one that tells the transparent colour and the one that holds a profile, which comes
/// in blocks of up to 255 bytes.
void GifReader::readExtension() {
    int code = 0;
    GifByteType* block = nullptr; // its length, and then as many bytes
    check(DGifGetExtension(m_file.get(), &code, &block));
    const bool isProfile = code == APPLICATION_EXT_FUNC_CODE && block != nullptr &&
                           block[0] == profileExtension.size() &&
                           std::equal(profileExtension.begin(), profileExtension.end(), block + 1);
    GraphicsControlBlock control;
    if (code == GRAPHICS_EXT_FUNC_CODE && block != nullptr &&
        DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
        m_transparent = control.TransparentColor;
    }
    if (isProfile) m_profile.clear();
    while (block != nullptr) {
        check(DGifGetExtensionNext(m_file.get(), &block));
        if (isProfile && block != nullptr) m_profile.insert(m_profile.end(), block + 1, block + 1 + block[0]);
    }
}

/// Otherwise something of the screen shows through, and the picture has alpha.
bool GifReader::coversScreen() const {
    const auto screenWidth = static_cast<std::uint32_t>(m_file->SWidth);
    const auto screenHeight = static_cast<std::uint32_t>(m_file->SHeight);
    return left() == 0 && top() == 0 && width() >= screenWidth && height() >= screenHeight;
}

PictureHeader GifReader::readHeader() const {
    PictureHeader header;
    header.formatName = formatName;
    header.width = std::max(static_cast<std::uint32_t>(m_file->SWidth), left() + width());
    header.height = std::max(static_cast<std::uint32_t>(m_file->SHeight), top() + height());
    header.hasAlpha = m_transparent != NO_TRANSPARENT_COLOR || !coversScreen();
    header.colorProfile = matchingProfile(m_profile, header.color);
    return header;
}

void GifReader::readRow(DecodedPicture& picture, std::uint32_t y, NSData& indices) {
    check(DGifGetLine(m_file.get(), indices.data(), static_cast<int>(width())));
    const std::size_t pixelBytes = picture.header.bytesPerPixel();
    std::uint8_t* to =
        picture.pixels.data() + std::size_t{top() + y} * picture.bytesPerRow + left() * pixelBytes;
    for (const std::uint8_t index : indices) {
        if (index != m_transparent) {
            if (index >= m_colors->ColorCount) failForDamage(formatName, "a pixel has no colour");
            const GifColorType& color = m_colors->Colors[index];
            to[0] = color.Red;
            to[1] = color.Green;
            to[2] = color.Blue;
            if (picture.header.hasAlpha) to[3] = 255;
        }
        to += pixelBytes;
    }
}

DecodedPicture GifReader::decode(const PictureLimits& limits) {
    DecodedPicture picture = allocatePicture(readHeader(), limits, 0);
    struct Pass {
        std::uint32_t first;
        std::uint32_t step;
    };
    // Rows of an interlaced picture: every eighth, those between, every other fourth, every other one.
    constexpr std::array<Pass, 4> interlaced = {{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
    constexpr std::array<Pass, 1> plain = {{{0, 1}}};
    NSData indices(width());
    const auto readPasses = [&](const auto& passes) {
        for (const Pass& pass : passes) {
            for (std::uint32_t y = pass.first; y < height(); y += pass.step) readRow(picture, y, indices);
        }
    };
    m_file->Image.Interlace ? readPasses(interlaced) : readPasses(plain);
    return picture;
}

int writeBytes(GifFileType* file, const GifByteType* from, int count) {
    auto& bytes = *static_cast<NSData*>(file->UserData);
    return appendBytes(bytes, from, static_cast<std::size_t>(count)) ? count : 0;
}

class GifWriter {
public:
    GifWriter(const PictureView& picture, bool diffusesErrors)
        : m_width(picture.header.width),
          m_height(picture.header.height),
          m_picture(reduceColors(picture, diffusesErrors)),
          m_profile(rgbProfileToWrite(picture.header)) {}

    NSData encode();

private:
    void check(int result) const {
        if (result != GIF_ERROR) return;
        throw CodecException(NSErrorCode::TooLarge,
                             "the picture cannot be written as GIF for want of memory");
    }
    void writeColors();
    void writeTransparency();
    void writeProfile();
    void writePixels();

    std::uint32_t m_width;
    std::uint32_t m_height;
    IndexedPicture m_picture;
    NSData m_profile;
    NSData m_bytes;
    std::unique_ptr<GifFileType, CloseWriting> m_file;
};

/// The library rounds up to a power of 2, and so do we: the colours behind the last one are black.
void GifWriter::writeColors() {
    const int bits = std::max(GifBitSize(static_cast<int>(m_picture.colors.size())), 1);
    const std::unique_ptr<ColorMapObject, void (*)(ColorMapObject*)> colors(
        GifMakeMapObject(1 << bits, nullptr), GifFreeMapObject);
    if (colors == nullptr) check(GIF_ERROR);
    for (std::size_t i = 0; i < m_picture.colors.size(); ++i) {
        const auto& color = m_picture.colors[i];
        colors->Colors[i] = {color[0], color[1], color[2]};
    }
    check(EGifPutScreenDesc(m_file.get(), static_cast<int>(m_width), static_cast<int>(m_height), bits, 0,
                            colors.get()));
}

void GifWriter::writeTransparency() {
    if (m_picture.transparent < 0) return;
    GraphicsControlBlock control{};
    control.TransparentColor = m_picture.transparent;
    std::array<GifByteType, 4> block{};
    const std::size_t size = EGifGCBToExtension(&control, block.data());
    check(EGifPutExtension(m_file.get(), GRAPHICS_EXT_FUNC_CODE, static_cast<int>(size), block.data()));
}

void GifWriter::writeProfile() {
    if (m_profile.empty()) return;
    check(EGifPutExtensionLeader(m_file.get(), APPLICATION_EXT_FUNC_CODE));
    check(EGifPutExtensionBlock(m_file.get(), static_cast<int>(profileExtension.size()),
                                profileExtension.data()));
    for (std::size_t at = 0; at < m_profile.size(); at += maximumBlock) {
        const std::size_t size = std::min(maximumBlock, m_profile.size() - at);
        check(EGifPutExtensionBlock(m_file.get(), static_cast<int>(size), m_profile.data() + at));
    }
    check(EGifPutExtensionTrailer(m_file.get()));
}

void GifWriter::writePixels() {
    const auto width = static_cast<int>(m_width);
    check(EGifPutImageDesc(m_file.get(), 0, 0, width, static_cast<int>(m_height), false, nullptr));
    for (std::size_t y = 0; y < m_height; ++y) {
        check(EGifPutLine(m_file.get(), m_picture.indices.data() + y * m_width, width));
    }
}

NSData GifWriter::encode() {
    int error = 0;
    m_file.reset(EGifOpen(&m_bytes, writeBytes, &error));
    if (m_file == nullptr) check(GIF_ERROR);
    EGifSetGifVersion(m_file.get(), true); // 89a, which has the extensions
    writeColors();
    writeProfile();
    writeTransparency();
    writePixels();
    check(EGifCloseFile(m_file.release(), &error)); // which frees it however it ends
    return std::move(m_bytes);
}

class GifCodec final : public Codec {
public:
    std::string_view formatName() const override { return Platform::formatName; }

    bool recognises(ByteView bytes) const override {
        return bytes.size() >= 6 &&
               (std::memcmp(bytes.data(), "GIF87a", 6) == 0 || std::memcmp(bytes.data(), "GIF89a", 6) == 0);
    }

    PictureHeader readHeader(ByteView bytes) const override { return GifReader(bytes).readHeader(); }

    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        return GifReader(bytes).decode(limits);
    }

    NSData encode(const PictureView& picture, const EncodeOptions& options) const override {
        checkEncodable(picture);
        const PictureHeader& header = picture.header;
        if (header.width > maximumSide || header.height > maximumSide) {
            throw CodecException(NSErrorCode::TooLarge,
                                 "GIF holds at most 65535 pixels each way, and the picture is " +
                                     std::to_string(header.width) + " x " + std::to_string(header.height) +
                                     "; use PNG or TIFF");
        }
        return GifWriter(picture, options.diffusesErrors).encode();
    }
};

} // namespace

std::shared_ptr<const Codec> makeGifCodec() { return std::make_shared<GifCodec>(); }

} // namespace Imaging::Platform
