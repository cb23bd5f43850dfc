#pragma once

#include "Tools/Command/Subcommand.h"

#include <span>
#include <string>
#include <vector>

namespace Imaging::Tool {

/// Parses the arguments (without the program's name) and runs the one of the subcommands that they name. The
/// help lists these in their order. Whatever goes wrong is reported. The result is the process's exit status.
int runCommandLine(const std::vector<std::string>& arguments, std::span<MakeSubcommand* const> subcommands);

} // namespace Imaging::Tool
