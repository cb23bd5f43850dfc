#pragma once

#include "Imaging/Image.h"
#include "Platform/Graphics/Color.h"
#include "Show/Easing.h"
#include "Show/FramedNode.h"
#include "Show/Placement.h"
#include "Show/Transition.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Pictures that are shown one after another, as they are planned:
///
///   Show ─→ Schedule ─→ frame number → what it shows ─→ ShowFrames, ShowPictures → a node for each frame
///
/// A picture stands still for its hold time; then the transition to the next one takes its own time. Times
/// are in seconds and are rounded to whole frames where each part begins, so that nothing adds up. All of
/// these are plain values, which may be copied to other threads.
///
/// Example:
/// @code
/// Show show;
/// show.size = {640, 360};
/// for (const char* name : {"harbour.jpg", "market.jpg"}) show.pictures.push_back({.name = name});
/// show.pictures.front().next = {.transition = makeTransition("push", {{"direction", "up"}}), .duration =
/// 0.5};
/// @endcode
namespace Imaging {

/// How one picture goes over into the next.
struct ShowTransition {
    Transition transition = makeTransition("dissolve");
    double duration = 1; ///< seconds; 0 is a cut
    Easing easing = Easing::InOut;
};

struct ShowPicture {
    std::string name; ///< a path or URL, and what it is called in messages

    /// Gives the picture; where there is none it is read from `name`. Called on whatever thread makes the
    /// picture ready, anew each time that it is needed, and may throw anything.
    std::function<std::shared_ptr<IMGImage>()> node = {};

    std::vector<Step> steps = {}; ///< what is done to it first
    double hold = 3;              ///< seconds that it stands still
    Fit fit = Fit::Contain;
    ShowTransition next = {}; ///< to the picture after it; of the last one used in a loop alone
};

struct Show {
    PixelSize size{1920, 1080};      ///< of a frame
    std::int64_t rateNumerator = 25; ///< frames in `rateDenominator` seconds
    std::int64_t rateDenominator = 1;
    Platform::NSColor background = Platform::NSColor::blackColor();
    bool loop = false;     ///< ends with the transition to the first picture, so that it can go on from there
    bool asStored = false; ///< pictures are drawn as stored, not the way up that they declare
    std::vector<ShowPicture> pictures; ///< at least one
};

} // namespace Imaging
