#pragma once

#include "Tools/Command/Options.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Imaging::Tool {

/// What people are told about a subcommand.
struct SubcommandText {
    std::string name{};
    std::string summary{};  ///< one line, for the list of all subcommands
    std::string usage{};    ///< the arguments after the name
    std::string details{};  ///< paragraphs before the options
    std::string examples{}; ///< lines, each a whole command
};

/// Takes a command line apart: the subcommand, its options by their table, and its operands, which are the
/// arguments that are no options. Single-threaded.
///
/// The library that does the work is known to Parser.cpp alone. Values are not its business: they stay text
/// until `fill` hands them to the table's bindings.
class Parser {
public:
    /// What comes back from the arguments.
    struct Result {
        std::optional<std::string> shown;      ///< help or version, where it was asked for; then nothing else
        std::optional<std::size_t> subcommand; ///< counted in the order of `add`; there is one otherwise
        std::vector<std::string> operands;     ///< in their order
    };

    /// `whole` is about the command itself; `ending` stands below the options of every help.
    Parser(const SubcommandText& whole, const std::string& version, std::string ending);
    ~Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    /// One more subcommand. The bindings' targets have to outlive the parser.
    void add(const SubcommandText& text, OptionTable options);

    /// Reads the arguments, without the program's name. Throws a UsageError, but not on account of a value.
    Result parse(const std::vector<std::string>& arguments);

    /// The subcommand that was found, also when the rest could not be read.
    std::optional<std::size_t> chosen() const;

    /// Hands what was given to the bindings: first the options that are taken every time, in the order of the
    /// command line, then the others in the order of the table. Throws a UsageError of a converter, or the
    /// complaint about an option that is missing.
    void fill() const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace Imaging::Tool
