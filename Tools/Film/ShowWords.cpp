// Nothing is decided here: Show says what is wrong, and these functions say where it was written.

#include "Tools/Film/ShowWords.h"

#include "Show/FramedPicture.h"
#include "Tools/Command/Values.h"
#include "Tools/Files/Input.h"
#include "Tools/Pictures/Canvas.h"

namespace Imaging::Tool {

Easing parseEasing(const std::string& text, const std::string& option) {
    return understood(option, [&] { return easingNamed(text); });
}

Transition makeTransition(const std::string& name, const TransitionSettings& settings,
                          const std::string& option) {
    return understood(option, [&] { return Imaging::makeTransition(name, settings); });
}

std::pair<std::string, TransitionSettings> splitTransition(std::string_view text, const std::string& option) {
    return understood(option, [&] { return Imaging::splitTransition(text); });
}

Transition parseTransition(std::string_view text, const std::string& option) {
    return understood(option, [&] { return transitionWithText(text); });
}

TransitionChoice parseTransitionChoice(std::string_view text, const std::string& option, std::uint64_t seed) {
    return understood(option, [&] { return TransitionChoice(text, seed); });
}

Schedule scheduleOf(const Show& show) {
    try {
        return Schedule(show);
    } catch (const Platform::NSException& exception) {
        if (exception.name() != Platform::NSRangeException) {
            throw UsageError("the film would have no frame; give its pictures a longer --hold or --duration");
        }
        throw UsageError("the film would have more than " + std::to_string(Schedule::maximumFrames) +
                         " frames; take fewer pictures, shorter times or a smaller --fps");
    }
}

std::shared_ptr<IMGImage> framePicture(const ShowPicture& picture, const Show& show) {
    ShowPicture input = picture;
    if (input.node == nullptr) input.node = [&picture] { return loadNode(picture.name); };
    return naming(picture.name, [&] {
        return framedPicture(input, show,
                             {.picture = makeItSmaller, .frame = "make the film's frames smaller"});
    });
}

} // namespace Imaging::Tool
