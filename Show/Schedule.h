#pragma once

#include "Platform/Foundation/Export.h"
#include "Show/Easing.h"
#include "Show/Show.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Imaging {

/// What a frame shows.
struct FrameContent {
    std::size_t picture = 0;
    bool moves = false;   ///< in the transition from `picture` to the next one (of the last: to the first)
    std::size_t step = 0; ///< the frame's number within its transition
    float weight = 0;     ///< of the transition, eased; above 0 and below 1
};

/// Which frame shows what. A show of one picture has no transition, also in a loop. A picture that stands
/// still for no frame is only seen in the transitions around it, never whole.
///
/// Times are counted in whole nanoseconds and without rounding in between; each part begins with the frame
/// that begins nearest to its time, of two the later one. A schedule does not change and keeps nothing of
/// the show, so that any thread may ask it.
///
/// Example:
/// @code
/// Show show;
/// show.pictures.resize(2);
/// const Schedule schedule(show);
/// const FrameContent content = schedule.at(80); // in the transition, which begins after 75 frames
/// static_cast<void>(content);
/// @endcode
class IMAGING_EXPORT Schedule {
public:
    /// A run of frames that all show one picture standing still, or one transition.
    struct Part {
        std::size_t picture = 0;
        bool moves = false;
        std::uint64_t first = 0; ///< the frame's number, counted from 0
        std::uint64_t count = 0;
    };

    /// How many frames a show may have.
    static constexpr std::uint64_t maximumFrames = 100'000'000;

    /// Throws an NSException: NSInvalidArgumentException when the show has no frame, NSRangeException when it
    /// has more than `maximumFrames`. The show's rate is above 0 and its times are from 0 to a day.
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

} // namespace Imaging
