// Blur and sharpening of a photograph's worth of pixels against OpenCV and libvips, each on two threads and
// with its result's memory counted in, and how the time grows with the pixels and the taps.

#include "Benchmarks/Ratios.h"
#include "Imaging/CachedImage.h"
#include "Imaging/Convolution.h"
#include "Imaging/Kernel.h"
#include "Platform/Pixels/PixelBuffer.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <random>
#include <string>
#include <thread>
#include <vector>
#include <vips/vips.h>

namespace {

using Benchmarks::compare;
using Imaging::IMGKernel;

/// One picture as ours, OpenCV's and libvips', all on the same memory.
struct Picture {
    std::shared_ptr<Imaging::Platform::NSBitmapImageRep> bitmap;
    std::shared_ptr<Imaging::IMGImage> node;
    cv::Mat matrix;
    VipsImage* vips = nullptr;

    Picture(int width, int height, int samples) {
        const auto format = samples == 3 ? Imaging::IMGBitmapFormatRGB : Imaging::IMGBitmapFormatRGBA;
        const Imaging::Platform::NSSize size = {static_cast<float>(width), static_cast<float>(height)};
        bitmap = Imaging::bitmapWithSize(size, format);
        std::mt19937 random(20261121);
        const std::size_t count = bitmap->bytesPerRow() * static_cast<std::size_t>(height);
        for (std::size_t i = 0; i + 4 <= count; i += 4) {
            const std::uint32_t word = random();
            std::memcpy(bitmap->bitmapData() + i, &word, 4);
        }
        const auto picture = std::make_shared<Imaging::Platform::NSImage>(size);
        picture->addRepresentation(bitmap);
        node = std::make_shared<Imaging::IMGImageFromNSImage>(picture);
        matrix = cv::Mat(height, width, CV_8UC(samples), bitmap->bitmapData(), bitmap->bytesPerRow());
        vips = vips_image_new_from_memory(bitmap->bitmapData(), count, width, height, samples,
                                          VIPS_FORMAT_UCHAR);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture() { g_object_unref(vips); }

    std::size_t bytes() const {
        return bitmap->bytesPerRow() * static_cast<std::size_t>(bitmap->pixelsHigh());
    }
};

using SharedPicture = std::shared_ptr<Picture>;

/// A node made anew computes anew.
void convolve(const SharedPicture& picture, const std::shared_ptr<IMGKernel>& kernel) {
    Imaging::IMGConvolutionOp operation(picture->node, kernel);
    benchmark::DoNotOptimize(operation.untransformedImage());
}

void strips(const std::function<void(int, int)>& body, int height) {
    std::thread other([&] { body(height / 2, height); });
    body(0, height / 2);
    other.join();
}

/// OpenCV's filter2D runs on one thread, so it gets a strip on each of two.
void openCVFilter(const SharedPicture& picture, const cv::Mat& kernel) {
    cv::Mat result(picture->matrix.size(), picture->matrix.type());
    strips(
        [&](int from, int to) {
            cv::Mat strip = result.rowRange(from, to);
            cv::filter2D(picture->matrix.rowRange(from, to), strip, -1, kernel);
        },
        picture->matrix.rows);
    benchmark::DoNotOptimize(result.data);
}

void openCVSeparableFilter(const SharedPicture& picture, const cv::Mat& row) {
    cv::Mat result(picture->matrix.size(), picture->matrix.type());
    strips(
        [&](int from, int to) {
            cv::Mat strip = result.rowRange(from, to);
            cv::sepFilter2D(picture->matrix.rowRange(from, to), strip, -1, row, row);
        },
        picture->matrix.rows);
    benchmark::DoNotOptimize(result.data);
}

/// Has libvips compute an image into memory of its own, and lets both go.
void toMemory(VipsImage* lazy) {
    std::size_t size = 0;
    void* const memory = vips_image_write_to_memory(lazy, &size);
    benchmark::DoNotOptimize(memory);
    g_free(memory);
    g_object_unref(lazy);
}

void copied(const SharedPicture& picture) {
    auto result = Imaging::Platform::PixelBuffer::uninitialised(picture->bytes());
    const int height = static_cast<int>(picture->bitmap->pixelsHigh());
    const std::size_t row = picture->bitmap->bytesPerRow();
    strips(
        [&](int from, int to) {
            const std::size_t first = static_cast<std::size_t>(from) * row;
            std::memcpy(result.data() + first, picture->bitmap->bitmapData() + first,
                        static_cast<std::size_t>(to - from) * row);
        },
        height);
    benchmark::DoNotOptimize(result.data());
}

cv::Mat matrixOf(const IMGKernel& kernel) {
    const auto size = kernel.size();
    cv::Mat taps(static_cast<int>(size.height), static_cast<int>(size.width), CV_32F);
    for (std::size_t i = 0; i < kernel.tapCount(); ++i) {
        taps.ptr<float>()[i] =
            static_cast<float>(kernel.dataAsIntArray()[i]) / static_cast<float>(kernel.divisor());
    }
    return taps;
}

void addBlur(const SharedPicture& picture, const std::string& layout, double radius) {
    const auto kernel = IMGKernel::kernelSeparableGaussianWithSigma(radius);
    const int taps = static_cast<int>(kernel->tapCount());
    const std::string name = "blur, " + std::to_string(taps) + " taps, 24 megapixels " + layout;
    compare(name, Benchmarks::ours, [=] { convolve(picture, kernel); });
    compare(
        name, "OpenCV",
        [=] {
            cv::Mat result;
            cv::GaussianBlur(picture->matrix, result, cv::Size(taps, taps), radius);
            benchmark::DoNotOptimize(result.data);
        },
        0.6);
    const cv::Mat row = matrixOf(*kernel);
    compare(
        name, "OpenCV sep.", [=] { openCVSeparableFilter(picture, row); }, 0.6);
    compare(
        name, "libvips",
        [=] {
            VipsImage* lazy = nullptr;
            vips_gaussblur(picture->vips, &lazy, radius, "precision", VIPS_PRECISION_INTEGER, nullptr);
            toMemory(lazy);
        },
        0.6);
    compare(name, "memcpy", [=] { copied(picture); });
}

void addSharpen(const SharedPicture& picture, const std::string& layout) {
    const auto kernel = IMGKernel::kernelSharpen();
    const std::string name = "sharpen, 3 x 3, 24 megapixels " + layout;
    compare(name, Benchmarks::ours, [=] { convolve(picture, kernel); });
    const cv::Mat taps = matrixOf(*kernel);
    compare(
        name, "OpenCV", [=] { openCVFilter(picture, taps); }, 0.5);
    compare(
        name, "libvips",
        [=] {
            VipsImage* mask =
                vips_image_new_matrixv(3, 3, -1.0, -2.0, -1.0, -2.0, 16.0, -2.0, -1.0, -2.0, -1.0);
            vips_image_set_double(mask, "scale", 4);
            VipsImage* lazy = nullptr;
            vips_conv(picture->vips, &lazy, mask, "precision", VIPS_PRECISION_INTEGER, nullptr);
            toMemory(lazy);
            g_object_unref(mask);
        },
        0.5);
    compare(name, "memcpy", [=] { copied(picture); });
}

/// Pictures of other sizes and kernels of other lengths; the table's times divided by pixels and by taps
/// should stay level.
void addScaling() {
    const std::array<std::array<int, 2>, 3> sizes = {{{1250, 800}, {3750, 2667}, {12500, 8000}}};
    const auto nineteen = IMGKernel::kernelSeparableGaussianWithSigma(8);
    const auto sharpen = IMGKernel::kernelSharpen();
    for (const auto& size : sizes) {
        const auto picture = std::make_shared<Picture>(size[0], size[1], 3);
        const std::string pixels = std::to_string(size[0] * static_cast<std::int64_t>(size[1]) / 1000000);
        compare("scaling: blur, 19 taps, RGB megapixels " + pixels, Benchmarks::ours,
                [=] { convolve(picture, nineteen); });
        compare("scaling: sharpen, RGB megapixels " + pixels, Benchmarks::ours,
                [=] { convolve(picture, sharpen); });
    }
    const auto picture = std::make_shared<Picture>(3000, 2000, 3);
    for (const double radius : {1.0, 2.0, 4.0, 8.0, 16.0, 32.0, 64.0}) {
        const auto kernel = IMGKernel::kernelSeparableGaussianWithSigma(radius);
        char taps[16];
        std::snprintf(taps, sizeof taps, "%3zu", kernel->tapCount());
        compare("scaling: blur of 6 megapixels RGB, taps " + std::string(taps), Benchmarks::ours,
                [=] { convolve(picture, kernel); });
    }
}

} // namespace

int main(int argc, char** argv) {
    if (VIPS_INIT(argv[0]) != 0) return 1;
    vips_concurrency_set(2);
    vips_cache_set_max(0);
    cv::setNumThreads(2);
    for (const int samples : {3, 4}) {
        const auto picture = std::make_shared<Picture>(6000, 4000, samples);
        const std::string layout = samples == 3 ? "RGB" : "RGBA";
        addBlur(picture, layout, 2);
        addBlur(picture, layout, 8);
        addSharpen(picture, layout);
    }
    addScaling();
    return Benchmarks::run(argc, argv);
}
