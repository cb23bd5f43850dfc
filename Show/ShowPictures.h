#pragma once

#include "Imaging/Image.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Imaging::Tool {

/// The pictures of a film in the order in which its frames need them. A thread makes the next ones ahead of
/// need, one at a time, so that no two of them are ever decoded at once.
class FilmPictures {
public:
    using Node = std::shared_ptr<Imaging::IMGImage>;

    /// Makes a picture ready to be shown. Called on the thread, and never again after it has thrown.
    using Load = std::function<Node(std::size_t picture)>;

    /// `order` has the pictures' numbers; one may come several times. At most `ahead` places beyond the one
    /// that was asked for last are made, and at first as many beyond the first one. In a transition the next
    /// picture is asked for, so that three are there then, and one is being made meanwhile.
    FilmPictures(std::vector<std::size_t> order, Load load, std::size_t ahead = 1);

    /// Waits for the picture that is being made, and for no other.
    ~FilmPictures();
    FilmPictures(const FilmPictures&) = delete;
    FilmPictures& operator=(const FilmPictures&) = delete;

    /// The picture at a place of the order; waits until it is there, and lets go of those before `oldest`,
    /// which are not asked for again. Throws what making it, or one before it, has thrown. One thread.
    Node at(std::size_t place, std::size_t oldest);

private:
    void loadUntilTheEnd();

    const std::vector<std::size_t> m_order;
    const Load m_load;
    const std::size_t m_ahead;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<Node> m_nodes; ///< of the places from m_oldest on
    std::size_t m_oldest = 0;
    std::size_t m_asked = 0;
    std::exception_ptr m_failure;
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace Imaging::Tool
