#pragma once

#include "Imaging/Image.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Imaging {

/// How a source area is brought into a target size.
enum IMGImageScaling : std::int32_t {
    SCALE_PROPORTIONALLY = 0, ///< as large as it fits, centred along the other axis
    SCALE_TO_FILL = 1,        ///< each axis by itself
    SCALE_NONE = 2,           ///< not scaled, and the area's centre on the target's (0, 0), not on its centre
};

/// Shows an area of its one source (at index 0) in a size, which is its extent: the node that fits a picture
/// into a slide. An area or a target without width or height gives factors that are infinite or no numbers,
/// and then nothing is drawn. Drawing, `copy` and the bounds search throw an NSException (NSRangeException)
/// where an archive gave the node no source.
///
/// Example:
/// @code
/// const auto picture = std::make_shared<IMGImage>();
/// const NSRect face = NSMakeRect(120, 80, 200, 150);
/// const auto thumbnail =
///     IMGCropAndScale::cropWithSourceImage(picture, face, NSMakeSize(64, 48), SCALE_TO_FILL, true);
/// @endcode
class IMAGING_EXPORT IMGCropAndScale : public IMGImage {
public:
    /// `sourceArea` lies in the space that the source is drawn in, with the source's own transform applied.
    /// `imageScaling` is an IMGImageScaling; any other number leaves the source where it is. With `doClip`
    /// nothing outside the area is painted, otherwise what lies around it is.
    static std::shared_ptr<IMGCropAndScale> cropWithSourceImage(std::shared_ptr<IMGImage> sourceImage,
                                                                NSRect sourceArea, NSSize targetSize,
                                                                std::int32_t imageScaling, bool doClip);
    IMGCropAndScale(std::shared_ptr<IMGImage> sourceImage, NSRect sourceArea, NSSize targetSize,
                    std::int32_t imageScaling, bool doClip);

    /// Archived under "source-area", "target-size", "image-scaling" and "do-clip", which are zero, 0 and
    /// false where they are absent.
    explicit IMGCropAndScale(Platform::NSCoder& coder);
    ~IMGCropAndScale() override;

    // Each setter sends `changed`, unless the value equals the present one exactly.

    NSRect sourceArea() const { return _source_area; }
    void setSourceArea(NSRect area);
    NSSize targetSize() const { return _target_size; }
    void setTargetSize(NSSize size);
    std::int32_t imageScaling() const { return _image_scaling; }
    void setImageScaling(std::int32_t scaling);
    bool doClip() const { return _do_clip; }
    void setDoClip(bool flag);

    /// Drops the rendered picture first.
    void changed() override;

    /// From (0, 0), of the target size.
    IMGBounds imageBounds() const override;

    /// Where a node below lies. The node does not answer for itself: asked for its own bounds it passes the
    /// question down, and there is no answer.
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override;
    using IMGImage::boundsForImage;

    /// Walks on to the source, whatever was rendered.
    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    /// The source's own rendered picture, whole, where the target is as large as the area, wherever that
    /// lies. Otherwise the node drawn into a picture of the target size, which is kept until `changed`; null
    /// for a size without finite area. Throws an NSException for a size beyond the picture limits.
    std::shared_ptr<CCImage> untransformedImage() override;

    /// Takes the source's space to where the node lies when its extent is fitted into a rectangle.
    NSAffineTransform transformFromSourceToDestination(NSRect destination) const;

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    /// All that the node holds, in one line, for logs.
    std::string description() const override;

    bool needsSource() const override { return true; }

    /// The area, the target size, the scaling and whether it clips.
    std::string parameterDescription() const override;

    /// What users call the operation, in their language (key "crop").
    std::string name() const;

protected:
    /// Prepends the fitting of an area into the target size. Factors and offsets are 32-bit floats.
    void calculateTransform(NSAffineTransform& transform, NSRect area) const;

private:
    std::shared_ptr<CCImage> _cached_image;
    NSRect _source_area;
    NSSize _target_size;
    std::int32_t _image_scaling;
    bool _do_clip;
};

} // namespace Imaging
