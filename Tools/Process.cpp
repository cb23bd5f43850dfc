#include "Tools/Process.h"

#include "Tools/Messages.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace Tool {

namespace {

static_assert(std::atomic<int>::is_always_lock_free, "signal handlers may use nothing else");

std::atomic<bool> g_putting_off = false;
std::atomic<int> g_put_off_signal = 0;

/// Ends the process by the signal, so that the shell knows why it ended.
void endBySignal(int number) {
    std::signal(number, SIG_DFL);
    ::raise(number);
}

void onInterrupt(int number) {
    if (g_putting_off) {
        g_put_off_signal = number;
        return;
    }
    eraseStatusInSignalHandler();
    endBySignal(number);
}

/// Signals that were ignored when the process began (as in the background) stay ignored.
void handleInterrupts(int number) {
    struct sigaction action {};
    if (::sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = onInterrupt;
    action.sa_flags = SA_RESTART;
    ::sigaction(number, &action, nullptr);
}

/// Takes a closed standard descriptor for nothing. It is opened the wrong way round, so that using it is an
/// error and not silence.
void takeIfClosed(int descriptor) {
    if (::fcntl(descriptor, F_GETFD) != -1) return;
    const int nothing = ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (nothing >= 0 && nothing != descriptor) ::close(nothing);
}

} // namespace

void prepareProcess() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) takeIfClosed(descriptor);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) handleInterrupts(number);
}

UninterruptedScope::UninterruptedScope() { g_putting_off = true; }

UninterruptedScope::~UninterruptedScope() {
    g_putting_off = false;
    if (const int number = g_put_off_signal.exchange(0); number != 0) endBySignal(number);
}

} // namespace Tool
