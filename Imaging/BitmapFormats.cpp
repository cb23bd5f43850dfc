// Bitmap layouts: tells them by colour space and samples, and converts pictures by way of TIFF data where
// none of their bitmaps serves as it is.

#include "Imaging/BitmapFormats.h"

#include "Platform/Graphics/Pictures/BitmapPixels.h"

#include <algorithm>
#include <utility>

namespace Imaging {

using Platform::NSBitmapDescription;
using Platform::PixelAlpha;
using Platform::PixelColor;
using Platform::PixelLayout;

namespace {

// By name alone: a device space never makes a known layout, whatever its samples.

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

/// Whether samples lie as in a known layout. The bits of a pixel tell padded ones apart.
bool hasPixels(const NSBitmapImageRep& bitmap, int samples) {
    return bitmap.bitsPerSample() == 8 && !bitmap.isPlanar() && bitmap.samplesPerPixel() == samples &&
           bitmap.bitsPerPixel() == 8 * samples;
}

PixelColor deviceColor(int samplesPerPixel) {
    return samplesPerPixel <= 2 ? PixelColor::Gray : PixelColor::RGB;
}

/// Nothing in a bitmap says that alpha stands first; whoever made it so says it here.
PixelAlpha alphaPlace(bool alpha, bool first) {
    if (!alpha) return PixelAlpha::None;
    return first ? PixelAlpha::First : PixelAlpha::Last;
}

/// How a bitmap's samples are read for a conversion: by their number, whatever the colour space and the
/// bitmap's own flags say.
PixelLayout sourceLayout(const NSBitmapImageRep& bitmap, bool alphaFirst) {
    PixelLayout layout;
    layout.color =
        isInvertedGrayscale(bitmap) ? PixelColor::InvertedGray : deviceColor(bitmap.samplesPerPixel());
    layout.alpha = alphaPlace(hasAlpha(bitmap), alphaFirst);
    layout.bitsPerSample = bitmap.bitsPerSample();
    return layout;
}

/// What a target's samples hold. Without alpha, a sample beyond the colours is there but means nothing.
PixelLayout targetLayout(const NSBitmapDescription& target, bool alphaFirst) {
    PixelLayout layout;
    layout.color = deviceColor(target.samplesPerPixel);
    layout.alpha = alphaPlace(target.hasAlpha, alphaFirst);
    const bool spare = target.samplesPerPixel == 2 || target.samplesPerPixel == 4;
    if (!target.hasAlpha && spare) layout.alpha = PixelAlpha::SkipLast;
    layout.bitsPerSample = target.bitsPerSample;
    return layout;
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

/// The picture decoded afresh from its TIFF data, which is gone afterwards: it may be as large as the
/// picture.
std::shared_ptr<NSBitmapImageRep> decodedFromTIFF(const NSImage& image) {
    const std::optional<NSData> tiff = ThreadSafeTIFFRepresentation(image);
    return tiff.has_value() ? NSBitmapImageRep::imageRepWithData(*tiff) : nullptr;
}

/// The same, by way of PNG where that is asked for; null on failure.
std::shared_ptr<NSBitmapImageRep> decodedAfresh(const NSImage& image, bool throughPNG) {
    try {
        std::shared_ptr<NSBitmapImageRep> bitmap = decodedFromTIFF(image);
        if (!throughPNG || bitmap == nullptr) return bitmap;
        const std::optional<NSData> png = bitmap->representationUsingType(Platform::NSPNGFileType, {});
        return png.has_value() ? NSBitmapImageRep::imageRepWithData(*png) : nullptr;
    } catch (...) { // no picture is the answer, whatever went wrong
        return nullptr;
    }
}

/// The layout that a picture is converted to where none of its own serves.
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

} // namespace

std::recursive_mutex& GlobalImageLock() {
    static auto* const lock = new std::recursive_mutex; // never freed: threads may still draw at exit
    return *lock;
}

// Bitmaps

std::shared_ptr<NSBitmapImageRep> bitmapWithSize(NSSize size, IMGBitmapFormat bitmapFormat) {
    NSBitmapDescription description;
    // Asked before the sides become integers, which larger floats and those that are no numbers do not fit.
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
    description.isPlanar = isPlanar;
    // Only gray is ever inverted.
    if (isInvertedGrayscale(bitmap) && bitmap.samplesPerPixel() > 2) return nullptr;
    std::shared_ptr<NSBitmapImageRep> target = NSBitmapImageRep::bitmapWithUninitialisedPixels(description);
    if (target == nullptr) return nullptr;
    Platform::carryPixels(Platform::sourcePixels(bitmap), sourceLayout(bitmap, wasSwizzled),
                          Platform::targetPixels(*target), targetLayout(description, swizzled));
    return target;
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
