#include "Platform/Foundation/Log.h"

#include "Platform/Foundation/AssertionHandler.h"

#include <gtest/gtest.h>

#include <latch>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace Imaging::Platform;

namespace {

struct Log : testing::Test {
    ~Log() override { setLogSink(nullptr); }
};

} // namespace

TEST_F(Log, WritesOneLineToStandardErrorByDefault) {
    testing::internal::CaptureStderr();
    NSLog("%d of %s", 3, "seven");
    NSLog("with a line break of its own\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "3 of seven\nwith a line break of its own\n");
}

TEST_F(Log, HandsTheMessageToTheSink) {
    std::vector<std::string> messages;
    setLogSink([&](const std::string& message) { messages.push_back(message); });
    const std::string longText(100'000, 'x');
    testing::internal::CaptureStderr();
    NSLog("100 %% of %05.1f", 2.25);
    NSLog("%s", longText.c_str());
    NSLog("%s", "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(messages, (std::vector<std::string>{"100 % of 002.2", longText, ""}));
}

TEST_F(Log, NullRestoresStandardErrorAndReleasesTheSink) {
    const auto witness = std::make_shared<int>(0);
    setLogSink([witness](const std::string&) { ++*witness; });
    setLogSink(nullptr);
    EXPECT_EQ(witness.use_count(), 1);
    testing::internal::CaptureStderr();
    NSLog("here");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "here\n");
    EXPECT_EQ(*witness, 0);
}

TEST_F(Log, TheSinkMayLogAndReplaceItself) {
    std::vector<std::string> messages;
    setLogSink([&](const std::string& message) {
        messages.push_back("first " + message);
        setLogSink([&](const std::string& next) { messages.push_back("second " + next); });
        NSLog("again");
    });
    NSLog("once");
    EXPECT_EQ(messages, (std::vector<std::string>{"first once", "second again"}));
}

TEST_F(Log, KeepsMessagesOfManyThreadsApart) {
    std::mutex lock;
    std::multiset<std::string> messages;
    const auto sink = [&](const std::string& message) {
        const std::lock_guard guard(lock);
        messages.insert(message);
    };
    setLogSink(sink);
    std::latch start(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            for (int i = 0; i < 100; ++i) {
                NSLog("thread %d message %d", t, i);
                if (i % 10 == 0) setLogSink(sink);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(messages.size(), 400u);
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 100; ++i) {
            EXPECT_EQ(messages.count("thread " + std::to_string(t) + " message " + std::to_string(i)), 1u);
        }
    }
}

TEST(AssertionHandlerOnManyThreads, IsReplacedWhileOthersUseIt) {
    struct Quiet final : NSAssertionHandler {
        void handleFailureInFile(const std::string&, int, const std::string&) override {}
    };
    NSAssertionHandler::setCurrentHandler(std::make_shared<Quiet>());
    std::latch start(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int i = 0; i < 200; ++i) {
                NSAssertionHandler::setCurrentHandler(std::make_shared<Quiet>());
                EXPECT_NO_THROW(parameterAssertionFailed("x", "f", 1));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    NSAssertionHandler::setCurrentHandler(nullptr);
}
