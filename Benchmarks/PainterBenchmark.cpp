// Drawing pictures: ours against OpenCV and memcpy. 1920 × 1080 words, a photograph of 6000 × 4000 RGB.

#include "Benchmarks/Ratios.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"

#include <cairo.h>
#include <cmath>
#include <cstring>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <random>

using namespace Imaging::Platform;

namespace {

constexpr int screenWidth = 1920;
constexpr int screenHeight = 1080;

std::shared_ptr<NSBitmapImageRep> bitmap(int width, int height, bool alpha) {
    NSBitmapDescription description;
    description.pixelsWide = width;
    description.pixelsHigh = height;
    description.hasAlpha = alpha;
    description.samplesPerPixel = alpha ? 4 : 3;
    auto result = NSBitmapImageRep::bitmapWithDescription(description);
    std::mt19937 random(7);
    std::uint8_t* const data = result->bitmapData();
    const std::size_t bytes = result->bytesPerRow() * static_cast<std::size_t>(height);
    for (std::size_t i = 0; i + 4 <= bytes; i += 4) {
        const auto value = static_cast<std::uint32_t>(random()) | (alpha ? 0xff000000U : 0U);
        std::memcpy(data + i, &value, 4);
    }
    return result;
}

std::shared_ptr<NSImage> picture(int width, int height, bool alpha) {
    auto image = std::make_shared<NSImage>(NSMakeSize(static_cast<float>(width), static_cast<float>(height)));
    image->addRepresentation(bitmap(width, height, alpha));
    return image;
}

/// A screen's worth of pixels that stays the current context's.
class Screen {
public:
    Screen()
        : m_surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, screenWidth, screenHeight)),
          m_cairo(cairo_create(m_surface)) {
        NSGraphicsContext::setCurrentContext(
            NSGraphicsContext::graphicsContextWithCairo(m_cairo, screenHeight));
    }
    ~Screen() {
        NSGraphicsContext::setCurrentContext(nullptr);
        cairo_destroy(m_cairo);
        cairo_surface_destroy(m_surface);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

private:
    cairo_surface_t* m_surface;
    cairo_t* m_cairo;
};

constexpr NSRect screen{{0, 0}, {screenWidth, screenHeight}};

cv::Mat matrixOf(int width, int height, int channels) {
    cv::Mat matrix(height, width, CV_8UC(channels));
    cv::randu(matrix, 0, 256);
    return matrix;
}

/// The two strips that one thread each works on, where OpenCV has a function run on one thread alone.
void inTwoStrips(int rows, const std::function<void(cv::Range)>& strip) {
    cv::parallel_for_(
        cv::Range(0, 2),
        [&](const cv::Range& which) {
            for (int i = which.start; i < which.end; ++i) strip(cv::Range(rows * i / 2, rows * (i + 1) / 2));
        },
        2);
}

void addPlusLighter() {
    const auto first = picture(screenWidth, screenHeight, false);
    const auto second = picture(screenWidth, screenHeight, false);
    Benchmarks::compare("Painter/plus-lighter pair", Benchmarks::ours, [=] {
        first->drawInRect(screen, NSZeroRect, NSCompositeCopy, 0.4F);
        second->drawInRect(screen, NSZeroRect, NSCompositePlusLighter, 0.6F);
    });
    const cv::Mat a = matrixOf(screenWidth, screenHeight, 4);
    const cv::Mat b = matrixOf(screenWidth, screenHeight, 4);
    const cv::Mat sum(screenHeight, screenWidth, CV_8UC4);
    Benchmarks::compare(
        "Painter/plus-lighter pair", "addWeighted",
        [=] {
            inTwoStrips(screenHeight, [&](cv::Range rows) {
                cv::Mat part = sum.rowRange(rows);
                cv::addWeighted(a.rowRange(rows), 0.4, b.rowRange(rows), 0.6, 0, part);
            });
        },
        1.5);
}

