// Cubes, so that a transition sets off and arrives softly; the other ways are the same curve turned about.

#include "Show/Easing.h"

#include "Platform/Foundation/Exception.h"
#include "Show/KnownWords.h"

#include <utility>
#include <vector>

namespace Imaging {

namespace {

const std::vector<std::pair<std::string, Easing>>& easingWords() {
    static const std::vector<std::pair<std::string, Easing>> words = {
        {"linear", Easing::Linear}, {"in", Easing::In}, {"out", Easing::Out}, {"in-out", Easing::InOut}};
    return words;
}

double cubed(double number) { return number * number * number; }

} // namespace

double eased(Easing easing, double time) {
    switch (easing) {
    case Easing::In:
        return cubed(time);
    case Easing::Out:
        return 1 - cubed(1 - time);
    case Easing::InOut:
        return time < 0.5 ? 4 * cubed(time) : 1 - 4 * cubed(1 - time);
    default:
        return time;
    }
}

Easing easingNamed(const std::string& text) {
    std::vector<std::string> known;
    for (const auto& [word, meaning] : easingWords()) {
        if (word == text) return meaning;
        known.push_back(word);
    }
    throw Platform::NSException(Platform::NSInvalidArgumentException, unknownWord("easing", text, known));
}

std::string textOf(Easing easing) {
    for (const auto& [word, meaning] : easingWords()) {
        if (meaning == easing) return word;
    }
    return {};
}

} // namespace Imaging
