// Reads a command line with CLI11. It is told names, help and whether a value follows, and gives back text;
// what it says about mistakes is put into this command's own words.

#include "Tools/Command/Parser.h"

#include "Tools/Command/Messages.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <utility>

namespace Imaging::Tool {

namespace {

/// Help with the usage line as it was written, instead of one put together from the options.
class HelpFormatter : public CLI::Formatter {
public:
    explicit HelpFormatter(std::string usage) : m_usage(std::move(usage)) { column_width(28); }

    std::string make_usage(const CLI::App*, std::string) const override { return "Usage: " + m_usage + "\n"; }
    std::string make_footer(const CLI::App* app) const override { return app->get_footer() + "\n"; }

private:
    std::string m_usage;
};

/// Arguments in two parts: what the library sees, and what comes after "--", which it would sort wrongly.
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
        // To the library this would be the end of the subcommand; to the system it is the same file.
        if (argument == "++") argument = "./++";
        if (argument.starts_with("--") && argument.find('=') == argument.size() - 1) {
            argument.pop_back();
            throw UsageError("the option " + argument + " needs a value");
        }
    }
    return arguments;
}

bool looksLikeOption(std::string_view argument) { return argument.size() > 1 && argument[0] == '-'; }

/// The first long one of the names in a row, such as "--output" of "-o,--output".
std::string nameForComplaints(const std::string& names) {
    const std::size_t begin = names.find("--");
    return begin == std::string::npos ? names : names.substr(begin, names.find(',', begin) - begin);
}

[[noreturn]] void refuseOption(const CLI::App& app, const std::string& argument) {
    std::vector<std::string> known;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
    }
    const std::string option = argument.substr(0, argument.find('='));
    throw UsageError("there is no option '" + option + "'" + suggestion(option, known));
}

/// What the library itself refuses: an option without its value, or a value where none belongs.
[[noreturn]] void refuse(const CLI::ParseError& error) {
    const std::string what = error.what();
    const std::string option = what.substr(0, what.find_first_of(": "));
    if (what.find("flag override") != std::string::npos)
        throw UsageError("the option --" + option + " takes no value");
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && option.starts_with('-')) {
        throw UsageError("the option " + option + " needs a value");
    }
    throw UsageError(what);
}

/// An option on the command line: the row of its table, and the value.
struct Occurrence {
    std::size_t row;
    std::string text;
};

/// A subcommand with its options, and which of them were given.
struct Entry {
    std::string name;
    OptionTable options;
    CLI::App* app = nullptr;
    std::vector<Occurrence> given{};
};

void declare(Entry& entry, std::size_t row) {
    const Option& option = entry.options[row];
    CLI::Option* declared = nullptr;
    if (option.binding.isFlag) {
        declared = entry.app->add_flag_callback(
            option.names,
            [&entry, row] {
                entry.given.push_back({row, {}});
            },
            option.help);
        declared->disable_flag_override();
    } else {
        const auto note = [&entry, row](const std::string& text) { entry.given.push_back({row, text}); };
        declared = entry.app->add_option_function<std::string>(option.names, note, option.help);
        declared->type_name(option.typeName);
    }
    // Called for each time at once, so that the order is kept; otherwise once, with the last value.
    if (option.binding.everyTime) declared->trigger_on_parse();
    if (!option.group.empty()) declared->group(option.group);
}

/// What the library did not take. Inputs are not declared to it, because it would take lists out of the
/// brackets of a file name such as "[a,b]".
std::vector<std::string> operandsOf(const Entry& entry) {
    std::vector<std::string> operands = entry.app->remaining();
    const auto unknown = std::find_if(operands.begin(), operands.end(), looksLikeOption);
    if (unknown != operands.end()) refuseOption(*entry.app, *unknown);
    return operands;
}

} // namespace

struct Parser::Parts {
    Parts(const SubcommandText& whole, std::string end) : app(whole.summary), ending(std::move(end)) {}

