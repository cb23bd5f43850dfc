#pragma once

#include "Show/Show.h"
#include "Show/ShowPictures.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Imaging::Tool {

class FrameBuffer;

/// The frames of a film, or of a part of one, as nodes. What a frame shows depends on nothing but the plan
/// and the frame's number.
class FilmFrames {
public:
    /// `count` frames from number `first` on, which the schedule has. Both outlive this object.
    FilmFrames(const Show& show, const Schedule& schedule, std::uint64_t first, std::uint64_t count);

    /// The pictures that these frames show, in the order in which they are needed.
    const std::vector<std::size_t>& pictures() const { return m_pictures; }

    /// A frame, and how many times over it follows.
    struct Frame {
        std::uint64_t first = 0;
        std::uint64_t times = 1;
        FilmPictures::Node node; ///< covers {0, 0, width, height}, but not always all of it
    };

    /// Calls `visit` for one frame after another, a picture that stands still only once.
    void forEach(FilmPictures& pictures, const std::function<void(const Frame&)>& visit) const;

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

/// Draws a frame, all of which becomes opaque. It is drawn on black, since some transitions add their
/// pictures to what is there; the show's background is part of the pictures.
void drawFrame(Imaging::IMGImage& node, FrameBuffer& frame);

/// The same into the calling thread's current context, from (0, 0), a point a pixel.
void drawFrame(Imaging::IMGImage& node, PixelSize size);

} // namespace Imaging::Tool
