#pragma once

#include "Tools/Film/FilmSink.h"

#include <memory>
#include <string>

namespace Imaging::Tool {

enum class FrameFileType { PNG, JPEG };

/// A picture file for each frame in a folder, which is made where it is missing: "frame-000001.png". Frames
/// are counted from 1, with at least six digits. `lastFrame` is the number of the whole film's last frame, by
/// which names are as long as those of its other parts; `quality` (0 to 1) is that of JPEG. Throws a Failure.
std::unique_ptr<FilmSink> makeNumberedFramesSink(const std::string& folder, FrameFileType type,
                                                 double quality, const FilmFormat& format,
                                                 std::uint64_t lastFrame);

} // namespace Imaging::Tool
