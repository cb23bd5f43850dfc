// A queue of numbered units and a descriptor that is readable while there are any, which is all that a
// program's own event loop has to know.

#include "Platform/Foundation/MainThread.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Log.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>

namespace Imaging::Platform {

namespace {

struct Unit {
    std::function<void()> function;
    std::uint64_t number = 0;
    std::shared_ptr<bool> isDone; ///< null when nobody waits; guarded by the queue's lock
};

struct Queue {
    std::mutex lock;
    std::condition_variable unitDone;
    std::thread::id mainThread = std::this_thread::get_id();
    std::deque<Unit> units;
    std::uint64_t lastNumber = 0;
    std::shared_ptr<const std::function<void()>> wakeUp;
    int descriptor = -1;
};

/// Never destroyed: other threads may still queue units while the program's static objects are torn down.
Queue& queue() {
    static Queue& instance = *new Queue;
    return instance;
}

/// Takes note of the thread that loads the library.
[[maybe_unused]] const Queue& queueAtLoad = queue();

/// With the lock held: the descriptor is readable exactly while the queue is not empty.
void showQueued(const Queue& q) {
    if (q.descriptor >= 0) eventfd_write(q.descriptor, 1);
}

void showEmpty(const Queue& q) {
    eventfd_t count = 0;
    if (q.descriptor >= 0) eventfd_read(q.descriptor, &count);
}

void runLoggingExceptions(const std::function<void()>& function) {
    try {
        function();
    } catch (const std::exception& exception) {
        NSLog("a unit for the main thread failed: %s", exception.what());
    } catch (...) {
        NSLog("a unit for the main thread failed with an unknown exception");
    }
}

/// Takes the first unit if it is not newer than `lastNumber`.
bool takeUnit(Queue& q, std::uint64_t lastNumber, Unit& unit) {
    const std::lock_guard guard(q.lock);
    if (q.units.empty() || q.units.front().number > lastNumber) return false;
    unit = std::move(q.units.front());
    q.units.pop_front();
    if (q.units.empty()) showEmpty(q);
    return true;
}

void runUnit(Queue& q, Unit& unit) {
    runLoggingExceptions(unit.function);
    // What the unit refers to may belong to the waiting thread and end as soon as that goes on.
    unit.function = nullptr;
    if (unit.isDone == nullptr) return;
    {
        const std::lock_guard guard(q.lock);
        *unit.isDone = true;
    }
    q.unitDone.notify_all();
}

void enqueue(Queue& q, std::function<void()> function, std::shared_ptr<bool> isDone) {
    std::shared_ptr<const std::function<void()>> wakeUp;
    {
        const std::lock_guard guard(q.lock);
        q.units.push_back({std::move(function), ++q.lastNumber, std::move(isDone)});
        if (q.units.size() == 1) showQueued(q);
        wakeUp = q.wakeUp;
    }
    if (wakeUp != nullptr) (*wakeUp)();
}

} // namespace

void performOnMainThread(std::function<void()> unit, bool waitUntilDone) {
    if (unit == nullptr)
        throw NSException(NSInvalidArgumentException, "the unit for the main thread is empty");
    if (!waitUntilDone) return enqueue(queue(), std::move(unit), nullptr);
    if (isMainThread()) return runLoggingExceptions(unit);
    const auto isDone = std::make_shared<bool>(false);
    enqueue(queue(), std::move(unit), isDone);
    std::unique_lock guard(queue().lock);
    queue().unitDone.wait(guard, [&isDone] { return *isDone; });
}

std::size_t performPending() {
    if (!isMainThread()) {
        throw NSException(NSInternalInconsistencyException,
                          "performPending was called on another thread than the main one");
    }
    Queue& q = queue();
    std::uint64_t lastNumber = 0;
    {
        const std::lock_guard guard(q.lock);
        lastNumber = q.lastNumber;
    }
    std::size_t count = 0;
    for (Unit unit; takeUnit(q, lastNumber, unit); ++count) runUnit(q, unit);
    return count;
}

bool isMainThread() {
    const std::lock_guard guard(queue().lock);
    return queue().mainThread == std::this_thread::get_id();
}

void setMainThread() {
    const std::lock_guard guard(queue().lock);
    queue().mainThread = std::this_thread::get_id();
}

void setMainThreadWakeUp(std::function<void()> wakeUp) {
    std::shared_ptr<const std::function<void()>> next;
    if (wakeUp != nullptr) next = std::make_shared<const std::function<void()>>(std::move(wakeUp));
    {
        const std::lock_guard guard(queue().lock);
        queue().wakeUp.swap(next);
    }
    // The old callback, now in `next`, is released without the lock: what it holds is foreign code.
}

int mainThreadDescriptor() {
    Queue& q = queue();
    const std::lock_guard guard(q.lock);
    if (q.descriptor >= 0) return q.descriptor;
    q.descriptor = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (q.descriptor < 0) throw NSException(NSGenericException, "the system has no descriptor left");
    if (!q.units.empty()) showQueued(q);
    return q.descriptor;
}

} // namespace Imaging::Platform
