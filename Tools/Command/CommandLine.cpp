#include "Tools/Command/CommandLine.h"

#include "Platform/Foundation/Exception.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Subcommand.h"
#include "Tools/Files/Output.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <new>

namespace Imaging::Tool {

namespace {

constexpr const char* exitStatusHelp = R"(Exit status:
  0  done
  1  an input could not be read or the output not be written; nothing
     half-written is left
  2  wrong usage)";

/// Help with the usage line as it was written, instead of one put together from the options.
class HelpFormatter : public CLI::Formatter {
public:
    explicit HelpFormatter(std::string usage) : m_usage(std::move(usage)) { column_width(28); }

    std::string make_usage(const CLI::App*, std::string) const override { return "Usage: " + m_usage + "\n"; }
    std::string make_footer(const CLI::App* app) const override { return app->get_footer() + "\n"; }

private:
    std::string m_usage;
};

/// A subcommand and its parser.
struct Entry {
    std::unique_ptr<Subcommand> subcommand;
    CLI::App* app = nullptr;
};

/// Arguments in two parts: what the parser sees, and what comes after "--", which it would sort wrongly.
struct Arguments {
    std::vector<std::string> parsed;
    std::vector<std::string> operands;
};

Arguments split(const std::vector<std::string>& all) {
    const auto mark = std::find(all.begin(), all.end(), "--");
    Arguments arguments;
    arguments.parsed.assign(all.begin(), mark);
    if (mark != all.end()) arguments.operands.assign(mark + 1, all.end());
    for (std::string& argument : arguments.parsed) {
        // To the parser this would be the end of the subcommand; to the system it is the same file.
        if (argument == "++") argument = "./++";
        if (argument.starts_with("--") && argument.find('=') == argument.size() - 1) {
            argument.pop_back();
            throw UsageError("the option " + argument + " needs a value");
        }
    }
    return arguments;
}

bool looksLikeOption(std::string_view argument) { return argument.size() > 1 && argument[0] == '-'; }

class CommandLine {
public:
    CommandLine();
    int run(const std::vector<std::string>& arguments);

private:
    void add(std::unique_ptr<Subcommand> subcommand);
    ExitStatus parseAndRun(Arguments arguments);
    ExitStatus runChecked(const Entry& entry);
    const Entry* chosen() const;
    std::vector<std::string> operandsOf(const Entry& entry) const;
    [[noreturn]] void refuseOption(const CLI::App& app, const std::string& argument) const;
    [[noreturn]] void refuseWithoutSubcommand() const;
    [[noreturn]] void refuse(const CLI::ParseError& error) const;
    std::string helpHint() const;

    CLI::App m_app{"Tells about pictures, draws, changes, archives them and lays them out."};
    std::vector<Entry> m_entries;
};

CommandLine::CommandLine() {
    m_app.name("imaging");
    m_app.set_help_flag("-h,--help", "Show this help");
    m_app.set_version_flag("--version", "imaging " IMAGING_VERSION, "Show the version");
    m_app.formatter(std::make_shared<HelpFormatter>("imaging SUBCOMMAND [OPTION...] INPUT..."));
    m_app.allow_extras();
    m_app.require_subcommand(0, 1);
    for (auto* make : {&makeInfoCommand, &makeDrawCommand, &makeApplyCommand, &makeGraphCommand,
                       &makeArchiveCommand, &makeSheetCommand, &makeShowCommand, &makeTransitionCommand,
                       &makeTransitionsCommand, &makeDoctorCommand})
        add(make());
    m_app.footer(std::string(exitStatusHelp) + R"(

Examples:
  imaging info *.jpg
  imaging draw photo.jpg -o small.png --size 800
  imaging apply photo.jpg --turn right --scale 1024 -o right.jpg
  imaging archive front.png back.png -o layers.graph
  imaging sheet Pictures -o sheet.png
  imaging show Pictures -o film.mp4
  imaging transition a.jpg b.jpg --kind slide -o slide.png
  imaging draw --help)");
}

void CommandLine::add(std::unique_ptr<Subcommand> subcommand) {
    const SubcommandText& text = subcommand->text();
    CLI::App* app = m_app.add_subcommand(text.name, text.summary);
    app->set_help_flag("-h,--help", "Show this help");
    app->formatter(
        std::make_shared<HelpFormatter>("imaging " + text.name + " " + text.usage + "\n\n" + text.details));
    app->footer(std::string(exitStatusHelp) + "\n\nExamples:\n" + text.examples);
    app->allow_extras();
    app->option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    subcommand->declareAll(*app);
    m_entries.push_back({std::move(subcommand), app});
}

const Entry* CommandLine::chosen() const {
    for (const Entry& entry : m_entries) {
        if (entry.app->parsed()) return &entry;
    }
    return nullptr;
}

std::string CommandLine::helpHint() const {
    const Entry* entry = chosen();
    return " (see 'imaging " + (entry != nullptr ? entry->subcommand->text().name + " " : "") + "--help')";
}

void CommandLine::refuseOption(const CLI::App& app, const std::string& argument) const {
    std::vector<std::string> known;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
    }
    const std::string option = argument.substr(0, argument.find('='));
    throw UsageError("there is no option '" + option + "'" + suggestion(option, known));
}

