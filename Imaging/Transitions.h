#pragma once

#include "Imaging/CropAndScale.h"
#include "Imaging/Image.h"
#include "Imaging/SizedNode.h"
#include "Imaging/TransitionDirection.h"

#include <memory>
#include <string>

/// What is shown between two pictures. Every transition class has a function `transitionWithFromImage` that
/// makes a node for one weight: at weight 0 the "from" picture is shown and at weight 1 the "to" picture.
/// Nothing moves by itself: an animation asks for a new node for every frame. A weight outside 0 to 1 is
/// taken as it is, as are infinities and values that are not numbers.
///
/// `imageSize` is the frame that a transition fills, from (0, 0), y upward. Pictures lie anywhere; most
/// transitions fit them into the frame by their bounds (`imageBoundsRect`), which are read when the node is
/// made. All of it is computed in 32-bit floats. Every `transitionWithFromImage` throws an NSException
/// (NSInvalidArgumentException) when an image is null.
///
/// Three transitions draw by themselves and are here; the others build a graph of other nodes (see
/// DirectionalTransitions.h and ApertureTransitions.h). The three render no picture of their own, so that
/// they and the colour fade, which is a dissolve, are drawn by walking the graph (`drawWithTransform`, or
/// `drawInRect` with `retained` false). A copy of one of the three is equal to it. They archive their sources
/// alone: what comes back from an archive has a weight, size and direction of 0.
///
/// Example:
/// @code
/// const auto from = IMGCropAndScale::cropWithSourceImage(
///     std::make_shared<IMGImage>(), NSMakeRect(0, 0, 4, 3), NSMakeSize(640, 480), SCALE_TO_FILL, true);
/// const auto halfWay =
///     IMGDissolveTransitionOp::transitionWithFromImage(from, from->copy(), NSMakeSize(640, 480), 0.5F);
/// @endcode
namespace Imaging {

/// Both pictures added up, each in proportion, where they lie. The frame does not matter.
class IMAGING_EXPORT IMGDissolveTransitionOp : public IMGImage {
public:
    static std::shared_ptr<IMGDissolveTransitionOp>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, float weight);

    /// With a weight of 0, as for the inherited constructors.
    using IMGImage::IMGImage;
    IMGDissolveTransitionOp(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, float weight);
    ~IMGDissolveTransitionOp() override;

    /// Draws the sources with the plus-lighter operation, whatever `operation` is: the first one with
    /// fraction · (1 - weight), the second with the rest, and further ones alternate. A source that throws
    /// leaves the next one its share.
    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;

private:
    float m_weight = 0;
};

/// One picture turns once around its centre while it grows and appears, or shrinks and vanishes, over the
/// other. The node itself only lays its sources over one another; the graph that the function makes turns
/// them. Its bounds are the frame, whatever the sources cover, as the cube's are.
class IMAGING_EXPORT IMGSpinTransitionOp : public SizedNode {
public:
    /// In: "to" with scale and fraction `weight`. Out: "from" with scale
    /// and fraction 1 - weight. The angle is weight · 360 degrees counter-clockwise. For other numbers
    /// nothing turns, and "from" lies over "to" with the fraction `weight`. Both pictures are fitted into the
    /// frame.
    static std::shared_ptr<IMGCropAndScale>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, EnumOrNumber<IMGTransitionInOut> inOut, float weight);

    using SizedNode::SizedNode;
    ~IMGSpinTransitionOp() override;

    /// What the fraction of every source but the first is multiplied by; 0 at first. Neither setter sends
    /// `changed`.
    void setWeight(float weight) { m_weight = weight; }

    /// The size of the frame; zero at first.
    void setImageSize(NSSize size) { setSize(size); }

    /// Draws the sources with the source-over operation, whatever `operation` is: the first one with the
    /// fraction, every other one with fraction · weight. A source that throws leaves the next one its
    /// fraction.
    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;

private:
    float m_weight = 0;
};

/// The pictures on two faces of a cube that turns by a quarter turn. A drawing target renders it (see
/// `GraphicsContext::drawCubeTransition`); nothing is drawn without one.
class IMAGING_EXPORT IMGCubeTransitionOp : public SizedNode {
public:
    /// The target receives any direction as it is, whether it has a name or not.
    static std::shared_ptr<IMGCubeTransitionOp>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, EnumOrNumber<IMGTransitionDirection> direction, float weight);

    /// With a weight, direction and size of 0, as for the inherited constructors.
    using SizedNode::SizedNode;
    IMGCubeTransitionOp(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                        NSSize imageSize, EnumOrNumber<IMGTransitionDirection> direction, float weight);
    ~IMGCubeTransitionOp() override;

    /// Asks the drawing target, with the list as it is and the fraction as alpha; `operation` does not
    /// matter. Whatever is thrown is swallowed, and a node with fewer than two sources draws nothing.
    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;

private:
    float m_weight = 0;
    IMGTransitionDirection m_direction{};
};

} // namespace Imaging
