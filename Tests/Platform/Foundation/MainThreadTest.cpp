#include "Platform/Foundation/MainThread.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <mutex>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace Imaging::Platform;

namespace {

bool isReadable() {
    pollfd request{mainThreadDescriptor(), POLLIN, 0};
    return poll(&request, 1, 0) == 1;
}

void waitUntilQueued() {
    pollfd request{mainThreadDescriptor(), POLLIN, 0};
    poll(&request, 1, -1);
}

/// Collects what is logged meanwhile.
class LogRecorder {
public:
    LogRecorder() {
        setLogSink([this](const std::string& message) {
            const std::lock_guard guard(m_lock);
            m_messages.push_back(message);
        });
    }
    ~LogRecorder() { setLogSink(nullptr); }
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    std::vector<std::string> messages() {
        const std::lock_guard guard(m_lock);
        return m_messages;
    }

private:
    std::mutex m_lock;
    std::vector<std::string> m_messages;
};

struct MainThread : testing::Test {
    ~MainThread() override {
        setMainThreadWakeUp(nullptr);
        setMainThread();
        performPending();
    }
};

} // namespace

TEST_F(MainThread, IsTheOneThatLoadedTheLibrary) {
    EXPECT_TRUE(isMainThread());
    bool isOther = true;
    std::thread([&] { isOther = isMainThread(); }).join();
    EXPECT_FALSE(isOther);
}

TEST_F(MainThread, RunsUnitsInTheOrderOfTheirQueueing) {
    std::vector<int> order;
    std::thread([&] {
        for (int i = 0; i < 5; ++i) performOnMainThread([&order, i] { order.push_back(i); });
    }).join();
    EXPECT_TRUE(order.empty());
    EXPECT_EQ(performPending(), 5u);
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3, 4}));
    EXPECT_EQ(performPending(), 0u);
}

TEST_F(MainThread, RunsUnitsOnTheMainThreadOnly) {
    std::thread::id thread;
    std::thread([&] { performOnMainThread([&] { thread = std::this_thread::get_id(); }); }).join();
    std::thread([] { EXPECT_THROW(performPending(), NSException); }).join();
    EXPECT_EQ(thread, std::thread::id());
    performPending();
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(MainThread, UnitsQueuedMeanwhileWaitForTheNextCall) {
    std::vector<int> order;
    performOnMainThread([&] {
        order.push_back(1);
        performOnMainThread([&] { order.push_back(3); });
    });
    performOnMainThread([&] { order.push_back(2); });
    EXPECT_EQ(performPending(), 2u);
    EXPECT_EQ(order, (std::vector{1, 2}));
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(performPending(), 1u);
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST_F(MainThread, AUnitThatPerformsTheRestKeepsTheOrder) {
    std::vector<int> order;
    std::size_t inner = 0;
    performOnMainThread([&] {
        order.push_back(1);
        performOnMainThread([&] { order.push_back(3); });
        inner = performPending();
    });
    performOnMainThread([&] { order.push_back(2); });
    EXPECT_EQ(performPending(), 1u);
    EXPECT_EQ(inner, 2u);
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
    EXPECT_FALSE(isReadable());
}

TEST_F(MainThread, AFailingUnitIsLoggedAndTheRestRun) {
    LogRecorder log;
    bool hasRun = false;
    performOnMainThread([] { throw NSException(NSRangeException, "too far"); });
    performOnMainThread([] { throw 7; });
    performOnMainThread([&] { hasRun = true; });
    EXPECT_EQ(performPending(), 3u);
    EXPECT_TRUE(hasRun);
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{"a unit for the main thread failed: NSRangeException: too far",
                                        "a unit for the main thread failed with an unknown exception"}));
}

TEST_F(MainThread, WaitingThreadsGoOnWhenTheirUnitIsDoneAndDestroyed) {
    const auto witness = std::make_shared<int>(0);
    long usesAfterwards = 0;
    int seen = 0;
    std::thread waiter([&] {
        performOnMainThread([copy = witness] { *copy = 5; }, true);
        seen = *witness;
        usesAfterwards = witness.use_count();
    });
    waitUntilQueued();
    EXPECT_EQ(performPending(), 1u);
    waiter.join();
    EXPECT_EQ(seen, 5);
    EXPECT_EQ(usesAfterwards, 1);
}

