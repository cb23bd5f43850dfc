// What is unfinished stands in a fixed table of atomic pointers, since signal handlers may neither lock nor
// allocate. An interrupt waits for what is being created, undoes the table, and ends the process by the same
// signal.

#include "Tools/Command/Process.h"

#include "Tools/Command/Messages.h"

#include <array>
#include <atomic>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <malloc.h>
#include <stdexcept>
#include <unistd.h>

namespace Imaging::Tool {

namespace {

static_assert(std::atomic<int>::is_always_lock_free && std::atomic<Unfinished*>::is_always_lock_free,
              "signal handlers may use nothing else");

std::atomic<bool> g_putting_off = false;
std::atomic<int> g_put_off_signal = 0;

std::array<std::atomic<Unfinished*>, 32> g_unfinished;
std::atomic<bool> g_undoing = false;
std::atomic<int> g_creations = 0; ///< how many scopes there are, over all threads
thread_local int t_creation_depth = 0;

void sleepBriefly() {
    const timespec time{0, 1'000'000};
    ::nanosleep(&time, nullptr);
}

/// Waits for what is being created, but not for ever: a file system may not answer any more. The thread that
/// runs this is in no creation itself, since those block signals.
void undoUnfinished() {
    constexpr int patience = 5000; // ms
    g_undoing = true;
    for (int i = 0; i < patience && g_creations > 0; ++i) sleepBriefly();
    for (std::size_t i = g_unfinished.size(); i-- > 0;) {
        Unfinished* const unfinished = g_unfinished[i].exchange(nullptr);
        if (unfinished != nullptr) unfinished->undo();
    }
}

/// Ends the process by the signal, so that the shell knows why it ended.
void endBySignal(int number) {
    eraseStatusInSignalHandler();
    undoUnfinished();
    std::signal(number, SIG_DFL);
    ::raise(number);
}

void onInterrupt(int number) {
    if (g_putting_off) {
        g_put_off_signal = number;
        return;
    }
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

/// Large blocks, such as the bytes of files, go back to the system at once, instead of staying with the
/// thread that had the largest one.
void returnLargeBlocks() {
#ifdef __GLIBC__
    ::mallopt(M_MMAP_THRESHOLD, 1 << 20);
#endif
}

} // namespace

void prepareProcess() {
    returnLargeBlocks();
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

UndoneOnInterrupt::UndoneOnInterrupt(Unfinished& unfinished) : m_place(0) {
    for (; m_place < g_unfinished.size(); ++m_place) {
        Unfinished* free = nullptr;
        if (g_unfinished[m_place].compare_exchange_strong(free, &unfinished)) return;
    }
    throw std::length_error("too many unfinished things at a time");
}

UndoneOnInterrupt::~UndoneOnInterrupt() {
    // What an interrupt is undoing at this moment must not go away under it.
    const CreationScope notWhileUndoing;
    g_unfinished[m_place] = nullptr;
}

CreationScope::CreationScope() {
    if (t_creation_depth++ > 0) return;
    ++g_creations;
    if (!g_undoing) return;
    --g_creations;
    while (true) sleepBriefly(); // until the process has ended
}

CreationScope::~CreationScope() {
    if (--t_creation_depth == 0) --g_creations;
}

} // namespace Imaging::Tool
