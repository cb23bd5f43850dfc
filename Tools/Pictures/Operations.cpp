#include "Tools/Pictures/Operations.h"

#include "Tools/Command/Messages.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace Imaging::Tool {

namespace {

constexpr const char* group = "Operations, carried out in the order in which they are given";

} // namespace

std::vector<const Operation*> allOperations() {
    std::vector<const Operation*> all;
    for (const std::vector<Operation>* table : {&placingOperations(), &pixelOperations()}) {
        for (const Operation& operation : *table) all.push_back(&operation);
    }
    return all;
}

void OperationOptions::declare(CLI::App& app) {
    for (const Operation* operation : allOperations()) declare(app, *operation);
}

void OperationOptions::declare(CLI::App& app, const Operation& operation) {
    // Called for each time that an option is given, at once, so that the order is kept.
    CLI::Option* option = nullptr;
    if (operation.typeName.empty()) {
        option = app.add_flag_callback(
            operation.name,
            [this, &operation] {
                m_given.push_back({&operation, {}, {}});
            },
            operation.help);
        option->disable_flag_override();
    } else {
        const auto note = [this, &operation](const std::string& value) {
            m_given.push_back({&operation, value, {}});
        };
        option = app.add_option_function<std::string>(operation.name, note, operation.help);
        option->type_name(operation.typeName);
    }
    option->trigger_on_parse()->group(group);
    if (operation.modifier.empty()) return;
    const auto note = [this, &operation](const std::string& value) { setModifier(operation, value); };
    app.add_option_function<std::string>(operation.modifier, note, operation.modifierHelp)
        ->type_name(operation.modifierTypeName)
        ->trigger_on_parse()
        ->group(group);
}

void OperationOptions::setModifier(const Operation& operation, const std::string& value) {
    const auto last = std::find_if(m_given.rbegin(), m_given.rend(),
                                   [&](const Given& given) { return given.operation == &operation; });
    if (last != m_given.rend()) {
        last->modifier = value;
    } else {
        m_lost_modifiers.push_back(operation.modifier + ": there is no " + operation.name +
                                   " before it; give it after the one that it belongs to");
    }
}

std::vector<Step> OperationOptions::steps() const {
    if (!m_lost_modifiers.empty()) throw UsageError(m_lost_modifiers.front());
    std::vector<Step> steps;
    for (const Given& given : m_given) steps.push_back(given.operation->parse(given.value, given.modifier));
    return steps;
}

} // namespace Imaging::Tool
