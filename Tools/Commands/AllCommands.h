#pragma once

#include "Tools/Command/Subcommand.h"

#include <array>
#include <memory>

/// All subcommands. A new one is a source in this folder and its two places here.
namespace Imaging::Tool {

/// Each is defined in the source that it is named after.
MakeSubcommand makeInfoCommand, makeDrawCommand, makeApplyCommand, makeGraphCommand, makeArchiveCommand,
    makeSheetCommand, makeShowCommand, makeTransitionCommand, makeTransitionsCommand, makeDoctorCommand;

/// In the order of the help.
inline constexpr std::array allSubcommands = {
    makeInfoCommand,  makeDrawCommand, makeApplyCommand,      makeGraphCommand,       makeArchiveCommand,
    makeSheetCommand, makeShowCommand, makeTransitionCommand, makeTransitionsCommand, makeDoctorCommand};

} // namespace Imaging::Tool
