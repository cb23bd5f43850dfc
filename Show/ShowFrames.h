#pragma once

#include "Platform/Foundation/Export.h"
#include "Show/Schedule.h"
#include "Show/Show.h"
#include "Show/ShowPictures.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace Imaging {

/// The frames of a show, or of a part of one, as nodes. What a frame shows depends on nothing but the plan
/// and the frame's number.
///
/// Example:
/// @code
/// Show show;
/// show.pictures.resize(2);
/// const Schedule schedule(show);
/// const ShowFrames frames(show, schedule, 0, schedule.frameCount());
/// ShowPictures pictures(frames.pictures(), [](std::size_t) { // most often a framedPicture
///     return imagingImage(std::make_shared<NSImage>(NSMakeSize(1920, 1080)));
/// });
/// std::uint64_t count = 0;
/// frames.forEach(pictures, [&](const ShowFrames::Frame& frame) { count += frame.times; });
/// @endcode
class IMAGING_EXPORT ShowFrames {
public:
    /// `count` frames from number `first` on, which the schedule has. Both outlive this object.
    ShowFrames(const Show& show, const Schedule& schedule, std::uint64_t first, std::uint64_t count);

    /// The pictures that these frames show, in the order in which they are needed.
    const std::vector<std::size_t>& pictures() const { return m_pictures; }

    /// A frame, and how many times over it follows.
    struct Frame {
        std::uint64_t first = 0;
        std::uint64_t times = 1;
        ShowPictures::Node node; ///< covers {0, 0, width, height}, but not always all of it
    };

    /// Calls `visit` for one frame after another, a picture that stands still only once. `pictures` goes
    /// through `pictures()` from its beginning. Throws what it and `visit` throw. Call it on one thread at a
    /// time.
    void forEach(ShowPictures& pictures, const std::function<void(const Frame&)>& visit) const;

private:
    struct Part {
        Schedule::Part part; ///< cut to the frames that are asked for
        std::size_t place;   ///< of its picture in m_pictures
    };

    const Show& m_show;
    const Schedule& m_schedule;
    std::vector<Part> m_parts;
    std::vector<std::size_t> m_pictures;
};

/// Draws a frame into the calling thread's current context, from (0, 0), a point a pixel; all of it becomes
/// opaque. It is drawn on black, since some transitions add their pictures to what is there; the show's
/// background is part of the pictures.
IMAGING_EXPORT void drawFrame(IMGImage& node, PixelSize size);

} // namespace Imaging
