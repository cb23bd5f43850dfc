// How fast transitions are drawn: films of 50 weights from one opaque picture of 1920 x 1080 to another, onto
// pixels of the same size. Each frame is cleared, its graph is made and drawn. The table gives the medians of
// several films; there is no peer in here.

#include "Imaging/ApertureTransitions.h"
#include "Imaging/CachedImage.h"
#include "Imaging/DirectionalTransitions.h"
#include "Imaging/Transitions.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"

#include <algorithm>
#include <cairo.h>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Imaging;

constexpr int width = 1920;
constexpr int height = 1080;
constexpr NSSize frameSize{width, height};
constexpr int weights = 50;
constexpr int films = 7;

/// A picture of smooth colour with a little noise, as photographs have it.
std::shared_ptr<IMGImage> photograph(unsigned seed) {
    Platform::NSBitmapDescription description;
    description.pixelsWide = width;
    description.pixelsHigh = height;
    description.hasAlpha = false;
    description.samplesPerPixel = 3;
    const auto bitmap = Platform::NSBitmapImageRep::bitmapWithDescription(description);
    std::minstd_rand random(seed);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* byte = bitmap->bitmapData() + bitmap->bytesPerRow() * static_cast<std::size_t>(y);
        for (int i = 0; i < 3 * width; ++i) {
            const unsigned smooth = 40 + static_cast<unsigned>(i / 29 + y / (7 + i % 3)) % 180;
            *byte++ = static_cast<std::uint8_t>(smooth + (random() >> 7) % 16);
        }
    }
    const auto picture = std::make_shared<Platform::NSImage>(frameSize);
    picture->addRepresentation(bitmap);
    return imagingImage(picture);
}

/// A screen's worth of pixels that stays the current context's.
class Screen {
public:
    Screen()
        : m_surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
          m_cairo(cairo_create(m_surface)) {
        Platform::NSGraphicsContext::setCurrentContext(
            Platform::NSGraphicsContext::graphicsContextWithCairo(m_cairo, height));
    }
    ~Screen() {
        Platform::NSGraphicsContext::setCurrentContext(nullptr);
        cairo_destroy(m_cairo);
        cairo_surface_destroy(m_surface);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void clear() {
        cairo_save(m_cairo);
        cairo_set_operator(m_cairo, CAIRO_OPERATOR_CLEAR);
        cairo_paint(m_cairo);
        cairo_restore(m_cairo);
    }

private:
    cairo_surface_t* m_surface;
    cairo_t* m_cairo;
};

struct Subject {
    std::string name;
    std::function<std::shared_ptr<IMGImage>(float weight)> node;
};

std::vector<Subject> subjects(const std::shared_ptr<IMGImage>& from, const std::shared_ptr<IMGImage>& to) {
    const NSColor color = NSColor::colorWithCalibratedRed(0.2F, 0.3F, 0.5F, 1);
    const auto left = IMGTransitionDirectionLeft;
    const auto in = IMGTransitionIn;
    const NSSize size = frameSize;
    const auto with = [=](auto make) {
        return [=](float weight) -> std::shared_ptr<IMGImage> { return make(from, to, weight); };
    };
    return {
        {"dissolve", with([=](const auto& a, const auto& b, float w) {
             return IMGDissolveTransitionOp::transitionWithFromImage(a, b, size, w);
         })},
        {"spin", with([=](const auto& a, const auto& b, float w) {
             return IMGSpinTransitionOp::transitionWithFromImage(a, b, size, in, w);
         })},
        {"push", with([=](const auto& a, const auto& b, float w) {
             return IMGPushTransitionOp::transitionWithFromImage(a, b, size, left, w);
         })},
        {"slide", with([=](const auto& a, const auto& b, float w) {
             return IMGSlideTransitionOp::transitionWithFromImage(a, b, size, left, in, w);
         })},
        {"wipe", with([=](const auto& a, const auto& b, float w) {
             return IMGWipeTransitionOp::transitionWithFromImage(a, b, size, left, w);
         })},
        {"slide changer", with([=](const auto& a, const auto& b, float w) {
             return IMGSlideChangerTransitionOp::transitionWithFromImage(a, b, size, left, color, w);
         })},
        {"zoom", with([=](const auto& a, const auto& b, float w) {
             return IMGZoomTransitionOp::transitionWithFromImage(a, b, size, in, w);
         })},
        {"iris", with([=](const auto& a, const auto& b, float w) {
             return IMGIrisTransitionOp::transitionWithFromImage(a, b, size, in, w);
         })},
        {"colour fade", with([=](const auto& a, const auto& b, float w) {
             return IMGColorFadeTransitionOp::transitionWithFromImage(a, b, size, color, 0, w);
         })},
    };
}

/// The time of one film in milliseconds a frame.
double film(Screen& screen, const Subject& subject) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < weights; ++i) {
        screen.clear();
        subject.node(static_cast<float>(i) / (weights - 1))
            ->drawWithTransform(NSAffineTransform(), Platform::NSCompositeSourceOver, 1);
    }
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    return time.count() / weights;
}

} // namespace

int main() {
    Screen screen;
    const std::vector<Subject> all = subjects(photograph(17), photograph(23));
    for (const Subject& subject : all) film(screen, subject); // what is made on the first draw is there now
    std::vector<std::vector<double>> times(all.size());
    // The transitions take turns, so that a busy spell does not fall on one alone.
    for (int round = 0; round < films; ++round) {
        for (std::size_t i = 0; i < all.size(); ++i) times[i].push_back(film(screen, all[i]));
    }
    std::printf("%-16s %12s %12s\n", "transition", "ms a frame", "frames/s");
    for (std::size_t i = 0; i < all.size(); ++i) {
        std::nth_element(times[i].begin(), times[i].begin() + films / 2, times[i].end());
        const double median = times[i][films / 2];
        std::printf("%-16s %12.3f %12.1f\n", all[i].name.c_str(), median, 1000 / median);
    }
    return 0;
}
