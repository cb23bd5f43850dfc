#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

namespace Imaging::Tool {

/// The columns of the terminal on standard error, or 80.
std::size_t terminalColumns();

/// The beginning of a UTF-8 text, at most so many characters long.
std::string cutTo(const std::string& text, std::size_t characters);

/// "about 5 s left"
std::string timeLeft(double seconds);

/// How far a long piece of work has come: a line with count, name and time left on standard error, where that
/// is a terminal, from the second second on. The line is gone when the object goes.
class Progress {
public:
    /// `count` steps are to come. Nothing is shown when `quiet`.
    Progress(std::size_t count, bool quiet);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// The next step begins, and whichever was under way is done. The name is shown.
    void beginStep(const std::string& name);

private:
    using Clock = std::chrono::steady_clock;

    void showUntilTheEnd();
    std::string line(Clock::time_point now) const;

    const std::size_t m_count;
    const Clock::time_point m_start = Clock::now();
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::size_t m_begun = 0;
    std::string m_name;
    bool m_ended = false;
    std::thread m_thread; ///< shows the line while the work blocks in a picture or on the network
};

} // namespace Imaging::Tool
