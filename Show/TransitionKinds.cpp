#include "Show/TransitionKinds.h"

#include "Imaging/ApertureTransitions.h"
#include "Imaging/DirectionalTransitions.h"
#include "Imaging/Transitions.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Values.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Imaging::Tool {

using Imaging::IMGImage;
using Platform::NSSize;

namespace {

using Type = TransitionParameter::Type;
using Node = std::shared_ptr<IMGImage>;
using Values = std::vector<TransitionValue>;

/// The words of a direction for the numbers 1 to 4. In the classes that move pictures these name the
/// movement; those that uncover a picture, and the cube, count its sides, of which things move away.
const std::vector<std::string> asNamed = {"left", "right", "up", "down"};
const std::vector<std::string> awayFromSides = {"right", "left", "down", "up"};
const std::vector<std::string> asCubesTurn = {"right", "left", "up", "down"};

TransitionParameter direction(const std::string& help, const std::string& byDefault,
                              const std::vector<std::string>& words) {
    return {"direction", help, Type::Word, byDefault, words};
}

TransitionParameter inOut(const std::string& help) {
    return {"inout", help, Type::Word, "in", {"in", "out"}};
}

TransitionParameter color(const std::string& help) { return {"color", help, Type::Color, "black"}; }

/// A kind whose class takes nothing but in and out, or a direction that stands for no way through the frame.
template<class Class>
auto builtWithWord() {
    return [](const Node& from, const Node& to, NSSize size, const Values& values, float weight) -> Node {
        return Class::transitionWithFromImage(from, to, size, values[0].word, weight);
    };
}

/// The nearest weight at which what moves `frames` frames in a direction stands on whole pixels. Between them
/// the edges at which two pictures meet would both be half transparent, which shows as a dark line, and
/// pictures would lose their sharpness on the way.
float onWholePixels(NSSize size, std::int32_t direction, float frames, float weight) {
    const bool isAcross = direction <= Imaging::IMGTransitionDirectionRight;
    const float way = frames * (isAcross ? size.width : size.height);
    return std::round(weight * way) / way;
}

/// A kind whose class takes nothing but a direction, in which something crosses the frame.
template<class Class>
auto builtWithDirection() {
    return [](const Node& from, const Node& to, NSSize size, const Values& values, float weight) -> Node {
        const std::int32_t way = values[0].word;
        return Class::transitionWithFromImage(from, to, size, way, onWholePixels(size, way, 1, weight));
    };
}

Node dissolve(const Node& from, const Node& to, NSSize size, const Values&, float weight) {
    return Imaging::IMGDissolveTransitionOp::transitionWithFromImage(from, to, size, weight);
}

Node slide(const Node& from, const Node& to, NSSize size, const Values& values, float weight) {
    const std::int32_t way = values[0].word;
    return Imaging::IMGSlideTransitionOp::transitionWithFromImage(from, to, size, way, values[1].word,
                                                                  onWholePixels(size, way, 1, weight));
}

Node slideChanger(const Node& from, const Node& to, NSSize size, const Values& values, float weight) {
    const std::int32_t way = values[0].word;
    return Imaging::IMGSlideChangerTransitionOp::transitionWithFromImage(from, to, size, way, values[1].color,
                                                                         onWholePixels(size, way, 2, weight));
}

Node colorFade(const Node& from, const Node& to, NSSize size, const Values& values, float weight) {
    return Imaging::IMGColorFadeTransitionOp::transitionWithFromImage(from, to, size, values[0].color,
                                                                      values[1].number, weight);
}

const std::string movement = "The way that the pictures move";

TransitionKind spinKind() {
    return {"spin",
            "One picture turns about its middle as it grows or shrinks",
            {inOut("in: the new picture arrives; out: the old one leaves")},
            false,
            builtWithWord<Imaging::IMGSpinTransitionOp>()};
}

TransitionKind cubeKind() {
    return {"cube",
            "The pictures are on two sides of a cube that turns",
            {direction(movement, "left", asCubesTurn)},
            true,
            builtWithWord<Imaging::IMGCubeTransitionOp>()};
}

TransitionKind pushKind() {
    return {"push",
            "The new picture pushes the old one out of the frame",
            {direction(movement, "left", asNamed)},
            false,
            builtWithDirection<Imaging::IMGPushTransitionOp>()};
}

TransitionKind slideKind() {
    return {"slide",
            "One picture slides over the other, which stays",
            {direction("The way that the picture moves", "left", asNamed),
             inOut("in: the new picture comes; out: the old one goes")},
            false,
            slide};
}

TransitionKind wipeKind() {
    return {"wipe",
            "A boundary sweeps across and uncovers the new picture",
            {direction("The way that the boundary moves", "right", awayFromSides)},
            false,
            builtWithDirection<Imaging::IMGWipeTransitionOp>()};
}

TransitionKind slideChangerKind() {
    return {"slide-changer",
            "Old picture, a plain panel and new picture travel past",
            {direction(movement, "left", awayFromSides), color("Of the panel")},
            false,
            slideChanger};
}

TransitionKind zoomKind() {
    return {"zoom",
            "One picture grows out of or shrinks into its middle",
            {inOut("in: the new picture grows; out: the old one shrinks")},
            false,
            builtWithWord<Imaging::IMGZoomTransitionOp>()};
}

TransitionKind irisKind() {
    return {"iris",
            "A rectangle opens or closes on one picture",
            {inOut("in: it opens on the new picture; out: it closes on the old one")},
            false,
            builtWithWord<Imaging::IMGIrisTransitionOp>()};
}

TransitionKind colorFadeKind() {
    return {"color-fade",
            "The old picture fades into a colour, which fades into the new one",
            {color("What it fades through"),
             {"balance",
              "When it is all colour: -1 at the start, 0 in the middle, 1 at the end",
              Type::Number,
              "0",
              {},
              -1,
              1}},
            false,
            colorFade};
}

TransitionValue wordValue(const TransitionParameter& parameter, const std::string& text,
                          const std::string& place) {
    std::vector<std::pair<std::string, std::int32_t>> numbers;
    for (const std::string& word : parameter.words)
        numbers.emplace_back(word, static_cast<std::int32_t>(numbers.size()) + 1);
    TransitionValue value;
    value.word = parseWord(text, place, parameter.name, numbers);
    return value;
}

TransitionValue numberValue(const TransitionParameter& parameter, const std::string& text,
                            const std::string& place) {
    TransitionValue value;
    const char* const textEnd = text.data() + text.size();
    const auto [end, failure] = std::from_chars(text.data(), textEnd, value.number);
    const bool isNumber = failure == std::errc() && end == textEnd;
    if (isNumber && value.number >= parameter.low && value.number <= parameter.high) return value;
    const auto bound = [](double number) { return std::to_string(static_cast<int>(number)); };
    throw UsageError(place + ": '" + text + "' is not a number from " + bound(parameter.low) + " to " +
                     bound(parameter.high));
}

/// `place` is where it was written, for messages.
TransitionValue parseValue(const TransitionParameter& parameter, const std::string& text,
                           const std::string& place) {
    TransitionValue value;
    switch (parameter.type) {
    case Type::Word:
        value = wordValue(parameter, text, place);
        break;
    case Type::Color:
        value.color = parseColor(text, place);
        break;
    case Type::Number:
        value = numberValue(parameter, text, place);
        break;
    }
    value.text = text;
    return value;
}

const TransitionKind& kindNamed(const std::string& name, const std::string& option) {
    for (const TransitionKind& kind : transitionKinds()) {
        if (kind.name != name) continue;
        const std::string reason = whyNotDrawn(kind);
        if (!reason.empty()) throw UsageError(option + ": the transition '" + name + "' " + reason);
        return kind;
    }
    const std::vector<std::string> known = drawnKindNames();
    throw UsageError(option + ": there is no transition named '" + name + "'; known are " +
                     enumeration(known) + suggestion(name, known));
}

/// Where a parameter stands among those of its kind.
std::size_t parameterNamed(const TransitionKind& kind, const std::string& name, const std::string& option) {
    if (kind.parameters.empty())
        throw UsageError(option + ": the transition '" + kind.name + "' has no parameters, so no '" + name +
                         "'");
    std::vector<std::string> known;
    for (const TransitionParameter& parameter : kind.parameters) {
        if (parameter.name == name) return known.size();
        known.push_back(parameter.name);
    }
    throw UsageError(option + ": the transition '" + kind.name + "' has no parameter named '" + name +
                     "'; known " + (known.size() == 1 ? "is " : "are ") + enumeration(known) +
                     suggestion(name, known));
}

} // namespace

