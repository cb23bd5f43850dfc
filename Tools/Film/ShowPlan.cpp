// The parts of the schedule, as a table for people and as lines of JSON for programs.

#include "Tools/Film/ShowPlan.h"

#include "Tools/Command/Messages.h"
#include "Tools/Files/Json.h"
#include "Tools/Film/ShowSettings.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Imaging::Tool {

namespace {

double secondsOf(const Show& show, std::uint64_t frames) {
    return static_cast<double>(frames) * static_cast<double>(show.rateDenominator) /
           static_cast<double>(show.rateNumerator);
}

std::string paddedLeft(const std::string& text, std::size_t width, char fill = ' ') {
    return std::string(width - std::min(width, text.size()), fill) + text;
}

std::string paddedRight(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ');
}

/// "1:02:03.400"
std::string clockText(double seconds) {
    const std::int64_t thousandths = std::llround(seconds * 1000);
    const auto digits = [](std::int64_t number, std::size_t width) {
        return paddedLeft(std::to_string(number), width, '0');
    };
    return std::to_string(thousandths / 3'600'000) + ":" + digits(thousandths / 60'000 % 60, 2) + ":" +
           digits(thousandths / 1000 % 60, 2) + "." + digits(thousandths % 1000, 3);
}

std::size_t following(const Show& show, const Schedule::Part& part) {
    return (part.picture + 1) % show.pictures.size();
}

std::string sizeText(PixelSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string countText(std::size_t count, const std::string& thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string whatIsShown(const Show& show, const Schedule::Part& part) {
    const ShowPicture& picture = show.pictures[part.picture];
    if (!part.moves) return escaped(picture.name);
    return "  " + picture.next.transition.text() + ", " + textOf(picture.next.easing) + ", to " +
           escaped(show.pictures[following(show, part)].name);
}

using Row = std::vector<std::string>;

/// All columns but the last are as wide as what is in them.
std::string tableText(const std::vector<Row>& rows) {
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text;
    for (const Row& row : rows) {
        for (std::size_t i = 0; i + 1 < row.size(); ++i) text += paddedRight(row[i], widths[i] + 2);
        text += row.back() + "\n";
    }
    return text;
}

Json objectFor(const Show& show, const Schedule::Part& part) {
    const ShowPicture& picture = show.pictures[part.picture];
    Json object = Json::object({{"shows", part.moves ? "transition" : "picture"},
                                {"time", secondsOf(show, part.first)},
                                {"seconds", secondsOf(show, part.count)},
                                {"firstFrame", part.first + 1}, // as --frames counts
                                {"frames", part.count}});
    if (!part.moves) {
        object.add("file", picture.name);
        return object;
    }
    object.add("transition", picture.next.transition.text());
    object.add("ease", textOf(picture.next.easing));
    object.add("from", picture.name);
    object.add("to", show.pictures[following(show, part)].name);
    return object;
}

} // namespace

std::string dryRunText(const Show& show, const Schedule& schedule) {
    const FrameRate rate{show.rateNumerator, show.rateDenominator};
    std::vector<Row> rows = {{"time", "frames", "length", "shows"}};
    for (const Schedule::Part& part : schedule.parts()) {
        rows.push_back({clockText(secondsOf(show, part.first)),
                        std::to_string(part.first + 1) + "-" + std::to_string(part.first + part.count),
                        clockText(secondsOf(show, part.count)), whatIsShown(show, part)});
    }
    return countText(show.pictures.size(), "picture") + ", " + countText(schedule.frameCount(), "frame") +
           " of " + sizeText(show.size) + " at " + textOf(rate) + " per second, " +
           clockText(secondsOf(show, schedule.frameCount())) + (show.loop ? ", a loop" : "") + "\n" +
           tableText(rows);
}

std::string dryRunJson(const Show& show, const Schedule& schedule) {
    const Json film = Json::object({{"shows", "film"},
                                    {"pictures", show.pictures.size()},
                                    {"frames", schedule.frameCount()},
                                    {"seconds", secondsOf(show, schedule.frameCount())},
                                    {"size", sizeText(show.size)},
                                    {"fps", textOf(FrameRate{show.rateNumerator, show.rateDenominator})},
                                    {"loop", show.loop}});
    std::string text = film.text() + "\n";
    for (const Schedule::Part& part : schedule.parts()) text += objectFor(show, part).text() + "\n";
    return text;
}

} // namespace Imaging::Tool
