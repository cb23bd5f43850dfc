// Also tests: Platform/Foundation/JobQueue.cpp

#include "Platform/Foundation/JobQueue.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Log.h"
#include "Tests/Platform/Foundation/JobQueueFixtures.h"
#include "Tests/Support/NoMoreThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace Imaging::Platform;
using namespace TestSupport;

namespace {

bool isOdd(const std::any& label) { return std::any_cast<int>(label) % 2 == 1; }

/// What was logged while it lives.
class LoggedLines {
public:
    LoggedLines() {
        setLogSink([this](const std::string& line) {
            const std::lock_guard guard(m_lock);
            m_lines.push_back(line);
        });
    }
    ~LoggedLines() { setLogSink(nullptr); }
    LoggedLines(const LoggedLines&) = delete;
    LoggedLines& operator=(const LoggedLines&) = delete;

    bool has(const std::string& text) const {
        const std::lock_guard guard(m_lock);
        for (const std::string& line : m_lines) {
            if (line.find(text) != std::string::npos) return true;
        }
        return false;
    }

private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_lines;
};

} // namespace

TEST(JobQueue, StartsJobsInTheOrderInWhichTheyAreQueued) {
    Notes notes;
    JobQueue queue(1);
    std::vector<int> expected;
    for (int i = 0; i < 500; ++i) {
        queue.add([&notes, i] { notes.add(i); });
        expected.push_back(i);
    }
    queue.wait();
    EXPECT_EQ(notes.numbers(), expected);
}

TEST(JobQueue, RunsAsManyJobsAtATimeAsItHasThreadsAndNoMore) {
    JobQueue queue(3);
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    Signal allThree;
    std::mutex lock;
    std::set<std::thread::id> threads;
    for (int i = 0; i < 200; ++i) {
        queue.add([&] {
            const int now = ++running;
            int before = most;
            while (before < now && !most.compare_exchange_weak(before, now)) {
            }
            if (now == 3 && before < 3) allThree.give();
            allThree.await(); // so that three jobs have to be under way at once
            {
                const std::lock_guard guard(lock);
                threads.insert(std::this_thread::get_id());
            }
            --running;
        });
    }
    queue.wait();
    EXPECT_EQ(most, 3);
    EXPECT_EQ(threads.size(), 3U);
    EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
    EXPECT_EQ(queue.threadLimit(), 3U);
}

TEST(JobQueue, TakesNoThreadsForOne) { EXPECT_EQ(JobQueue(0).threadLimit(), 1U); }

TEST(JobQueue, StartsNoSecondThreadWhileTheFirstIsIdle) {
    JobQueue queue(8);
    std::set<std::thread::id> threads;
    for (int i = 0; i < 20; ++i) {
        queue.add([&] { threads.insert(std::this_thread::get_id()); });
        queue.wait();
    }
    EXPECT_EQ(threads.size(), 1U);
}

TEST(JobQueue, GetsNoSignalsOnItsThreads) {
    JobQueue queue(2);
    std::atomic<int> blocked = 0;
    for (int i = 0; i < 2; ++i) {
        queue.add([&] {
            sigset_t mask;
            pthread_sigmask(SIG_SETMASK, nullptr, &mask);
            for (const int signal : {SIGINT, SIGTERM, SIGCHLD, SIGALRM, SIGUSR1})
                blocked += sigismember(&mask, signal);
        });
    }
    queue.wait();
    EXPECT_EQ(blocked, 10);
    sigset_t own;
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGINT), 0) << "the caller's signals stay as they were";
}

TEST(JobQueue, RunsEachJobExactlyOnceWhoeverQueuesIt) {
    constexpr int count = 400;
    std::vector<std::atomic<int>> runs(4 * count);
    JobQueue queue(3);
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 4; ++caller) {
        callers.emplace_back([&, caller] {
            for (int i = 0; i < count; ++i)
                queue.add([&runs, place = caller * count + i] { ++runs[static_cast<std::size_t>(place)]; });
        });
    }
    for (std::thread& caller : callers) caller.join();
    queue.wait();
    for (const std::atomic<int>& one : runs) EXPECT_EQ(one, 1);
}

