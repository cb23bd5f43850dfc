#pragma once

#include "Imaging/Image.h"
#include "Imaging/SizedNode.h"

#include <memory>
#include <optional>
#include <string>

namespace Imaging {

/// A surface of a fixed size, from (0, 0), on which sources are drawn in order, each under its own transform;
/// the whole surface lies under one more transform, the canvas transform, which is no part of its bounds.
/// Drawing by walking down does not cut the sources at the canvas's edges; its rendered
/// picture ends there.
///
/// Example:
/// @code
/// const auto canvas = IMGCanvas::canvasWithSize(NSMakeSize(800, 600));
/// canvas->addSource(std::make_shared<IMGImage>());
/// canvas->rotateByDegrees(15);
/// @endcode
class IMAGING_EXPORT IMGCanvas : public SizedNode {
public:
    static std::shared_ptr<IMGCanvas> canvasWithSize(NSSize size);

    /// The transform is copied.
    explicit IMGCanvas(NSSize size, Sources sources = {});
    IMGCanvas(NSSize size, const NSAffineTransform& transform, Sources sources);

    /// Archived under "size" and "canvas-transform"; the zero size and no transform where those are absent.
    explicit IMGCanvas(Platform::NSCoder& coder);
    ~IMGCanvas() override;

    /// The object itself, which may be changed in place; that is announced to nobody. Null where an archive
    /// had none, which acts as the identity.
    const std::shared_ptr<NSAffineTransform>& canvasTransform() const { return m_canvas_transform; }

    /// Keeps the object itself. Neither sends `changed` nor drops the rendered picture, which does not show
    /// the transform.
    void setCanvasTransform(std::shared_ptr<NSAffineTransform> transform);

    /// Turns the canvas transform object in place, before what it did so far, counter-clockwise. Neither
    /// sends `changed` nor drops the rendered picture. Without a transform nothing happens.
    void rotateByDegrees(float degrees);

    /// Both drop the rendered picture; only the second announces a change.
    void addSource(std::shared_ptr<IMGImage> source) override;
    void replaceSourceAtIndex(std::size_t index, std::shared_ptr<IMGImage> source) override;

    /// Drops the rendered picture first.
    void changed() override;

    /// A copy of the canvas transform.
    NSAffineTransform transform() const override;

    /// The sources drawn into a picture of the canvas's size without the canvas transform, kept until
    /// something drops it; null for a size without finite area. Throws an NSException for a size beyond the
    /// picture limits.
    std::shared_ptr<CCImage> untransformedImage() override;

    /// A canvas of the same size with the same sources and no canvas transform.
    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    /// The size, and the canvas transform unless that is the identity.
    std::string parameterDescription() const override;

private:
    std::shared_ptr<NSAffineTransform> m_canvas_transform;
    std::shared_ptr<CCImage> m_canvas_image;
};

/// Draws its sources over one another like a plain node, and knows where it lies itself.
///
/// Example:
/// @code
/// const auto sky = IMGCanvas::canvasWithSize(NSMakeSize(640, 200));
/// const auto land = IMGCanvas::canvasWithSize(NSMakeSize(640, 480));
/// const auto both = std::make_shared<IMGCompositeOp>(IMGImage::Sources{land, sky});
/// @endcode
class IMAGING_EXPORT IMGCompositeOp : public IMGImage {
public:
    using IMGImage::IMGImage;
    ~IMGCompositeOp() override;

    /// For itself: the union of the rectangles around what each source answers for itself under the identity,
    /// under the transform. A source's own transform is not part of that answer, so one that is only moved
    /// counts where it would lie unmoved. A source without an answer counts as the zero rectangle,
    /// and one that throws does not count: the next one is asked.
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override;
    using IMGImage::boundsForImage;

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
};

} // namespace Imaging
