// Makes a film: reads all pictures once to see that they are good, then draws frame after frame into a sink.

#include "Show/ShowFrames.h"
#include "Show/ShowPictures.h"

#include "Tools/Command/Messages.h"
#include "Tools/Command/StandardOutput.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Json.h"
#include "Tools/Files/Output.h"
#include "Tools/Film/FilmOutput.h"
#include "Tools/Film/FilmProgress.h"
#include "Tools/Film/FilmSheet.h"
#include "Tools/Film/FrameQueue.h"
#include "Tools/Film/PictureCheck.h"
#include "Tools/Film/ShowOptions.h"
#include "Tools/Film/ShowPlan.h"
#include "Tools/Film/ShowWords.h"

#include <cmath>
#include <optional>
#include <unistd.h>
#include <utility>

namespace Imaging::Tool {

namespace {

const SubcommandText showText = {
    "show", "Make a film of pictures", "[OPTION...] INPUT... -o FILM",
    R"(INPUT is a picture file of any usual format, a folder, an http, https or file
URL, a graph that 'imaging archive' made, or one show file, which describes a
whole film ('-' for one on standard input; docs/show-file.md says what it
holds). A folder stands for the pictures in it, in
the order in which people count (IMG_2 before IMG_10).

FILM is a .mp4, .mkv, .webm or .gif file, which the program ffmpeg encodes, or
a FOLDER/ for numbered pictures (frame-000001.png), which is made where it is
missing. '-' with --format raw writes frames as they are to standard output.

All pictures are read once before anything is drawn, and those that are bad
or not fit for their operations are named; no film is made then, unless
--skip-bad is given. When the command
is stopped nothing of a film is left.

With --frames a part of the film is made whose frames are those of the whole,
byte for byte, so that several computers can share the work.)",
    R"(  imaging show Pictures -o film.mp4
  imaging show *.jpg -o film.webm --transition random --hold 4 --size 1280x720
  imaging show Pictures -o frames/ --frame-format jpg --frames 1-500
  imaging show Pictures --transition all --contact-sheet sheet.png
  imaging show holidays.json -o holidays.mp4 --dry-run
  imaging show Pictures -o - --format raw | another-program)"};

/// Frames of a film, the first one being number 0.
struct FrameRange {
    std::uint64_t first = 0;
    std::uint64_t count = 0;
};

class ShowCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return showText; }

protected:
    OptionTable options() override;
    void checkOperands() const override { requireOperands("a picture, folder or show file"); }
    ExitStatus run() override;

private:
    void setSheet(const std::string& path, const std::string& option);
    FrameRange checkedRange(const Schedule& schedule) const;
    void dropBadPictures(Show& show, const PictureCheck& check) const;
    void makeAll(const Show& show, const Schedule& schedule, FrameRange range, const PictureCheck& check);
    void makeFilm(const Show& show, const ShowFrames& frames, FrameRange range, ShowPictures& pictures,
                  std::uint64_t lastFrame, FilmSheet* sheet) const;
    void tell(std::vector<Json::Member> line) const;

    ShowOptions m_options;
    FilmOutput m_output;
    PictureOutput m_sheet;
    GivenText m_frames;
    bool m_dry_run = false;
    bool m_json = false;
    bool m_skip_bad = false;
};

OptionTable ShowCommand::options() {
    const auto toSheet = [this](const std::string& text, const std::string& option) {
        setSheet(text, option);
    };
    const auto toJson = [this](const std::string&, const std::string& option) {
        if (m_output.takesStandardOutput())
            throw UsageError(option + ": standard output takes the film's frames already; leave it out");
        m_json = true;
    };
    return joined({m_output.options(),
                   m_options.options(),
                   {{"--frames", "A-B",
                     "Make only these frames of the film, counted from 1,\n"
                     "such as 1-500",
                     into(m_frames, asGiven)},
                    {"--contact-sheet",
                     "SHEET",
                     "Also draw a sheet of the film: a .png, .jpg, .tiff\n"
                     "or the like. Without -o nothing else is made",
                     {.take = toSheet, .emptyIsNone = true}},
                    {"--dry-run", "", "Make nothing, and print when each picture comes", raise(m_dry_run)},
                    {"--json",
                     "",
                     "Tell the progress, or the plan, as lines of JSON",
                     {.take = toJson, .isFlag = true}},
                    {"--skip-bad", "",
                     "Go on without pictures that cannot be read, or whose\n"
                     "operations cannot be carried out; they are still\n"
                     "named",
                     raise(m_skip_bad)}}});
}

void ShowCommand::setSheet(const std::string& path, const std::string& option) {
    if (path == "-") throw UsageError(option + ": the sheet needs a file, not '-'");
    m_sheet.setPath(path);
}

FrameRange ShowCommand::checkedRange(const Schedule& schedule) const {
    const std::uint64_t all = schedule.frameCount();
    const auto& [text, option] = m_frames;
    if (text.empty()) return {.first = 0, .count = all};
    const std::size_t dash = text.find('-');
    const std::string example = "; give the first and the last one, such as 1-500";
    if (dash == std::string::npos)
        throw UsageError(option + ": '" + text + "' is no range of frames" + example);
    const auto last = static_cast<std::int64_t>(all);
    const std::int64_t from = parseNumber(text.substr(0, dash), option, 1, last);
    const std::int64_t to = parseNumber(text.substr(dash + 1), option, 1, last);
    if (to < from) throw UsageError(option + ": '" + text + "' ends before it begins" + example);
    return {.first = static_cast<std::uint64_t>(from - 1),
            .count = static_cast<std::uint64_t>(to - from + 1)};
}