    void setTexts(CLI::App& one, const std::string& usage, const std::string& examples) const {
        one.set_help_flag("-h,--help", "Show this help");
        one.formatter(std::make_shared<HelpFormatter>(usage));
        one.footer(ending + "\n\nExamples:\n" + examples);
        one.allow_extras();
    }

    [[noreturn]] void refuseWithoutSubcommand() const {
        std::vector<std::string> known;
        for (const auto& entry : entries) known.push_back(entry->name);
        for (const std::string& argument : app.remaining()) {
            if (looksLikeOption(argument)) refuseOption(app, argument);
            throw UsageError("there is no subcommand '" + argument + "'" + suggestion(argument, known));
        }
        throw UsageError("a subcommand is missing; known are " + enumeration(known));
    }

    CLI::App app;
    std::string ending;
    std::vector<std::unique_ptr<Entry>> entries; // which callbacks refer to
};

Parser::Parser(const SubcommandText& whole, const std::string& version, std::string ending)
    : m_parts(std::make_unique<Parts>(whole, std::move(ending))) {
    CLI::App& app = m_parts->app;
    app.name(whole.name);
    m_parts->setTexts(app, whole.name + " " + whole.usage, whole.examples);
    app.set_version_flag("--version", version, "Show the version");
    app.require_subcommand(0, 1);
}

Parser::~Parser() = default;

void Parser::add(const SubcommandText& text, OptionTable options) {
    CLI::App* app = m_parts->app.add_subcommand(text.name, text.summary);
    m_parts->setTexts(*app,
                      m_parts->app.get_name() + " " + text.name + " " + text.usage + "\n\n" + text.details,
                      text.examples);
    app->option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    m_parts->entries.push_back(std::make_unique<Entry>(Entry{text.name, std::move(options), app}));
    Entry& entry = *m_parts->entries.back();
    for (std::size_t row = 0; row < entry.options.size(); ++row) declare(entry, row);
}

std::optional<std::size_t> Parser::chosen() const {
    for (std::size_t i = 0; i < m_parts->entries.size(); ++i) {
        if (m_parts->entries[i]->app->parsed()) return i;
    }
    return std::nullopt;
}

Parser::Result Parser::parse(const std::vector<std::string>& all) {
    Arguments arguments = split(all);
    Result result;
    try {
        std::reverse(arguments.parsed.begin(), arguments.parsed.end());
        m_parts->app.parse(arguments.parsed);
    } catch (const CLI::CallForHelp&) {
        const auto subcommand = chosen();
        result.shown = (subcommand ? *m_parts->entries[*subcommand]->app : m_parts->app).help();
        return result;
    } catch (const CLI::CallForVersion&) {
        result.shown = m_parts->app.version() + "\n";
        return result;
    } catch (const CLI::ParseError& error) {
        refuse(error);
    }
    result.subcommand = chosen();
    if (!result.subcommand) m_parts->refuseWithoutSubcommand();
    result.operands = operandsOf(*m_parts->entries[*result.subcommand]);
    result.operands.insert(result.operands.end(), arguments.operands.begin(), arguments.operands.end());
    return result;
}

void Parser::fill() const {
    const Entry& entry = *m_parts->entries.at(chosen().value());
    std::vector<const std::string*> last(entry.options.size(), nullptr);
    for (const Occurrence& given : entry.given) {
        const Option& option = entry.options[given.row];
        last[given.row] = &given.text;
        if (option.binding.everyTime) option.binding.take(given.text, nameForComplaints(option.names));
    }
    for (std::size_t row = 0; row < entry.options.size(); ++row) {
        const Option& option = entry.options[row];
        const Binding& binding = option.binding;
        const bool isGiven = last[row] != nullptr && !(binding.emptyIsNone && last[row]->empty());
        if (isGiven && !binding.everyTime) binding.take(*last[row], nameForComplaints(option.names));
        if (!isGiven && binding.otherwise) binding.otherwise();
    }
}

} // namespace Imaging::Tool
