// Bindings made of others, and tables made of others.

#include "Tools/Command/Options.h"

#include "Tools/Command/Messages.h"

#include <utility>

namespace Imaging::Tool {

Binding orElse(Binding binding, std::function<void()> otherwise) {
    binding.emptyIsNone = true;
    binding.otherwise = std::move(otherwise);
    return binding;
}

Binding required(Binding binding, const std::string& complaint) {
    return orElse(std::move(binding), [complaint] { throw UsageError(complaint); });
}

OptionTable joined(std::initializer_list<OptionTable> tables) {
    OptionTable all;
    for (const OptionTable& table : tables) all.insert(all.end(), table.begin(), table.end());
    return all;
}

} // namespace Imaging::Tool
