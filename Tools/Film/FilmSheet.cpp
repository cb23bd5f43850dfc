// The sheet is the current context while the film is made, and takes the frames that it shows as they go by.

#include "Tools/Film/FilmSheet.h"

#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"
#include "Show/Canvas.h"

#include <algorithm>
#include <utility>

namespace Imaging::Tool {

using Platform::NSColor;
using Platform::NSRect;

namespace {

/// About the area of 320 x 180 pixels, in the shape of a frame.
PixelSize cellFor(PixelSize frame) {
    constexpr std::int64_t longer = 320;
    if (frame.width >= frame.height) return {longer, inProportion(longer, frame.height, frame.width)};
    return {inProportion(longer, frame.width, frame.height), longer};
}

constexpr float grayBetween = 0x36 / 255.0F;

} // namespace

std::vector<std::uint64_t> sheetFrames(const Schedule& schedule, std::uint64_t first, std::uint64_t count,
                                       std::size_t most) {
    std::vector<std::uint64_t> frames;
    for (const Schedule::Part& part : schedule.parts()) {
        const std::uint64_t from = std::max(part.first, first);
        const std::uint64_t to = std::min(part.first + part.count, first + count);
        // In the middle of a fade through a colour there would be that colour alone.
        if (from < to) frames.push_back(from + (to - from - 1) * (part.moves ? 2 : 3) / 6);
    }
    if (frames.size() <= most) return frames;
    frames.clear();
    // Frame numbers are below 100 million, so that the product stays far below 2^64.
    for (std::size_t i = 0; i < most; ++i) frames.push_back(first + count * (2 * i + 1) / (2 * most));
    return frames;
}

FilmSheet::FilmSheet(const Show& show, std::vector<std::uint64_t> frames)
    : m_show(show), m_frames(std::move(frames)), m_layout(m_frames.size(), cellFor(show.size), 0) {}

std::shared_ptr<Platform::NSBitmapImageRep> FilmSheet::drawn(const std::string& name,
                                                             const std::function<void()>& run) {
    return drawnOnCanvas(m_layout.size(), name, "make the film's frames of a more usual shape", [&] {
        const NSRect whole = m_layout.used(m_frames.size());
        paint(whole, NSColor::colorWithCalibratedWhite(grayBetween, 1));
        run();
        return whole;
    });
}

void FilmSheet::add(const ShowFrames::Frame& frame) {
    while (m_drawn < m_frames.size() && m_frames[m_drawn] < frame.first + frame.times)
        drawCell(*frame.node, m_layout.cell(m_drawn++));
}

void FilmSheet::drawCell(Imaging::IMGImage& node, NSRect cell) const {
    // Made small only when it is whole, since transitions meet at whole pixels of the frame alone.
    const Platform::NSSize size = {static_cast<float>(m_show.size.width),
                                   static_cast<float>(m_show.size.height)};
    Platform::NSImage frame(size);
    {
        const Platform::NSImageFocus focus(frame);
        drawFrame(node, m_show.size);
    }
    frame.drawInRect(cell, {Platform::NSZeroPoint, size}, Platform::NSCompositeSourceOver, 1.0F);
}

} // namespace Imaging::Tool
