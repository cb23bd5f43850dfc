#pragma once

#include <string>
#include <vector>

namespace Imaging::Tool {

/// Parses the arguments (without the program's name) and runs the subcommand that they name. Whatever goes
/// wrong is reported. The result is the process's exit status.
int runCommandLine(const std::vector<std::string>& arguments);

} // namespace Imaging::Tool
