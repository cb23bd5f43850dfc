#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace Imaging::Tool {

/// How a film's making is told: a bar with frames, rate and time left on standard error where that is a
/// terminal, or lines of JSON on standard output (docs/show-progress.md). From a thread of its own, so that
/// it goes on while a frame takes long.
class FilmProgress {
public:
    enum class Form { Nothing, Bar, JsonLines };

    /// `frames` are to come; `written` says how many are done, on any thread.
    FilmProgress(Form form, std::uint64_t frames, std::function<std::uint64_t()> written);

    /// Takes the bar away.
    ~FilmProgress();
    FilmProgress(const FilmProgress&) = delete;
    FilmProgress& operator=(const FilmProgress&) = delete;

    /// Ends the telling, and throws the Failure where lines could not be written.
    void finish();

    /// Since this object was made.
    double seconds() const;

private:
    using Clock = std::chrono::steady_clock;

    void showUntilTheEnd();
    void show() const;
    void stop();
    std::string barLine(std::uint64_t done) const;
    std::string jsonLine(std::uint64_t done) const;
    double rate(std::uint64_t done) const;
    double secondsLeft(std::uint64_t done) const;

    const Form m_form;
    const std::uint64_t m_frames;
    const std::function<std::uint64_t()> m_written;
    const Clock::time_point m_start = Clock::now();
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_ended = false;
    std::exception_ptr m_failure;
    std::thread m_thread;
};

/// "[####....]" of a width, with so much of its inside filled.
std::string progressBar(std::uint64_t done, std::uint64_t all, std::size_t width);

} // namespace Imaging::Tool