void ShowCommand::tell(std::vector<Json::Member> line) const {
    if (m_json) writeStandardOutput(Json::object(std::move(line)).text() + "\n");
}

/// Names all bad pictures. Without --skip-bad, and where no other is left, that is the end.
void ShowCommand::dropBadPictures(Show& show, const PictureCheck& check) const {
    const std::vector<BadPicture>& bad = check.badPictures();
    if (bad.empty()) return;
    std::size_t number = 0;
    std::erase_if(show.pictures, [&](const ShowPicture&) { return check.isBad(number++); });
    const bool goesOn = m_skip_bad && !show.pictures.empty();
    for (std::size_t i = 0; i < bad.size(); ++i) {
        // The last one ends the command.
        if (!goesOn && i + 1 == bad.size()) throw Failure(bad[i].name, bad[i].why);
        report(bad[i].name, bad[i].why);
        if (!m_dry_run) tell({{"event", "bad-picture"}, {"picture", bad[i].name}, {"why", bad[i].why}});
    }
}

/// The sheet gets each frame while its pictures are at hand, so that none is read twice.
void ShowCommand::makeFilm(const Show& show, const ShowFrames& frames, FrameRange range,
                           ShowPictures& pictures, std::uint64_t lastFrame, FilmSheet* sheet) const {
    const auto addToSheet = [&](const ShowFrames::Frame& frame) {
        if (sheet != nullptr) sheet->add(frame);
    };
    if (m_output.path.empty()) return frames.forEach(pictures, addToSheet);
    const std::unique_ptr<FilmSink> sink = m_output.open(
        {show.size, show.rateNumerator, show.rateDenominator, range.first, range.count, show.loop},
        lastFrame);
    FrameQueue queue(*sink, show.size);
    const bool onTerminal = !quiet() && ::isatty(STDERR_FILENO) != 0;
    const auto form = m_json       ? FilmProgress::Form::JsonLines
                      : onTerminal ? FilmProgress::Form::Bar
                                   : FilmProgress::Form::Nothing;
    FilmProgress progress(form, range.count, [&queue] { return queue.written(); });
    frames.forEach(pictures, [&](const ShowFrames::Frame& frame) {
        std::unique_ptr<FrameBuffer> buffer = queue.take();
        drawFrame(*frame.node, *buffer);
        queue.give(std::move(buffer), frame.times);
        addToSheet(frame);
    });
    queue.finish();
    progress.finish();
    tell({{"event", "done"},
          {"frames", range.count},
          {"seconds", std::round(progress.seconds() * 1000) / 1000}});
}

void ShowCommand::makeAll(const Show& show, const Schedule& schedule, FrameRange range,
                          const PictureCheck& check) {
    const ShowFrames frames(show, schedule, range.first, range.count);
    const auto load = [&](std::size_t index) {
        ShowPicture picture = show.pictures[index];
        picture.name = check.source(picture.name);
        try {
            return framePicture(picture, show);
        } catch (const Failure& failure) {
            throw Failure(check.nameOf(failure.subject()), failure.what());
        }
    };
    ShowPictures pictures(frames.pictures(), load);
    const std::uint64_t lastFrame = schedule.frameCount() - 1;
    if (m_sheet.path.empty()) return makeFilm(show, frames, range, pictures, lastFrame, nullptr);
    FilmSheet sheet(show, sheetFrames(schedule, range.first, range.count));
    const auto bitmap = sheet.drawn(shownPath(m_sheet.path),
                                    [&] { makeFilm(show, frames, range, pictures, lastFrame, &sheet); });
    m_sheet.write(*bitmap);
}

/// The plan is made twice: before the pictures are looked at, so that a wrong --frames is told at once, and
/// again without those that are bad, which changes every time after them.
ExitStatus ShowCommand::run() {
    const std::vector<std::string>& inputs = operands();
    Show show = m_options.show(inputs, {m_output.path, m_sheet.path});
    if (!m_output.path.empty() || (m_sheet.path.empty() && !m_dry_run)) m_output.check(show.size);
    if (m_dry_run) {
        checkedRange(scheduleOf(show));
        dropBadPictures(show, PictureCheck(show, quiet(), PictureCheck::Extent::ThoseWithOperations));
        const Schedule schedule = scheduleOf(show);
        checkedRange(schedule);
        writeStandardOutput(m_json ? dryRunJson(show, schedule) : dryRunText(show, schedule));
        return Done;
    }
    checkedRange(scheduleOf(show));
    const PictureCheck check(show, quiet());
    dropBadPictures(show, check);
    const Schedule schedule = scheduleOf(show);
    const FrameRange range = checkedRange(schedule);
    tell({{"event", "start"},
          {"frames", range.count},
          {"firstFrame", range.first + 1},
          {"width", show.size.width},
          {"height", show.size.height},
          {"pictures", show.pictures.size()}});
    makeAll(show, schedule, range, check);
    return Done;
}

} // namespace

std::unique_ptr<Subcommand> makeShowCommand() { return std::make_unique<ShowCommand>(); }

} // namespace Imaging::Tool
