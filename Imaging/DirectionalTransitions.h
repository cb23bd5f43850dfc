#pragma once

#include "Imaging/CropAndScale.h"
#include "Imaging/Image.h"
#include "Imaging/TransitionDirection.h"
#include "Platform/Graphics/Color.h"

#include <memory>

/// Transitions that move or uncover pictures along an axis. There are no objects of these classes: each
/// function makes a graph of other nodes for one weight (see Transitions.h for what all of them share).
/// A direction without a name stands for no movement.
///
/// Where two parts meet between two pixels, each covers that column or row of pixels in part, as
/// antialiasing has it, and what lies below shows through a little.
///
/// Example:
/// @code
/// const auto from = IMGCropAndScale::cropWithSourceImage(
///     std::make_shared<IMGImage>(), NSMakeRect(0, 0, 4, 3), NSMakeSize(640, 480), SCALE_TO_FILL, true);
/// const auto halfWay = IMGPushTransitionOp::transitionWithFromImage(
///     from, from->copy(), NSMakeSize(640, 480), IMGTransitionDirectionLeft, 0.5F);
/// @endcode
namespace Imaging {

using Platform::NSColor;

/// Both pictures move together; "to" pushes "from" out of the frame. Each is meant to fill the frame: what is
/// left of "from" and what has come of "to" are fitted into their share of it, in proportion, so that
/// pictures of another shape than the frame's do not touch. Without movement "to" covers "from".
class IMAGING_EXPORT IMGPushTransitionOp {
public:
    IMGPushTransitionOp() = delete;

    /// Left (1): "to" enters at the right edge, right (2): at the left, up (3): at the bottom, down (4): at
    /// the top.
    static std::shared_ptr<IMGCropAndScale>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, EnumOrNumber<IMGTransitionDirection> direction, float weight);
};

/// One picture slides over the other one, which stays where it is fitted into the frame. The moving picture
/// is cut at the edge of its own fitted place that it comes in by. Moving left or down, its position counts
/// from the frame's left or lower edge instead of from its fitted place, where a picture of another shape
/// than the frame's therefore does not end; documents depend on it.
class IMAGING_EXPORT IMGSlideTransitionOp {
public:
    IMGSlideTransitionOp() = delete;

    /// In (1): "to" comes in over "from", in the direction. Out (2): "from" leaves over "to", in the
    /// direction. Other numbers than 2 are taken as in.
    static std::shared_ptr<IMGCropAndScale>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, EnumOrNumber<IMGTransitionDirection> direction,
                            EnumOrNumber<IMGTransitionInOut> inOut, float weight);
};

/// Nothing moves but a boundary that uncovers "to" and takes "from" away, each at its fitted place. Without
/// movement both are shown whole, "to" over "from".
class IMAGING_EXPORT IMGWipeTransitionOp {
public:
    IMGWipeTransitionOp() = delete;

    /// 1: from the left edge to the right, 2: from the right edge, 3: from the top edge, 4: from the bottom
    /// edge.
    static std::shared_ptr<IMGCropAndScale>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, EnumOrNumber<IMGTransitionDirection> direction, float weight);
};

/// "from", a panel of a colour and "to", each as large as the frame, pass by as one strip: at weight 0.5 the
/// frame shows the colour alone. Without movement they lie over one another in that order.
class IMAGING_EXPORT IMGSlideChangerTransitionOp {
public:
    IMGSlideChangerTransitionOp() = delete;

    /// 1: the strip moves right, so that "to" arrives from the left; 2: left, 3: down, 4: up. The colour's
    /// own alpha does not count.
    static std::shared_ptr<IMGCropAndScale>
    transitionWithFromImage(std::shared_ptr<IMGImage> fromImage, std::shared_ptr<IMGImage> toImage,
                            NSSize imageSize, EnumOrNumber<IMGTransitionDirection> direction,
                            const NSColor& color, float weight);
};

} // namespace Imaging
