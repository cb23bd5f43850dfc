#include "Show/ShowPictures.h"

#include "Tools/Command/Threads.h"

#include <algorithm>
#include <utility>

namespace Imaging::Tool {

FilmPictures::FilmPictures(std::vector<std::size_t> order, Load load, std::size_t ahead)
    : m_order(std::move(order)), m_load(std::move(load)), m_ahead(ahead) {
    m_thread = threadWithoutSignals([this] { loadUntilTheEnd(); });
}

FilmPictures::~FilmPictures() {
    {
        const std::lock_guard guard(m_lock);
        m_ending = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

FilmPictures::Node FilmPictures::at(std::size_t place, std::size_t oldest) {
    std::deque<Node> past; // goes without the lock
    std::unique_lock guard(m_lock);
    m_asked = std::max(m_asked, place);
    for (; m_oldest < oldest && !m_nodes.empty(); ++m_oldest) {
        past.push_back(std::move(m_nodes.front()));
        m_nodes.pop_front();
    }
    m_changed.notify_all();
    m_changed.wait(guard, [&] { return m_oldest + m_nodes.size() > place || m_failure != nullptr; });
    if (m_oldest + m_nodes.size() > place) return m_nodes[place - m_oldest];
    std::rethrow_exception(m_failure);
}

void FilmPictures::loadUntilTheEnd() {
    std::unique_lock guard(m_lock);
    while (true) {
        const auto next = [&] { return m_oldest + m_nodes.size(); };
        m_changed.wait(guard,
                       [&] { return m_ending || (next() < m_order.size() && next() <= m_asked + m_ahead); });
        if (m_ending) return;
        const std::size_t picture = m_order[next()];
        guard.unlock();
        Node node;
        std::exception_ptr failure;
        try {
            node = m_load(picture);
        } catch (...) {
            failure = std::current_exception();
        }
        guard.lock();
        m_failure = failure;
        if (failure == nullptr) m_nodes.push_back(std::move(node));
        m_changed.notify_all();
        if (failure != nullptr) return;
    }
}

} // namespace Imaging::Tool
