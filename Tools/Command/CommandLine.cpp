// The command as a whole: finds the subcommand in the arguments, has it run, and turns whatever goes wrong
// into one line and an exit status.

#include "Tools/Command/CommandLine.h"

#include "Platform/Foundation/Exception.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Parser.h"
#include "Tools/Command/StandardOutput.h"

#include <new>
#include <utility>

namespace Imaging::Tool {

namespace {

constexpr const char* exitStatusHelp = R"(Exit status:
  0  done
  1  an input could not be read or the output not be written; nothing
     half-written is left
  2  wrong usage)";

constexpr const char* examples = R"(  imaging info *.jpg
  imaging draw photo.jpg -o small.png --size 800
  imaging apply photo.jpg --turn right --scale 1024 -o right.jpg
  imaging archive front.png back.png -o layers.graph
  imaging sheet Pictures -o sheet.png
  imaging show Pictures -o film.mp4
  imaging transition a.jpg b.jpg --kind slide -o slide.png
  imaging draw --help)";

const SubcommandText commandText = {
    .name = "imaging",
    .summary = "Tells about pictures, draws, changes, archives them and lays them out.",
    .usage = "SUBCOMMAND [OPTION...] INPUT...",
    .details = "",
    .examples = examples};

/// All subcommands exist from the beginning, since the help lists them and their tables refer to them.
class CommandLine {
public:
    explicit CommandLine(std::span<MakeSubcommand* const> subcommands);
    int run(const std::vector<std::string>& arguments);

private:
    ExitStatus parseAndRun(const std::vector<std::string>& arguments);
    ExitStatus runChecked(Subcommand& subcommand);
    std::string chosenName() const;

    std::vector<std::unique_ptr<Subcommand>> m_subcommands;
    Parser m_parser{commandText, "imaging " IMAGING_VERSION, exitStatusHelp};
};

CommandLine::CommandLine(std::span<MakeSubcommand* const> subcommands) {
    for (MakeSubcommand* make : subcommands) {
        m_subcommands.push_back(make());
        m_parser.add(m_subcommands.back()->text(), m_subcommands.back()->allOptions());
    }
}

std::string CommandLine::chosenName() const {
    const auto chosen = m_parser.chosen();
    return chosen.has_value() ? m_subcommands[*chosen]->text().name : std::string();
}

/// Failures that the subcommand has no words of its own for get its name as their subject.
ExitStatus CommandLine::runChecked(Subcommand& subcommand) {
    const std::string& name = subcommand.text().name;
    try {
        return subcommand.runWithLimits();
    } catch (const Failure& failure) {
        report(failure.subject(), failure.what());
    } catch (const Platform::NSException& exception) {
        report(name, exception.reason());
    } catch (const std::bad_alloc&) {
        report(name, "there is not enough memory; try smaller sizes or fewer pictures");
    }
    return BadInputOrOutput;
}

ExitStatus CommandLine::parseAndRun(const std::vector<std::string>& arguments) {
    Parser::Result result = m_parser.parse(arguments);
    if (result.shown.has_value()) {
        writeStandardOutput(*result.shown);
        return Done;
    }
    Subcommand& subcommand = *m_subcommands[result.subcommand.value()];
    subcommand.setOperands(std::move(result.operands));
    m_parser.fill(); // now all arguments are right, and only now something may be read
    return runChecked(subcommand);
}

int CommandLine::run(const std::vector<std::string>& arguments) {
    try {
        return parseAndRun(arguments);
    } catch (const UsageError& error) {
        const std::string name = chosenName();
        report(name, error.what() + (" (see 'imaging " + name) + (name.empty() ? "" : " ") + "--help')");
        return WrongUsage;
    } catch (const Failure& failure) {
        report(failure.subject(), failure.what());
    } catch (const std::exception& exception) {
        report("", exception.what());
    }
    return BadInputOrOutput;
}

} // namespace

int runCommandLine(const std::vector<std::string>& arguments, std::span<MakeSubcommand* const> subcommands) {
    return CommandLine(subcommands).run(arguments);
}

} // namespace Imaging::Tool
