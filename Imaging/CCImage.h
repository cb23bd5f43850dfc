#pragma once

#include "Imaging/Bounds.h"
#include "Imaging/DrawingTarget.h"
#include "Platform/Graphics/Image.h"

#include <memory>
#include <string>

namespace Imaging {

using Platform::NSImage;

/// A picture of the other graphics service, which some callers pass; nothing here has any.
class CIImage;

/// A rendered picture: what a node keeps as its result and what is painted at the leaf of every draw.
///
/// Example:
/// @code
/// const auto picture = std::make_shared<NSImage>(NSMakeSize(40, 30));
/// const auto cached = CCImage::ccImageWithNSImage(picture);
/// const NSSize size = cached->size();
/// @endcode
class IMAGING_EXPORT CCImage {
public:
    static std::shared_ptr<CCImage> ccImageWithNSImage(std::shared_ptr<NSImage> image);

    /// A cached image without a picture, of size zero, that draws nothing: the argument is not kept.
    static std::shared_ptr<CCImage> ccImageWithCIImage(const std::shared_ptr<CIImage>& image);

    explicit CCImage(std::shared_ptr<NSImage> image);
    ~CCImage();
    CCImage(const CCImage&) = delete;
    CCImage& operator=(const CCImage&) = delete;

    /// The picture's size, or zero without one.
    NSSize size() const;

    /// The class and address, for logs.
    std::string description() const;

    /// The picture itself, or null.
    const std::shared_ptr<NSImage>& nsImage() const { return m_ns_image; }

    /// Always null.
    std::shared_ptr<CIImage> ciImage() const { return nullptr; }

    /// Makes the picture ready to draw now rather than at its first draw. What goes wrong is swallowed.
    void forceToCache();

    /// Paints the picture into the current graphics context under the records of a draw, each record's clip
    /// given in the space that its transform acts on; the drawing is limited to what all clips have in
    /// common. The drawing target is not used. Holds `GlobalImageLock` while the picture is painted. The
    /// graphics state is left as it was, also when drawing throws; what it throws passes on. Under a
    /// transform without an inverse nothing is painted.
    void drawWithTransformClip(const TransformAndClipList& list, CompositingOperation operation,
                               float fraction, IMGDrawingTarget* imageContext);

private:
    CCImage();

    std::shared_ptr<NSImage> m_ns_image;
};

} // namespace Imaging
