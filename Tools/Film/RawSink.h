#pragma once

#include "Tools/Film/FilmSink.h"

#include <memory>
#include <string>

namespace Imaging::Tool {

/// Frames one after another as they are, without anything around them: bgr0, rows from the top. `path` is a
/// file, which appears when it is whole, a device or pipe, which is written in place, or "-" for standard
/// output. Throws a Failure.
std::unique_ptr<FilmSink> makeRawSink(const std::string& path, const FilmFormat& format);

} // namespace Imaging::Tool
