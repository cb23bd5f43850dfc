#pragma once

#include "Tools/Command/Parser.h"

#include <memory>
#include <string>
#include <vector>

/// The subcommands, one in a file, all of this shape.
namespace Imaging::Tool {

/// Ends a command with these; nothing else is ever returned.
enum ExitStatus : int { Done = 0, BadInputOrOutput = 1, WrongUsage = 2 };

/// A subcommand: declares its options, then does its work. Both throw a UsageError or Failure.
class Subcommand {
public:
    virtual ~Subcommand();
    Subcommand(const Subcommand&) = delete;
    Subcommand& operator=(const Subcommand&) = delete;

    virtual const SubcommandText& text() const = 0;

    /// The subcommand's own options, and those that all have. Their values go into this object.
    OptionTable allOptions();

    /// The arguments that are no options, in their order.
    void setOperands(std::vector<std::string> operands);

    /// Checks all arguments, then does the work.
    ExitStatus runWithLimits();

protected:
    Subcommand() = default;

    virtual OptionTable options() = 0;
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

} // namespace Imaging::Tool
