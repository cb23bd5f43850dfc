#pragma once

#include "Tools/Command/Options.h"
#include "Tools/Film/FilmSink.h"
#include "Tools/Film/NumberedFramesSink.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

namespace Imaging::Tool {

/// What a film is written as.
enum class FilmKind { MP4, MKV, WebM, GIF, Frames, Raw };

/// Where a film goes and how. Its fields are filled by its options.
struct FilmOutput {
    std::string path;
    std::optional<FilmKind> format;           ///< otherwise by the path's suffix
    std::optional<FrameFileType> frameFormat; ///< of pictures in a folder; otherwise PNG
    std::optional<std::int64_t> quality;      ///< of JPEG frames, 1 to 100; otherwise 90
    std::optional<std::int64_t> crf;          ///< the encoder's own measure of quality
    std::string preset;                       ///< of x264; empty: its caller's choice

    /// The options, whose values go into this object.
    OptionTable options();

    /// Throws a UsageError when the path is missing, its kind is not known, or frames of this size cannot be
    /// written; and a Failure where its folder or the encoder is missing.
    void check(PixelSize size) const;

    /// Whether the film goes to standard output.
    bool takesStandardOutput() const { return path == "-"; }

    /// The sink for a film, or for the part of one whose last frame has the number `lastFrame`. Throws like
    /// `check`.
    std::unique_ptr<FilmSink> open(const FilmFormat& film, std::uint64_t lastFrame) const;

private:
    FilmKind kind() const;
    void requireKind(std::initializer_list<FilmKind> kinds, const std::string& option,
                     const std::string& why) const;
    OptionTable whereOptions();
    OptionTable encoderOptions();
};

} // namespace Imaging::Tool