void CommandLine::refuseWithoutSubcommand() const {
    std::vector<std::string> known;
    for (const Entry& entry : m_entries) known.push_back(entry.subcommand->text().name);
    for (const std::string& argument : m_app.remaining()) {
        if (looksLikeOption(argument)) refuseOption(m_app, argument);
        throw UsageError("there is no subcommand '" + argument + "'" + suggestion(argument, known));
    }
    throw UsageError("a subcommand is missing; known are " + enumeration(known));
}

/// What the parser did not take. Inputs are not declared to it, because it would take lists out of the
/// brackets of a file name such as "[a,b]".
std::vector<std::string> CommandLine::operandsOf(const Entry& entry) const {
    std::vector<std::string> operands = entry.app->remaining();
    const auto unknown = std::find_if(operands.begin(), operands.end(), looksLikeOption);
    if (unknown != operands.end()) refuseOption(*entry.app, *unknown);
    return operands;
}

/// What the parser itself refuses: an option without its value, or a value where none belongs.
void CommandLine::refuse(const CLI::ParseError& error) const {
    const std::string what = error.what();
    const std::string option = what.substr(0, what.find_first_of(": "));
    if (what.find("flag override") != std::string::npos)
        throw UsageError("the option --" + option + " takes no value");
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && option.starts_with('-')) {
        throw UsageError("the option " + option + " needs a value");
    }
    throw UsageError(what);
}

ExitStatus CommandLine::runChecked(const Entry& entry) {
    try {
        return entry.subcommand->runWithLimits();
    } catch (const Failure& failure) {
        report(failure.subject(), failure.what());
    } catch (const Platform::NSException& exception) {
        report(entry.subcommand->text().name, exception.reason());
    } catch (const std::bad_alloc&) {
        report(entry.subcommand->text().name,
               "there is not enough memory; try smaller sizes or fewer pictures");
    }
    return BadInputOrOutput;
}

ExitStatus CommandLine::parseAndRun(Arguments arguments) {
    try {
        std::reverse(arguments.parsed.begin(), arguments.parsed.end());
        m_app.parse(arguments.parsed);
    } catch (const CLI::CallForHelp&) {
        writeStandardOutput(chosen() != nullptr ? chosen()->app->help() : m_app.help());
        return Done;
    } catch (const CLI::CallForVersion&) {
        writeStandardOutput(m_app.version() + "\n");
        return Done;
    } catch (const CLI::ParseError& error) {
        refuse(error);
    }
    const Entry* entry = chosen();
    if (entry == nullptr) refuseWithoutSubcommand();
    std::vector<std::string> operands = operandsOf(*entry);
    operands.insert(operands.end(), arguments.operands.begin(), arguments.operands.end());
    entry->subcommand->setOperands(std::move(operands));
    return runChecked(*entry);
}

int CommandLine::run(const std::vector<std::string>& arguments) {
    try {
        return parseAndRun(split(arguments));
    } catch (const UsageError& error) {
        const Entry* entry = chosen();
        const std::string message = error.what() + helpHint();
        report(entry != nullptr ? entry->subcommand->text().name : "", message);
        return WrongUsage;
    } catch (const Failure& failure) {
        report(failure.subject(), failure.what());
    } catch (const std::exception& exception) {
        report("", exception.what());
    }
    return BadInputOrOutput;
}

} // namespace

int runCommandLine(const std::vector<std::string>& arguments) { return CommandLine().run(arguments); }

} // namespace Imaging::Tool
