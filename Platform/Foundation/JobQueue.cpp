// A list of jobs under one lock, and threads that take from its front. The list is shared with the threads,
// so that one of them can still end in order when its own job has destroyed the queue.

#include "Platform/Foundation/JobQueue.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Log.h"

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <pthread.h>
#include <system_error>
#include <thread>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Imaging::Platform {

namespace {

/// Blocks all signals on the calling thread, which threads that it starts inherit.
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

void logFailure(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& exception) {
        NSLog("a queued job failed: %s", exception.what());
    } catch (...) {
        NSLog("a queued job failed with an unknown exception");
    }
}

} // namespace

struct JobQueue::State {
    struct Unit {
        Job job;
        std::any label;
    };

    explicit State(std::size_t threadLimit) : limit(threadLimit) {}
    ~State() {
        if (failure != nullptr) logFailure(failure);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    const std::size_t limit;
    std::mutex lock;
    std::condition_variable changed; ///< a job may start, or all is to end
    std::condition_variable ended;   ///< a job has ended or was withdrawn
    std::deque<std::shared_ptr<Unit>> units;
    std::vector<std::thread> threads;
    std::size_t idle = 0;
    std::size_t running = 0;
    std::size_t asking = 0;     ///< calls of `withdraw` that are asking their predicates
    std::exception_ptr failure; ///< the first one that nobody was told of
    bool isEnding = false;
};

namespace {

/// The state of the queue that the calling thread belongs to.
thread_local const void* t_own_queue = nullptr;

} // namespace

/// What the threads do. All of it is called with the lock held by `guard` but where it says otherwise.
struct JobQueue::Worker {
    static void runUntilTheEnd(const std::shared_ptr<State>& state) {
        t_own_queue = state.get();
        std::unique_lock guard(state->lock);
        while (true) {
            ++state->idle;
            state->changed.wait(
                guard, [&] { return state->isEnding || (state->asking == 0 && !state->units.empty()); });
            --state->idle;
            if (state->isEnding) return;
            std::shared_ptr<State::Unit> unit = std::move(state->units.front());
            state->units.pop_front();
            ++state->running;
            runUnlocked(*state, std::move(unit), guard);
            --state->running;
            state->ended.notify_all();
        }
    }

    static void runUnlocked(State& state, std::shared_ptr<State::Unit> unit,
                            std::unique_lock<std::mutex>& guard) {
        guard.unlock();
        std::exception_ptr failure;
        try {
            unit->job();
        } catch (...) {
            failure = std::current_exception();
        }
        // What it captured may belong to somebody who waits for the job's end.
        unit.reset();
        guard.lock();
        if (failure == nullptr) return;
        if (state.failure == nullptr) {
            state.failure = failure;
            return;
        }
        guard.unlock();
        logFailure(failure);
        guard.lock();
    }

    /// False when the system has no thread left.
    static bool start(const std::shared_ptr<State>& state) {
        try {
            const BlockedSignals blocked;
            state->threads.emplace_back([state] { runUntilTheEnd(state); });
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    }
};

JobQueue::JobQueue(std::size_t threads)
    : m_state(std::make_shared<State>(std::max<std::size_t>(1, threads))) {}

JobQueue::~JobQueue() {
    std::deque<std::shared_ptr<State::Unit>> withdrawn; // goes without the lock
    std::vector<std::thread> threads;
    {
        const std::lock_guard guard(m_state->lock);
        m_state->isEnding = true;
        withdrawn.swap(m_state->units);
        threads.swap(m_state->threads);
    }
    m_state->changed.notify_all();
    withdrawn.clear();
    for (std::thread& thread : threads) {
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach(); // it goes on with the job that destroys the queue, and ends behind it
        } else {
            thread.join();
        }
    }
}

void JobQueue::add(Job job, std::any label) {
    if (job == nullptr) throw NSException(NSInvalidArgumentException, "the job for the queue is empty");
    auto unit = std::make_shared<State::Unit>(State::Unit{std::move(job), std::move(label)});
    {
        const std::lock_guard guard(m_state->lock);
        if (m_state->isEnding) return; // with `unit`, which goes without the lock
        const bool isShort = m_state->idle <= m_state->units.size();
        if (isShort && m_state->threads.size() < m_state->limit && !Worker::start(m_state) &&
            m_state->threads.empty()) {
            throw NSException(NSGenericException, "the system has no thread left; try again later");
        }
        m_state->units.push_back(std::move(unit));
    }
    m_state->changed.notify_one();
}

std::size_t JobQueue::withdraw(const Predicate& predicate) {
    std::deque<std::shared_ptr<State::Unit>> asked;
    {
        const std::lock_guard guard(m_state->lock);
        asked = m_state->units;
        ++m_state->asking;
    }
    std::exception_ptr failure;
    std::unordered_set<std::shared_ptr<State::Unit>> approved; // they go without the lock
    try {
        for (const auto& unit : asked) {
            if (predicate(unit->label)) approved.insert(unit);
        }
    } catch (...) {
        failure = std::current_exception();
        approved.clear();
    }
    std::size_t count = 0;
    {
        const std::lock_guard guard(m_state->lock);
        --m_state->asking;
        // Another call may have withdrawn some of them meanwhile.
        count = std::erase_if(m_state->units, [&](const auto& unit) { return approved.contains(unit); });
    }
    m_state->changed.notify_all();
    m_state->ended.notify_all();
    if (failure != nullptr) std::rethrow_exception(failure);
    return count;
}

std::size_t JobQueue::withdrawAll() {
    std::deque<std::shared_ptr<State::Unit>> withdrawn; // goes without the lock
    {
        const std::lock_guard guard(m_state->lock);
        withdrawn.swap(m_state->units);
    }
    m_state->ended.notify_all();
    return withdrawn.size();
}

void JobQueue::wait() {
    if (isOwnThread()) {
        throw NSException(NSInternalInconsistencyException,
                          "a job waits for its own queue; wait on another thread");
    }
    std::unique_lock guard(m_state->lock);
    m_state->ended.wait(guard, [&] { return m_state->units.empty() && m_state->running == 0; });
    const std::exception_ptr failure = std::exchange(m_state->failure, nullptr);
    guard.unlock();
    if (failure != nullptr) std::rethrow_exception(failure);
}

std::size_t JobQueue::queuedCount() const {
    const std::lock_guard guard(m_state->lock);
    return m_state->units.size();
}

std::size_t JobQueue::threadLimit() const { return m_state->limit; }

bool JobQueue::isOwnThread() const { return t_own_queue == m_state.get(); }

std::shared_ptr<JobQueue> JobQueue::named(const std::string& name, std::size_t threads) {
    struct Register {
        std::mutex lock;
        std::map<std::string, std::weak_ptr<JobQueue>> queues;
    };
    // Never destroyed: other threads may still ask while the program's static objects are torn down.
    static Register& known = *new Register;
    const std::lock_guard guard(known.lock);
    std::erase_if(known.queues, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<JobQueue>& place = known.queues[name];
    std::shared_ptr<JobQueue> queue = place.lock();
    if (queue == nullptr) place = queue = std::make_shared<JobQueue>(threads);
    return queue;
}

} // namespace Imaging::Platform
