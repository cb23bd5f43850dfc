#pragma once

#include "Platform/Graphics/BitmapImageRep.h"
#include "Show/Schedule.h"
#include "Show/ShowFrames.h"
#include "Tools/Pictures/SheetLayout.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Imaging::Tool {

/// The numbers of the frames that stand for a film, or for a part of one, on a contact sheet: one of each
/// picture that stands still and the one at a third of each transition, or as many as there may be at even
/// distances.
std::vector<std::uint64_t> sheetFrames(const Schedule& schedule, std::uint64_t first, std::uint64_t count,
                                       std::size_t most = 40);

/// A contact sheet of a film, drawn while its frames go by.
class FilmSheet {
public:
    /// `frames` as `sheetFrames` gives them.
    FilmSheet(const Show& show, std::vector<std::uint64_t> frames);

    /// Calls `run` and gives the sheet of the frames that were added meanwhile. Throws a Failure for `name`.
    std::shared_ptr<Platform::NSBitmapImageRep> drawn(const std::string& name,
                                                      const std::function<void()>& run);

    /// Draws the frames that the sheet shows of these, into the context that `drawn` made current.
    void add(const ShowFrames::Frame& frame);

private:
    void drawCell(IMGImage& node, Platform::NSRect cell) const;

    const Show& m_show;
    std::vector<std::uint64_t> m_frames;
    SheetLayout m_layout;
    std::size_t m_drawn = 0;
};

} // namespace Imaging::Tool
