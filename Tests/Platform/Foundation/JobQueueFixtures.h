#pragma once

#include "Platform/Foundation/JobQueue.h"

#include <chrono>
#include <future>
#include <mutex>
#include <stdexcept>
#include <vector>

/// What tests of threads wait with, without ever sleeping.
namespace TestSupport {

/// Something that one thread waits for and another one brings about. Who waits in vain for minutes fails.
class Signal {
public:
    void give() { m_promise.set_value(); }
    void await() const {
        const bool came = m_future.wait_for(std::chrono::minutes(2)) == std::future_status::ready;
        if (!came) throw std::runtime_error("what was waited for did not come");
    }

private:
    std::promise<void> m_promise;
    std::shared_future<void> m_future = m_promise.get_future().share();
};

/// Gives a signal when it goes.
class Teller {
public:
    explicit Teller(Signal& signal) : m_signal(signal) {}
    ~Teller() { m_signal.give(); }
    Teller(const Teller&) = delete;
    Teller& operator=(const Teller&) = delete;

private:
    Signal& m_signal;
};

/// Numbers in the order in which jobs noted them.
class Notes {
public:
    void add(int number) {
        const std::lock_guard guard(m_lock);
        m_numbers.push_back(number);
    }
    std::vector<int> numbers() const {
        const std::lock_guard guard(m_lock);
        return m_numbers;
    }

private:
    mutable std::mutex m_lock;
    std::vector<int> m_numbers;
};

/// Keeps the queue's only thread busy until it is told to go on.
class BusyThread {
public:
    explicit BusyThread(Imaging::Platform::JobQueue& queue) {
        queue.add([this] {
            m_began.give();
            m_go.await();
        });
        m_began.await();
    }
    void letGo() { m_go.give(); }

private:
    Signal m_began;
    Signal m_go;
};

} // namespace TestSupport
