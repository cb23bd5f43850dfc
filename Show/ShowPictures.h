#pragma once

#include "Imaging/Image.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/JobQueue.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Imaging {

/// The pictures of a show in the order in which its frames need them. A thread makes the next ones ahead of
/// need, one at a time, so that no two of them are ever decoded at once.
///
/// Example:
/// @code
/// // Most often framed pictures; these show nothing.
/// ShowPictures pictures({0, 1, 0}, [](std::size_t) { return std::make_shared<IMGImage>(); });
/// const ShowPictures::Node first = pictures.at(0, 0);
/// @endcode
class IMAGING_EXPORT ShowPictures {
public:
    using Node = std::shared_ptr<IMGImage>;

    /// Makes a picture ready to be shown. Called on the thread, and never again after it has thrown.
    using Load = std::function<Node(std::size_t picture)>;

    /// `order` has the pictures' numbers; one may come several times. At most `ahead` places beyond the one
    /// that was asked for last are made, and at first as many beyond the first one. In a transition the next
    /// picture is asked for, so that three are there then, and one is being made meanwhile.
    ShowPictures(std::vector<std::size_t> order, Load load, std::size_t ahead = 1);

    /// Waits for the picture that is being made, and for no other.
    ~ShowPictures();
    ShowPictures(const ShowPictures&) = delete;
    ShowPictures& operator=(const ShowPictures&) = delete;

    /// The picture at a place of the order; waits until it is there, and lets go of those before `oldest`,
    /// which are not asked for again. Throws what making it, or one before it, has thrown. One thread.
    Node at(std::size_t place, std::size_t oldest);

private:
    void queueUpTo(std::size_t place);
    void load(std::size_t picture);

    const std::vector<std::size_t> m_order;
    const Load m_load;
    const std::size_t m_ahead;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<Node> m_nodes; ///< of the places from m_oldest on
    std::size_t m_oldest = 0;
    std::size_t m_queued = 0; ///< places that were queued; for the thread that asks
    std::exception_ptr m_failure;
    Platform::JobQueue m_jobs{1}; ///< goes first, while all that its jobs need is there
};

} // namespace Imaging
