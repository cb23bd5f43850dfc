#pragma once

#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <array>

/// Encoded pictures of the other formats, made byte by byte or with the formats' own libraries.
namespace Imaging::Platform::Fixtures {

/// A number of `count` bytes.
void appendLittle(NSData& to, std::uint64_t value, int count);
void appendBig(NSData& to, std::uint64_t value, int count);
void appendBytes(NSData& to, ByteView bytes);

using Rgb = std::array<std::uint8_t, 3>;

/// A GIF with giflib. The palette has to have 2, 4, … or 256 colours.
struct RawGif {
    std::uint32_t screenWidth = 0; ///< 0: as large as the picture
    std::uint32_t screenHeight = 0;
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<Rgb> colors;
    std::vector<Rgb> ownColors; ///< of the picture instead of the screen
    int transparent = -1;
    bool interlaced = false;
    NSData profile;
    int pictures = 1; ///< the same one again and again
};
NSData rawGif(const RawGif& picture, const Samples& indices);

/// A BMP byte by byte.
struct RawBmp {
    std::int32_t width = 0;
    std::int32_t height = 0; ///< negative: the first row is the top one
    int bits = 24;
    std::uint32_t headerSize = 40; ///< 12, 16, 40, 52, 56, 64, 108 or 124
    std::uint32_t compression = 0;
    std::vector<Rgb> colors;
    std::uint32_t colorsUsed = 0;     ///< as the header counts them
    std::vector<std::uint32_t> masks; ///< red, green, blue and perhaps alpha
    std::int32_t perMetreX = 0;
    std::int32_t perMetreY = 0;
    std::uint32_t gap = 0; ///< bytes between the colours and the pixels
    NSData profile;        ///< for a header of 124 bytes: behind the pixels
};
/// With the rows or runs as they are in the file.
NSData rawBmp(const RawBmp& picture, const NSData& pixels);
/// Rows of numbers (indices or whole pixels) from the bottom row up, or down where the height is negative.
NSData bmpRows(const RawBmp& picture, const std::vector<std::uint32_t>& pixels);

/// A WebP with libwebp, lossless unless a quality is given.
struct RawWebp {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool hasAlpha = false;
    int quality = -1;
    NSData profile;
    NSData exif;
};
NSData rawWebp(const RawWebp& picture, const Samples& samples);

/// A JPEG 2000 with openjpeg, lossless.
struct RawJpeg2000 {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int components = 3;
    int bits = 8;
    int colorSpace = 1; ///< of openjpeg: 1 sRGB, 2 gray, 3 YCC, 5 CMYK
    bool isFile = true;
    int alpha = -1; ///< the component that is the opacity
    bool isSigned = false;
    std::uint32_t reduction = 1; ///< of the second and third component, both ways
    std::uint32_t tile = 0;
    NSData profile;
};
NSData rawJpeg2000(const RawJpeg2000& picture, const Samples& samples);

#ifdef IMAGING_WITH_HEIF
/// An AVIF (or HEIC) with libheif, lossless in RGB.
struct RawHeif {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bits = 8;
    bool hasAlpha = false;
    bool isHevc = false;
    NSData profile;
    NSData exif;
};
NSData rawHeif(const RawHeif& picture, const Samples& samples);
#endif

#ifdef IMAGING_WITH_JXL
/// A JPEG XL with libjxl, lossless.
struct RawJxl {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bits = 8;
    int samplesPerPixel = 3;
    int orientation = 1;
    NSData profile;
    NSData exif; ///< makes a container of it
};
NSData rawJxl(const RawJxl& picture, const Samples& samples);
#endif

} // namespace Imaging::Platform::Fixtures