TEST(JobQueue, NeverRunsWhatWasWithdrawn) {
    JobQueue queue(1);
    BusyThread busy(queue);
    Notes notes;
    std::vector<int> asked;
    for (int i = 0; i < 10; ++i) queue.add([&notes, i] { notes.add(i); }, i);
    EXPECT_EQ(queue.queuedCount(), 10U);
    const std::size_t count = queue.withdraw([&](const std::any& label) {
        asked.push_back(std::any_cast<int>(label));
        return isOdd(label);
    });
    EXPECT_EQ(count, 5U);
    EXPECT_EQ(asked, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(queue.queuedCount(), 5U);
    busy.letGo();
    queue.wait();
    EXPECT_EQ(notes.numbers(), (std::vector<int>{0, 2, 4, 6, 8}));
}

TEST(JobQueue, EitherRunsOrWithdrawsAJobWhenBothAreTriedAtOnce) {
    std::atomic<int> ran = 0;
    std::size_t withdrawn = 0;
    JobQueue queue(2);
    for (int round = 0; round < 300; ++round) {
        for (int i = 0; i < 6; ++i) queue.add([&] { ++ran; }, i);
        withdrawn += queue.withdraw(isOdd);
    }
    queue.wait();
    EXPECT_EQ(static_cast<std::size_t>(ran) + withdrawn, 1800U);
    EXPECT_GE(ran, 900) << "even ones are never withdrawn";
}

TEST(JobQueue, WithdrawsNothingWhenThePredicateThrows) {
    JobQueue queue(1);
    BusyThread busy(queue);
    std::atomic<int> ran = 0;
    for (int i = 0; i < 4; ++i) queue.add([&] { ++ran; }, i);
    const auto refusing = [](const std::any& label) -> bool {
        if (std::any_cast<int>(label) == 3) throw std::out_of_range("three");
        return true;
    };
    EXPECT_THROW(queue.withdraw(refusing), std::out_of_range);
    EXPECT_EQ(queue.queuedCount(), 4U);
    busy.letGo();
    queue.wait();
    EXPECT_EQ(ran, 4);
}

TEST(JobQueue, LetsAPredicateCallTheQueue) {
    JobQueue queue(1);
    BusyThread busy(queue);
    Notes notes;
    for (int i = 0; i < 4; ++i) queue.add([&notes, i] { notes.add(i); }, i);
    const std::size_t count = queue.withdraw([&](const std::any& label) {
        if (std::any_cast<int>(label) != 0) return false;
        EXPECT_EQ(queue.withdraw(isOdd), 2U);
        queue.add([&notes] { notes.add(9); }, 9);
        return true;
    });
    EXPECT_EQ(count, 1U);
    busy.letGo();
    queue.wait();
    EXPECT_EQ(notes.numbers(), (std::vector<int>{2, 9}));
}

TEST(JobQueue, DestroysWhatAJobCapturedBeforeItCountsAsDone) {
    JobQueue queue(1);
    const auto captured = std::make_shared<int>(7);
    queue.add([captured] {});
    queue.wait();
    EXPECT_EQ(captured.use_count(), 1);
    BusyThread busy(queue);
    queue.add([captured] {});
    EXPECT_EQ(captured.use_count(), 2);
    EXPECT_EQ(queue.withdrawAll(), 1U);
    EXPECT_EQ(captured.use_count(), 1);
    busy.letGo();
    queue.wait();
}

TEST(JobQueue, WaitsForJobsThatJobsAdd) {
    JobQueue queue(2);
    Notes notes;
    std::function<void(int)> addChain = [&](int left) {
        queue.add([&, left] {
            notes.add(left);
            if (left > 0) addChain(left - 1);
        });
    };
    addChain(20);
    queue.wait();
    EXPECT_EQ(notes.numbers().size(), 21U);
    EXPECT_EQ(notes.numbers().back(), 0);
}

TEST(JobQueue, WaitReturnsAtOnceWhereThereIsNothingToDo) {
    JobQueue queue(2);
    queue.wait();
    queue.add([] {});
    queue.wait();
    queue.wait();
    EXPECT_EQ(queue.queuedCount(), 0U);
}

TEST(JobQueue, WaitReturnsWhenTheRestIsWithdrawn) {
    JobQueue queue(1);
    BusyThread busy(queue);
    queue.add([] { FAIL() << "it was withdrawn"; }, 1);
    Signal returned;
    std::thread waiting([&] {
        queue.wait();
        returned.give();
    });
    queue.withdraw(isOdd);
    busy.letGo();
    returned.await();
    waiting.join();
}

TEST(JobQueue, RefusesToWaitForItselfInAJob) {
    JobQueue queue(1);
    EXPECT_FALSE(queue.isOwnThread());
    queue.add([&] {
        EXPECT_TRUE(queue.isOwnThread());
        try {
            queue.wait();
            ADD_FAILURE() << "it waited";
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.name(), NSInternalInconsistencyException);
        }
        JobQueue other(1); // another queue can be waited for
        other.add([] {});
        other.wait();
    });
    queue.wait();
}

