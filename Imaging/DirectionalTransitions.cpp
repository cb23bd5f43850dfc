// A weight becomes shares of rectangles at an edge; crops and translations then show each picture's share at
// its place, on a canvas of the frame's size.

#include "Imaging/DirectionalTransitions.h"

#include "Imaging/Generators.h"
#include "Imaging/Geometry.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/TransitionParts/TransitionParts.h"

#include <optional>
#include <utility>

namespace Imaging {

namespace {

/// Shows a share of a part's area, at one edge, in the same share of its place, at another.
void cut(TransitionPart& part, Edge areaEdge, Edge placeEdge, Shares shares) {
    part.area = shareAtEdge(part.area, areaEdge, shares);
    part.place = shareAtEdge(part.place, placeEdge, shares);
}

IMGTransitionDirection reversed(IMGTransitionDirection direction) {
    switch (direction) {
    case IMGTransitionDirectionLeft:
        return IMGTransitionDirectionRight;
    case IMGTransitionDirectionRight:
        return IMGTransitionDirectionLeft;
    case IMGTransitionDirectionUp:
        return IMGTransitionDirectionDown;
    case IMGTransitionDirectionDown:
        return IMGTransitionDirectionUp;
    default:
        return direction;
    }
}

/// Where the frame's panel number 0, 1 or 2 of a strip lies whose last one comes in by the edge.
NSRect stripPanel(NSRect frame, Edge edge, float number, float weight) {
    const bool forward = edge == Edge::Right || edge == Edge::Top;
    const float extent = isHorizontal(edge) ? frame.size.width : frame.size.height;
    const float offset = -2.0F * extent * weight + number * extent;
    const float shift = forward ? offset : -offset;
    return isHorizontal(edge) ? Platform::NSOffsetRect(frame, shift, 0)
                              : Platform::NSOffsetRect(frame, 0, shift);
}

} // namespace

std::shared_ptr<IMGCropAndScale>
IMGPushTransitionOp::transitionWithFromImage(std::shared_ptr<IMGImage> fromImage,
                                             std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                             EnumOrNumber<IMGTransitionDirection> direction, float weight) {
    TransitionPart from = fillingPart(std::move(fromImage), RectFromSize(imageSize));
    TransitionPart to = fillingPart(std::move(toImage), RectFromSize(imageSize));
    if (const std::optional<Edge> exit = enteringEdge(direction)) {
        const Edge entry = opposite(*exit);
        const Shares shares{weight, 1 - weight};
        cut(from, entry, *exit, shares.swapped());
        cut(to, *exit, entry, shares);
    }
    return framedLayers({placed(std::move(from), SCALE_PROPORTIONALLY, true),
                         placed(std::move(to), SCALE_PROPORTIONALLY, true)},
                        imageSize);
}

std::shared_ptr<IMGCropAndScale> IMGSlideTransitionOp::transitionWithFromImage(
    std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage, NSSize imageSize,
    EnumOrNumber<IMGTransitionDirection> direction, EnumOrNumber<IMGTransitionInOut> inOut, float weight) {
    TransitionPart still = fittedPart(std::move(fromImage), RectFromSize(imageSize));
    TransitionPart moving = fittedPart(std::move(toImage), RectFromSize(imageSize));
    // Leaving is coming in run backwards.
    if (inOut == IMGTransitionOut) {
        std::swap(still, moving);
        direction = reversed(direction);
        weight = 1 - weight;
    }
    if (const std::optional<Edge> farEdge = enteringEdge(direction)) {
        const Edge entry = opposite(*farEdge);
        // Only the opposite directions count from the fitted place.
        if (entry == Edge::Right) moving.place.origin.x = 0;
        if (entry == Edge::Top) moving.place.origin.y = 0;
        cut(moving, *farEdge, entry, {weight, 1 - weight});
    }
    return framedLayers(
        {placed(std::move(still), SCALE_TO_FILL, true), placed(std::move(moving), SCALE_TO_FILL, true)},
        imageSize);
}

std::shared_ptr<IMGCropAndScale>
IMGWipeTransitionOp::transitionWithFromImage(std::shared_ptr<IMGImage> fromImage,
                                             std::shared_ptr<IMGImage> toImage, NSSize imageSize,
                                             EnumOrNumber<IMGTransitionDirection> direction, float weight) {
    TransitionPart from = fittedPart(std::move(fromImage), RectFromSize(imageSize));
    TransitionPart to = fittedPart(std::move(toImage), RectFromSize(imageSize));
    if (const std::optional<Edge> entry = enteringEdge(direction)) {
        const Shares shares{weight, 1 - weight};
        cut(from, opposite(*entry), opposite(*entry), shares.swapped());
        cut(to, *entry, *entry, shares);
    }
    return framedLayers(
        {placed(std::move(from), SCALE_TO_FILL, true), placed(std::move(to), SCALE_TO_FILL, true)},
        imageSize);
}

std::shared_ptr<IMGCropAndScale> IMGSlideChangerTransitionOp::transitionWithFromImage(
    std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage, NSSize imageSize,
    EnumOrNumber<IMGTransitionDirection> direction, const NSColor& color, float weight) {
    const NSRect frame = RectFromSize(imageSize);
    const std::optional<Edge> entry = enteringEdge(direction);
    const auto panel = [&](float number) {
        return entry.has_value() ? stripPanel(frame, *entry, number, weight) : frame;
    };
    const auto picture = [&](std::shared_ptr<IMGImage> image, float number) {
        return placed(fittedPart(std::move(image), panel(number)), SCALE_PROPORTIONALLY, false);
    };
    const NSRect middle = panel(1);
    return framedLayers({picture(std::move(fromImage), 0),
                         IMGTranslationOp::translationBy(
                             middle.origin, IMGConstantImageGenerator::generatorWithSize(middle.size, color)),
                         picture(std::move(toImage), 2)},
                        imageSize);
}

} // namespace Imaging
