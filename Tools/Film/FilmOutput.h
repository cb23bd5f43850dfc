#pragma once

#include "Tools/Command/Options.h"
#include "Tools/Film/FilmSink.h"

#include <memory>
#include <string>

namespace Imaging::Tool {

/// The arguments that say where a film goes and how.
struct FilmOutput {
    std::string path;
    std::string format;      ///< empty: by the path's suffix
    std::string frameFormat; ///< of pictures in a folder; empty: png
    std::string quality;     ///< of JPEG frames; empty: 90
    std::string crf;
    std::string preset;

    /// The options, whose values go into this object.
    OptionTable options();

    /// Throws a UsageError when the path is missing, its kind is not known, an option does not fit it, or
    /// frames of this size cannot be written; and a Failure where its folder or the encoder is missing.
    void check(PixelSize size) const;

    /// Whether the film goes to standard output.
    bool takesStandardOutput() const { return path == "-"; }

    /// The sink for a film, or for the part of one whose last frame has the number `lastFrame`. Throws like
    /// `check`.
    std::unique_ptr<FilmSink> open(const FilmFormat& film, std::uint64_t lastFrame) const;
};

} // namespace Imaging::Tool
