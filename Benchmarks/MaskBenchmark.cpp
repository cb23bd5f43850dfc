// Masking 24 megapixels, against OpenCV and libvips with two threads and against a plain copy of the bytes.

#include "Benchmarks/OperationInput.h"
#include "Benchmarks/Ratios.h"
#include "Imaging/Mask.h"

#include <string>
#include <utility>
#include <vector>

using namespace Benchmarks;
using Imaging::IMGMaskOp;

namespace {

using Input = std::shared_ptr<const OperationInput>;

Input input(int width, int height, Imaging::IMGBitmapFormat format) {
    return std::make_shared<const OperationInput>(width, height, format);
}

/// Computes the result anew each time, its allocation included: the mask takes turns with an equal one.
void compareOurs(const std::string& name, const Input& picture, const Input& mask) {
    const auto operation = std::make_shared<IMGMaskOp>(picture->node(), mask->node());
    compare(name, ours, [operation, other = std::shared_ptr<Imaging::IMGImage>(mask->node())]() mutable {
        const auto held = operation->maskImage();
        operation->setMaskImage(std::exchange(other, held));
        benchmark::DoNotOptimize(operation->untransformedImage());
    });
}

/// OpenCV multiplies pictures of one layout only, so the mask is spread over the samples first.
void maskWithOpenCV(const OperationInput& picture, const OperationInput& mask) {
    const cv::Mat source = picture.mat();
    const cv::Mat gray = mask.mat();
    cv::Mat destination(source.size(), source.type());
    inTwoStrips(source.rows, [&](int first, int end) {
        const cv::Mat part = gray.rowRange(first, end);
        cv::Mat spread;
        cv::merge(std::vector<cv::Mat>(static_cast<std::size_t>(source.channels()), part), spread);
        cv::Mat to = destination.rowRange(first, end);
        cv::multiply(source.rowRange(first, end), spread, to, 1.0 / 256);
    });
}

void maskWithVips(const OperationInput& picture, const OperationInput& mask) {
    VipsImage* const source = picture.vips();
    VipsImage* const gray = mask.vips();
    VipsImage* product = nullptr;
    VipsImage* shifted = nullptr;
    VipsImage* result = nullptr;
    if (vips_multiply(source, gray, &product, nullptr) != 0 ||
        vips_rshift_const1(product, &shifted, 8, nullptr) != 0 ||
        vips_cast_uchar(shifted, &result, nullptr) != 0) {
        vips_error_exit("masking");
    }
    for (VipsImage* const image : {source, gray, product, shifted}) g_object_unref(image);
    computeAndFree(result);
}

void compareMasking(Imaging::IMGBitmapFormat format, const std::string& layout) {
    const std::string name = "mask/" + layout + " 24 MP";
    const Input picture = input(6000, 4000, format);
    const Input mask = input(6000, 4000, Imaging::IMGBitmapFormatGrayscale);
    compareOurs(name, picture, mask);
    compare(
        name, "OpenCV", [picture, mask] { maskWithOpenCV(*picture, *mask); }, 0.3);
    compare(
        name, "libvips", [picture, mask] { maskWithVips(*picture, *mask); }, 0.3);
    compare(
        name, "memcpy", [picture] { copyIntoFreshMemory(*picture); }, 1.5);
    const auto kept = std::make_shared<Imaging::Platform::PixelBuffer>(
        Imaging::Platform::PixelBuffer::zeroed(picture->bytes()));
    compare(name, "memcpy-kept", [picture, kept] {
        std::memcpy(kept->data(), picture->data(), picture->bytes());
        benchmark::ClobberMemory();
    });
}

/// Whether the cost of a pixel stays the same from small pictures to large ones.
void compareSizes() {
    const struct {
        const char* name;
        int width;
        int height;
    } sizes[] = {{"1 MP", 1250, 800}, {"10 MP", 4000, 2500}, {"100 MP", 12500, 8000}};
    for (const auto& size : sizes) {
        compareOurs(std::string("mask/RGBA ") + size.name,
                    input(size.width, size.height, Imaging::IMGBitmapFormatRGBA),
                    input(size.width, size.height, Imaging::IMGBitmapFormatGrayscale));
    }
}

} // namespace

int main(int argc, char** argv) {
    if (VIPS_INIT(argv[0]) != 0) vips_error_exit("starting libvips");
    vips_concurrency_set(2);
    vips_cache_set_max(0);
    cv::setNumThreads(2);
    compareMasking(Imaging::IMGBitmapFormatRGBA, "RGBA");
    compareMasking(Imaging::IMGBitmapFormatGrayscaleAlpha, "GA");
    compareSizes();
    return run(argc, argv);
}
