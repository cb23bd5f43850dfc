// How fast transitions are drawn: films of 50 frames from one opaque picture of 1920 x 1080 to another, onto
// pixels of the same size, for each frame of which a graph is made and drawn; beside FFmpeg's xfade.
// Transitions that add their pictures up begin each frame with black, as films do; the others cover every
// pixel.

#include "Benchmarks/Ratios.h"
#include "Benchmarks/XfadePeer.h"

#include "Imaging/ApertureTransitions.h"
#include "Imaging/CachedImage.h"
#include "Imaging/DirectionalTransitions.h"
#include "Imaging/Transitions.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"

#include <cairo.h>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Imaging;

constexpr int width = 1920;
constexpr int height = 1080;
constexpr NSSize frameSize{width, height};
constexpr int frames = 50;

/// A picture of smooth colour with a little noise, as photographs have it.
std::shared_ptr<IMGImage> photograph(unsigned seed) {
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = width;
    description.pixelsHigh = height;
    description.hasAlpha = false;
    description.samplesPerPixel = 3;
    const auto bitmap = Imaging::Platform::NSBitmapImageRep::bitmapWithDescription(description);
    std::minstd_rand random(seed);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* byte = bitmap->bitmapData() + bitmap->bytesPerRow() * static_cast<std::size_t>(y);
        for (int i = 0; i < 3 * width; ++i) {
            const unsigned smooth = 40 + static_cast<unsigned>(i / 29 + y / (7 + i % 3)) % 180;
            *byte++ = static_cast<std::uint8_t>(smooth + (random() >> 7) % 16);
        }
    }
    const auto picture = std::make_shared<Imaging::Platform::NSImage>(frameSize);
    picture->addRepresentation(bitmap);
    return imagingImage(picture);
}

/// A screen's worth of pixels that stays the current context's.
class Screen {
public:
    Screen()
        : m_surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
          m_cairo(cairo_create(m_surface)) {
        Imaging::Platform::NSGraphicsContext::setCurrentContext(
            Imaging::Platform::NSGraphicsContext::graphicsContextWithCairo(m_cairo, height));
    }
    ~Screen() {
        Imaging::Platform::NSGraphicsContext::setCurrentContext(nullptr);
        cairo_destroy(m_cairo);
        cairo_surface_destroy(m_surface);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    static void clear() {
        NSColor::blackColor().set();
        Imaging::Platform::NSRectFill({Imaging::Platform::NSZeroPoint, frameSize});
    }

private:
    cairo_surface_t* m_surface;
    cairo_t* m_cairo;
};

using Node = std::shared_ptr<IMGImage>;

struct Subject {
    std::string name;
    std::function<Node(const Node& from, const Node& to, float weight)> node;
    bool addsUp;
    std::string peer; ///< the name of xfade's transition that does the same
    double target;    ///< of our time by the peer's; 0 for none
};

std::vector<Subject> subjects() {
    const NSColor color = NSColor::colorWithCalibratedRed(0.2F, 0.3F, 0.5F, 1);
    const auto left = IMGTransitionDirectionLeft;
    const auto in = IMGTransitionIn;
    const NSSize size = frameSize;
    return {
        {"dissolve",
         [=](const Node& a, const Node& b, float w) {
             return IMGDissolveTransitionOp::transitionWithFromImage(a, b, size, w);
         },
         true, "fade", 0.5},
        {"spin",
         [=](const Node& a, const Node& b, float w) {
             return IMGSpinTransitionOp::transitionWithFromImage(a, b, size, in, w);
         },
         false, "", 0},
        {"push",
         [=](const Node& a, const Node& b, float w) {
             return IMGPushTransitionOp::transitionWithFromImage(a, b, size, left, w);
         },
         false, "slideleft", 0.2},
        {"slide",
         [=](const Node& a, const Node& b, float w) {
             return IMGSlideTransitionOp::transitionWithFromImage(a, b, size, left, in, w);
         },
         false, "slideleft", 0.2},
        {"wipe",
         [=](const Node& a, const Node& b, float w) {
             return IMGWipeTransitionOp::transitionWithFromImage(a, b, size, left, w);
         },
         false, "wipeleft", 0.5},
        {"slide changer",
         [=](const Node& a, const Node& b, float w) {
             return IMGSlideChangerTransitionOp::transitionWithFromImage(a, b, size, left, color, w);
         },
         false, "slideleft", 0.2},
        {"zoom",
         [=](const Node& a, const Node& b, float w) {
             return IMGZoomTransitionOp::transitionWithFromImage(a, b, size, in, w);
         },
         false, "zoomin", 0.2},
        {"iris",
         [=](const Node& a, const Node& b, float w) {
             return IMGIrisTransitionOp::transitionWithFromImage(a, b, size, in, w);
         },
         false, "rectcrop", 1 / 1.5},
        {"colour fade",
         [=](const Node& a, const Node& b, float w) {
             return IMGColorFadeTransitionOp::transitionWithFromImage(a, b, size, color, 0, w);
         },
         true, "fadeblack", 1 / 3.0},
    };
}

void drawFilm(const Subject& subject, const Node& from, const Node& to) {
    for (int i = 0; i < frames; ++i) {
        if (subject.addsUp) Screen::clear();
        subject.node(from, to, static_cast<float>(i + 1) / (frames + 1))
            ->drawWithTransform(NSAffineTransform(), Imaging::Platform::NSCompositeSourceOver, 1);
    }
}

} // namespace

int main(int argc, char** argv) {
    const Screen screen;
    const Node from = photograph(17);
    const Node to = photograph(23);
    const Benchmarks::XfadePeer xfade(width, height);
    for (const Subject& subject : subjects()) {
        const std::string name = subject.name + ", " + std::to_string(frames) + " frames";
        Benchmarks::compare(name, Benchmarks::ours, [=] { drawFilm(subject, from, to); });
        if (subject.peer.empty()) continue;
        Benchmarks::compare(
            name, subject.peer, [&xfade, subject] { xfade.draw(subject.peer, frames); }, subject.target);
    }
    return Benchmarks::run(argc, argv);
}
