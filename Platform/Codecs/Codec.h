#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Pixels/PictureLimits.h"
#include "Platform/Pixels/PixelBuffer.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Picture formats behind one small interface: each format is one class in one file, and knows nothing of
/// bitmaps, pictures or drawing. Encoded bytes go in and plain decoded pictures come out, and the other way.
///
/// Example:
/// @code
/// PictureHeader header;
/// header.width = 640;
/// header.height = 480;
/// const std::size_t rowBytes = checkPictureLimits(header, pictureLimits());
/// PixelBuffer pixels = PixelBuffer::zeroed(rowBytes * header.height);
/// @endcode
namespace Imaging::Platform {

/// What a picture's samples mean. A gray sample of 0 is black in `White` and white in `Black`.
enum class SampleColor { White, Black, RGB };

/// What a picture says of itself.
struct PictureHeader {
    std::string formatName; ///< "JPEG", "PNG", "TIFF", …; empty where it was not decoded from anything
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bitsPerSample = 8; ///< 8 or 16
    SampleColor color = SampleColor::RGB;
    bool hasAlpha = false;
    int orientation = 1;    ///< as EXIF counts it, 1 (upright) to 8; never applied by a codec
    double resolutionX = 0; ///< pixels per inch; 0 when the picture does not declare it
    double resolutionY = 0;
    NSData colorProfile; ///< an ICC profile, or empty

    int colorSamples() const { return color == SampleColor::RGB ? 3 : 1; }
    int samplesPerPixel() const { return colorSamples() + (hasAlpha ? 1 : 0); }
    std::size_t bytesPerPixel() const {
        return static_cast<std::size_t>(samplesPerPixel() * bitsPerSample / 8);
    }
};

/// A picture in memory: the first row is the top one, samples are interleaved per pixel in the order gray or
/// red, green, blue and then alpha, 16-bit samples are in the machine's byte order, and colour is
/// premultiplied by alpha. Rows follow one another without padding.
struct DecodedPicture {
    PictureHeader header;
    PixelBuffer pixels;
    std::size_t bytesPerRow = 0;
};

/// A picture to encode, read in place; laid out as a decoded one but with rows `bytesPerRow` apart, and with
/// colour that may also be left unmultiplied.
struct PictureView {
    const PictureHeader& header;
    const std::uint8_t* pixels = nullptr;
    std::size_t bytesPerRow = 0;
    bool premultiplied = true;
};

struct EncodeOptions {
    double quality = 0.9;        ///< 0 to 1, for lossy formats; values outside are clamped
    bool diffusesErrors = false; ///< where colours are reduced to a palette, spread what is left over
};

/// Thrown by codecs; the reason is worded as an NSError's message.
class IMAGING_EXPORT CodecException : public NSException {
public:
    CodecException(NSErrorCode code, std::string_view reason);
    NSErrorCode code() const { return m_code; }

private:
    NSErrorCode m_code;
};

/// One picture format. Codecs have no state, so every thread may use them at once.
///
/// Reading throws a CodecException when the bytes are damaged, cut short, of a kind that is not supported
/// or beyond the limits: a picture is decoded whole or not at all. It never reads outside the bytes.
class IMAGING_EXPORT Codec {
public:
    virtual ~Codec();

    virtual std::string_view formatName() const = 0;

    /// Whether the bytes begin like this format. Names and suffixes of files never matter.
    virtual bool recognises(ByteView bytes) const = 0;

    /// The header alone, without decoding pixels; describes exactly what `decode` would give.
    virtual PictureHeader readHeader(ByteView bytes) const = 0;

    virtual DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const = 0;

    /// Throws what `decode` would throw for these bytes, and reads all of them, at less cost where the format
    /// allows it. Here it decodes and lets go of the picture.
    virtual void check(ByteView bytes, const PictureLimits& limits) const;

    /// Whether `check` does without the memory of a decoded picture.
    virtual bool checksWithoutPixels() const { return false; }

    /// The encoded picture, with resolution and profile where the format has a place for them, and with
    /// orientation 1. A picture without a profile (or with one for other samples) is written as sRGB, gray
    /// with the curve of sRGB: with such a profile, or in the format's own words where it has them. Formats
    /// without alpha get the colour as it looks on black (premultiplied). Throws when the format cannot hold
    /// the picture or is only read.
    virtual NSData encode(const PictureView& picture, const EncodeOptions& options) const = 0;
};

/// Throws a CodecException (TooLarge) when a picture of this description is beyond the limits, and
/// (CorruptData) when its width or height is 0. Otherwise returns the bytes of one row without padding.
IMAGING_EXPORT std::size_t checkPictureLimits(const PictureHeader& header, const PictureLimits& limits);

} // namespace Imaging::Platform
