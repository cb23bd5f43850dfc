#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/Color.h"
#include "Platform/Pixels/PixelBuffer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace Imaging::Platform {

struct DecodedPicture;

/// Formats of encoded picture files.
enum NSBitmapImageFileType : int {
    NSTIFFFileType = 0,
    NSBMPFileType = 1,
    NSGIFFileType = 2,
    NSJPEGFileType = 3,
    NSPNGFileType = 4,
    NSJPEG2000FileType = 5,
};

/// Flags of a bitmap's `bitmapFormat`.
enum NSBitmapFormat : unsigned {
    NSAlphaFirstBitmapFormat = 1u << 0,            ///< alpha stands before colour; otherwise after it
    NSAlphaNonpremultipliedBitmapFormat = 1u << 1, ///< colour is not multiplied by alpha; otherwise it is
};

// Names of properties of bitmaps and of the options of encoders, with the type of their values.

/// NSData: an ICC profile.
inline constexpr std::string_view NSImageColorSyncProfileData = "NSImageColorSyncProfileData";
/// double, 0 to 1.
inline constexpr std::string_view NSImageCompressionFactor = "NSImageCompressionFactor";
/// int: not 0 for GIF with errors diffused.
inline constexpr std::string_view NSImageErrorDiffusion = "NSImageErrorDiffusion";
/// int: EXIF's 1 to 8.
inline constexpr std::string_view NSImageOrientation = "NSImageOrientation";
/// double: declared pixels per inch.
inline constexpr std::string_view NSImageResolutionX = "NSImageResolutionX";
inline constexpr std::string_view NSImageResolutionY = "NSImageResolutionY";
/// string: "JPEG", …
inline constexpr std::string_view NSImageSourceFormat = "NSImageSourceFormat";

using NSImageProperty = std::variant<int, double, std::string, NSData>;
using NSImageProperties = std::map<std::string, NSImageProperty, std::less<>>;

/// One form in which a picture exists.
class IMAGING_EXPORT NSImageRep {
public:
    virtual ~NSImageRep();
    NSImageRep(const NSImageRep&) = delete;
    NSImageRep& operator=(const NSImageRep&) = delete;

    std::int64_t pixelsWide() const { return m_pixels_wide; }
    std::int64_t pixelsHigh() const { return m_pixels_high; }

    /// The size in points: pixels · 72 / resolution where a resolution is declared, else one point a pixel.
    NSSize size() const { return m_size; }
    void setSize(NSSize size) { m_size = size; }

protected:
    NSImageRep(std::int64_t pixelsWide, std::int64_t pixelsHigh);

private:
    std::int64_t m_pixels_wide;
    std::int64_t m_pixels_high;
    NSSize m_size;
};

/// How a bitmap's pixels lie in memory.
struct NSBitmapDescription {
    std::int64_t pixelsWide = 0;
    std::int64_t pixelsHigh = 0;
    int bitsPerSample = 8;   ///< 8 or 16; 16-bit samples are in the machine's byte order
    int samplesPerPixel = 4; ///< 1 to 5, alpha included
    bool hasAlpha = true;
    bool isPlanar = false; ///< each sample in a plane of its own; otherwise meshed, pixel after pixel
    std::string_view colorSpaceName = NSCalibratedRGBColorSpace;
    unsigned bitmapFormat = 0;   ///< NSBitmapFormat flags
    std::size_t bytesPerRow = 0; ///< of each plane; 0 for rows without padding
    int bitsPerPixel = 0;        ///< in each plane; 0 for pixels without padding
};

/// A bitmap: pixels in memory in a described layout. The first row in memory is the picture's top one.
///
/// The pixels are the caller's to read and write through `bitmapData`; nothing is locked, so one thread at a
/// time. A picture that was drawn with the bitmap in it must be told of later changes (NSImage::recache).
///
/// Example:
/// @code
/// NSBitmapDescription description;
/// description.pixelsWide = 640;
/// description.pixelsHigh = 480;
/// const auto bitmap = NSBitmapImageRep::bitmapWithDescription(description);
/// if (bitmap != nullptr) bitmap->setPixelAt(0, 0, {255, 0, 0, 255});
/// @endcode
class IMAGING_EXPORT NSBitmapImageRep : public NSImageRep {
public:
    using Planes = std::array<std::uint8_t*, 5>;

    /// A bitmap on pixels of its own, all bytes 0. Null when the description makes no sense (a size below
    /// 1, other depths than 8 and 16, samples outside 1 to 5 or too few for the colour space, a row or
    /// pixel shorter than its samples, an unknown colour space) or is beyond the picture limits.
    static std::shared_ptr<NSBitmapImageRep> bitmapWithDescription(const NSBitmapDescription& description);

