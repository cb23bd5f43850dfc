// The schedule is cut to the frames that are wanted; each of its parts asks for one picture or two.

#include "Show/ShowFrames.h"

#include "Platform/Graphics/GraphicsContext.h"

#include <algorithm>

namespace Imaging {

ShowFrames::ShowFrames(const Show& show, const Schedule& schedule, std::uint64_t first, std::uint64_t count)
    : m_show(show), m_schedule(schedule) {
    for (Schedule::Part part : schedule.parts()) {
        const std::uint64_t from = std::max(part.first, first);
        const std::uint64_t to = std::min(part.first + part.count, first + count);
        if (from >= to) continue;
        part.first = from;
        part.count = to - from;
        if (m_pictures.empty() || m_pictures.back() != part.picture) m_pictures.push_back(part.picture);
        m_parts.push_back({part, m_pictures.size() - 1});
        if (part.moves) m_pictures.push_back((part.picture + 1) % show.pictures.size());
    }
}

void ShowFrames::forEach(ShowPictures& pictures, const std::function<void(const Frame&)>& visit) const {
    const Platform::NSSize size = floats(m_show.size);
    for (const auto& [part, place] : m_parts) {
        const ShowPictures::Node from = pictures.at(place, place);
        if (!part.moves) {
            visit({part.first, part.count, from});
            continue;
        }
        const ShowPictures::Node to = pictures.at(place + 1, place);
        const Transition& transition = m_show.pictures[part.picture].next.transition;
        for (std::uint64_t frame = part.first; frame < part.first + part.count; ++frame) {
            visit({frame, 1, transition.node(from, to, size, m_schedule.at(frame).weight)});
        }
    }
}

void drawFrame(IMGImage& node, PixelSize size) {
    const Platform::NSGraphicsStateScope state;
    Platform::NSColor::blackColor().set();
    Platform::NSRectFill(rectOf(size));
    node.drawWithTransform(Platform::NSAffineTransform(), Platform::NSCompositeSourceOver, 1.0F);
}

} // namespace Imaging
