#pragma once

#include "Tools/Film/FilmSink.h"

#include <memory>
#include <optional>
#include <string>

namespace Imaging::Tool {

/// A kind of film file.
enum class FilmContainer { MP4, MKV, WebM, GIF };

/// How a film is encoded. What is left out is up to us.
struct EncoderSettings {
    FilmContainer container = FilmContainer::MP4;
    std::optional<int> crf; ///< the encoder's own measure of quality: less is better; not of a GIF
    std::string preset;     ///< of x264: how much time it takes; empty: veryfast
};

/// A film file that the program ffmpeg writes. Throws a Failure, also where there is no such program.
std::unique_ptr<FilmSink> makeFfmpegSink(const std::string& path, const EncoderSettings& settings,
                                         const FilmFormat& format);

/// Throws a Failure for `path` where there is no such program.
void requireFfmpeg(const std::string& path);

} // namespace Imaging::Tool
