#pragma once

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Encoded pictures for the codec tests, made in memory with the formats' own libraries or byte by byte, and
/// never with the codecs under test.
namespace Imaging::Platform::Fixtures {

using Samples = std::vector<std::uint16_t>; ///< interleaved, row after row, whatever the bits per sample

/// Samples without any symmetry, from 0 to `max` (255 or 65535).
Samples pattern(std::uint32_t width, std::uint32_t height, int samplesPerPixel, std::uint32_t max);

/// The same, but with each colour at most its pixel's alpha, which is the last sample. Some pixels are clear.
Samples premultipliedPattern(std::uint32_t width, std::uint32_t height, int samplesPerPixel,
                             std::uint32_t max);

/// The samples of a decoded picture; fails the test when its size is not what its header says.
Samples samplesOf(const DecodedPicture& picture);

/// A picture in memory for an encoder, with rows that are `padding` bytes longer than they need to be.
struct SourcePicture {
    PictureHeader header;
    NSData bytes;
    std::size_t bytesPerRow = 0;
    bool premultiplied = true;

    SourcePicture(std::uint32_t width, std::uint32_t height, int bits, SampleColor color, bool hasAlpha,
                  const Samples& samples, std::size_t padding = 0);
    PictureView view() const { return {header, bytes.data(), bytesPerRow, premultiplied}; }
};

DecodedPicture decode(std::string_view format, ByteView bytes, const PictureLimits& limits = {});
PictureHeader readHeader(std::string_view format, ByteView bytes);
NSData encode(std::string_view format, const SourcePicture& picture, double quality = 0.9);

/// What is thrown by the function as a CodecException; fails the test and gives None when nothing is.
struct Refusal {
    NSErrorCode code = NSErrorCode::None;
    std::string reason;
};
template<class Function>
Refusal refusalOf(Function function) {
    try {
        function();
    } catch (const CodecException& exception) {
        return {exception.code(), exception.reason()};
    }
    return {NSErrorCode::None, "nothing was thrown"};
}
Refusal refusalOfDecoding(std::string_view format, ByteView bytes, const PictureLimits& limits = {});

/// Whether two headers are the same in every field.
void expectEqualHeaders(const PictureHeader& a, const PictureHeader& b);

NSData sRGBProfile();
NSData grayProfile();
/// Not a usable profile, but with the header of one for CMYK, or of whatever else.
NSData profileStub(const char (&colorSpace)[5]);

/// An EXIF record without prefix: orientation, and where they are given X and Y resolution in the unit.
struct ExifRecord {
    bool bigEndian = false;
    std::optional<int> orientation;
    std::optional<std::pair<std::uint32_t, std::uint32_t>> resolution; ///< numerator and denominator of both
    std::optional<int> unit;
};
NSData exifRecord(const ExifRecord& record);

struct RawJpeg {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int components = 3;
    bool transformed = false; ///< YCbCr or YCCK instead of RGB or CMYK
    bool adobe = true;        ///< whether CMYK gets Adobe's marker; RGB always has it
    bool progressive = false;
    bool arithmetic = false;
    int singleScans = 0; ///< of a gray picture: one scan for each coefficient and bit, for the first of them
    int densityUnit = 0;
    int density = 1;
    bool jfif = true;
    std::vector<std::pair<int, NSData>> markers;
    NSData profile;
};
NSData rawJpeg(const RawJpeg& picture, const Samples& samples);

/// Samples that are the same within each 8 by 8 block. At quality 100, JPEG without a colour transform keeps
/// them exactly: a flat block has a single coefficient, 8 * (sample - 128), which is a whole number.
Samples flatBlocks(std::uint32_t width, std::uint32_t height, int samplesPerPixel);

NSData exifMarker(const ExifRecord& record);

using PngChunk = std::pair<std::string, NSData>;
struct RawPng {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int depth = 8;
    int colorType = 2; ///< as in IHDR: 0 gray, 2 RGB, 3 palette, 4 gray and alpha, 6 RGB and alpha
    std::vector<PngChunk> beforePixels;
    std::vector<PngChunk> afterPixels;
};
NSData pngChunk(const PngChunk& chunk);
NSData zlibPacked(ByteView bytes);
/// Byte by byte. Samples of fewer than 8 bits are packed from the left, each row beginning with a new byte.
NSData rawPng(const RawPng& picture, const Samples& samples);
/// With libpng, in seven passes.
NSData interlacedPng(const RawPng& picture, const Samples& samples);
PngChunk profileChunk(ByteView profile);
PngChunk numbersChunk(std::string type, std::initializer_list<std::uint32_t> words, const NSData& rest = {});

struct RawTiff {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bits = 8;
    int samplesPerPixel = 3;
    int photometric = 2;
    std::vector<std::uint16_t> extraSamples;
    bool separate = false;
    int compression = 1;
    int predictor = 1;
    std::uint32_t rowsPerStrip = 0; ///< 0 for all in one
    std::uint32_t tile = 0;         ///< width and height, or 0 for strips
    std::string mode = "wl";        ///< "wl" little-endian, "wb" big-endian, "w8l" BigTIFF
    int orientation = 0;
    float resolutionX = 0;
    float resolutionY = 0;
    int unit = 0;
    NSData profile;
    std::vector<std::uint16_t> colorMap; ///< red, then green, then blue, 1 << bits of each
    int sampleFormat = 0;
    bool jpegFromRgb = false;
    std::vector<std::uint16_t> subsampling;
};
NSData rawTiff(const RawTiff& picture, const Samples& samples);

/// One entry of a classic little-endian TIFF directory; the value is written as 32 bits.
struct TiffEntry {
    std::uint16_t tag = 0;
    std::uint16_t type = 4;
    std::uint32_t count = 1;
    std::uint32_t value = 0;
};
/// Header, directory, and then the data, which begins at tiffDataOffset(entries.size()).
NSData tiffOfEntries(const std::vector<TiffEntry>& entries, const NSData& data);
std::uint32_t tiffDataOffset(std::size_t entries);

/// The number behind a tag of the first directory, read with libtiff; `absent` where there is none.
int tiffTag(ByteView bytes, std::uint32_t tag, int absent);
std::vector<int> tiffExtraSamples(ByteView bytes);

} // namespace Imaging::Platform::Fixtures
