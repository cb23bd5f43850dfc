#pragma once

#include "Tools/Command/Parser.h"

#include <string>
#include <vector>

namespace TestSupport {

/// Reads arguments by a table as the command does and fills its targets. Gives the operands; throws a
/// UsageError.
inline std::vector<std::string> readOptions(Imaging::Tool::OptionTable table,
                                            std::vector<std::string> arguments) {
    Imaging::Tool::Parser parser({.name = "program"}, "program 1", "");
    parser.add({.name = "subcommand"}, std::move(table));
    arguments.insert(arguments.begin(), "subcommand");
    std::vector<std::string> operands = parser.parse(arguments).operands;
    parser.fill();
    return operands;
}

} // namespace TestSupport
