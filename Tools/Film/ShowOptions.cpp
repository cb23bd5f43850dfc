#include "Tools/Film/ShowOptions.h"

#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Files/PictureFiles.h"
#include "Tools/Film/ShowFile.h"
#include "Tools/Film/ShowWords.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <optional>

namespace Imaging::Tool {

namespace {

bool isOneOf(const std::string& name, const std::vector<std::string>& outputs) {
    return std::any_of(outputs.begin(), outputs.end(), [&](const std::string& output) {
        return output != "-" && !isURL(name) && isSameFile(name, output);
    });
}

/// The value of an option, or nullopt where it was not given.
template<class Parse>
auto parsed(const std::string& text, const std::string& option, const Parse& parse)
    -> std::optional<decltype(parse(text, option))> {
    if (text.empty()) return std::nullopt;
    return parse(text, option);
}

std::optional<bool> raised(bool flag) { return flag ? std::optional(true) : std::nullopt; }

} // namespace

void ShowOptions::declare(CLI::App& app) {
    app.add_option("--size", m_size, "Pixels of a frame (1920x1080)")->type_name("WxH");
    app.add_option("--fps", m_rate,
                   "Frames in a second, also as a fraction; 23.976,\n"
                   "29.97 and 59.94 mean the exact rates of NTSC (25)")
        ->type_name("N");
    app.add_option("--hold", m_hold, "How long each picture stands still (3)")->type_name("SECONDS");
    app.add_option("--transition", m_transition,
                   "From each picture to the next: one transition or a\n"
                   "list that is gone through again and again, such as\n"
                   "push:direction=up,zoom; all in turn; or random.\n"
                   "'imaging transitions' lists them (dissolve)")
        ->type_name("NAME");
    app.add_option("--duration", m_duration, "How long each transition takes; 0 is a cut (1)")
        ->type_name("SECONDS");
    app.add_option("--ease", m_easing,
                   "How a transition follows time: linear, in (from\n"
                   "rest), out (to rest) or in-out (in-out)")
        ->type_name("EASING");
    app.add_option("--background", m_background,
                   "The colour behind pictures: #rgb, #rrggbb or a name\n"
                   "such as white, black, gray or navy (black)")
        ->type_name("COLOR");
    app.add_option("--fit", m_fit,
                   "How a picture of another shape fits a frame: contain\n"
                   "(all of it), cover (it fills the frame and is cut),\n"
                   "or stretch (contain)")
        ->type_name("FIT");
    app.add_option("--seed", m_seed,
                   "Another number makes other random choices, the same\n"
                   "number always the same (1)")
        ->type_name("N");
    app.add_flag("--loop", m_loop,
                 "End with the transition to the first picture, so\n"
                 "that the film can be repeated without a break")
        ->disable_flag_override();
    app.add_flag("--keep-order", m_keep_order,
                 "Show the INPUTs in the order in which they are\n"
                 "given, and only pictures in folders as people count")
        ->disable_flag_override();
    app.add_flag("--no-orient", m_as_stored,
                 "Draw pictures as they are stored, whatever way up\n"
                 "they declare")
        ->disable_flag_override();
}

ShowSettings ShowOptions::settings() const {
    ShowSettings settings;
    settings.size = parsed(m_size, "--size", parseFrameSize);
    settings.rate = parsed(m_rate, "--fps", parseFrameRate);
    settings.background = parsed(m_background, "--background", parseOpaqueColor);
    settings.fit = parsed(m_fit, "--fit", parseFit);
    settings.hold = parsed(m_hold, "--hold", parseDuration);
    settings.duration = parsed(m_duration, "--duration", parseDuration);
    settings.easing = parsed(m_easing, "--ease", parseEasing);
    settings.seed = parsed(m_seed, "--seed", parseSeed);
    settings.loop = raised(m_loop);
    settings.asStored = raised(m_as_stored);
    if (!m_transition.empty()) {
        static_cast<void>(
            parseTransitionChoice(m_transition, "--transition", 0)); // only to see that it can be
        settings.transition = m_transition;
    }
    return settings;
}

/// The pictures of inputs that are no show file.
std::vector<ShowEntry> ShowOptions::pictures(const std::vector<std::string>& inputs,
                                             const std::vector<std::string>& outputs) const {
    std::vector<std::string> sorted = inputs;
    if (!m_keep_order) std::stable_sort(sorted.begin(), sorted.end(), comesBefore);
    std::vector<ShowEntry> entries;
    for (const std::string& input : sorted) {
        if (isShowFile(input))
            throw Failure(shownName(input), "a show file stands alone; leave the other inputs out");
        std::vector<std::string> names = {input};
        if (isFolder(input)) names = picturesInFolder(input, outputs.empty() ? "" : outputs.front());
        for (std::string& name : names) {
            if (isOneOf(name, outputs)) continue;
            entries.emplace_back();
            entries.back().name = std::move(name);
        }
    }
    if (entries.empty()) throw Failure(shownName(inputs.front()), "there is no picture but the film itself");
    return entries;
}

Show ShowOptions::show(const std::vector<std::string>& inputs,
                       const std::vector<std::string>& outputs) const {
    const ShowSettings given = settings();
    if (inputs.size() == 1 && isShowFile(inputs.front())) {
        const ShowFile file = readShowFile(inputs.front());
        return makeShow(given.completedBy(file.settings), file.pictures);
    }
    return makeShow(given, pictures(inputs, outputs));
}

} // namespace Imaging::Tool
