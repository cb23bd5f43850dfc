#include "Benchmarks/XfadePeer.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

#include <array>
#include <stdexcept>

namespace Benchmarks {

namespace {

constexpr int rate = 25;

void check(int result, const char* what) {
    if (result < 0) throw std::runtime_error(std::string("xfade: ") + what);
}

struct FrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FrameDeleter>;

struct GraphDeleter {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};

Frame picture(int width, int height, unsigned seed) {
    Frame frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_GBRAP;
    frame->width = width;
    frame->height = height;
    check(av_frame_get_buffer(frame.get(), 0), "no memory");
    for (std::size_t plane = 0; plane < 4; ++plane) {
        const std::size_t stride = static_cast<std::size_t>(frame->linesize[plane]);
        for (std::size_t i = 0; i < stride * static_cast<std::size_t>(height); ++i) {
            seed = seed * 1664525 + 1013904223;
            frame->data[plane][i] = plane == 3 ? 255 : static_cast<std::uint8_t>(seed >> 24);
        }
    }
    return frame;
}

/// Two sources, the transition and a sink.
class Film {
public:
    Film(const AVFrame& picture, const std::string& transition, int frames)
        : m_graph(avfilter_graph_alloc()) {
        m_graph->nb_threads = 2;
        const std::string source = "video_size=" + std::to_string(picture.width) + "x" +
                                   std::to_string(picture.height) +
                                   ":pix_fmt=" + std::to_string(picture.format) + ":time_base=1/" +
                                   std::to_string(rate) + ":frame_rate=" + std::to_string(rate);
        AVFilterContext* const from = add("buffer", source);
        AVFilterContext* const to = add("buffer", source);
        AVFilterContext* const mix = add("xfade", "transition=" + transition + ":offset=0:duration=" +
                                                      std::to_string(static_cast<double>(frames) / rate));
        m_sink = add("buffersink", "");
        check(avfilter_link(from, 0, mix, 0), "cannot be linked");
        check(avfilter_link(to, 0, mix, 1), "cannot be linked");
        check(avfilter_link(mix, 0, m_sink, 0), "cannot be linked");
        check(avfilter_graph_config(m_graph.get(), nullptr), "cannot be configured");
        m_sources = {from, to};
    }

    /// The next pictures go in, whose memory is shared.
    void give(const std::array<const AVFrame*, 2>& pictures, int number) const {
        for (std::size_t i = 0; i < 2; ++i) {
            const Frame frame(av_frame_clone(pictures[i]));
            frame->pts = number;
            check(av_buffersrc_add_frame(m_sources[i], frame.get()), "takes no frame");
        }
    }

    /// Takes what is ready; gives how many frames.
    int take() const {
        int taken = 0;
        for (;; ++taken) {
            const Frame frame(av_frame_alloc());
            if (av_buffersink_get_frame(m_sink, frame.get()) < 0) return taken;
        }
    }

private:
    AVFilterContext* add(const char* filter, const std::string& arguments) {
        AVFilterContext* context = nullptr;
        check(avfilter_graph_create_filter(&context, avfilter_get_by_name(filter), nullptr, arguments.c_str(),
                                           nullptr, m_graph.get()),
              "is not there");
        return context;
    }

    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    std::array<AVFilterContext*, 2> m_sources{};
    AVFilterContext* m_sink = nullptr;
};

} // namespace

struct XfadePeer::Pictures {
    Frame from;
    Frame to;
};

XfadePeer::XfadePeer(int width, int height)
    : m_pictures(new Pictures{picture(width, height, 1), picture(width, height, 2)}) {}

XfadePeer::~XfadePeer() = default;

void XfadePeer::draw(const std::string& transition, int frames) const {
    const Film film(*m_pictures->from, transition, frames);
    int taken = 0;
    // The filter holds frames back until it has seen what follows.
    constexpr int most = 16;
    for (int number = 0; taken < frames; ++number) {
        if (number > frames + most) throw std::runtime_error("xfade: gives too few frames");
        film.give({m_pictures->from.get(), m_pictures->to.get()}, number);
        taken += film.take();
    }
}

} // namespace Benchmarks
