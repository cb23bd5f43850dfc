// The command `imaging`: tells about pictures, draws them, archives them and lays them out.

#include "Tools/Command/CommandLine.h"
#include "Tools/Command/Process.h"

#include <string>
#include <vector>

int main(int argc, char** argv) {
    Imaging::Tool::prepareProcess();
    return Imaging::Tool::runCommandLine(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
