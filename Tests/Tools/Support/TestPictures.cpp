#include "Tests/Tools/Support/TestPictures.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"

#include <png.h>

#include <cstring>
#include <random>
#include <stdexcept>

namespace TestSupport {

namespace {

Imaging::Platform::ByteView bytesOf(std::string_view text) {
    return {static_cast<const std::uint8_t*>(static_cast<const void*>(text.data())), text.size()};
}

std::string bigEndian(std::uint32_t number) {
    return {static_cast<char>(number >> 24), static_cast<char>(number >> 16), static_cast<char>(number >> 8),
            static_cast<char>(number)};
}

std::string littleEndian(std::uint32_t number, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(number >> (8 * i));
    return text;
}

/// The checksum of PNG chunks (ISO 3309), bit by bit.
std::uint32_t checksum(std::string_view text) {
    std::uint32_t value = 0xFFFFFFFF;
    for (const char c : text) {
        value ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~value;
}

std::string tiffEntry(std::uint32_t tag, std::uint32_t type, std::uint32_t value) {
    return littleEndian(tag, 2) + littleEndian(type, 2) + littleEndian(1, 4) + littleEndian(value, 4);
}

} // namespace

std::ostream& operator<<(std::ostream& out, const Pixel& pixel) {
    return out << '(' << int{pixel.red} << ' ' << int{pixel.green} << ' ' << int{pixel.blue} << ' '
               << int{pixel.alpha} << ')';
}

Picture randomPicture(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    Picture picture(width, height, black);
    const auto byte = [&random] { return static_cast<std::uint8_t>(random() & 255); };
    for (Pixel& pixel : picture.pixels) pixel = {byte(), byte(), byte(), 255};
    return picture;
}

Picture seen(const Picture& stored, int orientation) {
    const int w = stored.width;
    const int h = stored.height;
    Picture picture(orientation < 5 ? w : h, orientation < 5 ? h : w, black);
    for (int row = 0; row < h; ++row) {
        for (int column = 0; column < w; ++column) {
            const bool rowsRun = orientation < 5; // stored rows stay rows
            const bool rowsTurned =
                orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
            const bool columnsTurned =
                orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
            const int fromRow = rowsTurned ? h - 1 - row : row;
            const int fromColumn = columnsTurned ? w - 1 - column : column;
            picture.at(rowsRun ? fromColumn : fromRow, rowsRun ? fromRow : fromColumn) =
                stored.at(column, row);
        }
    }
    return picture;
}

std::string pngOf(const Picture& picture, bool alpha) {
    std::string samples;
    for (const Pixel& p : picture.pixels) {
        samples += {static_cast<char>(p.red), static_cast<char>(p.green), static_cast<char>(p.blue)};
        if (alpha) samples += static_cast<char>(p.alpha);
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = alpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    png_alloc_size_t size = 0;
    if (png_image_write_to_memory(&image, nullptr, &size, 0, samples.data(), 0, nullptr) == 0) {
        throw std::runtime_error(image.message);
    }
    std::string bytes(size, '\0');
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, samples.data(), 0, nullptr) == 0) {
        throw std::runtime_error(image.message);
    }
    bytes.resize(size);
    return bytes;
}

Picture pictureOfPNG(std::string_view bytes) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) {
        throw std::runtime_error(image.message);
    }
    Picture picture(static_cast<int>(image.width), static_cast<int>(image.height), clear);
    picture.hasAlpha = (image.format & PNG_FORMAT_FLAG_ALPHA) != 0;
    image.format = PNG_FORMAT_RGBA;
    static_assert(sizeof(Pixel) == 4);
    if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0) {
        throw std::runtime_error(image.message);
    }
    return picture;
}

Picture pictureOfAnyFormat(std::string_view bytes) {
    const Imaging::Platform::DecodedPicture decoded = Imaging::Platform::decodePicture(bytesOf(bytes));
    const Imaging::Platform::PictureHeader& header = decoded.header;
    Picture picture(static_cast<int>(header.width), static_cast<int>(header.height), black);
    picture.hasAlpha = header.hasAlpha;
    const bool isColor = header.color == Imaging::Platform::SampleColor::RGB;
    const auto samples = static_cast<std::size_t>(header.samplesPerPixel());
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const std::uint8_t* p = decoded.pixels.data() + i * samples;
        picture.pixels[i] = {p[0], p[isColor ? 1 : 0], p[isColor ? 2 : 0],
                             header.hasAlpha ? p[samples - 1] : std::uint8_t{255}};
    }
    return picture;
}

std::string jpegOf(const Picture& picture) {
    std::vector<std::uint8_t> samples;
    for (const Pixel& p : picture.pixels) samples.insert(samples.end(), {p.red, p.green, p.blue});
    Imaging::Platform::PictureHeader header;
    header.width = static_cast<std::uint32_t>(picture.width);
    header.height = static_cast<std::uint32_t>(picture.height);
    const Imaging::Platform::PictureView view{header, samples.data(),
                                              static_cast<std::size_t>(picture.width) * 3};
    const Imaging::Platform::NSData data = Imaging::Platform::codecForFormat("JPEG")->encode(view, {0.95});
    return {data.begin(), data.end()};
}

std::string pngChunk(std::string_view type, std::string_view data) {
    const std::string body = std::string(type) + std::string(data);
    return bigEndian(static_cast<std::uint32_t>(data.size())) + body + bigEndian(checksum(body));
}

std::string pngStart(std::uint32_t width, std::uint32_t height) {
    const std::string eightBitsOfRGB{8, 2, 0, 0, 0};
    return "\x89PNG\r\n\x1a\n" + pngChunk("IHDR", bigEndian(width) + bigEndian(height) + eightBitsOfRGB);
}

std::string pngWithChunks(const Picture& picture, const std::string& chunks) {
    std::string bytes = pngOf(picture);
    return bytes.insert(33, chunks);
}

std::string exifWithOrientation(int orientation) {
    return "II*" + std::string(1, '\0') + littleEndian(8, 4) + littleEndian(1, 2) +
           tiffEntry(0x112, 3, static_cast<std::uint32_t>(orientation)) + littleEndian(0, 4);
}

std::string jpegWithExif(const std::string& jpeg, const std::string& exif) {
    const std::string data = std::string("Exif\0\0", 6) + exif;
    const std::string length = bigEndian(static_cast<std::uint32_t>(data.size() + 2)).substr(2);
    return jpeg.substr(0, 2) + "\xff\xe1" + length + data + jpeg.substr(2);
}

std::string tiffWithStrip(std::uint32_t width, std::uint32_t height, std::uint32_t offset,
                          std::uint32_t count) {
    constexpr std::uint32_t entries = 8;
    constexpr std::uint32_t pixelBytes = 16;
    return "II*" + std::string(1, '\0') + littleEndian(8 + pixelBytes, 4) + std::string(pixelBytes, '\x80') +
           littleEndian(entries, 2) + tiffEntry(256, 4, width) + tiffEntry(257, 4, height) +
           tiffEntry(258, 3, 8) + tiffEntry(259, 3, 1) + tiffEntry(262, 3, 1) + tiffEntry(273, 4, offset) +
           tiffEntry(277, 3, 1) + tiffEntry(279, 4, count) + littleEndian(0, 4);
}

} // namespace TestSupport
