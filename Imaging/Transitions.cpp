#include "Imaging/Transitions.h"

#include "Imaging/Geometry.h"
#include "Imaging/GraphicsContext.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/TransitionParts/TransitionParts.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <utility>

namespace Imaging {

namespace {

/// Runs one step of a draw; what it throws ends that step alone.
template<class Step>
void guarded(const Step& step) {
    try {
        step();
    } catch (...) { // whatever it was, the draw goes on
    }
}

/// Draws sources over one another with an operation. `next` makes the fraction of a source of the one before
/// it; it is not asked after a source that threw.
template<class Next>
void drawInTurn(const IMGImage& node, const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                int operation, float fraction, IMGDrawingTarget* imageContext, const Next& next) {
    for (const std::shared_ptr<IMGImage>& source : node.sources()) {
        guarded([&] {
            const auto record = TransformAndClipRect::transformAndClipRectWithTransform(source->transform());
            source->drawImage(image, list.appending(record), operation, fraction, imageContext);
            fraction = next(fraction);
        });
    }
}

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
                                        const TransformAndClipList& list, int, float fraction,
                                        IMGDrawingTarget* imageContext) {
    drawInTurn(*this, image, list, Platform::NSCompositePlusLighter, fraction * (1 - m_weight), imageContext,
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
                                             std::int32_t inOut, float weight) {
    TransitionPart from = fittedPart(std::move(fromImage), frameRect(imageSize));
    TransitionPart to = fittedPart(std::move(toImage), frameRect(imageSize));
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

IMGBounds IMGSpinTransitionOp::imageBounds() const {
    return IMGBounds::boundsWithRect(frameRect(size()), NSAffineTransform());
}

std::optional<IMGBounds> IMGSpinTransitionOp::boundsForImage(const IMGImage& image,
                                                             const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    return IMGBounds::boundsWithRect(frameRect(size()), transform);
}

void IMGSpinTransitionOp::drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                                    int, float fraction, IMGDrawingTarget* imageContext) {
    drawInTurn(*this, image, list, Platform::NSCompositeSourceOver, fraction, imageContext,
               [layer = fraction * m_weight](float) { return layer; });
}

std::shared_ptr<IMGImage> IMGSpinTransitionOp::copy() const {
    const auto copied = std::make_shared<IMGSpinTransitionOp>(sources());
    copied->setWeight(m_weight);
    copied->setImageSize(m_image_size);
    return copied;
}

std::string IMGSpinTransitionOp::archiveClassName() const { return "IMGSpinTransitionOp"; }

// IMGCubeTransitionOp

std::shared_ptr<IMGCubeTransitionOp>
IMGCubeTransitionOp::transitionWithFromImage(std::shared_ptr<IMGImage> fromImage,
                                             std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                             std::int32_t direction, float weight) {
    return std::make_shared<IMGCubeTransitionOp>(std::move(fromImage), std::move(toImage), imageSize,
                                                 direction, weight);
}

IMGCubeTransitionOp::IMGCubeTransitionOp(std::shared_ptr<IMGImage> fromImage,
                                         std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                         std::int32_t direction, float weight)
    : IMGImage(Sources{std::move(fromImage), std::move(toImage)}),
      m_weight(weight),
      m_direction(direction),
      m_image_size(imageSize) {}

IMGCubeTransitionOp::~IMGCubeTransitionOp() = default;

IMGBounds IMGCubeTransitionOp::imageBounds() const {
    return IMGBounds::boundsWithRect(frameRect(size()), NSAffineTransform());
}

std::optional<IMGBounds> IMGCubeTransitionOp::boundsForImage(const IMGImage& image,
                                                             const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    return IMGBounds::boundsWithRect(frameRect(size()), transform);
}

void IMGCubeTransitionOp::drawImage(const std::shared_ptr<CCImage>&, const TransformAndClipList& list, int,
                                    float fraction, IMGDrawingTarget* imageContext) {
    guarded([&] {
        GraphicsContext* const target = imageContext != nullptr ? imageContext->graphicsContext() : nullptr;
        if (target == nullptr) return;
        target->drawCubeTransition(sourceAtIndex(0), sourceAtIndex(1), frameRect(size()), list, m_direction,
                                   m_weight, fraction);
    });
}

std::shared_ptr<IMGImage> IMGCubeTransitionOp::copy() const {
    const auto copied = std::make_shared<IMGCubeTransitionOp>(sources());
    copied->m_weight = m_weight;
    copied->m_direction = m_direction;
    copied->m_image_size = m_image_size;
    return copied;
}

std::string IMGCubeTransitionOp::archiveClassName() const { return "IMGCubeTransitionOp"; }

} // namespace Imaging
