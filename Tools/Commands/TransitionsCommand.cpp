// Lists the kinds of transitions from the table that films are made by, for people or as JSON.

#include "Show/TransitionKinds.h"

#include "Tools/Command/StandardOutput.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Json.h"
#include "Tools/Files/Output.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Imaging::Tool {

namespace {

const SubcommandText transitionsText = {
    "transitions", "List the transitions from one picture to the next", "[OPTION...]",
    R"(Each transition stands with its parameters, what they can be, and in brackets
what they are when nothing is said. They are written behind its name, as in
slide:direction=up:inout=out.)",
    R"(  imaging transitions
  imaging transitions --json)"};

std::string numberText(double number) { return std::to_string(static_cast<int>(number)); }

/// What a parameter can be, in words.
std::string rangeText(const TransitionParameter& parameter) {
    std::string words;
    switch (parameter.type) {
    case TransitionParameter::Type::Color:
        return "COLOR";
    case TransitionParameter::Type::Number:
    case TransitionParameter::Type::WholeNumber:
        return numberText(parameter.low) + "..." + numberText(parameter.high);
    default:
        for (const std::string& word : parameter.words) words += (words.empty() ? "" : "|") + word;
        return words;
    }
}

std::string listText() {
    std::size_t width = 0;
    for (const TransitionKind& kind : transitionKinds()) width = std::max(width, kind.name.size() + 2);
    const std::string margin(width, ' ');
    std::string text;
    for (const TransitionKind& kind : transitionKinds()) {
        text += kind.name + margin.substr(kind.name.size()) + kind.summary + "\n";
        if (!whyNotDrawn(kind).empty()) text += margin + "It " + whyNotDrawn(kind) + "\n";
        for (const TransitionParameter& parameter : kind.parameters) {
            text += margin + "  " + parameter.name + "=" + rangeText(parameter) + " (" + parameter.byDefault +
                    ")\n" + margin + "    " + parameter.help + "\n";
        }
    }
    return text;
}

Json jsonOf(const TransitionParameter& parameter) {
    Json json =
        Json::object({{"name", parameter.name}, {"help", parameter.help}, {"default", parameter.byDefault}});
    switch (parameter.type) {
    case TransitionParameter::Type::Word:
        json.add("type", "word");
        json.add("words", Json::list({parameter.words.begin(), parameter.words.end()}));
        break;
    case TransitionParameter::Type::Color:
        json.add("type", "color");
        break;
    case TransitionParameter::Type::Number:
        json.add("type", "number");
        json.add("low", parameter.low);
        json.add("high", parameter.high);
        break;
    case TransitionParameter::Type::WholeNumber:
        json.add("type", "whole number");
        json.add("low", static_cast<int>(parameter.low));
        json.add("high", static_cast<int>(parameter.high));
        break;
    }
    return json;
}

std::string listJson() {
    std::vector<Json> list;
    for (const TransitionKind& kind : transitionKinds()) {
        std::vector<Json> parameters;
        for (const TransitionParameter& parameter : kind.parameters) parameters.push_back(jsonOf(parameter));
        list.push_back(Json::object({{"name", kind.name},
                                     {"summary", kind.summary},
                                     {"available", whyNotDrawn(kind).empty()},
                                     {"parameters", Json::list(std::move(parameters))}}));
    }
    return Json::list(std::move(list)).indentedText() + "\n";
}

class TransitionsCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return transitionsText; }

protected:
    OptionTable options() override { return {{"--json", "", "Write a JSON array", raise(m_json)}}; }

    void checkOperands() const override { refuseOperands(); }

    ExitStatus run() override {
        writeStandardOutput(m_json ? listJson() : listText());
        return Done;
    }

private:
    bool m_json = false;
};

} // namespace

std::unique_ptr<Subcommand> makeTransitionsCommand() { return std::make_unique<TransitionsCommand>(); }

} // namespace Imaging::Tool
