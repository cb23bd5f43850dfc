#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// Small pictures for tests of the command, made and read with libpng alone or byte by byte, so that neither
/// side of a comparison comes from the library.
namespace TestSupport {

/// A pixel, not premultiplied.
struct Pixel {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;

    friend bool operator==(const Pixel&, const Pixel&) = default;
};

std::ostream& operator<<(std::ostream& out, const Pixel& pixel);

inline constexpr Pixel red{255, 0, 0, 255};
inline constexpr Pixel green{0, 255, 0, 255};
inline constexpr Pixel blue{0, 0, 255, 255};
inline constexpr Pixel yellow{255, 255, 0, 255};
inline constexpr Pixel black{0, 0, 0, 255};
inline constexpr Pixel white{255, 255, 255, 255};
inline constexpr Pixel clear{0, 0, 0, 0};

/// A table of pixels, the top row first.
struct Picture {
    int width = 0;
    int height = 0;
    bool hasAlpha = false; ///< whether the file that it was read from has a channel for it
    std::vector<Pixel> pixels;

    Picture() = default;
    Picture(int w, int h, Pixel fill) : width(w), height(h), pixels(static_cast<std::size_t>(w * h), fill) {}
    Picture(int w, int h, std::vector<Pixel> all) : width(w), height(h), pixels(std::move(all)) {}

    Pixel& at(int x, int y) { return pixels.at(static_cast<std::size_t>(y * width + x)); }
    const Pixel& at(int x, int y) const { return pixels.at(static_cast<std::size_t>(y * width + x)); }
};

/// An opaque picture of random pixels.
Picture randomPicture(int width, int height, unsigned seed);

/// An encoded PNG with 4 samples a pixel where `alpha` says so, otherwise 3.
std::string pngOf(const Picture& picture, bool alpha = false);

/// Throws std::runtime_error when the bytes are no PNG.
Picture pictureOfPNG(std::string_view bytes);

/// A stored picture as EXIF says that it is to be seen, from the places that it gives the stored first row
/// and column: (top, left), (top, right), (bottom, right), (bottom, left), (left, top), (right, top), (right,
/// bottom), (left, bottom).
Picture seen(const Picture& stored, int orientation);

/// A file that libjpeg or libtiff reads through the library's codecs, for formats whose reading other tests
/// cover. Alpha is undone from premultiplication only where it is 255 or 0.
Picture pictureOfAnyFormat(std::string_view bytes);

/// An encoded JPEG of quality 95 or an uncompressed gray TIFF by the library's codecs.
std::string jpegOf(const Picture& picture);

/// A chunk of a PNG with its checksum.
std::string pngChunk(std::string_view type, std::string_view data);

/// The first 33 bytes of an RGB PNG of a size, whatever that size is.
std::string pngStart(std::uint32_t width, std::uint32_t height);

/// A PNG with chunks after its header chunk.
std::string pngWithChunks(const Picture& picture, const std::string& chunks);

/// EXIF data (a TIFF structure) that says nothing but an orientation.
std::string exifWithOrientation(int orientation);

/// The JPEG with an EXIF segment in front.
std::string jpegWithExif(const std::string& jpeg, const std::string& exif);

/// An uncompressed gray TIFF of 8 bits whose one strip is said to lie at `offset` and to have `count` bytes;
/// the file has 16 bytes of pixels.
std::string tiffWithStrip(std::uint32_t width, std::uint32_t height, std::uint32_t offset,
                          std::uint32_t count);

} // namespace TestSupport
