// Frames are drawn on Cairo surfaces over memory of our own; a job writes each, on the one thread of the
// queue.

#include "Tools/Film/FrameQueue.h"

#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Pixels/PixelBuffer.h"
#include "Show/ShowFrames.h"
#include "Tools/Pictures/Canvas.h"

#include <algorithm>
#include <cairo.h>
#include <new>
#include <utility>

namespace Imaging::Tool {

struct FrameBuffer::Surface {
    Platform::PixelBuffer pixels;
    cairo_surface_t* surface = nullptr;

    std::uint32_t* data() { return static_cast<std::uint32_t*>(static_cast<void*>(pixels.data())); }
    ~Surface() { cairo_surface_destroy(surface); }
};

FrameBuffer::FrameBuffer(PixelSize size) : m_size(size), m_surface(std::make_unique<Surface>()) {
    const auto width = static_cast<std::uint64_t>(size.width);
    const auto height = static_cast<std::uint64_t>(size.height);
    const auto bytes = Platform::checkedProduct({width, height, 4});
    if (!bytes.has_value()) throw std::bad_alloc();
    m_surface->pixels = Platform::PixelBuffer::zeroed(*bytes);
    m_surface->surface = cairo_image_surface_create_for_data(
        m_surface->pixels.data(), CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(height),
        static_cast<int>(width * 4));
    cairo_t* const cairo = cairo_create(m_surface->surface);
    const bool works = cairo_status(cairo) == CAIRO_STATUS_SUCCESS;
    if (works)
        m_context =
            Platform::NSGraphicsContext::graphicsContextWithCairo(cairo, static_cast<double>(size.height));
    cairo_destroy(cairo);
    if (!works) throw std::bad_alloc();
}

FrameBuffer::~FrameBuffer() = default;

FrameView FrameBuffer::view() const {
    cairo_surface_flush(m_surface->surface);
    return {m_surface->data(), static_cast<std::size_t>(m_size.width)};
}

void drawFrame(IMGImage& node, FrameBuffer& frame) {
    const CurrentContextScope current(frame.context());
    drawFrame(node, frame.size());
}

FrameQueue::FrameQueue(FilmSink& sink, PixelSize size, std::size_t buffers)
    : m_sink(sink), m_shelf(std::make_shared<Shelf>()) {
    for (std::size_t i = 0; i < buffers; ++i) m_shelf->buffers.push_back(std::make_unique<FrameBuffer>(size));
}

FrameQueue::~FrameQueue() = default;

std::unique_ptr<FrameBuffer> FrameQueue::take() {
    std::unique_lock guard(m_shelf->lock);
    m_shelf->changed.wait(guard, [&] { return !m_shelf->buffers.empty() || m_shelf->failure != nullptr; });
    if (m_shelf->failure != nullptr) std::rethrow_exception(m_shelf->failure);
    std::unique_ptr<FrameBuffer> frame = std::move(m_shelf->buffers.back());
    m_shelf->buffers.pop_back();
    return frame;
}

void FrameQueue::give(std::unique_ptr<FrameBuffer> frame, std::uint64_t times) {
    // The buffer goes back onto the shelf when the last one who reads it lets go of it.
    const std::shared_ptr<FrameBuffer> owner(frame.release(), [shelf = m_shelf](FrameBuffer* buffer) {
        {
            const std::lock_guard guard(shelf->lock);
            shelf->buffers.emplace_back(buffer);
        }
        shelf->changed.notify_all();
    });
    m_jobs.add([this, owner, times] { tryTo([&] { write(owner, times); }); });
}

std::uint64_t FrameQueue::written() const { return m_written; }

void FrameQueue::finish() {
    m_jobs.add([this] { tryTo([this] { m_sink.finish(); }); });
    m_jobs.wait();
    const std::lock_guard guard(m_shelf->lock);
    if (m_shelf->failure != nullptr) std::rethrow_exception(m_shelf->failure);
}

void FrameQueue::write(const std::shared_ptr<FrameBuffer>& frame, std::uint64_t times) {
    m_sink.write(frame->view(), times, frame);
    m_written += times;
}

/// Does nothing once something has failed.
void FrameQueue::tryTo(const std::function<void()>& work) {
    {
        const std::lock_guard guard(m_shelf->lock);
        if (m_shelf->failure != nullptr) return;
    }
    try {
        work();
    } catch (...) {
        {
            const std::lock_guard guard(m_shelf->lock);
            m_shelf->failure = std::current_exception();
        }
        m_shelf->changed.notify_all();
    }
}

} // namespace Imaging::Tool