TEST_F(MainThread, WaitingThreadsGoOnWhenTheirUnitFails) {
    LogRecorder log;
    std::thread waiter([] { performOnMainThread([] { throw std::runtime_error("broken"); }, true); });
    waitUntilQueued();
    performPending();
    waiter.join();
    EXPECT_EQ(log.messages(), (std::vector<std::string>{"a unit for the main thread failed: broken"}));
}

TEST_F(MainThread, WaitingOnTheMainThreadItselfRunsTheUnitAtOnce) {
    LogRecorder log;
    int wakeUps = 0;
    setMainThreadWakeUp([&] { ++wakeUps; });
    std::vector<int> order;
    performOnMainThread([&] { order.push_back(2); });
    performOnMainThread([&] { order.push_back(1); }, true);
    performOnMainThread([] { throw std::runtime_error("broken"); }, true);
    EXPECT_EQ(order, (std::vector{1}));
    EXPECT_EQ(wakeUps, 1);
    EXPECT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(performPending(), 1u);
    EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST_F(MainThread, WakesTheApplicationFromTheQueueingThreadWithoutALock) {
    std::vector<std::thread::id> wakers;
    setMainThreadWakeUp([&] {
        wakers.push_back(std::this_thread::get_id());
        // Would deadlock if the queue's lock were held.
        EXPECT_FALSE(isMainThread());
        EXPECT_TRUE(isReadable());
    });
    std::thread::id queuer;
    std::thread([&] {
        queuer = std::this_thread::get_id();
        performOnMainThread([] {});
        performOnMainThread([] {});
    }).join();
    EXPECT_EQ(wakers, (std::vector{queuer, queuer}));
    setMainThreadWakeUp(nullptr);
    std::thread([] { performOnMainThread([] {}); }).join();
    EXPECT_EQ(wakers.size(), 2u);
    EXPECT_EQ(performPending(), 3u);
}

TEST_F(MainThread, TheDescriptorIsReadableWhileUnitsAreQueued) {
    EXPECT_FALSE(isReadable());
    performOnMainThread([] {});
    EXPECT_TRUE(isReadable());
    performOnMainThread([] {});
    EXPECT_TRUE(isReadable());
    performPending();
    EXPECT_FALSE(isReadable());
    EXPECT_EQ(mainThreadDescriptor(), mainThreadDescriptor());
}

TEST_F(MainThread, CanBeAnotherThread) {
    std::thread::id runner;
    performOnMainThread([&] { runner = std::this_thread::get_id(); });
    std::thread::id other;
    std::thread([&] {
        other = std::this_thread::get_id();
        setMainThread();
        EXPECT_TRUE(isMainThread());
        EXPECT_EQ(performPending(), 1u);
    }).join();
    EXPECT_FALSE(isMainThread());
    EXPECT_THROW(performPending(), NSException);
    EXPECT_EQ(runner, other);
}

TEST_F(MainThread, RefusesAnEmptyFunction) { EXPECT_THROW(performOnMainThread(nullptr), NSException); }

TEST_F(MainThread, TakesUnitsOfManyThreadsAtOnce) {
    constexpr int threadCount = 8;
    constexpr int unitsEach = 500;
    std::vector<std::vector<int>> seen(threadCount);
    std::atomic<int> waited = 0;
    std::atomic<int> wakeUps = 0;
    setMainThreadWakeUp([&] { ++wakeUps; });
    std::latch start(threadCount);
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            for (int i = 0; i < unitsEach; ++i) {
                performOnMainThread([&seen, t, i] { seen[static_cast<std::size_t>(t)].push_back(i); },
                                    i % 50 == 0);
                if (i % 50 == 0) ++waited;
            }
        });
    }
    std::size_t count = 0;
    while (count < threadCount * unitsEach) {
        waitUntilQueued();
        count += performPending();
    }
    for (std::thread& thread : threads) thread.join();
    std::vector<int> expected;
    for (int i = 0; i < unitsEach; ++i) expected.push_back(i);
    for (const std::vector<int>& order : seen) EXPECT_EQ(order, expected);
    EXPECT_EQ(waited, threadCount * unitsEach / 50);
    EXPECT_EQ(wakeUps, threadCount * unitsEach);
}
