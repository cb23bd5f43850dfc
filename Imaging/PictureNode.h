#pragma once

#include "Imaging/CCImage.h"
#include "Imaging/Image.h"

#include <memory>
#include <optional>
#include <string>

namespace Imaging {

/// The leaf of a graph: one decoded picture, one point a pixel whatever resolution it declares.
///
/// Example:
/// @code
/// NSError error;
/// const auto photo = IMGImage::imageWithContentsOfFile("photo.jpg", &error);
/// const std::string words = photo != nullptr ? photo->description() : error.message;
/// @endcode
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

    /// Why there is no picture to draw, in words, for a node that an archive gave; nullopt where there is
    /// one. Reads the file again, since a failed archive keeps no reason.
    std::optional<std::string> whyPictureIsMissing() const;

    std::shared_ptr<CCImage> untransformedImage() override;
    std::shared_ptr<CCImage> image() override;
    IMGBounds imageBounds() const override;

    /// Answers for itself only: where its picture lies under the transform.
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override;
    using IMGImage::boundsForImage;

    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    /// A node that reads the file again; null for a node without a file name or whose file is gone.
    std::shared_ptr<IMGImage> copy() const override;

    std::string archiveClassName() const override;

    /// Writes the path under "file-name" when there is one, otherwise the picture under "ns-image".
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    /// The file name and the address of the cached image, for logs.
    std::string description() const override;

    bool hasOwnPixels() const override { return true; }

    /// The file name, or that there is none; and what is wrong where the picture is missing.
    std::string parameterDescription() const override;

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
