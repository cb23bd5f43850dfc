#include "Tools/Film/FilmOutput.h"

#include "Tools/Command/Messages.h"
#include "Tools/Command/Values.h"
#include "Tools/Files/Output.h"
#include "Tools/Film/FfmpegSink.h"
#include "Tools/Film/RawSink.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>
#include <vector>

namespace Imaging::Tool {

using Kind = FilmKind;

namespace {

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

FilmKind parseKind(const std::string& text, const std::string& option) {
    return parseWord<Kind>(text, option, "format",
                           {{"mp4", Kind::MP4},
                            {"mkv", Kind::MKV},
                            {"webm", Kind::WebM},
                            {"gif", Kind::GIF},
                            {"frames", Kind::Frames},
                            {"raw", Kind::Raw}});
}

bool isVideo(Kind kind) { return kind == Kind::MP4 || kind == Kind::MKV || kind == Kind::WebM; }

FrameFileType parseFrameFormat(const std::string& text, const std::string& option) {
    return parseWord<FrameFileType>(
        text, option, "format",
        {{"png", FrameFileType::PNG}, {"jpg", FrameFileType::JPEG}, {"jpeg", FrameFileType::JPEG}});
}

std::string parsePreset(const std::string& text, const std::string& option) {
    if (std::find(x264Presets.begin(), x264Presets.end(), text) != x264Presets.end()) return text;
    const std::vector<std::string> known(x264Presets.begin(), x264Presets.end());
    throw UsageError(option + ": there is no preset named '" + text + "'; known are " + enumeration(known) +
                     suggestion(text, known));
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

FilmKind FilmOutput::kind() const {
    if (format.has_value()) return *format;
    if (takesStandardOutput())
        throw UsageError("-o -: only raw frames go to standard output; add --format raw");
    if (isFolderOfFrames(path)) return Kind::Frames;
    std::string suffix = std::filesystem::path(path).extension().string();
    for (char& c : suffix) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    for (const auto& [known, kind] : suffixes()) {
        if (known == suffix) return kind;
    }
    throw UsageError("-o " + path +
                     ": the suffix names no kind of film; those that work are .mp4, .mkv, .webm and .gif, a "
                     "folder with a slash at its end for numbered pictures, or add --format");
}

/// Without a path no kind is known yet, and every option is welcome.
void FilmOutput::requireKind(std::initializer_list<FilmKind> kinds, const std::string& option,
                             const std::string& why) const {
    if (path.empty() || std::find(kinds.begin(), kinds.end(), kind()) != kinds.end()) return;
    throw UsageError(option + ": " + why);
}

OptionTable FilmOutput::options() { return joined({whereOptions(), encoderOptions()}); }

OptionTable FilmOutput::whereOptions() {
    const auto toFrameFormat = [this](const std::string& text, const std::string& option) {
        requireKind({Kind::Frames}, option, "only numbered pictures in a folder have one");
        return parseFrameFormat(text, option);
    };
    const auto toQuality = [this](const std::string& text, const std::string& option) {
        const std::string why = "only numbered JPEG pictures have one; add --frame-format jpg";
        requireKind({Kind::Frames}, option, why);
        if (frameFormat != FrameFileType::JPEG) throw UsageError(option + ": " + why);
        return parseNumber(text, option, 1, 100);
    };
    return {{"-o,--output", "FILM",
             "The film: a .mp4, .mkv, .webm or .gif file, or a\n"
             "FOLDER/ for numbered pictures",
             into(path)},
            {"--format", "FORMAT",
             "mp4, mkv, webm, gif, frames or raw (frames as they\n"
             "are, 4 bytes a pixel: blue, green, red and 255),\n"
             "whatever the name says",
             into(format, parseKind)},
            {"--frame-format", "FORMAT", "Of numbered pictures: png or jpg (png)",
             into(frameFormat, toFrameFormat)},
            {"--quality", "N", "Of numbered JPEG pictures, 1 to 100 (90)", into(quality, toQuality)}};
}

OptionTable FilmOutput::encoderOptions() {
    const auto toCRF = [this](const std::string& text, const std::string& option) {
        requireKind({Kind::MP4, Kind::MKV, Kind::WebM}, option, "only .mp4, .mkv and .webm films have one");
        const bool isVP9 = path.empty() || kind() == Kind::WebM;
        return parseNumber(text, option, 0, isVP9 ? 63 : 51);
    };
    const auto toPreset = [this](const std::string& text, const std::string& option) {
        if (text.empty()) return text;
        requireKind({Kind::MP4, Kind::MKV}, option, "only .mp4 and .mkv films have one");
        return parsePreset(text, option);
    };
    return {{"--crf", "N",
             "How much the encoder may lose: less is better and\n"
             "larger (20 of 51, .webm: 32 of 63)",
             into(crf, toCRF)},
            {"--preset", "NAME",
             "How much time the encoder of .mp4 and .mkv takes to\n"
             "make the file small, ultrafast to placebo (veryfast)",
             into(preset, toPreset)}};
}

void FilmOutput::check(PixelSize size) const {
    if (path.empty()) throw UsageError("the output is missing: -o FILM.mp4, or -o FOLDER/ for pictures");
    const Kind kind = this->kind();
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
    const Kind kind = this->kind();
    if (kind == Kind::Raw) return makeRawSink(path, film);
    if (kind == Kind::Frames) {
        return makeNumberedFramesSink(path, frameFormat.value_or(FrameFileType::PNG),
                                      static_cast<double>(quality.value_or(90)) / 100, film, lastFrame);
    }
    EncoderSettings settings;
    settings.container = containerOf(kind);
    settings.preset = preset;
    if (crf.has_value()) settings.crf = static_cast<int>(*crf);
    return makeFfmpegSink(path, settings, film);
}

} // namespace Imaging::Tool
