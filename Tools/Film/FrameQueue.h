#pragma once

#include "Imaging/Image.h"
#include "Platform/Foundation/JobQueue.h"
#include "Tools/Command/Values.h"
#include "Tools/Film/FilmSink.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Imaging::Platform {
class NSGraphicsContext;
}

namespace Imaging::Tool {

/// The pixels of one frame and a context to draw on them, (0, 0) at the lower left.
class FrameBuffer {
public:
    /// Throws std::bad_alloc.
    explicit FrameBuffer(PixelSize size);
    ~FrameBuffer();
    FrameBuffer(const FrameBuffer&) = delete;
    FrameBuffer& operator=(const FrameBuffer&) = delete;

    const std::shared_ptr<Platform::NSGraphicsContext>& context() const { return m_context; }

    PixelSize size() const { return m_size; }

    /// The words as they are now. What is opaque has 255 in its unused byte.
    FrameView view() const;

private:
    struct Surface;

    PixelSize m_size;
    std::unique_ptr<Surface> m_surface;
    std::shared_ptr<Platform::NSGraphicsContext> m_context;
};

/// Draws a frame of a show, all of which becomes opaque.
void drawFrame(IMGImage& node, FrameBuffer& frame);

/// Hands frames to a sink on a thread of its own, so that the next one is drawn while one is written:
///
///   take → draw → give → (writing) → take again
///
/// There are a few buffers, which go round. Everything but the writing is for one thread.
class FrameQueue {
public:
    FrameQueue(FilmSink& sink, PixelSize size, std::size_t buffers = 3);

    /// Leaves the frames that are not written yet.
    ~FrameQueue();
    FrameQueue(const FrameQueue&) = delete;
    FrameQueue& operator=(const FrameQueue&) = delete;

    /// A buffer with whatever was in it; waits for one. Throws what the sink has thrown.
    std::unique_ptr<FrameBuffer> take();

    /// Has a frame written so many times.
    void give(std::unique_ptr<FrameBuffer> frame, std::uint64_t times);

    /// How many frames were handed to the sink. Any thread.
    std::uint64_t written() const;

    /// Waits until the sink has finished. Throws what it throws.
    void finish();

private:
    /// The buffers that are free. They come back from wherever a sink let go of them.
    struct Shelf {
        std::mutex lock;
        std::condition_variable changed;
        std::vector<std::unique_ptr<FrameBuffer>> buffers;
        std::exception_ptr failure;
    };

    void write(const std::shared_ptr<FrameBuffer>& frame, std::uint64_t times);
    void tryTo(const std::function<void()>& work);

    FilmSink& m_sink;
    std::shared_ptr<Shelf> m_shelf;
    std::atomic<std::uint64_t> m_written = 0;
    Platform::JobQueue m_jobs{1}; ///< goes first, while all that its jobs need is there
};

} // namespace Imaging::Tool