const std::vector<TransitionKind>& transitionKinds() {
    static const std::vector<TransitionKind> kinds = {
        {"dissolve", "The new picture appears as the old one disappears", {}, false, dissolve},
        spinKind(),
        cubeKind(),
        pushKind(),
        slideKind(),
        wipeKind(),
        slideChangerKind(),
        zoomKind(),
        irisKind(),
        colorFadeKind(),
    };
    return kinds;
}

std::string whyNotDrawn(const TransitionKind& kind) {
    return kind.needsOpenGL ? "needs OpenGL, which this version does not draw with yet" : "";
}

std::vector<std::string> drawnKindNames() {
    std::vector<std::string> names;
    for (const TransitionKind& kind : transitionKinds()) {
        if (whyNotDrawn(kind).empty()) names.push_back(kind.name);
    }
    return names;
}

std::shared_ptr<IMGImage> Transition::node(const std::shared_ptr<IMGImage>& from,
                                           const std::shared_ptr<IMGImage>& to, NSSize size,
                                           float weight) const {
    return kind->build(from, to, size, values, weight);
}

std::string Transition::text() const {
    std::string result = kind->name;
    for (std::size_t i = 0; i < values.size(); ++i)
        result += ":" + kind->parameters[i].name + "=" + values[i].text;
    return result;
}

