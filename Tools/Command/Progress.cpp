// A thread shows how far the work has come and sleeps between two lines; the work itself only says where it
// is.

#include "Tools/Command/Progress.h"

#include "Tools/Command/Messages.h"
#include "Tools/Command/Threads.h"

#include <cmath>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Imaging::Tool {

namespace {

constexpr std::chrono::milliseconds delay{1000};
constexpr std::chrono::milliseconds interval{500};

} // namespace

std::size_t terminalColumns() {
    winsize size{};
    const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
}

/// UTF-8 marks every byte but the first of a character.
std::string cutTo(const std::string& text, std::size_t characters) {
    std::size_t seen = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool beginsCharacter = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
        if (beginsCharacter && ++seen > characters) return text.substr(0, i);
    }
    return text;
}

/// Rounded up as far as minutes, so that the promise is kept; hours are rough in any case.
std::string timeLeft(double seconds) {
    const auto whole = static_cast<long long>(std::ceil(seconds));
    if (whole < 60) return "about " + std::to_string(whole) + " s left";
    if (whole < 3600) return "about " + std::to_string((whole + 59) / 60) + " min left";
    return "about " + std::to_string((whole + 1800) / 3600) + " h left";
}

Progress::Progress(std::size_t count, bool quiet) : m_count(count) {
    if (quiet || ::isatty(STDERR_FILENO) == 0) return;
    m_thread = threadWithoutSignals([this] { showUntilTheEnd(); });
}

Progress::~Progress() {
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard guard(m_lock);
        m_ended = true;
    }
    m_changed.notify_all();
    m_thread.join();
    eraseStatus();
}

void Progress::beginStep(const std::string& name) {
    // Nothing is shown here: the thread shows what is there when its time comes.
    const std::lock_guard guard(m_lock);
    ++m_begun;
    m_name = escaped(name);
}

void Progress::showUntilTheEnd() {
    std::unique_lock guard(m_lock);
    Clock::time_point next = m_start + delay;
    while (!m_changed.wait_until(guard, next, [this] { return m_ended; })) {
        const Clock::time_point now = Clock::now();
        if (m_begun > 0) showStatus(cutTo(line(now), terminalColumns() - 1));
        next = now + interval;
    }
}

/// The step that is under way has taken an unknown part of its time, so only those before it are counted.
std::string Progress::line(Clock::time_point now) const {
    std::string text = std::to_string(m_begun) + " of " + std::to_string(m_count);
    if (m_begun > 1) {
        const auto done = static_cast<double>(m_begun - 1);
        const double elapsed = std::chrono::duration<double>(now - m_start).count();
        text += ", " + timeLeft(elapsed / done * (static_cast<double>(m_count) - done));
    }
    return text + ": " + m_name;
}

} // namespace Imaging::Tool