TEST(JobQueue, WaitThrowsTheFirstExceptionWhenAllJobsHaveEnded) {
    const LoggedLines logged;
    JobQueue queue(1);
    int ended = 0;
    for (int i = 0; i < 4; ++i) {
        queue.add([&ended, i] {
            ++ended;
            if (i >= 1) throw std::runtime_error("job " + std::to_string(i));
        });
    }
    try {
        queue.wait();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& failure) {
        EXPECT_STREQ(failure.what(), "job 1");
    }
    EXPECT_EQ(ended, 4);
    EXPECT_TRUE(logged.has("job 2"));
    EXPECT_TRUE(logged.has("job 3"));
    EXPECT_NO_THROW(queue.wait()) << "it was told";
    queue.add([&] { ++ended; });
    queue.wait();
    EXPECT_EQ(ended, 5);
}

TEST(JobQueue, LogsAnExceptionThatNobodyWaitsFor) {
    const LoggedLines logged;
    {
        JobQueue queue(1);
        Signal began;
        queue.add([&] {
            began.give();
            throw std::runtime_error("nobody listens");
        });
        began.await();
    }
    EXPECT_TRUE(logged.has("nobody listens"));
}

TEST(JobQueue, RefusesAnEmptyJob) {
    JobQueue queue(1);
    EXPECT_THROW(queue.add(nullptr), NSException);
    EXPECT_EQ(queue.queuedCount(), 0U);
}

TEST(JobQueue, EndsWithTheRunningJobsAndWithoutTheQueuedOnes) {
    std::atomic<int> ended = 0;
    std::atomic<int> queuedRan = 0;
    Signal began;
    Signal go;
    auto queue = std::make_unique<JobQueue>(1);
    queue->add([&, own = queue.get()] {
        began.give();
        go.await();
        own->add([&] { ++queuedRan; }); // what it adds while the queue goes does not run either
        ++ended;
    });
    for (int i = 0; i < 10; ++i) queue->add([&] { ++queuedRan; });
    began.await();
    {
        // The queued ones are gone as soon as the destructor is under way, which the last of them tells.
        queue->add([teller = std::make_shared<Teller>(go)] {});
    }
    queue.reset();
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(queuedRan, 0);
}

TEST(JobQueue, MayBeDestroyedByItsOwnJob) {
    std::atomic<int> laterRan = 0;
    Signal ended;
    auto queue = std::make_shared<std::unique_ptr<JobQueue>>(std::make_unique<JobQueue>(2));
    Signal filled;
    (*queue)->add([&, queue] {
        filled.await();
        queue->reset();
        ended.give();
    });
    // The second thread is kept from the jobs behind until the queue goes.
    Signal secondBegan;
    Signal secondGo;
    (*queue)->add([&] {
        secondBegan.give();
        secondGo.await();
    });
    secondBegan.await();
    (*queue)->add([&laterRan, teller = std::make_shared<Teller>(secondGo)] { ++laterRan; });
    filled.give();
    ended.await();
    EXPECT_EQ(*queue, nullptr);
    EXPECT_EQ(laterRan, 0);
}

TEST(JobQueue, CanGoAtAnyTime) {
    std::atomic<int> ran = 0;
    for (int jobs = 0; jobs < 60; ++jobs) {
        JobQueue queue(3);
        for (int i = 0; i < jobs; ++i) queue.add([&] { ++ran; });
    }
    EXPECT_LE(ran, 60 * 59 / 2);
}

TEST(JobQueue, SaysSoWhereNoThreadCanBeStarted) {
    JobQueue queue(2);
    {
        const NoMoreThreads none;
        try {
            queue.add([] { ADD_FAILURE() << "nobody can have run it"; });
            ADD_FAILURE() << "it was queued";
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.name(), NSGenericException);
        }
        EXPECT_EQ(queue.queuedCount(), 0U);
    }
    std::atomic<int> ran = 0;
    BusyThread busy(queue);
    {
        const NoMoreThreads none;
        queue.add([&] { ++ran; }); // the thread that there is does it later
    }
    busy.letGo();
    queue.wait();
    EXPECT_EQ(ran, 1);
}

TEST(JobQueue, IsFoundAgainByItsName) {
    const auto queue = JobQueue::named("scans", 2);
    EXPECT_EQ(JobQueue::named("scans"), queue);
    EXPECT_EQ(JobQueue::named("scans", 7)->threadLimit(), 2U);
    EXPECT_NE(JobQueue::named("prints"), queue);
}

TEST(JobQueue, IsMadeAnewWhenNobodyHeldIt) {
    std::weak_ptr<JobQueue> first = JobQueue::named("once", 2);
    EXPECT_TRUE(first.expired());
    EXPECT_EQ(JobQueue::named("once", 3)->threadLimit(), 3U);
}

TEST(JobQueue, ByNameMayBeHeldByItsOwnJobAlone) {
    Signal held;
    Signal ended;
    {
        auto queue = JobQueue::named("last");
        queue->add([&ended, &held, queue] {
            held.await();
            ended.give();
        });
    }
    held.give();
    ended.await();
}
