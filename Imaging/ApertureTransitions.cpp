// Zoom and iris scale a picture's rectangles about their middle by the weight; the colour fade is a dissolve
// with a layer of colour, first from one picture and then to the other.

#include "Imaging/ApertureTransitions.h"

#include "Imaging/Generators.h"
#include "Imaging/Geometry.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/TransitionParts/TransitionParts.h"

#include <utility>

namespace Imaging {

namespace {

/// Both pictures at their places; `adjust` gives the moving one its present area and place by its share.
template<class Adjust>
std::shared_ptr<IMGCropAndScale>
overOneAnother(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage, NSSize imageSize,
               EnumOrNumber<IMGTransitionInOut> inOut, float weight, const Adjust& adjust) {
    TransitionPart from = fittedPart(std::move(fromImage), RectFromSize(imageSize));
    TransitionPart to = fittedPart(std::move(toImage), RectFromSize(imageSize));
    if (inOut == IMGTransitionIn) adjust(to, weight);
    if (inOut == IMGTransitionOut) adjust(from, 1 - weight);
    std::shared_ptr<IMGImage> lower = placed(std::move(from), SCALE_TO_FILL, true);
    std::shared_ptr<IMGImage> upper = placed(std::move(to), SCALE_TO_FILL, true);
    if (inOut != IMGTransitionIn) std::swap(lower, upper);
    return framedLayers({std::move(lower), std::move(upper)}, imageSize);
}

std::shared_ptr<IMGImage> colorLayer(const IMGImage& image, const NSColor& color) {
    const NSRect bounds = image.imageBoundsRect();
    return IMGTranslationOp::translationBy(bounds.origin,
                                           IMGConstantImageGenerator::generatorWithSize(bounds.size, color));
}

} // namespace

std::shared_ptr<IMGCropAndScale>
IMGZoomTransitionOp::transitionWithFromImage(std::shared_ptr<IMGImage> fromImage,
                                             std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                             EnumOrNumber<IMGTransitionInOut> inOut, float weight) {
    return overOneAnother(
        std::move(fromImage), std::move(toImage), imageSize, inOut, weight,
        [](TransitionPart& part, float share) { part.place = scaledAboutCentre(part.place, share); });
}

std::shared_ptr<IMGCropAndScale>
IMGIrisTransitionOp::transitionWithFromImage(std::shared_ptr<IMGImage> fromImage,
                                             std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                             EnumOrNumber<IMGTransitionInOut> inOut, float weight) {
    return overOneAnother(std::move(fromImage), std::move(toImage), imageSize, inOut, weight,
                          [](TransitionPart& part, float share) {
                              part.area = scaledAboutCentre(part.area, share);
                              part.place = scaledAboutCentre(part.place, share);
                          });
}

std::shared_ptr<IMGDissolveTransitionOp>
IMGColorFadeTransitionOp::transitionWithFromImage(std::shared_ptr<IMGImage> fromImage,
                                                  std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                                  const NSColor& color, float balance, float weight) {
    needImage(fromImage);
    needImage(toImage);
    const auto split = static_cast<float>((static_cast<double>(balance) + 1) * 0.5);
    if (split > weight) {
        std::shared_ptr<IMGImage> layer = colorLayer(*fromImage, color);
        return IMGDissolveTransitionOp::transitionWithFromImage(std::move(fromImage), std::move(layer),
                                                                imageSize, weight / split);
    }
    const float done = weight - split;
    const float whole = 1 - split;
    // A second phase without length is over as soon as it begins.
    const float secondWeight = done == 0 && whole == 0 ? 1 : done / whole;
    std::shared_ptr<IMGImage> layer = colorLayer(*toImage, color);
    return IMGDissolveTransitionOp::transitionWithFromImage(std::move(layer), std::move(toImage), imageSize,
                                                            secondWeight);
}

} // namespace Imaging
