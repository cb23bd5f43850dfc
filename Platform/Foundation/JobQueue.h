#pragma once

#include "Platform/Foundation/Export.h"

#include <any>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

/// Work for other threads, in the order in which it is queued.
///
/// Example:
/// @code
/// JobQueue queue(2);
/// for (int part = 0; part < 8; ++part) queue.add([part] { static_cast<void>(part * part); });
/// queue.wait();
/// @endcode
namespace Imaging::Platform {

/// A queue of jobs and the few threads that run them.
///
///   add ──→ queued ──→ running ──→ done
///              └── withdraw ──→ gone
///
/// Order: jobs start in the order in which they were queued, so with one thread they run one after another.
/// A job runs exactly once, or never where it was withdrawn first; no job does both.
///
/// Threads: one is started when a job is queued, none is idle and there are fewer than the queue was made
/// for; they stay until the queue goes. They get no signals, whose handlers so run on the program's own
/// threads. Where the system has no thread left, those that there are do the work; without any `add` throws.
///
/// Exceptions: what leaves a job ends that job alone. The first one is kept for the next `wait`; the others,
/// and one that nobody waits for, are logged.
///
/// Every function may be called on every thread, on the queue's own too where nothing else is said. One
/// internal lock guards the list; it is never held while a job runs, a predicate is asked or what either of
/// them captured is destroyed, so all of these may call back into here.
class IMAGING_EXPORT JobQueue {
public:
    using Job = std::function<void()>;

    /// Tells of a queued job's label whether it is meant.
    using Predicate = std::function<bool(const std::any& label)>;

    /// A queue that runs up to `threads` jobs at a time, at least 1. No thread is started yet.
    explicit JobQueue(std::size_t threads);

    /// Withdraws what is queued and waits for the jobs that run; jobs that these add meanwhile are withdrawn
    /// too. A queue may go in one of its own jobs: that one is not waited for, and its thread ends with it.
    ~JobQueue();
    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;

    /// Queues a job. `label` is for `withdraw` alone. What the job captured is destroyed on the thread that
    /// ran it, before it counts as done. Throws an NSException: NSInvalidArgumentException for an empty
    /// function, NSGenericException when the queue has no thread and the system none to give, in which case
    /// the job is not queued. Throws std::bad_alloc.
    void add(Job job, std::any label = {});

    /// Takes out all jobs that have not started and whose label the predicate approves, and destroys them on
    /// the calling thread. The predicate is asked once for each job that is queued when the call begins, in
    /// their order; no job starts meanwhile, so it must not wait for one. Gives how many will never run. An
    /// exception of the predicate reaches the caller, with nothing withdrawn.
    std::size_t withdraw(const Predicate& predicate);

    /// The same for all that are queued.
    std::size_t withdrawAll();

    /// Returns when no job is queued or running, also none that was added meanwhile. Throws the first
    /// exception that left a job since the last call, once all have ended. Must not be called in one of the
    /// queue's own jobs, which would wait for itself: throws an NSException
    /// (NSInternalInconsistencyException).
    void wait();

    /// How many jobs are queued and have not started.
    std::size_t queuedCount() const;

    /// How many jobs may run at a time.
    std::size_t threadLimit() const;

    /// Whether the calling thread is one of the queue's.
    bool isOwnThread() const;

    /// The queue that goes by this name throughout the process. The first call makes it for `threads`; it
    /// goes with the last one who holds it, and until then everybody who asks gets the same, whatever number
    /// they give. Its last owner may be one of its jobs.
    static std::shared_ptr<JobQueue> named(const std::string& name, std::size_t threads = 1);

private:
    struct State;
    struct Worker;

    std::shared_ptr<State> m_state;
};

} // namespace Imaging::Platform
