#pragma once

#include <csignal>
#include <pthread.h>
#include <thread>
#include <utility>

namespace Imaging::Tool {

/// Blocks all signals on the calling thread until the end of the scope. Nests.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t m_before{};
};

/// Starts a thread that gets no signals, so that handlers run on the main thread, which they belong to.
template<class Work>
std::thread threadWithoutSignals(Work work) {
    const BlockedSignals blocked;
    return std::thread(std::move(work));
}

} // namespace Imaging::Tool
