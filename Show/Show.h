#pragma once

#include "Platform/Graphics/Color.h"
#include "Show/Easing.h"
#include "Show/TransitionKinds.h"
#include "Tools/Command/Values.h"
#include "Tools/Pictures/Operations.h"

#include <cstdint>
#include <string>
#include <vector>

/// A film as it is planned:
///
///   arguments ──┐
///   show file ──┴→ Show ─→ Schedule ─→ frame number → what it shows
///
/// A picture stands still for its hold time; then the transition to the next one takes its own time. Times
/// are in seconds and are rounded to whole frames where each part begins, so that nothing adds up.
namespace Imaging::Tool {

/// How one picture goes over into the next.
struct ShowTransition {
    Transition transition;
    double duration = 1; ///< seconds; 0 is a cut
    Easing easing = Easing::InOut;
};

struct ShowPicture {
    std::string name;        ///< a file or URL
    std::vector<Step> steps; ///< what is done to it first
    double hold = 3;         ///< seconds that it stands still
    Fit fit = Fit::Contain;
    ShowTransition next; ///< to the picture after it; of the last one used in a loop alone
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

/// What a frame shows.
struct FrameContent {
    std::size_t picture = 0;
    bool moves = false;   ///< in the transition from `picture` to the next one (of the last: to the first)
    std::size_t step = 0; ///< the frame's number within its transition
    float weight = 0;     ///< of the transition, eased; above 0 and below 1
};

/// Which frame shows what. A film of one picture has no transition, also in a loop. A picture that stands
/// still for no frame is only seen in the transitions around it, never whole.
class Schedule {
public:
    /// A run of frames that all show one picture standing still, or one transition.
    struct Part {
        std::size_t picture = 0;
        bool moves = false;
        std::uint64_t first = 0; ///< the frame's number, counted from 0
        std::uint64_t count = 0;
    };

    /// Throws a UsageError when the film has no frame or more than 100 million.
    explicit Schedule(const Show& show);

    std::uint64_t frameCount() const { return m_frame_count; }

    /// The parts that have frames, in order.
    const std::vector<Part>& parts() const { return m_parts; }

    /// In a transition of n frames the weight of frame k (0 to n - 1) is eased((k + 1) / (n + 1)): the still
    /// frames around it are its ends.
    /// `frame` is below `frameCount`.
    FrameContent at(std::uint64_t frame) const;

private:
    std::vector<Part> m_parts;
    std::vector<Easing> m_easings; ///< of the pictures' transitions
    std::uint64_t m_frame_count = 0;
};

} // namespace Imaging::Tool
