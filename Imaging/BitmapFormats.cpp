#include "Imaging/BitmapFormats.h"

#include "Platform/Graphics/CoreGraphics.h"

#include <algorithm>
#include <utility>

namespace Imaging {

using Platform::CGColorSpaceRef;
using Platform::CGContextRef;
using Platform::CGImageAlphaInfo;
using Platform::CGImageRef;
using Platform::NSBitmapDescription;

namespace {

bool isWhite(const NSBitmapImageRep& bitmap) {
    return bitmap.colorSpaceName() == Platform::NSCalibratedWhiteColorSpace;
}

bool isRGB(const NSBitmapImageRep& bitmap) {
    return bitmap.colorSpaceName() == Platform::NSCalibratedRGBColorSpace;
}

bool isInvertedGraySpace(std::string_view name) {
    return name == Platform::NSCalibratedBlackColorSpace || name == Platform::NSDeviceBlackColorSpace;
}

bool isGraySpace(std::string_view name) {
    return name == Platform::NSCalibratedWhiteColorSpace || name == Platform::NSDeviceWhiteColorSpace ||
           isInvertedGraySpace(name);
}

bool hasPixels(const NSBitmapImageRep& bitmap, int samples) {
    return bitmap.bitsPerSample() == 8 && !bitmap.isPlanar() && bitmap.samplesPerPixel() == samples &&
           bitmap.bitsPerPixel() == 8 * samples;
}

CGColorSpaceRef deviceSpace(int samplesPerPixel) {
    return samplesPerPixel <= 2 ? Platform::CGColorSpaceCreateDeviceGray()
                                : Platform::CGColorSpaceCreateDeviceRGB();
}

CGImageAlphaInfo alphaInfo(bool alpha, bool first) {
    if (!alpha) return Platform::kCGImageAlphaNone;
    return first ? Platform::kCGImageAlphaPremultipliedFirst : Platform::kCGImageAlphaPremultipliedLast;
}

/// What a target's samples hold. Without alpha, a sample beyond the colours is there but means nothing.
CGImageAlphaInfo targetAlphaInfo(int samplesPerPixel, bool alpha, bool first) {
    const bool spare = samplesPerPixel == 2 || samplesPerPixel == 4;
    if (!alpha && spare) return Platform::kCGImageAlphaNoneSkipLast;
    return alphaInfo(alpha, first);
}

/// The samples of a planar bitmap side by side, since images are read from meshed memory only.
std::shared_ptr<NSBitmapImageRep> meshed(const NSBitmapImageRep& bitmap) {
    NSBitmapDescription description;
    description.pixelsWide = bitmap.pixelsWide();
    description.pixelsHigh = bitmap.pixelsHigh();
    description.bitsPerSample = bitmap.bitsPerSample();
    description.samplesPerPixel = bitmap.samplesPerPixel();
    description.hasAlpha = bitmap.hasAlpha();
    description.colorSpaceName = bitmap.colorSpaceName();
    description.bitmapFormat = bitmap.bitmapFormat();
    std::shared_ptr<NSBitmapImageRep> copy = NSBitmapImageRep::bitmapWithDescription(description);
    if (copy == nullptr) return nullptr;
    for (std::int64_t y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (std::int64_t x = 0; x < bitmap.pixelsWide(); ++x) copy->setPixelAt(x, y, bitmap.pixelAt(x, y));
    }
    return copy;
}

/// A bitmap's memory as an image, read in place.
CGImageRef imageOver(const NSBitmapImageRep& bitmap, CGImageAlphaInfo alpha) {
    static constexpr float inverted[] = {1, 0};
    const auto height = static_cast<std::size_t>(bitmap.pixelsHigh());
    const auto provider =
        Platform::CGDataProviderCreateWithData(bitmap.bitmapData(), height * bitmap.bytesPerRow());
    return Platform::CGImageCreate(static_cast<std::size_t>(bitmap.pixelsWide()), height,
                                   static_cast<std::size_t>(bitmap.bitsPerSample()),
                                   static_cast<std::size_t>(bitmap.bitsPerPixel()), bitmap.bytesPerRow(),
                                   deviceSpace(bitmap.samplesPerPixel()), alpha, provider,
                                   isInvertedGrayscale(bitmap) ? inverted : nullptr);
}

/// The first of a picture's bitmaps that qualifies, and what the canonical conversion asks about the others.
struct BitmapScan {
    std::shared_ptr<NSBitmapImageRep> found;
    int count = 0;
    int lastBitsPerSample = 0;
};

template<class Qualifies>
BitmapScan scanBitmaps(const NSImage& image, const Qualifies& qualifies) {
    BitmapScan scan;
    for (const auto& representation : image.representations()) {
        auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(representation);
        if (bitmap == nullptr) continue;
        if (qualifies(*bitmap)) {
            scan.found = std::move(bitmap);
            return scan;
        }
        ++scan.count;
        scan.lastBitsPerSample = bitmap->bitsPerSample();
    }
    return scan;
}

/// The picture decoded afresh from its TIFF data, by way of PNG where that is asked for; null on failure.
std::shared_ptr<NSBitmapImageRep> decodedAfresh(const NSImage& image, bool throughPNG) {
    try {
        const std::optional<NSData> tiff = ThreadSafeTIFFRepresentation(image);
        if (!tiff.has_value()) return nullptr;
        std::shared_ptr<NSBitmapImageRep> bitmap = NSBitmapImageRep::imageRepWithData(*tiff);
        if (!throughPNG || bitmap == nullptr) return bitmap;
        const std::optional<NSData> png = bitmap->representationUsingType(Platform::NSPNGFileType, {});
        return png.has_value() ? NSBitmapImageRep::imageRepWithData(*png) : nullptr;
    } catch (...) { // no picture is the answer, whatever went wrong
        return nullptr;
    }
}

struct Target {
    int samplesPerPixel;
    bool hasAlpha;
    std::string_view colorSpaceName;
};

std::shared_ptr<NSBitmapImageRep> converted(const NSImage& image, const NSBitmapImageRep& decoded,
                                            const Target& target, bool swizzled = false) {
    try {
        return bitmapRepresentationWithSize(decoded, image.size(), 8, target.samplesPerPixel, target.hasAlpha,
                                            false, target.colorSpaceName, swizzled);
    } catch (...) { // as above
        return nullptr;
    }
}

/// The pattern of all conversions but ABGR: the picture's own bitmap, or it decoded afresh, or converted.
template<class Qualifies, class QualifiesAfresh, class TargetFor>
std::shared_ptr<NSBitmapImageRep>
representation(const NSImage& image, bool deepThroughPNG, const Qualifies& qualifies,
               const QualifiesAfresh& qualifiesAfresh, const TargetFor& targetFor) {
    const BitmapScan scan = scanBitmaps(image, qualifies);
    if (scan.found != nullptr) return scan.found;
    const bool throughPNG = deepThroughPNG && scan.count == 1 && scan.lastBitsPerSample > 8;
    std::shared_ptr<NSBitmapImageRep> decoded = decodedAfresh(image, throughPNG);
    if (decoded == nullptr || qualifiesAfresh(*decoded)) return decoded;
    return converted(image, *decoded, targetFor(*decoded));
}

template<class Qualifies, class TargetFor>
std::shared_ptr<NSBitmapImageRep> representation(const NSImage& image, bool deepThroughPNG,
                                                 const Qualifies& qualifies, const TargetFor& targetFor) {
    return representation(image, deepThroughPNG, qualifies, qualifies, targetFor);
}

/// Whether a picture is encoded from a bitmap in a device colour space, which TIFF cannot say.
bool showsDeviceColor(const NSImage& image) {
    const auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(image.bestRepresentation());
    return bitmap != nullptr && (bitmap->colorSpaceName() == Platform::NSDeviceRGBColorSpace ||
                                 bitmap->colorSpaceName() == Platform::NSDeviceCMYKColorSpace);
}

std::string_view calibratedSpaceLike(const NSBitmapImageRep& bitmap) {
    return isGrayscale(bitmap) ? Platform::NSCalibratedWhiteColorSpace : Platform::NSCalibratedRGBColorSpace;
}

/// Moves a meshed bitmap's samples into the planes of a planar one.
void separatePlanes(const NSBitmapImageRep& from, NSBitmapImageRep& to) {
    for (std::int64_t y = 0; y < from.pixelsHigh(); ++y) {
        for (std::int64_t x = 0; x < from.pixelsWide(); ++x) to.setPixelAt(x, y, from.pixelAt(x, y));
    }
}

} // namespace

std::recursive_mutex& GlobalImageLock() {
    static auto* const lock = new std::recursive_mutex; // never freed: threads may still draw at exit
    return *lock;
}

// Bitmaps

std::shared_ptr<NSBitmapImageRep> initWithSize(NSSize size, IMGBitmapFormat bitmapFormat) {
    NSBitmapDescription description;
    if (!(size.width >= 1 && size.height >= 1 && size.width < 1e9F && size.height < 1e9F)) return nullptr;
    description.pixelsWide = static_cast<std::int64_t>(size.width);
    description.pixelsHigh = static_cast<std::int64_t>(size.height);
    const bool gray =
        bitmapFormat == IMGBitmapFormatGrayscale || bitmapFormat == IMGBitmapFormatGrayscaleAlpha;
    description.hasAlpha = bitmapFormat != IMGBitmapFormatGrayscale && bitmapFormat != IMGBitmapFormatRGB;
    description.samplesPerPixel = (gray ? 1 : 3) + (description.hasAlpha ? 1 : 0);
    description.colorSpaceName =
        gray ? Platform::NSCalibratedWhiteColorSpace : Platform::NSCalibratedRGBColorSpace;
    return NSBitmapImageRep::bitmapWithDescription(description);
}

IMGBitmapFormat imgBitmapFormat(const NSBitmapImageRep& bitmap) {
    if (isWhite(bitmap) && hasPixels(bitmap, 1)) return IMGBitmapFormatGrayscale;
    if (isWhite(bitmap) && hasPixels(bitmap, 2)) return IMGBitmapFormatGrayscaleAlpha;
    if (isRGB(bitmap) && hasPixels(bitmap, 3)) return IMGBitmapFormatRGB;
    if (isRGB(bitmap) && hasPixels(bitmap, 4)) return IMGBitmapFormatRGBA;
    return IMGBitmapFormatUnknown;
}

bool isGrayscale(const NSBitmapImageRep& bitmap) { return isGraySpace(bitmap.colorSpaceName()); }

bool isInvertedGrayscale(const NSBitmapImageRep& bitmap) {
    return isInvertedGraySpace(bitmap.colorSpaceName());
}

bool hasAlpha(const NSBitmapImageRep& bitmap) {
    const IMGBitmapFormat format = imgBitmapFormat(bitmap);
    return format == IMGBitmapFormatGrayscaleAlpha || format == IMGBitmapFormatRGBA;
}

std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithSize(const NSBitmapImageRep& bitmap, NSSize size,
                                                               int bitsPerSample, int samplesPerPixel,
                                                               bool hasAlpha, bool isPlanar,
                                                               std::string_view colorSpaceName, bool swizzled,
                                                               bool wasSwizzled) {
    if (!(size.width >= 1 && size.height >= 1 && size.width < 1e9F && size.height < 1e9F)) return nullptr;
    NSBitmapDescription description;
    description.pixelsWide = static_cast<std::int64_t>(size.width);
    description.pixelsHigh = static_cast<std::int64_t>(size.height);
    description.bitsPerSample = bitsPerSample;
    description.samplesPerPixel = std::min(samplesPerPixel, isGraySpace(colorSpaceName) ? 2 : 4);
    description.hasAlpha = hasAlpha;
    description.colorSpaceName = colorSpaceName;
    const std::shared_ptr<NSBitmapImageRep> target = NSBitmapImageRep::bitmapWithDescription(description);
    const std::shared_ptr<NSBitmapImageRep> mesh = bitmap.isPlanar() ? meshed(bitmap) : nullptr;
    const NSBitmapImageRep& source = mesh != nullptr ? *mesh : bitmap;
    if (target == nullptr) return nullptr;

    const CGContextRef context = Platform::CGBitmapContextCreate(
        target->bitmapData(), static_cast<std::size_t>(target->pixelsWide()),
        static_cast<std::size_t>(target->pixelsHigh()), static_cast<std::size_t>(bitsPerSample),
        target->bytesPerRow(), deviceSpace(description.samplesPerPixel),
        targetAlphaInfo(description.samplesPerPixel, hasAlpha, swizzled));
    // Asked of the bitmap itself: its meshed copy may have a known layout where it has none.
    const CGImageRef image = imageOver(source, alphaInfo(Imaging::hasAlpha(bitmap), wasSwizzled));
    if (context == nullptr || image == nullptr) return nullptr;
    const NSSize pixels = {static_cast<float>(source.pixelsWide()), static_cast<float>(source.pixelsHigh())};
    Platform::CGContextDrawImage(*context, {Platform::NSZeroPoint, pixels}, *image);
    if (!isPlanar) return target;

    description.isPlanar = true;
    std::shared_ptr<NSBitmapImageRep> planar = NSBitmapImageRep::bitmapWithDescription(description);
    if (planar != nullptr) separatePlanes(*target, *planar);
    return planar;
}

// Pictures

std::optional<NSData> ThreadSafeTIFFRepresentation(const NSImage& image) {
    const std::lock_guard<std::recursive_mutex> lock(GlobalImageLock());
    return image.TIFFRepresentation();
}

std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithCanonicalFormat(const NSImage& image) {
    const auto isKnown = [](const NSBitmapImageRep& bitmap) {
        return imgBitmapFormat(bitmap) != IMGBitmapFormatUnknown;
    };
    // Device colour comes back from TIFF as if it were calibrated; it loses its alpha all the same.
    const auto isKnownAfresh = [&](const NSBitmapImageRep& bitmap) {
        if (imgBitmapFormat(bitmap) == IMGBitmapFormatRGBA && showsDeviceColor(image)) return false;
        return isKnown(bitmap);
    };
    return representation(image, true, isKnown, isKnownAfresh, [](const NSBitmapImageRep& decoded) {
        if (!isGrayscale(decoded)) return Target{3, false, Platform::NSCalibratedRGBColorSpace};
        return Target{decoded.samplesPerPixel(), hasAlpha(decoded), Platform::NSCalibratedWhiteColorSpace};
    });
}

std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithAlphaFormat(const NSImage& image) {
    return representation(
        image, false, [](const NSBitmapImageRep& bitmap) { return hasAlpha(bitmap); },
        [](const NSBitmapImageRep& decoded) {
            return Target{decoded.samplesPerPixel() + 1, true, calibratedSpaceLike(decoded)};
        });
}

std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithRGBAFormat(const NSImage& image) {
    return representation(
        image, false,
        [](const NSBitmapImageRep& bitmap) { return imgBitmapFormat(bitmap) == IMGBitmapFormatRGBA; },
        [](const NSBitmapImageRep&) {
            return Target{4, true, Platform::NSCalibratedRGBColorSpace};
        });
}

std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithMaskFormat(const NSImage& image) {
    return representation(
        image, false,
        [](const NSBitmapImageRep& bitmap) { return imgBitmapFormat(bitmap) == IMGBitmapFormatGrayscale; },
        [](const NSBitmapImageRep&) {
            return Target{1, false, Platform::NSCalibratedWhiteColorSpace};
        });
}

std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithABGRFormat(const NSImage& image) {
    const std::shared_ptr<NSBitmapImageRep> decoded = decodedAfresh(image, false);
    if (decoded == nullptr) return nullptr;
    return converted(image, *decoded, Target{4, true, Platform::NSCalibratedRGBColorSpace}, true);
}

} // namespace Imaging
