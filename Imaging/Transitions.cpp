// The three transitions that draw by themselves. Two draw their sources like any node with fractions of their
// own; the cube hands both to the drawing target.

#include "Imaging/Transitions.h"

#include "Imaging/Drawing/Guarded.h"
#include "Imaging/Geometry.h"
#include "Imaging/GraphicsContext.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/TransitionParts/TransitionParts.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <utility>

namespace Imaging {

namespace {

/// A picture that turns and grows around the middle of its bounds.
std::shared_ptr<IMGImage> turned(std::shared_ptr<IMGImage> image, NSRect bounds, float scale, float degrees) {
    const NSPoint centre = RectMidpoint(bounds);
    NSAffineTransform transform;
    transform.translateXBy(centre.x, centre.y);
    transform.scaleBy(scale);
    transform.rotateByDegrees(degrees);
    transform.translateXBy(-centre.x, -centre.y);
    return IMGAffineTransformOp::transformBy(transform, std::move(image));
}

} // namespace

// IMGDissolveTransitionOp

std::shared_ptr<IMGDissolveTransitionOp> IMGDissolveTransitionOp::transitionWithFromImage(
    std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage, NSSize imageSize, float weight) {
    return std::make_shared<IMGDissolveTransitionOp>(std::move(fromImage), std::move(toImage), imageSize,
                                                     weight);
}

IMGDissolveTransitionOp::IMGDissolveTransitionOp(std::shared_ptr<IMGImage> fromImage,
                                                 std::shared_ptr<IMGImage> toImage, NSSize, float weight)
    : IMGImage(Sources{std::move(fromImage), std::move(toImage)}), m_weight(weight) {}

IMGDissolveTransitionOp::~IMGDissolveTransitionOp() = default;

void IMGDissolveTransitionOp::drawImage(const std::shared_ptr<CCImage>& image,
                                        const TransformAndClipList& list, CompositingOperation,
                                        float fraction, IMGDrawingTarget* imageContext) {
    drawSources(image, list, Platform::NSCompositePlusLighter, fraction * (1 - m_weight), imageContext,
                [fraction](float last) { return fraction - last; });
}

std::shared_ptr<IMGImage> IMGDissolveTransitionOp::copy() const {
    const auto copied = std::make_shared<IMGDissolveTransitionOp>(sources());
    copied->m_weight = m_weight;
    return copied;
}

std::string IMGDissolveTransitionOp::archiveClassName() const { return "IMGDissolveTransitionOp"; }

// IMGSpinTransitionOp

std::shared_ptr<IMGCropAndScale>
IMGSpinTransitionOp::transitionWithFromImage(std::shared_ptr<IMGImage> fromImage,
                                             std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                             EnumOrNumber<IMGTransitionInOut> inOut, float weight) {
    TransitionPart from = fittedPart(std::move(fromImage), RectFromSize(imageSize));
    TransitionPart to = fittedPart(std::move(toImage), RectFromSize(imageSize));
    const float angle = weight * 360;
    const float layerWeight = inOut == IMGTransitionOut ? 1 - weight : weight;
    if (inOut == IMGTransitionIn) to.image = turned(std::move(to.image), to.area, layerWeight, angle);
    if (inOut == IMGTransitionOut) from.image = turned(std::move(from.image), from.area, layerWeight, angle);

    std::shared_ptr<IMGImage> still = placed(std::move(from), SCALE_TO_FILL, false);
    std::shared_ptr<IMGImage> moving = placed(std::move(to), SCALE_TO_FILL, false);
    if (inOut != IMGTransitionIn) std::swap(still, moving);
    const auto spin = std::make_shared<IMGSpinTransitionOp>(Sources{std::move(still), std::move(moving)});
    spin->setWeight(layerWeight);
    spin->setImageSize(imageSize);
    return framed(spin, imageSize);
}

IMGSpinTransitionOp::~IMGSpinTransitionOp() = default;

void IMGSpinTransitionOp::drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                                    CompositingOperation, float fraction, IMGDrawingTarget* imageContext) {
    drawSources(image, list, Platform::NSCompositeSourceOver, fraction, imageContext,
                [layer = fraction * m_weight](float) { return layer; });
}

std::shared_ptr<IMGImage> IMGSpinTransitionOp::copy() const {
    const auto copied = std::make_shared<IMGSpinTransitionOp>(sources());
    copied->setWeight(m_weight);
    copied->setImageSize(size());
    return copied;
}

std::string IMGSpinTransitionOp::archiveClassName() const { return "IMGSpinTransitionOp"; }

// IMGCubeTransitionOp

std::shared_ptr<IMGCubeTransitionOp>
IMGCubeTransitionOp::transitionWithFromImage(std::shared_ptr<IMGImage> fromImage,
                                             std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                             EnumOrNumber<IMGTransitionDirection> direction, float weight) {
    return std::make_shared<IMGCubeTransitionOp>(std::move(fromImage), std::move(toImage), imageSize,
                                                 direction, weight);
}

IMGCubeTransitionOp::IMGCubeTransitionOp(std::shared_ptr<IMGImage> fromImage,
                                         std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                         EnumOrNumber<IMGTransitionDirection> direction, float weight)
    : SizedNode(imageSize, Sources{std::move(fromImage), std::move(toImage)}),
      m_weight(weight),
      m_direction(direction) {}

IMGCubeTransitionOp::~IMGCubeTransitionOp() = default;

void IMGCubeTransitionOp::drawImage(const std::shared_ptr<CCImage>&, const TransformAndClipList& list,
                                    CompositingOperation, float fraction, IMGDrawingTarget* imageContext) {
    guarded([&] {
        GraphicsContext* const target = imageContext != nullptr ? imageContext->graphicsContext() : nullptr;
        if (target == nullptr) return;
        target->drawCubeTransition(sourceAtIndex(0), sourceAtIndex(1), wholeRect(), list, m_direction,
                                   m_weight, fraction);
    });
}

std::shared_ptr<IMGImage> IMGCubeTransitionOp::copy() const {
    const auto copied = std::make_shared<IMGCubeTransitionOp>(sources());
    copied->m_weight = m_weight;
    copied->m_direction = m_direction;
    copied->setSize(size());
    return copied;
}

std::string IMGCubeTransitionOp::archiveClassName() const { return "IMGCubeTransitionOp"; }

} // namespace Imaging
