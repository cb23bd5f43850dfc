#pragma once

// FFmpeg's xfade filter as a peer of transitions, in this process and with two threads.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Benchmarks {

/// Two pictures in planar 8-bit green, blue, red and alpha, the fastest layout with alpha that the filter
/// has.
class XfadePeer {
public:
    XfadePeer(int width, int height);
    ~XfadePeer();
    XfadePeer(const XfadePeer&) = delete;
    XfadePeer& operator=(const XfadePeer&) = delete;

    /// Draws so many frames of a transition ("wipeleft"), spread over its whole length. Throws
    /// std::runtime_error.
    void draw(const std::string& transition, int frames) const;

private:
    struct Pictures;
    std::unique_ptr<Pictures> m_pictures;
};

} // namespace Benchmarks
