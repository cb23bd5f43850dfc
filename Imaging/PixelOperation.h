#pragma once

#include "Imaging/BitmapFormats.h"
#include "Imaging/CachedImage.h"
#include "Imaging/Image.h"

#include <memory>
#include <optional>

/// What the operations that compute new pixels from one source have in common.
namespace Imaging {

/// A node whose result is new pixels, computed from the result of its one source (number 0) and kept. Each
/// operation says in `computePixels` what it does with the pixels, and says by its choice of base class
/// below how long the result is kept.
///
/// The result has the layout and the pixel size of the source's, one point a pixel, and carries none of the
/// properties of the source's bitmap unless the operation says so. It is computed on two threads at the first
/// request, which returns when it is complete. Nothing is locked: one thread at a time asks a graph.
///
/// A class of its own for the code alone; archives know the operations only.
///
/// Example:
/// @code
/// const auto isForPhotos = [](const PixelOperation& operation) {
///     return operation.treatsFormat(IMGBitmapFormatRGB) && operation.treatsFormat(IMGBitmapFormatRGBA);
/// };
/// @endcode
class IMAGING_EXPORT PixelOperation : public IMGImage {
public:
    ~PixelOperation() override;

    /// The computed result, without any transform. Null when the source gives no result or one without a
    /// picture. Throws an NSException (NSRangeException) for a node without a source.
    std::shared_ptr<CCImage> untransformedImage() override = 0;

    /// Draws `image`, or else this node's result, in the place of whatever the source would draw. A node
    /// without a result draws its source.
    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    /// Asked about itself, the node answers with the bounds of its source.
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override;
    using IMGImage::boundsForImage;

    bool needsSource() const override { return true; }
    bool hasOwnPixels() const override { return true; }

    /// Whether pictures of a layout are treated; of any other the result is all zero bytes. A picture of an
    /// unknown layout has a known one by the time that it is computed on (see
    /// `bitmapRepresentationWithCanonicalFormat`). Every known layout here.
    virtual bool treatsFormat(IMGBitmapFormat format) const;

protected:
    /// Throws an NSException (NSInvalidArgumentException) when the source is null.
    explicit PixelOperation(std::shared_ptr<IMGImage> source);
    explicit PixelOperation(Platform::NSCoder& coder);

    /// Fills the destination, a fresh bitmap of zero bytes that has the source's layout and size. Both may
    /// have padded rows. Layouts that the operation does not treat are left alone. What it throws reaches
    /// whoever asked for the result, and nothing is kept.
    virtual void computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) = 0;

    /// The result of the source, or null.
    std::shared_ptr<CCImage> sourceResult() const;

    /// A new result, computed from a result of the source: null without a picture, empty and of size zero
    /// when the picture cannot be brought into a known layout.
    std::shared_ptr<CCImage> computedFrom(const std::shared_ptr<CCImage>& sourceResult);
};

/// An operation that keeps its result until `changed`, which its setters and its source send.
class IMAGING_EXPORT ChangeCachedOperation : public PixelOperation {
public:
    ~ChangeCachedOperation() override;

    std::shared_ptr<CCImage> untransformedImage() override;

    /// Drops the result, then tells the observers.
    void changed() override;

protected:
    using PixelOperation::PixelOperation;

private:
    std::shared_ptr<CCImage> m_cached_image;
};

/// An operation that keeps its result as long as the source answers with the very result from which it was
/// computed, whatever changes are announced.
class IMAGING_EXPORT SourceCachedOperation : public PixelOperation {
public:
    ~SourceCachedOperation() override;

    std::shared_ptr<CCImage> untransformedImage() override;

protected:
    using PixelOperation::PixelOperation;

    /// Has the next request compute the result again.
    void dropResult();

private:
    std::shared_ptr<CCImage> m_cached_image;
    std::shared_ptr<CCImage> m_cached_image_source;
};

} // namespace Imaging
