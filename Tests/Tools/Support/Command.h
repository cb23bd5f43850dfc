#pragma once

#include "Tests/Platform/Foundation/TemporaryFolder.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>
#include <vector>

/// Runs the built command in a process of its own.
namespace TestSupport {

/// What the process finds when it begins.
struct Surroundings {
    std::string program{};          ///< another one than the built command, by its path or its name
    std::string input{};            ///< on standard input, which is a pipe; up to 64 KiB
    std::string folder{};           ///< the current folder{}; empty for that of the test
    std::string outputPath{};       ///< standard output is this file, opened for writing, instead of a pipe
    bool closeOutput = false;       ///< standard output is closed
    bool outputNobodyReads = false; ///< standard output is a pipe whose other end is closed
    std::optional<std::uint64_t> fileSize{}; ///< no file may grow beyond this many bytes
    bool withoutPrivileges = false;          ///< file permissions count for root too
    int errorDescriptor = -1;                ///< standard error, instead of a pipe
    std::vector<std::pair<std::string, std::string>> environment{}; ///< added to that of the test
};

struct Result {
    int status = -1; ///< the exit status, or -1 when a signal ended the process
    int signal = 0;
    std::string out;
    std::string err;
    long peakMemory = 0; ///< in KiB
};

/// A started command. It is killed when it runs for more than two minutes.
class Command {
public:
    Command(const std::vector<std::string>& arguments, const Surroundings& surroundings = {});
    ~Command();
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    pid_t process() const { return m_process; }

    /// Reads what it writes until it ends.
    Result wait();

private:
    pid_t m_process = -1;
    int m_out = -1;
    int m_err = -1;
};

Result run(const std::vector<std::string>& arguments, const Surroundings& surroundings = {});

/// All names in a folder, hidden ones too.
std::set<std::string> namesIn(const std::string& folder);

} // namespace TestSupport
