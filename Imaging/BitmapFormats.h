#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Image.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

/// The bitmap layouts that pixel operations and loaders work on, and the ways to bring any picture into
/// them. Conversions that fail answer null.
///
/// Example:
/// @code
/// const auto bitmap = bitmapWithSize({640, 480}, IMGBitmapFormatRGB);
/// NSImage picture(bitmap->size());
/// picture.addRepresentation(bitmap);
/// const auto withAlpha = bitmapRepresentationWithRGBAFormat(picture);
/// @endcode
namespace Imaging {

using Platform::NSBitmapImageRep;
using Platform::NSData;
using Platform::NSImage;
using Platform::NSSize;

/// Layouts of 8 bits a sample, meshed, pixels without padding, samples in the order gray or red, green,
/// blue and then alpha, premultiplied, in the calibrated white or RGB colour space.
enum IMGBitmapFormat : int {
    IMGBitmapFormatUnknown = 0,        ///< anything else
    IMGBitmapFormatGrayscale = 1,      ///< 1 sample, 8 bits a pixel
    IMGBitmapFormatGrayscaleAlpha = 2, ///< 2 samples, 16 bits
    IMGBitmapFormatRGB = 3,            ///< 3 samples, 24 bits
    IMGBitmapFormatRGBA = 4,           ///< 4 samples, 32 bits
};

/// The process's lock for pictures: drawing a picture and encoding one as TIFF hold it, and so must any
/// other code that does either off the main thread. Recursive; never freed.
IMAGING_EXPORT std::recursive_mutex& GlobalImageLock();

// Bitmaps

/// A new bitmap of a layout on pixels of its own, all bytes 0; the size is truncated toward zero. A value
/// that is no known layout makes an RGBA bitmap. Null for a size below one pixel or beyond the picture
/// limits.
IMAGING_EXPORT std::shared_ptr<NSBitmapImageRep> bitmapWithSize(NSSize size, IMGBitmapFormat bitmapFormat);

/// The same by its customary name.
inline std::shared_ptr<NSBitmapImageRep> initWithSize(NSSize size, IMGBitmapFormat bitmapFormat) {
    return bitmapWithSize(size, bitmapFormat);
}

/// Which layout a bitmap has. Device and black-is-zero colour spaces are unknown whatever their samples.
IMAGING_EXPORT IMGBitmapFormat imgBitmapFormat(const NSBitmapImageRep& bitmap);

/// Whether the colour space is one of the four gray ones, or one of the two in which 0 means white.
IMAGING_EXPORT bool isGrayscale(const NSBitmapImageRep& bitmap);
IMAGING_EXPORT bool isInvertedGrayscale(const NSBitmapImageRep& bitmap);

/// Whether the layout is one of the two known ones with alpha. False for a bitmap of unknown layout, even
/// one with an alpha channel (which `bitmap.hasAlpha()` reports).
IMAGING_EXPORT bool hasAlpha(const NSBitmapImageRep& bitmap);

/// A new bitmap of a description that holds a bitmap's pixels, drawn source-over at their own size with the
/// lower left corner in the new bitmap's: a larger new bitmap keeps its zero bytes at the top and right, a
/// smaller one cuts. Colours are carried over by number; colour drawn into gray is
/// (30·R + 59·G + 11·B) / 100, rounded to nearest; a bitmap without alpha gets the premultiplied colour.
///
/// The source's alpha counts only where `hasAlpha` says so; a fourth sample is otherwise ignored.
/// `swizzled` puts alpha first in the new bitmap's bytes, `wasSwizzled` says that it stands first in the
/// source's; neither is recorded in a bitmap. Sample counts are clamped to 2 in the gray spaces and 4 in the
/// others; a sample beyond colour that is not alpha is written as opaque. Null when the description makes
/// no sense.
IMAGING_EXPORT std::shared_ptr<NSBitmapImageRep>
bitmapRepresentationWithSize(const NSBitmapImageRep& bitmap, NSSize size, int bitsPerSample,
                             int samplesPerPixel, bool hasAlpha, bool isPlanar,
                             std::string_view colorSpaceName, bool swizzled, bool wasSwizzled = false);

// Pictures. Each returns the picture's own bitmap where it has one that qualifies (the first of its
// representations), otherwise a converted one of the picture's size.

/// Any known layout. Otherwise gray stays gray with its alpha, and colour becomes RGB without alpha.
IMAGING_EXPORT std::shared_ptr<NSBitmapImageRep>
bitmapRepresentationWithCanonicalFormat(const NSImage& image);

/// A known layout with alpha.
IMAGING_EXPORT std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithAlphaFormat(const NSImage& image);

/// IMGBitmapFormatRGBA.
IMAGING_EXPORT std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithRGBAFormat(const NSImage& image);

/// IMGBitmapFormatGrayscale.
IMAGING_EXPORT std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithMaskFormat(const NSImage& image);

/// Described as RGBA, with the bytes alpha, red, green, blue. Always a fresh conversion.
IMAGING_EXPORT std::shared_ptr<NSBitmapImageRep> bitmapRepresentationWithABGRFormat(const NSImage& image);

/// The picture as TIFF, made while `GlobalImageLock` is held. What making it throws passes on, the lock
/// released.
IMAGING_EXPORT std::optional<NSData> ThreadSafeTIFFRepresentation(const NSImage& image);

} // namespace Imaging
