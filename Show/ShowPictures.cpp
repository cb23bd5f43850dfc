// A job for each place of the order, queued when its turn comes near; one thread runs them in that order.

#include "Show/ShowPictures.h"

#include <algorithm>
#include <utility>

namespace Imaging {

ShowPictures::ShowPictures(std::vector<std::size_t> order, Load load, std::size_t ahead)
    : m_order(std::move(order)), m_load(std::move(load)), m_ahead(ahead) {
    queueUpTo(m_ahead);
}

ShowPictures::~ShowPictures() = default;

ShowPictures::Node ShowPictures::at(std::size_t place, std::size_t oldest) {
    std::deque<Node> past; // goes without the lock
    queueUpTo(place + m_ahead);
    std::unique_lock guard(m_lock);
    for (; m_oldest < oldest && !m_nodes.empty(); ++m_oldest) {
        past.push_back(std::move(m_nodes.front()));
        m_nodes.pop_front();
    }
    m_changed.wait(guard, [&] { return m_oldest + m_nodes.size() > place || m_failure != nullptr; });
    if (m_oldest + m_nodes.size() > place) return m_nodes[place - m_oldest];
    std::rethrow_exception(m_failure);
}

void ShowPictures::queueUpTo(std::size_t place) {
    for (; m_queued < m_order.size() && m_queued <= place; ++m_queued)
        m_jobs.add([this, picture = m_order[m_queued]] { load(picture); });
}

void ShowPictures::load(std::size_t picture) {
    {
        const std::lock_guard guard(m_lock);
        if (m_failure != nullptr) return;
    }
    Node node;
    std::exception_ptr failure;
    try {
        node = m_load(picture);
    } catch (...) {
        failure = std::current_exception();
    }
    {
        const std::lock_guard guard(m_lock);
        m_failure = failure;
        if (failure == nullptr) m_nodes.push_back(std::move(node));
    }
    m_changed.notify_all();
}

} // namespace Imaging
