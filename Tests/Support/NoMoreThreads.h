#pragma once

#include <cstddef>
#include <pthread.h>

namespace TestSupport {

/// Lets no thread of the process be started: none gets a stack of the size that is asked for.
class NoMoreThreads {
public:
    NoMoreThreads() {
        pthread_getattr_default_np(&m_before);
        pthread_attr_t hopeless;
        pthread_getattr_default_np(&hopeless);
        pthread_attr_setstacksize(&hopeless, std::size_t{1} << 50);
        pthread_setattr_default_np(&hopeless);
        pthread_attr_destroy(&hopeless);
    }
    ~NoMoreThreads() {
        pthread_setattr_default_np(&m_before);
        pthread_attr_destroy(&m_before);
    }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    pthread_attr_t m_before{};
};

} // namespace TestSupport
