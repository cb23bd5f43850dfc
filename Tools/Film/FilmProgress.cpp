// A thread looks at how many frames are written from time to time, and tells it as a bar or as lines of JSON.

#include "Tools/Film/FilmProgress.h"
#include "Tools/Command/StandardOutput.h"

#include "Tools/Command/Messages.h"
#include "Tools/Command/Progress.h"
#include "Tools/Command/Threads.h"
#include "Tools/Files/Json.h"
#include "Tools/Files/Output.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Imaging::Tool {

namespace {

constexpr std::chrono::milliseconds interval{400};
constexpr std::size_t leastBar = 12;
constexpr std::size_t mostBar = 42;

std::string rateText(double rate) {
    const auto tenths = std::llround(rate * 10);
    if (rate >= 10) return std::to_string(std::llround(rate));
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

} // namespace

std::string progressBar(std::uint64_t done, std::uint64_t all, std::size_t width) {
    const std::size_t inside = width > 2 ? width - 2 : 0;
    const double part = all > 0 ? static_cast<double>(done) / static_cast<double>(all) : 1;
    const auto filled =
        std::min(inside, static_cast<std::size_t>(std::floor(part * static_cast<double>(inside))));
    return "[" + std::string(filled, '#') + std::string(inside - filled, '.') + "]";
}

FilmProgress::FilmProgress(Form form, std::uint64_t frames, std::function<std::uint64_t()> written)
    : m_form(form), m_frames(frames), m_written(std::move(written)) {
    if (form != Form::Nothing) m_thread = threadWithoutSignals([this] { showUntilTheEnd(); });
}

FilmProgress::~FilmProgress() { stop(); }

void FilmProgress::stop() {
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard guard(m_lock);
        m_ended = true;
    }
    m_changed.notify_all();
    m_thread.join();
    if (m_form == Form::Bar) eraseStatus();
}

void FilmProgress::finish() {
    stop();
    if (m_failure != nullptr) std::rethrow_exception(m_failure);
}

double FilmProgress::seconds() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }

void FilmProgress::showUntilTheEnd() {
    std::unique_lock guard(m_lock);
    try {
        while (!m_changed.wait_for(guard, interval, [this] { return m_ended; })) show();
    } catch (...) {
        m_failure = std::current_exception();
    }
}

void FilmProgress::show() const {
    const std::uint64_t done = m_written();
    if (m_form == Form::Bar) {
        showStatus(cutTo(barLine(done), terminalColumns() - 1));
    } else {
        writeStandardOutput(jsonLine(done));
    }
}

double FilmProgress::rate(std::uint64_t done) const { return static_cast<double>(done) / seconds(); }

double FilmProgress::secondsLeft(std::uint64_t done) const {
    return static_cast<double>(m_frames - done) / std::max(rate(done), 1e-9);
}

std::string FilmProgress::barLine(std::uint64_t done) const {
    std::string text = " " + std::to_string(done) + " of " + std::to_string(m_frames) + " frames";
    if (done > 0) text += ", " + rateText(rate(done)) + "/s, " + timeLeft(secondsLeft(done));
    const std::size_t columns = terminalColumns() - 1;
    const std::size_t room = columns - std::min(columns, text.size());
    return room < leastBar ? text.substr(1) : progressBar(done, m_frames, std::min(room, mostBar)) + text;
}

std::string FilmProgress::jsonLine(std::uint64_t done) const {
    Json line = Json::object({{"event", "progress"},
                              {"done", done},
                              {"frames", m_frames},
                              {"framesPerSecond", std::round(rate(done) * 10) / 10}});
    if (done > 0) line.add("secondsLeft", std::round(secondsLeft(done) * 10) / 10);
    return line.text() + "\n";
}

} // namespace Imaging::Tool
