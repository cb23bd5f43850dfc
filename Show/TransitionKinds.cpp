// The table of transitions: rows that say in words what the classes of the library take as numbers.

#include "Show/TransitionKinds.h"

#include "Imaging/ApertureTransitions.h"
#include "Imaging/DirectionalTransitions.h"
#include "Imaging/Transitions.h"
#include "Platform/Foundation/Exception.h"
#include "Show/KnownWords.h"

#include <algorithm>
#include <cmath>

namespace Imaging {

using Platform::NSException;
using Platform::NSInvalidArgumentException;
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
    return {.name = "direction", .help = help, .type = Type::Word, .byDefault = byDefault, .words = words};
}

TransitionParameter inOut(const std::string& help) {
    return {.name = "inout", .help = help, .type = Type::Word, .byDefault = "in", .words = {"in", "out"}};
}

TransitionParameter color(const std::string& help) {
    return {.name = "color", .help = help, .type = Type::Color, .byDefault = "black"};
}

TransitionParameter balance() {
    return {.name = "balance",
            .help = "When it is all colour: -1 at the start, 0 in the middle, 1 at the end",
            .type = Type::Number,
            .byDefault = "0",
            .low = -1,
            .high = 1};
}

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
    const bool isAcross = direction <= IMGTransitionDirectionRight;
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
    return IMGDissolveTransitionOp::transitionWithFromImage(from, to, size, weight);
}

Node slide(const Node& from, const Node& to, NSSize size, const Values& values, float weight) {
    const std::int32_t way = values[0].word;
    return IMGSlideTransitionOp::transitionWithFromImage(from, to, size, way, values[1].word,
                                                         onWholePixels(size, way, 1, weight));
}

Node slideChanger(const Node& from, const Node& to, NSSize size, const Values& values, float weight) {
    const std::int32_t way = values[0].word;
    return IMGSlideChangerTransitionOp::transitionWithFromImage(from, to, size, way, values[1].color,
                                                                onWholePixels(size, way, 2, weight));
}

Node colorFade(const Node& from, const Node& to, NSSize size, const Values& values, float weight) {
    return IMGColorFadeTransitionOp::transitionWithFromImage(from, to, size, values[0].color,
                                                             values[1].number, weight);
}

const std::string movement = "The way that the pictures move";

} // namespace

const std::vector<TransitionKind>& transitionKinds() {
    static const std::vector<TransitionKind> kinds = {
        {.name = "dissolve",
         .summary = "The new picture appears as the old one disappears",
         .build = dissolve},
        {.name = "spin",
         .summary = "One picture turns about its middle as it grows or shrinks",
         .parameters = {inOut("in: the new picture arrives; out: the old one leaves")},
         .build = builtWithWord<IMGSpinTransitionOp>()},
        {.name = "cube",
         .summary = "The pictures are on two sides of a cube that turns",
         .parameters = {direction(movement, "left", asCubesTurn)},
         .needsOpenGL = true,
         .build = builtWithWord<IMGCubeTransitionOp>()},
        {.name = "push",
         .summary = "The new picture pushes the old one out of the frame",
         .parameters = {direction(movement, "left", asNamed)},
         .build = builtWithDirection<IMGPushTransitionOp>()},
        {.name = "slide",
         .summary = "One picture slides over the other, which stays",
         .parameters = {direction("The way that the picture moves", "left", asNamed),
                        inOut("in: the new picture comes; out: the old one goes")},
         .build = slide},
        {.name = "wipe",
         .summary = "A boundary sweeps across and uncovers the new picture",
         .parameters = {direction("The way that the boundary moves", "right", awayFromSides)},
         .build = builtWithDirection<IMGWipeTransitionOp>()},
        {.name = "slide-changer",
         .summary = "Old picture, a plain panel and new picture travel past",
         .parameters = {direction(movement, "left", awayFromSides), color("Of the panel")},
         .build = slideChanger},
        {.name = "zoom",
         .summary = "One picture grows out of or shrinks into its middle",
         .parameters = {inOut("in: the new picture grows; out: the old one shrinks")},
         .build = builtWithWord<IMGZoomTransitionOp>()},
        {.name = "iris",
         .summary = "A rectangle opens or closes on one picture",
         .parameters = {inOut("in: it opens on the new picture; out: it closes on the old one")},
         .build = builtWithWord<IMGIrisTransitionOp>()},
        {.name = "color-fade",
         .summary = "The old picture fades into a colour, which fades into the new one",
         .parameters = {color("What it fades through"), balance()},
         .build = colorFade},
    };
    return kinds;
}

std::vector<TransitionParameter> transitionParameters() {
    std::vector<TransitionParameter> all;
    for (const TransitionKind& kind : transitionKinds()) {
        for (const TransitionParameter& parameter : kind.parameters) {
            const bool isThere = std::any_of(all.begin(), all.end(), [&](const TransitionParameter& known) {
                return known.name == parameter.name;
            });
            if (!isThere) all.push_back(parameter);
        }
    }
    return all;
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

const TransitionKind& transitionKindNamed(const std::string& name) {
    for (const TransitionKind& kind : transitionKinds()) {
        if (kind.name != name) continue;
        const std::string reason = whyNotDrawn(kind);
        if (!reason.empty())
            throw NSException(NSInvalidArgumentException, "the transition '" + name + "' " + reason);
        return kind;
    }
    throw NSException(NSInvalidArgumentException, unknownWord("transition", name, drawnKindNames()));
}

} // namespace Imaging
