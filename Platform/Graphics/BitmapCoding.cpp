// Bitmaps from encoded files and into them: the second part of NSBitmapImageRep, which would be too long for
// one file and knows nothing of codecs in the other. Encoders read a bitmap in place where its pixels lie as
// they want them, and a copy otherwise.

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Pictures/BitmapPixels.h"

#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace Imaging::Platform {

namespace {

/// A point is 1/72 inch; where a picture declares no resolution it is a pixel.
NSSize declaredSize(const PictureHeader& header) {
    const auto points = [](std::uint32_t pixels, double resolution) {
        return static_cast<float>(resolution > 0 ? pixels * 72.0 / resolution : pixels);
    };
    return {points(header.width, header.resolutionX), points(header.height, header.resolutionY)};
}

/// Decoders give samples with or without profile; the space only says what kinds there are.
std::string_view calibratedSpace(SampleColor color) {
    switch (color) {
    case SampleColor::White:
        return NSCalibratedWhiteColorSpace;
    case SampleColor::Black:
        return NSCalibratedBlackColorSpace;
    case SampleColor::RGB:
        break;
    }
    return NSCalibratedRGBColorSpace;
}

/// A declared resolution, or else the one that pixels and size amount to; 0 where they are the same.
double resolutionOf(const NSBitmapImageRep& bitmap, std::string_view property, std::int64_t pixels,
                    float points) {
    const auto declared = bitmap.valueForProperty(property);
    if (declared.has_value() && std::holds_alternative<double>(*declared)) return std::get<double>(*declared);
    const NSSize size = bitmap.size();
    const bool differs = size.width != static_cast<float>(bitmap.pixelsWide()) ||
                         size.height != static_cast<float>(bitmap.pixelsHigh());
    return differs && points > 0 ? static_cast<double>(pixels) * 72.0 / static_cast<double>(points) : 0;
}

/// What an encoder is told of a bitmap.
PictureHeader headerFor(const NSBitmapImageRep& bitmap, const PixelLayout& layout) {
    PictureHeader header;
    header.width = static_cast<std::uint32_t>(bitmap.pixelsWide());
    header.height = static_cast<std::uint32_t>(bitmap.pixelsHigh());
    header.bitsPerSample = layout.bitsPerSample;
    header.hasAlpha = layout.hasAlpha();
    header.color = layout.color == PixelColor::Gray           ? SampleColor::White
                   : layout.color == PixelColor::InvertedGray ? SampleColor::Black
                                                              : SampleColor::RGB;
    header.resolutionX = resolutionOf(bitmap, NSImageResolutionX, bitmap.pixelsWide(), bitmap.size().width);
    header.resolutionY = resolutionOf(bitmap, NSImageResolutionY, bitmap.pixelsHigh(), bitmap.size().height);
    const auto profile = bitmap.valueForProperty(NSImageColorSyncProfileData);
    if (profile.has_value() && std::holds_alternative<NSData>(*profile)) {
        header.colorProfile = std::get<NSData>(*profile);
    }
    return header;
}

/// Whether an encoder can read the pixels where they lie. Encoders read whole samples.
bool liesAsEncodersRead(const SourcePixels& pixels, const PixelLayout& layout, const PictureHeader& header) {
    const auto address = reinterpret_cast<std::uintptr_t>(pixels.planes[0]);
    if (header.bitsPerSample == 16 && (address % 2 != 0 || pixels.bytesPerRow % 2 != 0)) return false;
    return !pixels.planar && layout.color != PixelColor::CMYK && layout.alpha != PixelAlpha::First &&
           pixels.pixelStride == header.bytesPerPixel();
}

/// Whether samples are only moved for an encoder: they are not premultiplied, and stay so.
bool staysStraight(const PixelLayout& layout) {
    return !layout.premultiplied && layout.hasAlpha() && layout.color != PixelColor::CMYK;
}

/// The pixels copied into the layout that encoders read.
PixelBuffer encodersCopy(const SourcePixels& pixels, const PixelLayout& layout, const PictureHeader& header) {
    PixelLayout stored = layout;
    if (staysStraight(layout)) {
        // Between layouts that are both called premultiplied, and gray where they are inverted, nothing
        // changes.
        stored.premultiplied = true;
        if (stored.color == PixelColor::InvertedGray) stored.color = PixelColor::Gray;
    }
    PixelLayout meshed = stored;
    if (meshed.color == PixelColor::CMYK) meshed.color = PixelColor::RGB;
    if (meshed.hasAlpha()) meshed.alpha = PixelAlpha::Last;
    meshed.premultiplied = true;
    const std::size_t rowBytes = pixels.width * header.bytesPerPixel();
    PixelBuffer copy = PixelBuffer::uninitialised(rowBytes * pixels.height);
    TargetPixels target;
    target.planes[0] = copy.data();
    target.pixelStride = header.bytesPerPixel();
    target.bytesPerRow = rowBytes;
    target.width = pixels.width;
    target.height = pixels.height;
    std::vector<std::uint16_t> row(pixels.width * 4);
    for (std::size_t y = 0; y < pixels.height; ++y) {
        readRow(pixels, stored, y, row.data());
        writeRow(target, meshed, y, row.data());
    }
    return copy;
}

/// What goes wrong becomes the caller's error here: no exception of a codec leaves a bitmap.
std::optional<NSData> encodeBitmap(const NSBitmapImageRep& bitmap, std::string_view format,
                                   const EncodeOptions& options, NSError* error) {
    const std::shared_ptr<const Codec> codec = codecForFormat(format);
    if (codec == nullptr) {
        setError(error, NSErrorCode::UnsupportedFormat,
                 std::string(format) +
                     " files cannot be written; choose TIFF, JPEG, PNG, JPEG 2000, GIF or BMP");
        return std::nullopt;
    }
    const PixelLayout layout = pixelLayout(bitmap);
    const SourcePixels pixels = sourcePixels(bitmap);
    const PictureHeader header = headerFor(bitmap, layout);
    try {
        if (liesAsEncodersRead(pixels, layout, header)) {
            return codec->encode({header, pixels.planes[0], pixels.bytesPerRow, layout.premultiplied},
                                 options);
        }
        const PixelBuffer copy = encodersCopy(pixels, layout, header);
        const std::size_t rowBytes = pixels.width * header.bytesPerPixel();
        return codec->encode({header, copy.data(), rowBytes, !staysStraight(layout)}, options);
    } catch (const CodecException& failure) {
        setError(error, failure.code(), failure.reason());
    } catch (const std::bad_alloc&) {
        setError(error, NSErrorCode::TooLarge, "there is not enough memory to encode the picture");
    }
    return std::nullopt;
}

/// The registry knows formats by name, so that an application's own codec can take a type over.
std::string_view formatOfType(int type) {
    switch (type) {
    case NSTIFFFileType:
        return "TIFF";
    case NSBMPFileType:
        return "BMP";
    case NSGIFFileType:
        return "GIF";
    case NSJPEGFileType:
        return "JPEG";
    case NSPNGFileType:
        return "PNG";
    case NSJPEG2000FileType:
        return "JPEG 2000";
    default:
        return "unknown";
    }
}

} // namespace

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::bitmapWithDecodedPicture(DecodedPicture picture) {
    const PictureHeader& header = picture.header;
    NSBitmapDescription description;
    description.pixelsWide = header.width;
    description.pixelsHigh = header.height;
    description.bitsPerSample = header.bitsPerSample;
    description.samplesPerPixel = header.samplesPerPixel();
    description.hasAlpha = header.hasAlpha;
    description.colorSpaceName = calibratedSpace(header.color);
    description.bytesPerRow = picture.bytesPerRow;
    std::shared_ptr<NSBitmapImageRep> bitmap = bitmapAdoptingPixels(description, std::move(picture.pixels));
    if (bitmap == nullptr) return nullptr;
    bitmap->setSize(declaredSize(header));
    bitmap->setProperty(NSImageSourceFormat, header.formatName);
    bitmap->setProperty(NSImageOrientation, header.orientation);
    if (header.resolutionX > 0) bitmap->setProperty(NSImageResolutionX, header.resolutionX);
    if (header.resolutionY > 0) bitmap->setProperty(NSImageResolutionY, header.resolutionY);
    if (!header.colorProfile.empty()) {
        bitmap->setProperty(NSImageColorSyncProfileData, std::move(picture.header.colorProfile));
    }
    return bitmap;
}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::imageRepWithData(ByteView data, NSError* error) {
    try {
        return bitmapWithDecodedPicture(decodePicture(data));
    } catch (const CodecException& failure) {
        setError(error, failure.code(), failure.reason());
    } catch (const std::bad_alloc&) {
        setError(error, NSErrorCode::TooLarge, "there is not enough memory to decode the picture");
    }
    return nullptr;
}

std::optional<NSData> NSBitmapImageRep::TIFFRepresentation(NSError* error) const {
    return encodeBitmap(*this, formatOfType(NSTIFFFileType), {}, error);
}

std::optional<NSData> NSBitmapImageRep::representationUsingType(int type, const NSImageProperties& properties,
                                                                NSError* error) const {
    EncodeOptions options;
    const auto quality = properties.find(NSImageCompressionFactor);
    if (quality != properties.end() && std::holds_alternative<double>(quality->second)) {
        options.quality = std::get<double>(quality->second);
    }
    const auto diffusion = properties.find(NSImageErrorDiffusion);
    if (diffusion != properties.end() && std::holds_alternative<int>(diffusion->second)) {
        options.diffusesErrors = std::get<int>(diffusion->second) != 0;
    }
    return encodeBitmap(*this, formatOfType(type), options, error);
}

} // namespace Imaging::Platform
