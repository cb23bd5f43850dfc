#pragma once

// Internal: what the transitions build their graphs from. Not installed.

#include "Imaging/CropAndScale.h"
#include "Imaging/Image.h"
#include "Imaging/TransitionDirection.h"

#include <memory>
#include <optional>

namespace Imaging {

/// An area of a picture, in the picture's own units, and the rectangle of the frame that shows it.
struct TransitionPart {
    std::shared_ptr<IMGImage> image;
    NSRect area;
    NSRect place;
};

/// A side of a rectangle, y upward.
enum class Edge { Left, Right, Bottom, Top };

/// How much of a picture is in the frame, and how much is not: a weight and 1 - weight, each as it was
/// computed, since in floats the one is not always what the other leaves of 1.
struct Shares {
    float shown;
    float hidden;

    Shares swapped() const { return {hidden, shown}; }
};

/// Throws an NSException (NSInvalidArgumentException) when the picture is null.
void needImage(const std::shared_ptr<IMGImage>& image);

/// The picture's whole bounds in the whole rectangle. Throws like `needImage`.
TransitionPart fillingPart(std::shared_ptr<IMGImage> image, NSRect panel);

/// The picture's whole bounds in the largest rectangle of their shape in the middle of `panel`. Throws like
/// `needImage`.
TransitionPart fittedPart(std::shared_ptr<IMGImage> image, NSRect panel);

/// The edge at which a wipe begins to uncover the "to" picture and a slide changer lets it in; push and slide
/// do so at the opposite one. nullopt for a number without a name.
std::optional<Edge> enteringEdge(IMGTransitionDirection direction);
Edge opposite(Edge edge);
bool isHorizontal(Edge edge);

/// The shown share of a rectangle, at its edge.
NSRect shareAtEdge(NSRect rect, Edge edge, Shares shares);

/// The rectangle with its middle where it was and both extents multiplied.
NSRect scaledAboutCentre(NSRect rect, float scale);

/// The part as a node: a crop, moved to its place.
std::shared_ptr<IMGImage> placed(TransitionPart part, IMGImageScaling scaling, bool doClip);

/// A node that fills the frame, or layers from the lowest up, as the frame's picture.
std::shared_ptr<IMGCropAndScale> framed(std::shared_ptr<IMGImage> node, NSSize size);
std::shared_ptr<IMGCropAndScale> framedLayers(IMGImage::Sources layers, NSSize size);

} // namespace Imaging
