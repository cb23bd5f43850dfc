#include "Tools/Film/ShowOptions.h"

#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Files/PictureFiles.h"
#include "Tools/Film/ShowFile.h"

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

OptionTable ShowOptions::options() {
    return {{"--size", "WxH", "Pixels of a frame (1920x1080)", into(m_size)},
            {"--fps", "N",
             "Frames in a second, also as a fraction; 23.976,\n"
             "29.97 and 59.94 mean the exact rates of NTSC (25)",
             into(m_rate)},
            {"--hold", "SECONDS", "How long each picture stands still (3)", into(m_hold)},
            {"--transition", "NAME",
             "From each picture to the next: one transition or a\n"
             "list that is gone through again and again, such as\n"
             "push:direction=up,zoom; all in turn; or random.\n"
             "'imaging transitions' lists them (dissolve)",
             into(m_transition)},
            {"--duration", "SECONDS", "How long each transition takes; 0 is a cut (1)", into(m_duration)},
            {"--ease", "EASING",
             "How a transition follows time: linear, in (from\n"
             "rest), out (to rest) or in-out (in-out)",
             into(m_easing)},
            {"--background", "COLOR",
             "The colour behind pictures: #rgb, #rrggbb or a name\n"
             "such as white, black, gray or navy (black)",
             into(m_background)},
            {"--fit", "FIT",
             "How a picture of another shape fits a frame: contain\n"
             "(all of it), cover (it fills the frame and is cut),\n"
             "or stretch (contain)",
             into(m_fit)},
            {"--seed", "N",
             "Another number makes other random choices, the same\n"
             "number always the same (1)",
             into(m_seed)},
            {"--loop", "",
             "End with the transition to the first picture, so\n"
             "that the film can be repeated without a break",
             raise(m_loop)},
            {"--keep-order", "",
             "Show the INPUTs in the order in which they are\n"
             "given, and only pictures in folders as people count",
             raise(m_keep_order)},
            {"--no-orient", "",
             "Draw pictures as they are stored, whatever way up\n"
             "they declare",
             raise(m_as_stored)}};
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
        static_cast<void>(TransitionChoice(m_transition, "--transition", 0)); // only to see that it can be
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