Transition makeTransition(const std::string& name, const TransitionSettings& settings,
                          const std::string& option) {
    const TransitionKind& kind = kindNamed(name, option);
    std::vector<std::string> texts;
    for (const TransitionParameter& parameter : kind.parameters) texts.push_back(parameter.byDefault);
    std::vector<bool> given(texts.size());
    for (const auto& [parameter, text] : settings) {
        const std::size_t index = parameterNamed(kind, parameter, option);
        if (given[index])
            throw UsageError(option + ": the parameter '" + parameter + "' of '" + name + "' is given twice");
        given[index] = true;
        texts[index] = text;
    }
    Transition transition{&kind, {}};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const TransitionParameter& parameter = kind.parameters[i];
        const std::string place = option + ": " + name + ":" + parameter.name;
        transition.values.push_back(parseValue(parameter, texts[i], place));
    }
    return transition;
}

std::pair<std::string, TransitionSettings> splitTransition(std::string_view text, const std::string& option) {
    std::size_t colon = text.find(':');
    std::pair<std::string, TransitionSettings> result{std::string(text.substr(0, colon)), {}};
    while (colon != std::string_view::npos) {
        text.remove_prefix(colon + 1);
        colon = text.find(':');
        const std::string_view setting = text.substr(0, colon);
        const std::size_t equals = setting.find('=');
        if (equals == std::string_view::npos || equals == 0) {
            throw UsageError(option + ": '" + std::string(setting) + "' after '" + result.first +
                             "' is no parameter; give NAME:PARAMETER=VALUE, such as push:direction=up");
        }
        result.second.emplace_back(setting.substr(0, equals), setting.substr(equals + 1));
    }
    return result;
}

Transition parseTransition(std::string_view text, const std::string& option) {
    const auto [name, settings] = splitTransition(text, option);
    return makeTransition(name, settings, option);
}

} // namespace Imaging::Tool
