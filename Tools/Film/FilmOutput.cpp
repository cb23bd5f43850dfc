#include "Tools/Film/FilmOutput.h"

#include "Tools/Command/Messages.h"
#include "Tools/Files/Output.h"
#include "Tools/Film/FfmpegSink.h"
#include "Tools/Film/NumberedFramesSink.h"
#include "Tools/Film/RawSink.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>
#include <vector>

namespace Imaging::Tool {

namespace {

enum class Kind { MP4, MKV, WebM, GIF, Frames, Raw };

const std::vector<std::pair<std::string, Kind>>& suffixes() {
    static const std::vector<std::pair<std::string, Kind>> all = {
        {".mp4", Kind::MP4}, {".mkv", Kind::MKV}, {".webm", Kind::WebM}, {".gif", Kind::GIF}};
    return all;
}

constexpr std::array x264Presets = {"ultrafast", "superfast", "veryfast", "faster",   "fast",
                                    "medium",    "slow",      "slower",   "veryslow", "placebo"};

bool isFolderOfFrames(const std::string& path) {
    std::error_code failure;
    return path.ends_with('/') || std::filesystem::is_directory(path, failure);
}

Kind kindOf(const FilmOutput& output) {
    if (!output.format.empty()) {
        return parseWord<Kind>(output.format, "--format", "format",
                               {{"mp4", Kind::MP4},
                                {"mkv", Kind::MKV},
                                {"webm", Kind::WebM},
                                {"gif", Kind::GIF},
                                {"frames", Kind::Frames},
                                {"raw", Kind::Raw}});
    }
    if (output.takesStandardOutput())
        throw UsageError("-o -: only raw frames go to standard output; add --format raw");
    if (isFolderOfFrames(output.path)) return Kind::Frames;
    std::string suffix = std::filesystem::path(output.path).extension().string();
    for (char& c : suffix) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    for (const auto& [known, kind] : suffixes()) {
        if (known == suffix) return kind;
    }
    throw UsageError("-o " + output.path +
                     ": the suffix names no kind of film; those that work are .mp4, .mkv, .webm and .gif, a "
                     "folder with a slash at its end for numbered pictures, or add --format");
}

bool isVideo(Kind kind) { return kind == Kind::MP4 || kind == Kind::MKV || kind == Kind::WebM; }

void refuseWhere(bool refused, const std::string& value, const std::string& option, const std::string& why) {
    if (refused && !value.empty()) throw UsageError(option + ": " + why);
}

void checkOptions(const FilmOutput& output, Kind kind) {
    refuseWhere(!isVideo(kind), output.crf, "--crf", "only .mp4, .mkv and .webm films have one");
    refuseWhere(kind != Kind::MP4 && kind != Kind::MKV, output.preset, "--preset",
                "only .mp4 and .mkv films have one");
    refuseWhere(kind != Kind::Frames, output.frameFormat, "--frame-format",
                "only numbered pictures in a folder have one");
    refuseWhere(kind != Kind::Frames || output.frameFormat != "jpg", output.quality, "--quality",
                "only numbered JPEG pictures have one; add --frame-format jpg");
    if (!output.crf.empty()) parseNumber(output.crf, "--crf", 0, kind == Kind::WebM ? 63 : 51);
    if (!output.quality.empty()) parseNumber(output.quality, "--quality", 1, 100);
    if (!output.preset.empty() &&
        std::find(x264Presets.begin(), x264Presets.end(), output.preset) == x264Presets.end()) {
        const std::vector<std::string> known(x264Presets.begin(), x264Presets.end());
        throw UsageError("--preset: there is no preset named '" + output.preset + "'; known are " +
                         enumeration(known) + suggestion(output.preset, known));
    }
}

FrameFileType frameFileType(const FilmOutput& output) {
    if (output.frameFormat.empty()) return FrameFileType::PNG;
    return parseWord<FrameFileType>(
        output.frameFormat, "--frame-format", "format",
        {{"png", FrameFileType::PNG}, {"jpg", FrameFileType::JPEG}, {"jpeg", FrameFileType::JPEG}});
}

/// Colours are kept for squares of two by two pixels, so there must be nothing but whole ones.
void checkSize(PixelSize size, Kind kind) {
    if (!isVideo(kind) || (size.width % 2 == 0 && size.height % 2 == 0)) return;
    const auto even = [](std::int64_t side) { return std::to_string(side + side % 2); };
    throw UsageError("--size: " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                     " has an odd side, and films in .mp4, .mkv and .webm take even ones; choose " +
                     even(size.width) + "x" + even(size.height));
}

FilmContainer containerOf(Kind kind) {
    switch (kind) {
    case Kind::MKV:
        return FilmContainer::MKV;
    case Kind::WebM:
        return FilmContainer::WebM;
    case Kind::GIF:
        return FilmContainer::GIF;
    default:
        return FilmContainer::MP4;
    }
}

} // namespace

OptionTable FilmOutput::options() {
    return {{"-o,--output", "FILM",
             "The film: a .mp4, .mkv, .webm or .gif file, or a\n"
             "FOLDER/ for numbered pictures",
             into(path)},
            {"--format", "FORMAT",
             "mp4, mkv, webm, gif, frames or raw (frames as they\n"
             "are, 4 bytes a pixel: blue, green, red and 255),\n"
             "whatever the name says",
             into(format)},
            {"--frame-format", "FORMAT", "Of numbered pictures: png or jpg (png)", into(frameFormat)},
            {"--quality", "N", "Of numbered JPEG pictures, 1 to 100 (90)", into(quality)},
            {"--crf", "N",
             "How much the encoder may lose: less is better and\n"
             "larger (20 of 51, .webm: 32 of 63)",
             into(crf)},
            {"--preset", "NAME",
             "How much time the encoder of .mp4 and .mkv takes to\n"
             "make the file small, ultrafast to placebo (veryfast)",
             into(preset)}};
}

void FilmOutput::check(PixelSize size) const {
    if (path.empty()) throw UsageError("the output is missing: -o FILM.mp4, or -o FOLDER/ for pictures");
    const Kind kind = kindOf(*this);
    checkOptions(*this, kind);
    frameFileType(*this);
    checkSize(size, kind);
    if (kind == Kind::Frames) {
        if (takesStandardOutput()) throw UsageError("-o -: only raw frames go to standard output");
        return;
    }
    if (kind != Kind::Raw && takesStandardOutput())
        throw UsageError("-o -: only raw frames go to standard output; add --format raw");
    checkOutputPath(path);
    if (kind != Kind::Raw) requireFfmpeg(path);
}

std::unique_ptr<FilmSink> FilmOutput::open(const FilmFormat& film, std::uint64_t lastFrame) const {
    const Kind kind = kindOf(*this);
    if (kind == Kind::Raw) return makeRawSink(path, film);
    if (kind == Kind::Frames) {
        const std::int64_t percent = quality.empty() ? 90 : parseNumber(quality, "--quality", 1, 100);
        return makeNumberedFramesSink(path, frameFileType(*this), static_cast<double>(percent) / 100, film,
                                      lastFrame);
    }
    EncoderSettings settings;
    settings.container = containerOf(kind);
    settings.preset = preset;
    if (!crf.empty()) settings.crf = static_cast<int>(parseNumber(crf, "--crf", 0, 63));
    return makeFfmpegSink(path, settings, film);
}

} // namespace Imaging::Tool
