// What people write about a transition, taken apart and looked up in the table of kinds.

#include "Show/Transition.h"

#include "Platform/Foundation/Exception.h"
#include "Show/ColorNames.h"
#include "Show/KnownWords.h"

#include <algorithm>
#include <charconv>

namespace Imaging {

using Platform::NSException;
using Platform::NSInvalidArgumentException;
using Platform::NSSize;

namespace {

using Type = TransitionParameter::Type;

[[noreturn]] void refuse(const std::string& reason) { throw NSException(NSInvalidArgumentException, reason); }

TransitionValue wordValue(const TransitionParameter& parameter, const std::string& text) {
    const auto found = std::find(parameter.words.begin(), parameter.words.end(), text);
    if (found == parameter.words.end()) refuse(unknownWord(parameter.name, text, parameter.words));
    TransitionValue value;
    value.word = static_cast<std::int32_t>(found - parameter.words.begin()) + 1;
    return value;
}

/// Any type of number that fills the whole text and lies in the parameter's range.
template<class Number>
Number numberIn(const TransitionParameter& parameter, const std::string& text, const std::string& what) {
    Number number{};
    const char* const textEnd = text.data() + text.size();
    const auto [end, failure] = std::from_chars(text.data(), textEnd, number);
    const bool isNumber = failure == std::errc() && end == textEnd;
    const auto value = static_cast<double>(number);
    if (isNumber && value >= parameter.low && value <= parameter.high) return number;
    const auto bound = [](double limit) { return std::to_string(static_cast<int>(limit)); };
    refuse("'" + text + "' is not a " + what + " from " + bound(parameter.low) + " to " +
           bound(parameter.high));
}

/// Where a parameter stands among those of its kind.
std::size_t parameterNamed(const TransitionKind& kind, const std::string& name) {
    if (kind.parameters.empty())
        refuse("the transition '" + kind.name + "' has no parameters, so no '" + name + "'");
    std::vector<std::string> known;
    for (const TransitionParameter& parameter : kind.parameters) {
        if (parameter.name == name) return known.size();
        known.push_back(parameter.name);
    }
    refuse("the transition '" + kind.name + "' has no parameter named '" + name + "'; known " +
           (known.size() == 1 ? "is " : "are ") + enumeration(known) + suggestion(name, known));
}

} // namespace

TransitionValue transitionValue(const TransitionParameter& parameter, const std::string& text) {
    TransitionValue value;
    switch (parameter.type) {
    case Type::Word:
        value = wordValue(parameter, text);
        break;
    case Type::Color:
        value.color = opaqueColorNamed(text);
        break;
    case Type::Number:
        value.number = numberIn<float>(parameter, text, "number");
        break;
    case Type::WholeNumber:
        value.whole = numberIn<std::int32_t>(parameter, text, "whole number");
        break;
    }
    value.text = text;
    return value;
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

Transition makeTransition(const std::string& name, const TransitionSettings& settings) {
    const TransitionKind& kind = transitionKindNamed(name);
    std::vector<std::string> texts;
    for (const TransitionParameter& parameter : kind.parameters) texts.push_back(parameter.byDefault);
    std::vector<bool> given(texts.size());
    for (const auto& [parameter, text] : settings) {
        const std::size_t index = parameterNamed(kind, parameter);
        if (given[index]) refuse("the parameter '" + parameter + "' of '" + name + "' is given twice");
        given[index] = true;
        texts[index] = text;
    }
    Transition transition{&kind, {}};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const TransitionParameter& parameter = kind.parameters[i];
        try {
            transition.values.push_back(transitionValue(parameter, texts[i]));
        } catch (const NSException& exception) {
            refuse(name + ":" + parameter.name + ": " + exception.reason());
        }
    }
    return transition;
}

std::pair<std::string, TransitionSettings> splitTransition(std::string_view text) {
    std::size_t colon = text.find(':');
    std::pair<std::string, TransitionSettings> result{std::string(text.substr(0, colon)), {}};
    while (colon != std::string_view::npos) {
        text.remove_prefix(colon + 1);
        colon = text.find(':');
        const std::string_view setting = text.substr(0, colon);
        const std::size_t equals = setting.find('=');
        if (equals == std::string_view::npos || equals == 0) {
            refuse("'" + std::string(setting) + "' after '" + result.first +
                   "' is no parameter; give NAME:PARAMETER=VALUE, such as push:direction=up");
        }
        result.second.emplace_back(setting.substr(0, equals), setting.substr(equals + 1));
    }
    return result;
}

Transition transitionWithText(std::string_view text) {
    const auto [name, settings] = splitTransition(text);
    return makeTransition(name, settings);
}

std::vector<Transition> variantsOf(const TransitionKind& kind) {
    std::vector<TransitionSettings> combinations = {{}};
    // The first parameter changes fastest.
    for (auto parameter = kind.parameters.rbegin(); parameter != kind.parameters.rend(); ++parameter) {
        if (parameter->type != TransitionParameter::Type::Word) continue;
        std::vector<std::string> words = parameter->words;
        std::rotate(words.begin(), std::find(words.begin(), words.end(), parameter->byDefault), words.end());
        std::vector<TransitionSettings> longer;
        for (const TransitionSettings& settings : combinations) {
            for (const std::string& word : words) {
                longer.push_back(settings);
                longer.back().emplace_back(parameter->name, word);
            }
        }
        combinations = std::move(longer);
    }
    std::vector<Transition> variants;
    for (const TransitionSettings& settings : combinations)
        variants.push_back(makeTransition(kind.name, settings));
    return variants;
}

} // namespace Imaging
