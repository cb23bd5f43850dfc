#pragma once

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// The subcommands, one in a file, all of this shape.
namespace Imaging::Tool {

/// What people are told about a subcommand.
struct SubcommandText {
    std::string name;
    std::string summary;  ///< one line, for the list of all subcommands
    std::string usage;    ///< the arguments after the name
    std::string details;  ///< paragraphs before the options
    std::string examples; ///< lines, each a whole command
};

/// Ends a command with these; nothing else is ever returned.
enum ExitStatus : int { Done = 0, BadInputOrOutput = 1, WrongUsage = 2 };

/// A subcommand: declares its options, then does its work. Both throw a UsageError or Failure.
class Subcommand {
public:
    virtual ~Subcommand();
    Subcommand(const Subcommand&) = delete;
    Subcommand& operator=(const Subcommand&) = delete;

    virtual const SubcommandText& text() const = 0;

    /// Adds the subcommand's own options and the common ones to a parser that outlives this object.
    void declareAll(CLI::App& app);

    /// The arguments that are no options, in their order.
    void setOperands(std::vector<std::string> operands);

    /// Checks all arguments, then does the work.
    ExitStatus runWithLimits();

protected:
    Subcommand() = default;

    virtual void declare(CLI::App& app) = 0;
    virtual ExitStatus run() = 0;

    /// The arguments that are no options, at least one. `what` names them: "a picture file or URL".
    const std::vector<std::string>& operands(const std::string& what) const;

    /// Throws when there is an operand.
    void refuseOperands() const;

    /// The only operand. Throws when there are several.
    const std::string& onlyOperand(const std::string& what) const;

    bool quiet() const { return m_quiet; }

private:
    std::vector<std::string> m_operands;
    bool m_quiet = false;
    std::string m_timeout;
    std::string m_max_download;
};

std::unique_ptr<Subcommand> makeInfoCommand();
std::unique_ptr<Subcommand> makeDrawCommand();
std::unique_ptr<Subcommand> makeApplyCommand();
std::unique_ptr<Subcommand> makeGraphCommand();
std::unique_ptr<Subcommand> makeArchiveCommand();
std::unique_ptr<Subcommand> makeSheetCommand();
std::unique_ptr<Subcommand> makeShowCommand();
std::unique_ptr<Subcommand> makeTransitionCommand();
std::unique_ptr<Subcommand> makeTransitionsCommand();
std::unique_ptr<Subcommand> makeDoctorCommand();

} // namespace Imaging::Tool
