#pragma once

#include "Platform/Foundation/Export.h"

#include <atomic>
#include <cstddef>
#include <mutex>
#include <thread>

namespace Imaging {

/// The lock of an OpenGL context: who issues commands of the context holds it. Recursive, and knows how often
/// the calling thread holds it, so that a thread can let others in and have its holds back afterwards. It
/// meets the requirements of std::lock_guard and std::unique_lock.
///
/// Example:
/// @code
/// OpenGLContextLock lock;
/// const std::lock_guard<OpenGLContextLock> hold(lock);
/// const bool isMine = lock.holds() == 1;
/// @endcode
class IMAGING_EXPORT OpenGLContextLock {
public:
    OpenGLContextLock();
    ~OpenGLContextLock();
    OpenGLContextLock(const OpenGLContextLock&) = delete;
    OpenGLContextLock& operator=(const OpenGLContextLock&) = delete;

    void lock();
    bool try_lock();

    /// By the thread that locked it, as often as that did.
    void unlock();

    /// How often the calling thread holds it.
    std::size_t holds() const;

    /// Gives all holds of the calling thread up, and takes as many again at the end of the scope, however it
    /// is left. What the lock guards may have changed meanwhile.
    class IMAGING_EXPORT Pause {
    public:
        explicit Pause(OpenGLContextLock& lock);
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        OpenGLContextLock& m_lock;
        std::size_t m_holds;
    };

private:
    std::recursive_mutex m_mutex;
    std::atomic<std::thread::id> m_owner; ///< written by who holds the mutex
    std::size_t m_holds = 0;              ///< read and written by who holds the mutex
};

} // namespace Imaging
