#pragma once

#include "Platform/Foundation/Coder.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/URL.h"
#include "Platform/Graphics/PictureMemory.h"
#include "Platform/Pixels/CompositingOperation.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Imaging::Platform {

class DrawablePicture;
class NSBitmapImageRep;
class NSGraphicsContext;
class NSImageRep;

/// Whether a picture keeps its ready-to-draw copy.
enum NSImageCacheMode : int {
    NSImageCacheDefault = 0,
    NSImageCacheAlways = 1,
    NSImageCacheBySize = 2,
    NSImageCacheNever = 3, ///< the copy is made for each draw and let go at once
};

/// A picture: a size in points, the forms in which it exists, and, once it was drawn, a ready-to-draw copy.
///
/// Memory: the decoded bitmap for as long as it is a representation, and what is ready to be drawn: 4 bytes a
/// pixel for the picture at full size, once it was drawn at more than half its size or had focus, and a
/// third of that for all its halved levels together, each of them from the first draw that is small enough to
/// need it. All that is kept until `recache`, a change of the representations, size or cache mode, or the
/// picture's end; with NSImageCacheNever only during a draw. `releasePictureMemory` takes back what can be
/// made again. A picture that was made from encoded data or from a URL keeps those encoded bytes for
/// archiving; one from a file does not.
///
/// Colours are converted to sRGB, once, when the ready-to-draw copy is made: by the bitmap's ICC profile
/// (relative colorimetric) where it has one that fits its samples, otherwise its numbers count as sRGB.
///
/// The ready-to-draw copy shows the representation with the most pixels (of equals the first). It fills the
/// picture's size when the representation's own size equals it or the picture scales when resized;
/// otherwise it stands unscaled, in its own size, in the lower left corner.
///
/// Nothing is locked: a picture is used by one thread at a time. The ready-to-draw copy reads the bitmap when
/// a draw first needs it, so a bitmap's pixels must not be changed without `recache` afterwards.
///
/// Example:
/// @code
/// NSError error;
/// const auto picture = NSImage::imageWithContentsOfFile("photo.jpg", &error);
/// if (picture != nullptr) {
///     picture->drawInRect(NSMakeRect(0, 0, 320, 240), NSZeroRect, NSCompositeSourceOver, 1);
/// }
/// @endcode
class IMAGING_EXPORT NSImage : public NSCoding {
public:
    /// An empty picture of a size, transparent black all over. It has no representation until something is
    /// drawn into it.
    explicit NSImage(NSSize size);

    /// What an archive of a picture holds. Encoded data in it that cannot be decoded gives an empty picture
    /// of size zero.
    explicit NSImage(NSCoder& coder);
    ~NSImage() override;
    NSImage(const NSImage&) = delete;
    NSImage& operator=(const NSImage&) = delete;

