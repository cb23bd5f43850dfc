#pragma once

#include "Tools/Command/Parser.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The subcommands, one in a file, all of this shape.
namespace Imaging::Tool {

/// Ends a command with these; nothing else is ever returned.
enum ExitStatus : int { Done = 0, BadInputOrOutput = 1, WrongUsage = 2 };

/// A subcommand: says what its options are, then does its work, which may throw a UsageError or Failure.
class Subcommand {
public:
    virtual ~Subcommand();
    Subcommand(const Subcommand&) = delete;
    Subcommand& operator=(const Subcommand&) = delete;

    virtual const SubcommandText& text() const = 0;

    /// The subcommand's own options, and those that all have. Their values go into this object.
    OptionTable allOptions();

    /// The arguments that are no options, in their order. Throws a UsageError when there are too few or too
    /// many of them, or one is empty.
    void setOperands(std::vector<std::string> operands);

    /// Does the work, once all values are in their places.
    ExitStatus runWithLimits();

protected:
    Subcommand() = default;

    virtual OptionTable options() = 0;
    virtual ExitStatus run() = 0;

    /// Checks how many operands there are, by one of the functions below.
    virtual void checkOperands() const = 0;

    /// The arguments that are no options.
    const std::vector<std::string>& operands() const { return m_operands; }

    /// Throws when there is none, or an empty one. `what` names them: "a picture file or URL".
    void requireOperands(const std::string& what) const;

    /// Throws when there is not exactly one.
    void requireOneOperand(const std::string& what) const;

    /// Throws when there is one.
    void refuseOperands() const;

    bool quiet() const { return m_quiet; }

private:
    std::vector<std::string> m_operands;
    bool m_quiet = false;
    std::optional<double> m_timeout;            ///< in seconds
    std::optional<std::int64_t> m_max_download; ///< in MiB
};

/// What makes a subcommand.
using MakeSubcommand = std::unique_ptr<Subcommand>();

} // namespace Imaging::Tool
