// The standard's recursive mutex with a count: a thread that finds itself the owner may read the count, since
// nobody else can become the owner meanwhile.

#include "Imaging/OpenGLContextLock.h"

namespace Imaging {

OpenGLContextLock::OpenGLContextLock() = default;
OpenGLContextLock::~OpenGLContextLock() = default;

void OpenGLContextLock::lock() {
    m_mutex.lock();
    m_owner = std::this_thread::get_id();
    ++m_holds;
}

bool OpenGLContextLock::try_lock() {
    if (!m_mutex.try_lock()) return false;
    m_owner = std::this_thread::get_id();
    ++m_holds;
    return true;
}

void OpenGLContextLock::unlock() {
    if (--m_holds == 0) m_owner = std::thread::id();
    m_mutex.unlock();
}

std::size_t OpenGLContextLock::holds() const {
    return m_owner.load() == std::this_thread::get_id() ? m_holds : 0;
}

OpenGLContextLock::Pause::Pause(OpenGLContextLock& lock) : m_lock(lock), m_holds(lock.holds()) {
    for (std::size_t i = 0; i < m_holds; ++i) m_lock.unlock();
}

OpenGLContextLock::Pause::~Pause() {
    for (std::size_t i = 0; i < m_holds; ++i) m_lock.lock();
}

} // namespace Imaging
