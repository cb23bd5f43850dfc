#include "Platform/Graphics/BitmapImageRep.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Pictures/BitmapPixels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace Imaging::Platform {

namespace {

int colorSamplesOf(std::string_view colorSpaceName) {
    for (const std::string_view gray : {NSCalibratedWhiteColorSpace, NSCalibratedBlackColorSpace,
                                        NSDeviceWhiteColorSpace, NSDeviceBlackColorSpace}) {
        if (colorSpaceName == gray) return 1;
    }
    if (colorSpaceName == NSCalibratedRGBColorSpace || colorSpaceName == NSDeviceRGBColorSpace) return 3;
    return colorSpaceName == NSDeviceCMYKColorSpace ? 4 : 0;
}

/// The named constant that a name equals, so that bitmaps need not keep the caller's characters.
std::string_view namedColorSpace(std::string_view name) {
    for (const std::string_view known :
         {NSCalibratedWhiteColorSpace, NSCalibratedBlackColorSpace, NSCalibratedRGBColorSpace,
          NSDeviceWhiteColorSpace, NSDeviceBlackColorSpace, NSDeviceRGBColorSpace, NSDeviceCMYKColorSpace}) {
        if (name == known) return known;
    }
    return {};
}

/// Fills in what the description leaves open; false when it makes no sense.
bool resolve(NSBitmapDescription& d) {
    const int colorSamples = colorSamplesOf(d.colorSpaceName);
    if (d.pixelsWide < 1 || d.pixelsHigh < 1 || colorSamples == 0) return false;
    if (d.bitsPerSample != 8 && d.bitsPerSample != 16) return false;
    if (d.samplesPerPixel < colorSamples + (d.hasAlpha ? 1 : 0) || d.samplesPerPixel > 5) return false;
    const int usedBits = d.bitsPerSample * (d.isPlanar ? 1 : d.samplesPerPixel);
    if (d.bitsPerPixel == 0) d.bitsPerPixel = usedBits;
    if (d.bitsPerPixel < usedBits || d.bitsPerPixel % 8 != 0) return false;
    const auto rowBytes = checkedProduct(
        {static_cast<std::uint64_t>(d.pixelsWide), static_cast<std::uint64_t>(d.bitsPerPixel / 8)});
    if (!rowBytes.has_value()) return false;
    if (d.bytesPerRow == 0) d.bytesPerRow = *rowBytes;
    return d.bytesPerRow >= *rowBytes;
}

/// The bytes of all planes, or nullopt when they are beyond the limits.
std::optional<std::size_t> checkedSize(const NSBitmapDescription& resolved) {
    const PictureLimits limits = pictureLimits();
    const auto width = static_cast<std::uint64_t>(resolved.pixelsWide);
    const auto height = static_cast<std::uint64_t>(resolved.pixelsHigh);
    const auto planes = static_cast<std::uint64_t>(resolved.isPlanar ? resolved.samplesPerPixel : 1);
    const auto pixels = checkedProduct({width, height});
    const auto bytes = checkedProduct({resolved.bytesPerRow, height, planes});
    if (!pixels.has_value() || *pixels > limits.maximumPixels) return std::nullopt;
    if (!bytes.has_value() || *bytes > limits.maximumBytes) return std::nullopt;
    return *bytes;
}

NSSize declaredSize(const PictureHeader& header) {
    const auto points = [](std::uint32_t pixels, double resolution) {
        return static_cast<float>(resolution > 0 ? pixels * 72.0 / resolution : pixels);
    };
    return {points(header.width, header.resolutionX), points(header.height, header.resolutionY)};
}

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

NSImageRep::NSImageRep(std::int64_t pixelsWide, std::int64_t pixelsHigh)
    : m_pixels_wide(pixelsWide),
      m_pixels_high(pixelsHigh),
      m_size{static_cast<float>(pixelsWide), static_cast<float>(pixelsHigh)} {}

NSImageRep::~NSImageRep() = default;

NSBitmapImageRep::NSBitmapImageRep(const NSBitmapDescription& resolved, const Planes& planes, PixelBuffer own)
    : NSImageRep(resolved.pixelsWide, resolved.pixelsHigh),
      m_own_pixels(std::move(own)),
      m_planes(planes),
      m_bytes_per_row(resolved.bytesPerRow),
      m_bits_per_sample(resolved.bitsPerSample),
      m_samples_per_pixel(resolved.samplesPerPixel),
      m_bits_per_pixel(resolved.bitsPerPixel),
      m_bitmap_format(resolved.bitmapFormat),
      m_has_alpha(resolved.hasAlpha),
      m_is_planar(resolved.isPlanar),
      m_color_space_name(namedColorSpace(resolved.colorSpaceName)) {}

NSBitmapImageRep::~NSBitmapImageRep() = default;

std::shared_ptr<NSBitmapImageRep>
NSBitmapImageRep::bitmapWithDescription(const NSBitmapDescription& description) {
    return bitmapOnOwnPixels(description, PixelBuffer::zeroed);
}

std::shared_ptr<NSBitmapImageRep>
NSBitmapImageRep::bitmapWithUninitialisedPixels(const NSBitmapDescription& description) {
    return bitmapOnOwnPixels(description, PixelBuffer::uninitialised);
}

std::shared_ptr<NSBitmapImageRep>
NSBitmapImageRep::bitmapOnOwnPixels(const NSBitmapDescription& description,
                                    PixelBuffer (*allocate)(std::size_t size)) {
    NSBitmapDescription resolved = description;
    if (!resolve(resolved)) return nullptr;
    const std::optional<std::size_t> size = checkedSize(resolved);
    if (!size.has_value()) return nullptr;
    PixelBuffer own = allocate(*size);
    Planes planes{};
    const std::size_t planeBytes = resolved.bytesPerRow * static_cast<std::size_t>(resolved.pixelsHigh);
    const int count = resolved.isPlanar ? resolved.samplesPerPixel : 1;
    for (int i = 0; i < count; ++i) {
        planes[static_cast<std::size_t>(i)] = own.data() + static_cast<std::size_t>(i) * planeBytes;
    }
    return std::shared_ptr<NSBitmapImageRep>(new NSBitmapImageRep(resolved, planes, std::move(own)));
}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::bitmapOverPlanes(const NSBitmapDescription& description,
                                                                     const Planes& planes) {
    NSBitmapDescription resolved = description;
    if (!resolve(resolved) || !checkedSize(resolved).has_value()) return nullptr;
    const int count = resolved.isPlanar ? resolved.samplesPerPixel : 1;
    for (int i = 0; i < count; ++i) {
        if (planes[static_cast<std::size_t>(i)] == nullptr) return nullptr;
    }
    return std::shared_ptr<NSBitmapImageRep>(new NSBitmapImageRep(resolved, planes, PixelBuffer()));
}

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
    if (!resolve(description)) return nullptr;
    const Planes planes{picture.pixels.data()};
    std::shared_ptr<NSBitmapImageRep> bitmap(
        new NSBitmapImageRep(description, planes, std::move(picture.pixels)));
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

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::bitmapWithFocusedViewRect(NSRect rect) {
    const auto context = NSGraphicsContext::currentContext();
    if (context == nullptr || !context->canDraw() || NSIsEmptyRect(rect)) return nullptr;
    cairo_surface_t* const surface = cairo_get_group_target(context->cairo());
    if (cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE ||
        cairo_image_surface_get_format(surface) != CAIRO_FORMAT_ARGB32) {
        return nullptr;
    }
    double x1 = NSMinX(rect);
    double y1 = NSMinY(rect);
    double x2 = NSMaxX(rect);
    double y2 = NSMaxY(rect);
    cairo_user_to_device(context->cairo(), &x1, &y1);
    cairo_user_to_device(context->cairo(), &x2, &y2);
    if (!std::isfinite(x1) || !std::isfinite(y1) || !std::isfinite(x2) || !std::isfinite(y2)) return nullptr;
    double offsetX = 0;
    double offsetY = 0;
    cairo_surface_get_device_offset(surface, &offsetX, &offsetY);
    const auto clamped = [](double value, int limit) {
        return std::clamp(std::round(value), 0.0, 1.0 * limit);
    };
    const double left = clamped(std::min(x1, x2) + offsetX, cairo_image_surface_get_width(surface));
    const double right = clamped(std::max(x1, x2) + offsetX, cairo_image_surface_get_width(surface));
    const double top = clamped(std::min(y1, y2) + offsetY, cairo_image_surface_get_height(surface));
    const double bottom = clamped(std::max(y1, y2) + offsetY, cairo_image_surface_get_height(surface));
    NSBitmapDescription description;
    description.pixelsWide = static_cast<std::int64_t>(right - left);
    description.pixelsHigh = static_cast<std::int64_t>(bottom - top);
    const std::shared_ptr<NSBitmapImageRep> bitmap = bitmapWithUninitialisedPixels(description);
    if (bitmap == nullptr) return nullptr;
    writeSurface(surface, static_cast<std::size_t>(left), static_cast<std::size_t>(top),
                 targetPixels(*bitmap), pixelLayout(*bitmap));
    return bitmap;
}

std::optional<NSImageProperty> NSBitmapImageRep::valueForProperty(std::string_view name) const {
    const auto found = m_properties.find(name);
    if (found == m_properties.end()) return std::nullopt;
    return found->second;
}

void NSBitmapImageRep::setProperty(std::string_view name, NSImageProperty value) {
    m_properties.insert_or_assign(std::string(name), std::move(value));
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

std::uint8_t* NSBitmapImageRep::sampleAddress(std::int64_t x, std::int64_t y, int sample) const {
    if (x < 0 || y < 0 || x >= pixelsWide() || y >= pixelsHigh()) {
        throw NSException(NSRangeException, "pixel outside the bitmap");
    }
    const auto sampleBytes = static_cast<std::size_t>(m_bits_per_sample / 8);
    const std::size_t at = static_cast<std::size_t>(y) * m_bytes_per_row +
                           static_cast<std::size_t>(x) * static_cast<std::size_t>(m_bits_per_pixel / 8);
    const auto index = static_cast<std::size_t>(sample);
    return m_is_planar ? m_planes[index] + at : m_planes[0] + at + index * sampleBytes;
}

std::array<std::uint16_t, 5> NSBitmapImageRep::pixelAt(std::int64_t x, std::int64_t y) const {
    std::array<std::uint16_t, 5> samples{};
    for (int i = 0; i < m_samples_per_pixel; ++i) {
        const std::uint8_t* const address = sampleAddress(x, y, i);
        std::uint16_t& value = samples[static_cast<std::size_t>(i)];
        if (m_bits_per_sample == 16) {
            std::memcpy(&value, address, 2);
        } else {
            value = *address;
        }
    }
    return samples;
}

void NSBitmapImageRep::setPixelAt(std::int64_t x, std::int64_t y,
                                  const std::array<std::uint16_t, 5>& samples) {
    for (int i = 0; i < m_samples_per_pixel; ++i) {
        std::uint8_t* const address = sampleAddress(x, y, i);
        const std::uint16_t value = samples[static_cast<std::size_t>(i)];
        if (m_bits_per_sample == 16) {
            std::memcpy(address, &value, 2);
        } else {
            *address = static_cast<std::uint8_t>(value);
        }
    }
}

} // namespace Imaging::Platform
