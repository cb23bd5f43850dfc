#pragma once

#include "Imaging/Image.h"
#include "Platform/Graphics/Image.h"

#include <memory>
#include <string>

namespace Imaging {

using Platform::NSImage;

/// A picture of the other graphics service, which some callers pass; nothing here has any.
class CIImage;

/// A rendered picture: what a node keeps as its result and what is painted at the leaf of every draw.
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
    void drawWithTransformClip(const TransformAndClipList& list, int operation, float fraction,
                               IMGDrawingTarget* imageContext);

private:
    CCImage();

    std::shared_ptr<NSImage> m_ns_image;
};

/// The leaf of a graph: one decoded picture, one point a pixel whatever resolution it declares.
class IMAGING_EXPORT IMGImageFromNSImage : public IMGImage {
public:
    /// A node for a picture, which is prepared by `cacheable` and kept. Throws an NSException
    /// (NSInvalidArgumentException) on null.
    explicit IMGImageFromNSImage(std::shared_ptr<NSImage> image);

    /// A node for a picture file, whose path it remembers, or for what a URL names, which it does not. Null
    /// and the reason when the picture cannot be read.
    static std::shared_ptr<IMGImageFromNSImage> initWithContentsOfFile(const std::string& path,
                                                                       NSError* error = nullptr);
    static std::shared_ptr<IMGImageFromNSImage> initWithContentsOfURL(const NSURL& url,
                                                                      NSError* error = nullptr);

    /// The picture of an archive: the one under "ns-image", or else the ordinary file named under
    /// "file-name". When neither gives one the node has size zero and draws nothing.
    explicit IMGImageFromNSImage(Platform::NSCoder& coder);
    ~IMGImageFromNSImage() override;

    /// The path that the picture was read from; nullopt for pictures from memory or a URL.
    const std::optional<std::string>& fileName() const { return m_file_name; }
    std::optional<std::string> name() const { return m_file_name; }

    std::shared_ptr<CCImage> untransformedImage() override;
    std::shared_ptr<CCImage> image() override;
    IMGBounds imageBounds() const override;

    /// Answers for itself only: where its picture lies under the transform.
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override;
    using IMGImage::boundsForImage;

    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list, int operation,
                   float fraction, IMGDrawingTarget* imageContext) override;

    /// A node that reads the file again; null for a node without a file name or whose file is gone.
    std::shared_ptr<IMGImage> copy() const override;

    std::string archiveClassName() const override;

    /// Writes the path under "file-name" when there is one, otherwise the picture under "ns-image".
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    /// The file name and the address of the cached image, for logs.
    std::string description() const override;

private:
    IMGImageFromNSImage(std::shared_ptr<NSImage> image, std::optional<std::string> fileName);

    std::shared_ptr<CCImage> m_image;
    std::optional<std::string> m_file_name;
};

/// A picture node for a picture.
IMAGING_EXPORT std::shared_ptr<IMGImageFromNSImage> imagingImage(std::shared_ptr<NSImage> image);

/// Makes one point of the picture cover one pixel, whatever resolution was declared: each bitmap
/// representation whose pixel size differs from the picture's size at the time of the call sets that size
/// (so of several the last one wins) and has the picture scale when resized. The cache mode becomes "always".
/// Returns its argument; null gives null.
IMAGING_EXPORT std::shared_ptr<NSImage> cacheable(std::shared_ptr<NSImage> image);

/// The same correction of the size, which turns on data retention instead of scaling.
IMAGING_EXPORT std::shared_ptr<NSImage> fixSize(std::shared_ptr<NSImage> image);

} // namespace Imaging
