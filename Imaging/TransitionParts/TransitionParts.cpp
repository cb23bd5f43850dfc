// The steps from which transitions build their graphs: where a picture lies in the frame, which share of it
// is seen, and the nodes that show it so.

#include "Imaging/TransitionParts/TransitionParts.h"

#include "Imaging/Canvas.h"
#include "Imaging/Geometry.h"
#include "Imaging/TransformOperations.h"
#include "Platform/Foundation/Exception.h"

#include <utility>

namespace Imaging {

void needImage(const std::shared_ptr<IMGImage>& image) {
    if (image != nullptr) return;
    throw Platform::NSException(Platform::NSInvalidArgumentException, "a transition's image cannot be null");
}

TransitionPart fillingPart(std::shared_ptr<IMGImage> image, NSRect panel) {
    needImage(image);
    const NSRect bounds = image->imageBoundsRect();
    return {std::move(image), bounds, panel};
}

TransitionPart fittedPart(std::shared_ptr<IMGImage> image, NSRect panel) {
    TransitionPart part = fillingPart(std::move(image), panel);
    // Bounds without height are infinitely wide for their height; FitRect says what becomes of that.
    part.place = FitRect(panel, part.area.size.width / part.area.size.height);
    return part;
}

// One table for all: a transition that moves the other way asks for the opposite edge.
std::optional<Edge> enteringEdge(IMGTransitionDirection direction) {
    switch (direction) {
    case IMGTransitionDirectionLeft:
        return Edge::Left;
    case IMGTransitionDirectionRight:
        return Edge::Right;
    case IMGTransitionDirectionUp:
        return Edge::Top;
    case IMGTransitionDirectionDown:
        return Edge::Bottom;
    default:
        return std::nullopt;
    }
}

Edge opposite(Edge edge) {
    switch (edge) {
    case Edge::Left:
        return Edge::Right;
    case Edge::Right:
        return Edge::Left;
    case Edge::Bottom:
        return Edge::Top;
    case Edge::Top:
        break;
    }
    return Edge::Bottom;
}

bool isHorizontal(Edge edge) { return edge == Edge::Left || edge == Edge::Right; }

NSRect shareAtEdge(NSRect rect, Edge edge, Shares shares) {
    // The left and lower edges are where a rectangle begins, so a share there only becomes shorter.
    if (edge == Edge::Right) rect.origin.x += shares.hidden * rect.size.width;
    if (edge == Edge::Top) rect.origin.y += shares.hidden * rect.size.height;
    (isHorizontal(edge) ? rect.size.width : rect.size.height) *= shares.shown;
    return rect;
}

NSRect scaledAboutCentre(NSRect rect, float scale) {
    const NSPoint centre = RectMidpoint(rect);
    const NSSize size{scale * rect.size.width, scale * rect.size.height};
    return {{centre.x - 0.5F * size.width, centre.y - 0.5F * size.height}, size};
}

std::shared_ptr<IMGImage> placed(TransitionPart part, IMGImageScaling scaling, bool doClip) {
    return IMGTranslationOp::translationBy(
        part.place.origin, IMGCropAndScale::cropWithSourceImage(std::move(part.image), part.area,
                                                                part.place.size, scaling, doClip));
}

std::shared_ptr<IMGCropAndScale> framed(std::shared_ptr<IMGImage> node, NSSize size) {
    // The node's bounds as they are now: a graph for one weight does not change any more.
    const NSRect bounds = node->imageBoundsRect();
    return IMGCropAndScale::cropWithSourceImage(std::move(node), bounds, size, SCALE_TO_FILL, false);
}

std::shared_ptr<IMGCropAndScale> framedLayers(IMGImage::Sources layers, NSSize size) {
    return framed(std::make_shared<IMGCanvas>(size, std::move(layers)), size);
}

} // namespace Imaging
