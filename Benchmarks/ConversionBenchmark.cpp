// Pictures of 24 megapixels brought from one layout into another, against the copying of the bytes that must
// move (the larger of what is read and written) and against OpenCV on two threads. Taking fresh memory for
// the result is part of each, except where a case says that the result is held.

#include "Benchmarks/Ratios.h"

#include "Imaging/BitmapFormats.h"
#include "Platform/Graphics/Pictures/BitmapPixels.h"
#include "Platform/Pixels/PixelBuffer.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstring>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <random>
#include <string>

using namespace Imaging;
using Imaging::Platform::PixelBuffer;

namespace {

constexpr int width = 6000;
constexpr int height = 4000;
constexpr std::size_t pixelCount = std::size_t{width} * height;
constexpr double target = 2; // times the copying of the bytes

using Bitmap = std::shared_ptr<NSBitmapImageRep>;

int samplesOf(IMGBitmapFormat format) { return static_cast<int>(format); } // 1 to 4, as they are numbered

Bitmap randomBitmap(IMGBitmapFormat format) {
    const Bitmap bitmap = bitmapWithSize({width, height}, format);
    std::mt19937_64 random(24);
    std::uint8_t* const bytes = bitmap->bitmapData();
    const std::size_t size = bitmap->bytesPerRow() * height;
    for (std::size_t i = 0; i + 8 <= size; i += 8) {
        const std::uint64_t value = random();
        std::memcpy(bytes + i, &value, 8);
    }
    return bitmap;
}

const Bitmap& bitmapOf(IMGBitmapFormat format) {
    static const Bitmap bitmaps[] = {nullptr, randomBitmap(IMGBitmapFormatGrayscale),
                                     randomBitmap(IMGBitmapFormatGrayscaleAlpha),
                                     randomBitmap(IMGBitmapFormatRGB), randomBitmap(IMGBitmapFormatRGBA)};
    return bitmaps[format];
}

Bitmap converted(IMGBitmapFormat from, IMGBitmapFormat to, bool swizzled) {
    const bool gray = to == IMGBitmapFormatGrayscale || to == IMGBitmapFormatGrayscaleAlpha;
    const bool alpha = to == IMGBitmapFormatGrayscaleAlpha || to == IMGBitmapFormatRGBA;
    return bitmapRepresentationWithSize(*bitmapOf(from), {width, height}, 8, samplesOf(to), alpha, false,
                                        gray ? Imaging::Platform::NSCalibratedWhiteColorSpace
                                             : Imaging::Platform::NSCalibratedRGBColorSpace,
                                        swizzled);
}

cv::Mat matOf(IMGBitmapFormat format) {
    return {height, width, CV_8UC(samplesOf(format)), bitmapOf(format)->bitmapData()};
}

/// Copying as many bytes as must move, out of a picture of that size.
void compareCopying(const std::string& name, std::size_t bytesPerPixel) {
    const std::uint8_t* const from = bitmapOf(static_cast<IMGBitmapFormat>(bytesPerPixel))->bitmapData();
    const std::size_t size = pixelCount * bytesPerPixel;
    const auto copy = [=] {
        PixelBuffer fresh = PixelBuffer::uninitialised(size);
        std::memcpy(fresh.data(), from, size);
        benchmark::DoNotOptimize(fresh.data());
        benchmark::ClobberMemory();
    };
    Benchmarks::compare(name, "memcpy", copy, target);
}

struct Conversion {
    std::string name;
    IMGBitmapFormat from;
    IMGBitmapFormat to;
    bool swizzled;
    int code; ///< OpenCV's; negative for a mere change of the samples' order
};

void openCVConversion(const Conversion& conversion, cv::Mat& to) {
    const cv::Mat from = matOf(conversion.from);
    if (conversion.code >= 0) {
        cv::cvtColor(from, to, conversion.code);
        return;
    }
    static constexpr int order[] = {0, 1, 1, 2, 2, 3, 3, 0};
    to.create(from.size(), from.type());
    cv::mixChannels(&from, 1, &to, 1, order, 4);
}

void compareConversion(const Conversion& conversion) {
    Benchmarks::compare(conversion.name, Benchmarks::ours, [=] {
        const Bitmap result = converted(conversion.from, conversion.to, conversion.swizzled);
        benchmark::DoNotOptimize(result->bitmapData());
    });
    const int moved = std::max(samplesOf(conversion.from), samplesOf(conversion.to));
    compareCopying(conversion.name, static_cast<std::size_t>(moved));
    Benchmarks::compare(conversion.name, "OpenCV", [=] {
        cv::Mat fresh;
        openCVConversion(conversion, fresh);
        benchmark::DoNotOptimize(fresh.data);
    });
}

/// The same into memory that is there already.
void compareHeldConversion(const Conversion& conversion) {
    const std::string name = conversion.name + ", held";
    const Bitmap result = converted(conversion.from, conversion.to, conversion.swizzled);
    const Imaging::Platform::SourcePixels source =
        Imaging::Platform::sourcePixels(*bitmapOf(conversion.from));
    const Imaging::Platform::PixelLayout sourceLayout =
        Imaging::Platform::pixelLayout(*bitmapOf(conversion.from));
    Imaging::Platform::PixelLayout resultLayout = Imaging::Platform::pixelLayout(*result);
    if (conversion.swizzled) resultLayout.alpha = Imaging::Platform::PixelAlpha::First;
    Benchmarks::compare(name, Benchmarks::ours, [=] {
        Imaging::Platform::carryPixels(source, sourceLayout, Imaging::Platform::targetPixels(*result),
                                       resultLayout);
    });
    const int moved = std::max(samplesOf(conversion.from), samplesOf(conversion.to));
    const std::size_t size = pixelCount * static_cast<std::size_t>(moved);
    const auto held = std::make_shared<PixelBuffer>(PixelBuffer::zeroed(size));
    const std::uint8_t* const from = bitmapOf(static_cast<IMGBitmapFormat>(moved))->bitmapData();
    Benchmarks::compare(
        name, "memcpy",
        [=] {
            std::memcpy(held->data(), from, size);
            benchmark::ClobberMemory();
        },
        target);
    const auto mat = std::make_shared<cv::Mat>();
    Benchmarks::compare(name, "OpenCV", [=] { openCVConversion(conversion, *mat); });
}

/// Into the premultiplied words that are drawn.
void compareWords() {
    const std::string name = "conversion/RGB to words";
    Benchmarks::compare(name, Benchmarks::ours, [] {
        const Imaging::Platform::NSBitmapImageRep& bitmap = *bitmapOf(IMGBitmapFormatRGB);
        const Imaging::Platform::CairoSurface surface = Imaging::Platform::pixelSurfaceOf(
            Imaging::Platform::sourcePixels(bitmap), Imaging::Platform::pixelLayout(bitmap));
        benchmark::DoNotOptimize(cairo_image_surface_get_data(surface.get()));
    });
    compareCopying(name, 4);
    Benchmarks::compare(name, "OpenCV", [] {
        cv::Mat fresh;
        cv::cvtColor(matOf(IMGBitmapFormatRGB), fresh, cv::COLOR_RGB2BGRA);
        benchmark::DoNotOptimize(fresh.data);
    });
}

} // namespace

int main(int argc, char** argv) {
    cv::setNumThreads(2);
    const Conversion conversions[] = {
        {"conversion/RGB to RGBA", IMGBitmapFormatRGB, IMGBitmapFormatRGBA, false, cv::COLOR_RGB2RGBA},
        {"conversion/RGBA to RGB", IMGBitmapFormatRGBA, IMGBitmapFormatRGB, false, cv::COLOR_RGBA2RGB},
        {"conversion/RGBA to ABGR", IMGBitmapFormatRGBA, IMGBitmapFormatRGBA, true, -1},
        {"conversion/gray to RGBA", IMGBitmapFormatGrayscale, IMGBitmapFormatRGBA, false,
         cv::COLOR_GRAY2RGBA},
        {"conversion/RGBA to gray", IMGBitmapFormatRGBA, IMGBitmapFormatGrayscale, false,
         cv::COLOR_RGBA2GRAY}};
    for (const Conversion& conversion : conversions) {
        compareConversion(conversion);
        compareHeldConversion(conversion);
    }
    compareWords();
    return Benchmarks::run(argc, argv);
}
