// The operations of a command line: notes them in the order in which they are given, with what modifies them,
// and makes their steps.

#include "Tools/Pictures/Operations.h"

#include "Tools/Command/Messages.h"

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

OptionTable OperationOptions::options() {
    OptionTable table;
    for (const Operation* operation : allOperations()) {
        const auto note = [this, operation](const std::string& value, const std::string&) {
            m_given.push_back({operation, value, {}});
        };
        table.push_back({operation->name,
                         operation->typeName,
                         operation->help,
                         {.take = note, .isFlag = operation->typeName.empty(), .everyTime = true},
                         group});
        if (operation->modifier.empty()) continue;
        const auto modify = [this, operation](const std::string& value, const std::string&) {
            setModifier(*operation, value);
        };
        table.push_back({operation->modifier,
                         operation->modifierTypeName,
                         operation->modifierHelp,
                         {.take = modify, .everyTime = true},
                         group});
    }
    return table;
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
