// What a film shows, as options: settings that go into a ShowSettings at once, and the order of the inputs.

#include "Tools/Film/ShowOptions.h"

#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Files/PictureFiles.h"
#include "Tools/Film/ShowFile.h"

#include <algorithm>

namespace Imaging::Tool {

namespace {

bool isOneOf(const std::string& name, const std::vector<std::string>& outputs) {
    return std::any_of(outputs.begin(), outputs.end(), [&](const std::string& output) {
        return output != "-" && !isURL(name) && isSameFile(name, output);
    });
}

/// A transition, a list of them, or a word for a choice; whether it is one is found out by making it.
std::string parseChoice(const std::string& text, const std::string& option) {
    static_cast<void>(TransitionChoice(text, option, 0));
    return text;
}

} // namespace

OptionTable ShowOptions::options() {
    return {
        {"--size", "WxH", "Pixels of a frame (1920x1080)", into(m_given.size, parseFrameSize)},
        {"--fps", "N",
         "Frames in a second, also as a fraction; 23.976,\n"
         "29.97 and 59.94 mean the exact rates of NTSC (25)",
         into(m_given.rate, parseFrameRate)},
        {"--hold", "SECONDS", "How long each picture stands still (3)", into(m_given.hold, parseDuration)},
        {"--transition", "NAME",
         "From each picture to the next: one transition or a\n"
         "list that is gone through again and again, such as\n"
         "push:direction=up,zoom; all in turn; or random.\n"
         "'imaging transitions' lists them (dissolve)",
         into(m_given.transition, parseChoice)},
        {"--duration", "SECONDS", "How long each transition takes; 0 is a cut (1)",
         into(m_given.duration, parseDuration)},
        {"--ease", "EASING",
         "How a transition follows time: linear, in (from\n"
         "rest), out (to rest) or in-out (in-out)",
         into(m_given.easing, parseEasing)},
        {"--background", "COLOR",
         "The colour behind pictures: #rgb, #rrggbb or a name\n"
         "such as white, black, gray or navy (black)",
         into(m_given.background, parseOpaqueColor)},
        {"--fit", "FIT",
         "How a picture of another shape fits a frame: contain\n"
         "(all of it), cover (it fills the frame and is cut),\n"
         "or stretch (contain)",
         into(m_given.fit, parseFit)},
        {"--seed", "N",
         "Another number makes other random choices, the same\n"
         "number always the same (1)",
         into(m_given.seed, parseSeed)},
        {"--loop", "",
         "End with the transition to the first picture, so\n"
         "that the film can be repeated without a break",
         raise(m_given.loop)},
        {"--keep-order", "",
         "Show the INPUTs in the order in which they are\n"
         "given, and only pictures in folders as people count",
         raise(m_keep_order)},
        {"--no-orient", "",
         "Draw pictures as they are stored, whatever way up\n"
         "they declare",
         raise(m_given.asStored)}};
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
    if (inputs.size() == 1 && isShowFile(inputs.front())) {
        const ShowFile file = readShowFile(inputs.front());
        return makeShow(m_given.completedBy(file.settings), file.pictures);
    }
    return makeShow(m_given, pictures(inputs, outputs));
}

} // namespace Imaging::Tool
