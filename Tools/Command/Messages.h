#pragma once

#include "Show/KnownWords.h"

#include <stdexcept>
#include <string>
#include <string_view>

/// What the command tells people, apart from what they asked for: everything here goes to standard error.
namespace Imaging::Tool {

/// The input or output was bad: ends the command with status 1 and the line "imaging: SUBJECT: what".
class Failure : public std::runtime_error {
public:
    /// `subject` is the name as it was given; `message` says what is wrong and what to do.
    Failure(std::string subject, const std::string& message);
    ~Failure() override;

    const std::string& subject() const { return m_subject; }

private:
    std::string m_subject;
};

/// The command line was wrong: ends the command with status 2 and one line that also names the help.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~UsageError() override;
};

/// The text with control characters written as escapes, so that a line stays one line and a terminal is not
/// changed by a name. All other bytes stay as they are.
std::string escaped(std::string_view text);

/// Writes "imaging: SUBJECT: MESSAGE" as one line at once, in place of a status line that may be shown. An
/// empty subject is left out.
void report(std::string_view subject, std::string_view message);

/// Shows a line on the terminal that is replaced by the next one, or takes it away. Safe on every thread.
void showStatus(const std::string& line);
void eraseStatus();

/// The same for signal handlers: takes the line away if one is shown.
void eraseStatusInSignalHandler();

} // namespace Imaging::Tool
