// Pixel operations: brings the source into a known layout, makes a bitmap of the same one, and keeps what an
// operation writes into it until it has to be made anew.

#include "Imaging/PixelOperation.h"

#include "Imaging/Pixels/PixelWorkers.h"
#include "Platform/Foundation/Exception.h"

#include <utility>

namespace Imaging {

namespace {

/// A fresh bitmap of the same known layout and exact size. `bitmapWithSize` would round sides beyond 2^24
/// pixels, which a float does not hold.
std::shared_ptr<NSBitmapImageRep> freshBitmapLike(const NSBitmapImageRep& bitmap) {
    Platform::NSBitmapDescription description;
    description.pixelsWide = bitmap.pixelsWide();
    description.pixelsHigh = bitmap.pixelsHigh();
    description.samplesPerPixel = bitmap.samplesPerPixel();
    description.hasAlpha = hasAlpha(bitmap);
    description.colorSpaceName = bitmap.colorSpaceName();
    const auto fresh = NSBitmapImageRep::bitmapWithDescription(description);
    if (fresh == nullptr) {
        throw Platform::NSException(Platform::NSGenericException,
                                    "the result of a pixel operation is beyond the picture limits");
    }
    return fresh;
}

} // namespace

// PixelOperation

PixelOperation::PixelOperation(std::shared_ptr<IMGImage> source) : IMGImage(std::move(source)) {}

PixelOperation::PixelOperation(Platform::NSCoder& coder) : IMGImage(coder) {}

PixelOperation::~PixelOperation() = default;

void PixelOperation::drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                               CompositingOperation operation, float fraction,
                               IMGDrawingTarget* imageContext) {
    IMGImage::drawImage(image != nullptr ? image : untransformedImage(), list, operation, fraction,
                        imageContext);
}

std::optional<IMGBounds> PixelOperation::boundsForImage(const IMGImage& image,
                                                        const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    const std::shared_ptr<IMGImage> source = sourceAtIndex(0);
    NSAffineTransform below = transform;
    below.prependTransform(source->transform());
    return source->boundsForImage(*source, below);
}

bool PixelOperation::treatsFormat(IMGBitmapFormat format) const {
    return format >= IMGBitmapFormatGrayscale && format <= IMGBitmapFormatRGBA;
}

std::shared_ptr<CCImage> PixelOperation::sourceResult() const {
    return sourceAtIndex(0)->untransformedImage();
}

std::shared_ptr<CCImage> PixelOperation::computedFrom(const std::shared_ptr<CCImage>& sourceResult) {
    if (sourceResult == nullptr || sourceResult->nsImage() == nullptr) return nullptr;
    const auto source = bitmapRepresentationWithCanonicalFormat(*sourceResult->nsImage());
    // No picture is no result, but a picture that cannot be converted is an empty one, which is kept.
    if (source == nullptr) {
        return CCImage::ccImageWithNSImage(std::make_shared<NSImage>(Platform::NSZeroSize));
    }
    requireSizesOfRecords(*source);
    const auto destination = freshBitmapLike(*source);
    computePixels(*source, *destination);
    const auto picture = std::make_shared<NSImage>(destination->size());
    picture->addRepresentation(destination);
    return CCImage::ccImageWithNSImage(picture);
}

// ChangeCachedOperation

ChangeCachedOperation::~ChangeCachedOperation() = default;

std::shared_ptr<CCImage> ChangeCachedOperation::untransformedImage() {
    if (m_cached_image == nullptr) m_cached_image = computedFrom(sourceResult());
    return m_cached_image;
}

void ChangeCachedOperation::changed() {
    m_cached_image = nullptr;
    PixelOperation::changed();
}

// SourceCachedOperation

SourceCachedOperation::~SourceCachedOperation() = default;

std::shared_ptr<CCImage> SourceCachedOperation::untransformedImage() {
    const std::shared_ptr<CCImage> source = sourceResult();
    // The source is asked every time: that it is the same result says that nothing below has changed.
    if (m_cached_image_source != source) dropResult();
    if (m_cached_image == nullptr) {
        m_cached_image = computedFrom(source);
        if (m_cached_image != nullptr) m_cached_image_source = source;
    }
    return m_cached_image;
}

void SourceCachedOperation::dropResult() {
    m_cached_image = nullptr;
    m_cached_image_source = nullptr;
}

} // namespace Imaging
