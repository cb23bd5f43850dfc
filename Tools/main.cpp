// The command `imaging`: tells about pictures, draws them, archives them and lays them out.

#include "Tools/Command/CommandLine.h"
#include "Tools/Command/Process.h"
#include "Tools/Commands/AllCommands.h"

#include <string>
#include <vector>

int main(int argc, char** argv) {
    Imaging::Tool::prepareProcess();
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    return Imaging::Tool::runCommandLine(arguments, Imaging::Tool::allSubcommands);
}
