// Frames go to ffmpeg as raw pixels; it writes a temporary file, which takes the film's place at the end.

#include "Tools/Film/FfmpegSink.h"

#include "Tools/Command/Messages.h"
#include "Tools/Command/Process.h"
#include "Tools/Film/EncoderProcess.h"
#include "Tools/Film/FilmFile.h"

#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

namespace Imaging::Tool {

namespace {

using Arguments = std::vector<std::string>;

std::string ffmpeg(const std::string& path) {
    const std::string program = foundProgram("ffmpeg");
    if (!program.empty()) return program;
    throw Failure(path, "films are encoded by the program ffmpeg, which is not there; install the package "
                        "ffmpeg, or write numbered pictures into a folder: -o FOLDER/");
}

void append(Arguments& to, const Arguments& more) { to.insert(to.end(), more.begin(), more.end()); }

Arguments inputArguments(const FilmFormat& format) {
    return {"-hide_banner",
            "-loglevel",
            "repeat+error",
            "-xerror", // otherwise it takes a full disk for success
            "-y",
            "-f",
            "rawvideo",
            "-pixel_format",
            "bgr0",
            "-video_size",
            std::to_string(format.size.width) + "x" + std::to_string(format.size.height),
            "-framerate",
            std::to_string(format.rateNumerator) + "/" + std::to_string(format.rateDenominator),
            "-i",
            "-",
            "-an"};
}

/// Colours as high-definition players expect them, and the file says so.
const Arguments& highDefinitionColors() {
    static const Arguments arguments = {"-vf",
                                        "scale=out_color_matrix=bt709:out_range=tv,format=yuv420p",
                                        "-colorspace",
                                        "bt709",
                                        "-color_primaries",
                                        "bt709",
                                        "-color_trc",
                                        "bt709",
                                        "-color_range",
                                        "tv"};
    return arguments;
}

Arguments x264Arguments(const EncoderSettings& settings) {
    Arguments arguments = highDefinitionColors();
    append(arguments, {"-c:v", "libx264", "-preset", settings.preset.empty() ? "veryfast" : settings.preset,
                       "-crf", std::to_string(settings.crf.value_or(20))});
    if (settings.container == FilmContainer::MP4) {
        append(arguments, {"-movflags", "+faststart", "-f", "mp4"});
    } else {
        append(arguments, {"-f", "matroska"});
    }
    return arguments;
}

Arguments vp9Arguments(const EncoderSettings& settings) {
    Arguments arguments = highDefinitionColors();
    append(arguments, {"-c:v", "libvpx-vp9", "-crf", std::to_string(settings.crf.value_or(32)), "-b:v", "0",
                       "-deadline", "good", "-cpu-used", "5", "-row-mt", "1", "-f", "webm"});
    return arguments;
}

/// A palette for each frame, so that no more than one frame has to be kept.
Arguments gifArguments(bool loop) {
    return {"-filter_complex",
            "split[a][b];[a]palettegen=stats_mode=single[p];[b][p]paletteuse=new=1",
            "-loop",
            loop ? "0" : "-1",
            "-f",
            "gif"};
}

Arguments outputArguments(const EncoderSettings& settings, const FilmFormat& format) {
    switch (settings.container) {
    case FilmContainer::WebM:
        return vp9Arguments(settings);
    case FilmContainer::GIF:
        return gifArguments(format.loop);
    default:
        return x264Arguments(settings);
    }
}

class FfmpegSink final : public FilmSink, private Unfinished {
public:
    FfmpegSink(const std::string& path, const EncoderSettings& settings, const FilmFormat& format);

    void write(const FrameView& frame, std::uint64_t times, std::shared_ptr<const void> owner) override;
    void finish() override;

private:
    void undo() noexcept override {
        if (m_process.has_value()) m_process->kill();
        m_file.remove();
    }
    bool writeFrame(const FrameView& frame);
    std::string ownWords(std::string words) const;
    void finishProcess();

    PixelSize m_size;
    FilmFile m_file;
    std::optional<EncoderProcess> m_process;
    std::optional<UndoneOnInterrupt> m_undone;
};

FfmpegSink::FfmpegSink(const std::string& path, const EncoderSettings& settings, const FilmFormat& format)
    : m_size(format.size), m_file(path, std::filesystem::path(path).extension().string()) {
    Arguments arguments = inputArguments(format);
    append(arguments, outputArguments(settings, format));
    arguments.push_back("file:" + m_file.temporaryPath()); // a colon in a name is part of it
    const std::string program = ffmpeg(path);
    try {
        m_process.emplace(program, arguments);
    } catch (const std::system_error& error) {
        throw Failure(path, "the encoder " + program + " cannot be started: " + error.code().message());
    }
    m_undone.emplace(static_cast<Unfinished&>(*this));
}

void FfmpegSink::write(const FrameView& frame, std::uint64_t times, std::shared_ptr<const void>) {
    for (std::uint64_t i = 0; i < times; ++i) {
        if (writeFrame(frame)) continue;
        finishProcess();
        throw Failure(m_file.path(), "the encoder ffmpeg ended before the film did");
    }
}

bool FfmpegSink::writeFrame(const FrameView& frame) {
    const auto width = static_cast<std::size_t>(m_size.width);
    const auto height = static_cast<std::size_t>(m_size.height);
    if (frame.wordsPerRow == width) return m_process->write(frame.words, width * height * 4);
    for (std::size_t y = 0; y < height; ++y) {
        if (!m_process->write(frame.words + y * frame.wordsPerRow, width * 4)) return false;
    }
    return true;
}

/// What the encoder said about its temporary file is meant for the film.
std::string FfmpegSink::ownWords(std::string words) const {
    const std::string temporary = "file:" + m_file.temporaryPath();
    for (std::size_t at = 0; (at = words.find(temporary, at)) != std::string::npos;) {
        words.replace(at, temporary.size(), m_file.path());
        at += m_file.path().size();
    }
    return words;
}

void FfmpegSink::finishProcess() {
    const EncoderProcess::Ending ending = m_process->finish();
    if (ending.isGood()) return;
    throw Failure(m_file.path(), "the encoder ffmpeg failed: " + ownWords(ending.inWords()));
}

void FfmpegSink::finish() {
    finishProcess();
    m_file.commit();
}

} // namespace

void requireFfmpeg(const std::string& path) { ffmpeg(path); }

std::unique_ptr<FilmSink> makeFfmpegSink(const std::string& path, const EncoderSettings& settings,
                                         const FilmFormat& format) {
    const CreationScope created;
    return std::make_unique<FfmpegSink>(path, settings, format);
}

} // namespace Imaging::Tool
