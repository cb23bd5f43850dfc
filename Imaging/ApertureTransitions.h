#pragma once

#include "Imaging/CropAndScale.h"
#include "Imaging/Image.h"
#include "Imaging/Transitions.h"
#include "Platform/Graphics/Color.h"

#include <memory>

/// Transitions that work from the middle of a picture or on the whole of it. There are no objects of these
/// classes: each function makes a graph of other nodes for one weight (see Transitions.h for what all of them
/// share).
///
/// Example:
/// @code
/// const auto from = IMGCropAndScale::cropWithSourceImage(
///     std::make_shared<IMGImage>(), NSMakeRect(0, 0, 4, 3), NSMakeSize(640, 480), SCALE_TO_FILL, true);
/// const auto opening = IMGIrisTransitionOp::transitionWithFromImage(
///     from, from->copy(), NSMakeSize(640, 480), IMGTransitionIn, 0.25F);
/// @endcode
namespace Imaging {

using Platform::NSColor;

/// One picture grows from a point in the middle of its fitted place, or shrinks to it, over the other one.
class IMAGING_EXPORT IMGZoomTransitionOp {
public:
    IMGZoomTransitionOp() = delete;

    /// In: "to" is scaled by `weight`. Out: "from" by 1 - weight. For other
    /// numbers "from" lies over "to", both whole.
    static std::shared_ptr<IMGCropAndScale>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, EnumOrNumber<IMGTransitionInOut> inOut, float weight);
};

/// A rectangular aperture in the middle of one picture opens or closes over the other one. Both stay where
/// they are fitted into the frame.
class IMAGING_EXPORT IMGIrisTransitionOp {
public:
    IMGIrisTransitionOp() = delete;

    /// In: `weight` of the width and height of "to" are seen. Out: 1 -
    /// weight of those of "from". For other numbers "from" lies over "to", both whole.
    static std::shared_ptr<IMGCropAndScale>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, EnumOrNumber<IMGTransitionInOut> inOut, float weight);
};

/// "from" dissolves into a plain colour, and the colour into "to". The colour covers the bounds of the
/// picture that it fades with, not the frame; its own alpha does not count. Over "from" it is painted, not
/// added as "to" is to it: at a share s of the colour 1 - s + s · s of the whole is covered there, and what
/// lies below shows through the rest.
class IMAGING_EXPORT IMGColorFadeTransitionOp {
public:
    IMGColorFadeTransitionOp() = delete;

    /// `balance` places the moment of pure colour: -1 at the start, 0 in the middle, 1 at the end. At that
    /// weight, (balance + 1) / 2, the second phase begins; where the pure colour comes at the very end,
    /// weight 1 shows "to".
    static std::shared_ptr<IMGDissolveTransitionOp>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, const NSColor& color, float balance, float weight);
};

} // namespace Imaging