    /// The same with bytes of no certain value, for who writes all of them before anybody reads.
    static std::shared_ptr<NSBitmapImageRep>
    bitmapWithUninitialisedPixels(const NSBitmapDescription& description);

    /// The same on the caller's memory, which is neither copied nor freed and must outlive the bitmap; one
    /// pointer for a meshed bitmap, one a sample for a planar one.
    static std::shared_ptr<NSBitmapImageRep> bitmapOverPlanes(const NSBitmapDescription& description,
                                                              const Planes& planes);

    /// The first picture in encoded data of any known format, in the calibrated colour space of its samples:
    /// gray with 1 sample, or 2 with alpha, colour with 3, or 4 with alpha; alpha last, premultiplied. Its
    /// size follows the declared resolution; profile, orientation, resolution and format are its
    /// properties, and the orientation is not applied. Null and the reason on failure.
    static std::shared_ptr<NSBitmapImageRep> imageRepWithData(ByteView data, NSError* error = nullptr);

    /// What was drawn in a rectangle of the calling thread's current context, which must be on pixels, as
    /// calibrated RGB with alpha at the context's own pixel size. The edges are rounded to the nearest
    /// pixel. Null without such a context or when the rectangle holds no pixel.
    static std::shared_ptr<NSBitmapImageRep> bitmapWithFocusedViewRect(NSRect rect);

    ~NSBitmapImageRep() override;

    std::uint8_t* bitmapData() { return m_planes[0]; }
    const std::uint8_t* bitmapData() const { return m_planes[0]; }
    const Planes& bitmapDataPlanes() const { return m_planes; }

    int bitsPerSample() const { return m_bits_per_sample; }
    int samplesPerPixel() const { return m_samples_per_pixel; }
    int bitsPerPixel() const { return m_bits_per_pixel; }
    std::size_t bytesPerRow() const { return m_bytes_per_row; }
    int numberOfPlanes() const { return m_is_planar ? m_samples_per_pixel : 1; }
    bool isPlanar() const { return m_is_planar; }
    bool hasAlpha() const { return m_has_alpha; }
    unsigned bitmapFormat() const { return m_bitmap_format; }
    std::string_view colorSpaceName() const { return m_color_space_name; }

    /// nullopt when there is no such property.
    std::optional<NSImageProperty> valueForProperty(std::string_view name) const;
    void setProperty(std::string_view name, NSImageProperty value);
    const NSImageProperties& properties() const { return m_properties; }

    /// The bitmap as TIFF, with every sample, the alpha, the profile and the resolution exactly as they are
    /// here. CMYK becomes RGB. nullopt and the reason when it cannot be encoded.
    std::optional<NSData> TIFFRepresentation(NSError* error = nullptr) const;

    /// The bitmap as an encoded file of a type. Of the properties, NSImageCompressionFactor is the quality of
    /// JPEG and JPEG 2000 (where 1 loses nothing), and NSImageErrorDiffusion that of GIF; the bitmap's
    /// profile and resolution are written where the format has a place for them, and sRGB is stated for a
    /// bitmap without a profile. GIF reduces to 256 colours and alpha to all or nothing. nullopt and the
    /// reason when it cannot be encoded or there is no such type.
    std::optional<NSData> representationUsingType(int type, const NSImageProperties& properties,
                                                  NSError* error = nullptr) const;

    /// One pixel's samples in their stored order and depth, without regard to padding; x from the left, y
    /// from the top. Throws an NSException (NSRangeException) outside the bitmap.
    std::array<std::uint16_t, 5> pixelAt(std::int64_t x, std::int64_t y) const;
    void setPixelAt(std::int64_t x, std::int64_t y, const std::array<std::uint16_t, 5>& samples);

private:
    NSBitmapImageRep(const NSBitmapDescription& resolved, const Planes& planes, PixelBuffer own);
    static std::shared_ptr<NSBitmapImageRep> bitmapWithDecodedPicture(DecodedPicture picture);
    static std::shared_ptr<NSBitmapImageRep> bitmapAdoptingPixels(const NSBitmapDescription& description,
                                                                  PixelBuffer pixels);
    static std::shared_ptr<NSBitmapImageRep> bitmapOnOwnPixels(const NSBitmapDescription& description,
                                                               PixelBuffer (*allocate)(std::size_t size));
    std::uint8_t* sampleAddress(std::int64_t x, std::int64_t y, int sample) const;

    PixelBuffer m_own_pixels;
    Planes m_planes{};
    std::size_t m_bytes_per_row;
    int m_bits_per_sample;
    int m_samples_per_pixel;
    int m_bits_per_pixel;
    unsigned m_bitmap_format;
    bool m_has_alpha;
    bool m_is_planar;
    std::string_view m_color_space_name; // one of the named constants
    NSImageProperties m_properties;
};

} // namespace Imaging::Platform