void addCopy() {
    const auto image = picture(screenWidth, screenHeight, true);
    Benchmarks::compare("Painter/copy", Benchmarks::ours,
                        [=] { image->drawInRect(screen, NSZeroRect, NSCompositeCopy, 1); });
    const cv::Mat from = matrixOf(screenWidth, screenHeight, 4);
    const cv::Mat to(screenHeight, screenWidth, CV_8UC4);
    Benchmarks::compare(
        "Painter/copy", "memcpy", [=] { std::memcpy(to.data, from.data, from.total() * 4); }, 1.2);
}

void addRotation() {
    const auto image = picture(screenWidth, screenHeight, false);
    Benchmarks::compare("Painter/rotated by 30 degrees", Benchmarks::ours, [=] {
        const NSGraphicsStateScope state;
        NSAffineTransform turn;
        turn.translateXBy(screenWidth / 2.0F, screenHeight / 2.0F);
        turn.rotateByDegrees(30);
        turn.translateXBy(-screenWidth / 2.0F, -screenHeight / 2.0F);
        NSGraphicsContext::currentContext()->concat(turn);
        image->drawInRect(screen, NSZeroRect, NSCompositeSourceOver, 1);
    });
    const cv::Mat from = matrixOf(screenWidth, screenHeight, 4);
    const cv::Mat to(screenHeight, screenWidth, CV_8UC4);
    const cv::Mat turn = cv::getRotationMatrix2D({screenWidth / 2.0F, screenHeight / 2.0F}, 30, 1);
    Benchmarks::compare(
        "Painter/rotated by 30 degrees", "warpAffine",
        [=] {
            cv::Mat out = to;
            cv::warpAffine(from, out, turn, out.size(), cv::INTER_LINEAR);
        },
        1.0);
}

/// A picture scaled onto the screen from the level that fits best, which is there already.
void addScaling(const char* name, int width, int height) {
    const auto image = picture(width, height, false);
    Benchmarks::compare(name, Benchmarks::ours,
                        [=] { image->drawInRect(screen, NSZeroRect, NSCompositeSourceOver, 1); });
    const cv::Mat from = matrixOf(width, height, 4);
    const cv::Mat to(screenHeight, screenWidth, CV_8UC4);
    const auto resize = [=](int method) {
        cv::Mat out = to;
        cv::resize(from, out, out.size(), 0, 0, method);
    };
    Benchmarks::compare(
        name, "INTER_LINEAR", [=] { resize(cv::INTER_LINEAR); }, 1.5);
}

void addPhotograph() {
    const auto source = bitmap(6000, 4000, false);
    Benchmarks::compare("Painter/24 megapixels, first time", Benchmarks::ours, [=] {
        NSImage image(NSMakeSize(6000, 4000));
        image.addRepresentation(source);
        image.drawInRect(screen, NSZeroRect, NSCompositeSourceOver, 1);
    });
    for (const int channels : {3, 4}) {
        const cv::Mat from = matrixOf(6000, 4000, channels);
        const cv::Mat to(screenHeight, screenWidth, CV_8UC(channels));
        Benchmarks::compare(
            "Painter/24 megapixels, first time", channels == 3 ? "AREA, 3 ch" : "AREA, 4 ch",
            [=] {
                cv::Mat out = to;
                cv::resize(from, out, out.size(), 0, 0, cv::INTER_AREA);
            },
            0.7);
    }
}

} // namespace

int main(int argc, char** argv) {
    cv::setNumThreads(2);
    const Screen current;
    addPlusLighter();
    addCopy();
    addRotation();
    addScaling("Painter/scaled from a level of 3000 x 2000", 3000, 2000);
    addScaling("Painter/magnified from 1200 x 800", 1200, 800);
    addScaling("Painter/24 megapixels, afterwards", 6000, 4000);
    addPhotograph();
    return Benchmarks::run(argc, argv);
}
