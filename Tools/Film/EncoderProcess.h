#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace Imaging::Tool {

/// The file that a program's name stands for on the search path ($PATH), or "" where there is none.
std::string foundProgram(const std::string& name);

/// A program that was started and is fed through its standard input. What it says on standard error is kept.
/// It gets no Ctrl-C from the terminal, so that it does not finish half of its work; it is killed when this
/// object goes before `finish`. One thread uses it at a time, but for `kill`.
class EncoderProcess {
public:
    /// How a program ended.
    struct Ending {
        int status = 0; ///< of its exit
        int signal = 0; ///< that ended it, or 0
        std::string errors;

        bool isGood() const { return status == 0 && signal == 0; }

        /// One line: the last of what it said, or how it ended where it said nothing.
        std::string inWords() const;
    };

    /// `program` is the path of a file, and `arguments` are those after the program's name. Throws
    /// std::system_error when it cannot be started.
    EncoderProcess(const std::string& program, const std::vector<std::string>& arguments);
    ~EncoderProcess();
    EncoderProcess(const EncoderProcess&) = delete;
    EncoderProcess& operator=(const EncoderProcess&) = delete;

    /// False when the program reads no more; it has ended then, or is about to.
    bool write(const void* bytes, std::size_t count);

    /// Tells it that this was all, and waits for its end. To be called once.
    Ending finish();

    /// Ends it at once and waits until it is gone. Safe in signal handlers.
    void kill() noexcept;

private:
    void start(const std::string& program, const std::vector<std::string>& arguments);
    void readErrors();
    void closeInput();

    std::atomic<pid_t> m_process = 0;
    int m_input = -1;
    int m_errors = -1;
    std::string m_said;
    std::thread m_reader;
};

} // namespace Imaging::Tool