    /// A picture decoded from a file, a URL or encoded bytes, of any known format; what counts is the
    /// content, not the name. Its only representation is an NSBitmapImageRep and its size is that
    /// bitmap's. Null and the reason on failure. A URL blocks until it is loaded.
    static std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path,
                                                            NSError* error = nullptr);
    static std::shared_ptr<NSImage> imageWithContentsOfURL(const NSURL& url, NSError* error = nullptr);
    static std::shared_ptr<NSImage> imageWithData(NSData data, NSError* error = nullptr);

    NSSize size() const { return m_size; }
    void setSize(NSSize size);

    const std::vector<std::shared_ptr<NSImageRep>>& representations() const { return m_representations; }
    void addRepresentation(std::shared_ptr<NSImageRep> representation);
    void removeRepresentation(const std::shared_ptr<NSImageRep>& representation);

    bool scalesWhenResized() const { return m_scales_when_resized; }
    void setScalesWhenResized(bool flag);

    /// Recorded for the application; nothing here depends on it.
    bool isDataRetained() const { return m_data_retained; }
    void setDataRetained(bool flag) { m_data_retained = flag; }

    int cacheMode() const { return m_cache_mode; }
    void setCacheMode(int mode);

    /// Lets the ready-to-draw copy go, so that the next draw makes it again from the representations.
    void recache();

    /// Makes the picture the place that the calling thread draws into, in its own points with (0, 0) at the
    /// lower left, on what it shows now, until `unlockFocus` gives the thread's earlier context back. The
    /// pixels are the best representation's where that fills the picture; otherwise one a point, a
    /// fraction of a pixel counting as a whole one when more than 1/256 of it is covered. When something was
    /// drawn, the result replaces all representations. Throws an NSException (NSImageCacheException) for a
    /// picture without area or beyond the limits, or that already has focus.
    void lockFocus();

    /// Ends the innermost focus. Throws an NSException (NSImageCacheException) without one.
    void unlockFocus();

    /// The picture as it would be drawn with all its samples: its best bitmap representation as TIFF, or
    /// what was drawn into it, or transparent black. nullopt and the reason for a picture without area.
    virtual std::optional<NSData> TIFFRepresentation(NSError* error = nullptr) const;

    /// Draws the part `source` of the picture (in its points; the zero rectangle means all of it) into
    /// `destination` of the current context, scaled to fit, with a compositing operation and the picture
    /// scaled by `fraction` (clamped to 0 … 1). Nothing outside the destination is touched; where the source
    /// reaches beyond what the picture shows, transparent black is drawn. Whole-pixel
    /// moves, quarter turns and flips about whole-pixel centres copy pixels exactly; everything else is
    /// interpolated bilinearly, or averaged where the picture is made smaller, with antialiased edges.
    /// Onto pixels in memory every result is within 1 of 255 of the exact one. Does nothing without a current
    /// context. Throws an NSException when drawing fails.
    virtual void drawInRect(NSRect destination, NSRect source, NSCompositingOperation operation,
                            float fraction);
    void drawInRect(NSRect destination, NSRect source, int operation, float fraction) {
        drawInRect(destination, source, compositingOperation(operation), fraction);
    }

    /// The encoded bytes that the picture was made from; null when they are not known or the picture was
    /// changed since.
    const std::shared_ptr<const NSData>& encodedData() const { return m_encoded_data; }

    /// The representation that is drawn: the one with the most pixels, of equals the first; null without any.
    std::shared_ptr<NSImageRep> bestRepresentation() const;

    std::string archiveClassName() const override;

    /// Writes the known encoded bytes, or else the picture as PNG, under "data", the size under "size", and
    /// whether it scales when resized under "scales-when-resized".
    void encodeWithCoder(NSCoder& coder) const override;

private:
    struct Focus;

    void adoptBitmap(ByteView data, NSError* error);
    void contentChanged();
    std::shared_ptr<NSBitmapImageRep> bitmapToEncode(NSError* error) const;
    bool fillsPicture(const NSImageRep& representation) const;
    std::shared_ptr<DrawablePicture> makeDrawable() const;
    std::shared_ptr<DrawablePicture> drawable();
    std::shared_ptr<DrawablePicture> focusDrawable();

    NSSize m_size;
    std::vector<std::shared_ptr<NSImageRep>> m_representations;
    std::shared_ptr<const NSData> m_encoded_data;
    std::shared_ptr<DrawablePicture> m_drawable;
    std::unique_ptr<Focus> m_focus;
    int m_cache_mode = NSImageCacheDefault;
    bool m_scales_when_resized = false;
    bool m_data_retained = false;
};

/// Holds a picture's focus for a scope, and gives it back on the way out of an exception too.
class IMAGING_EXPORT NSImageFocus {
public:
    explicit NSImageFocus(NSImage& image) : m_image(image) { m_image.lockFocus(); }
    ~NSImageFocus() { m_image.unlockFocus(); }
    NSImageFocus(const NSImageFocus&) = delete;
    NSImageFocus& operator=(const NSImageFocus&) = delete;

private:
    NSImage& m_image;
};

} // namespace Imaging::Platform
