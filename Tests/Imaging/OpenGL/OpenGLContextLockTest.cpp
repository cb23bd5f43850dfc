#include "Imaging/OpenGLContextLock.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

using Imaging::OpenGLContextLock;

namespace {

/// Whether another thread could take the lock.
bool isFree(OpenGLContextLock& lock) {
    bool taken = false;
    std::thread([&] {
        taken = lock.try_lock();
        if (taken) lock.unlock();
    }).join();
    return taken;
}

} // namespace

TEST(OpenGLContextLock, CountsTheHoldsOfTheThreadThatAsks) {
    OpenGLContextLock lock;
    EXPECT_EQ(lock.holds(), 0U);
    lock.lock();
    EXPECT_TRUE(lock.try_lock());
    EXPECT_EQ(lock.holds(), 2U);
    std::thread([&] { EXPECT_EQ(lock.holds(), 0U); }).join();
    lock.unlock();
    EXPECT_EQ(lock.holds(), 1U);
    EXPECT_FALSE(isFree(lock));
    lock.unlock();
    EXPECT_EQ(lock.holds(), 0U);
    EXPECT_TRUE(isFree(lock));
}

TEST(OpenGLContextLock, LetsOthersInDuringAPauseAndComesBackWithAllHolds) {
    OpenGLContextLock lock;
    lock.lock();
    lock.lock();
    {
        const OpenGLContextLock::Pause pause(lock);
        EXPECT_EQ(lock.holds(), 0U);
        EXPECT_TRUE(isFree(lock));
    }
    EXPECT_EQ(lock.holds(), 2U);
    EXPECT_FALSE(isFree(lock));
    lock.unlock();
    lock.unlock();
    EXPECT_TRUE(isFree(lock));
}

TEST(OpenGLContextLock, ComesBackFromAPauseThatAnExceptionLeaves) {
    OpenGLContextLock lock;
    lock.lock();
    EXPECT_THROW(
        {
            const OpenGLContextLock::Pause pause(lock);
            throw std::runtime_error("full");
        },
        std::runtime_error);
    EXPECT_EQ(lock.holds(), 1U);
    lock.unlock();
}

TEST(OpenGLContextLock, PausesNothingWhereTheThreadHoldsNothing) {
    OpenGLContextLock lock;
    {
        const OpenGLContextLock::Pause pause(lock);
        EXPECT_TRUE(isFree(lock));
    }
    EXPECT_TRUE(isFree(lock));
}
