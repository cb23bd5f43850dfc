#include "Imaging/OpenGLContextLock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

using Imaging::OpenGLContextLock;

TEST(OpenGLContextLockThreads, KeepOneThreadAtATimeInside) {
    OpenGLContextLock lock;
    int guarded = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                const std::lock_guard<OpenGLContextLock> outer(lock);
                const std::lock_guard<OpenGLContextLock> inner(lock);
                ++guarded;
                const OpenGLContextLock::Pause pause(lock);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(guarded, 2000);
    EXPECT_EQ(lock.holds(), 0U);
}
