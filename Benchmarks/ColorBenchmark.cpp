// The colour operations on 24 megapixels, against OpenCV and libvips with two threads and against a plain
// copy of the bytes. OpenCV's own threads do not take part: it gets the picture in two strips, which is
// faster.

#include "Benchmarks/OperationInput.h"
#include "Benchmarks/Ratios.h"
#include "Imaging/ColorOperations.h"

#include <opencv2/imgproc.hpp>

#include <array>
#include <string>

using namespace Benchmarks;
using Imaging::IMGColorTransformOp;
using Imaging::IMGHueAdjustOp;

namespace {

using Input = std::shared_ptr<const OperationInput>;

constexpr float factors[] = {1.25F, 0.8F, 1.1F};

Input input(int width, int height, Imaging::IMGBitmapFormat format) {
    return std::make_shared<const OperationInput>(width, height, format);
}

/// Computes the operation's result anew each time, the allocation of the result included.
template<class Operation>
void compareOurs(const std::string& name, const std::shared_ptr<Operation>& operation) {
    compare(name, ours, [operation] {
        operation->changed();
        benchmark::DoNotOptimize(operation->untransformedImage());
    });
}

template<class Body>
void compareStrips(const std::string& name, const std::string& who, const Input& picture, double target,
                   const Body& body) {
    compare(
        name, who,
        [picture, body] {
            const cv::Mat source = picture->mat();
            cv::Mat destination(source.size(), source.type());
            inTwoStrips(source.rows, [&](int first, int end) {
                cv::Mat part = destination.rowRange(first, end);
                body(source.rowRange(first, end), part);
            });
        },
        target);
}

void compareCopies(const std::string& name, const Input& picture, double target) {
    compare(
        name, "memcpy", [picture] { copyIntoFreshMemory(*picture); }, target);
    const auto kept = std::make_shared<Imaging::Platform::PixelBuffer>(
        Imaging::Platform::PixelBuffer::zeroed(picture->bytes()));
    compare(name, "memcpy-kept", [picture, kept] {
        std::memcpy(kept->data(), picture->data(), picture->bytes());
        benchmark::ClobberMemory();
    });
}

cv::Mat multiplicationTable() {
    cv::Mat table(1, 256, CV_8UC3);
    for (int value = 0; value < 256; ++value) {
        for (int i = 0; i < 3; ++i) {
            table.at<cv::Vec3b>(value)[i] = cv::saturate_cast<uchar>(static_cast<int>(value * factors[i]));
        }
    }
    return table;
}

void multiplyWithVips(const Input& picture) {
    double a[] = {factors[0], factors[1], factors[2]};
    double b[] = {0, 0, 0};
    VipsImage* const source = picture->vips();
    VipsImage* product = nullptr;
    if (vips_linear(source, &product, a, b, 3, "uchar", TRUE, nullptr) != 0) vips_error_exit("vips_linear");
    g_object_unref(source);
    computeAndFree(product);
}

void compareMultiplications() {
    const std::string name = "multiply/RGB 24 MP";
    const Input picture = input(6000, 4000, Imaging::IMGBitmapFormatRGB);
    compareOurs(name, IMGColorTransformOp::colorTransformWithSourceImage(picture->node(), factors[0],
                                                                         factors[1], factors[2], 1));
    compareStrips(name, "cv-multiply", picture, 1, [](const cv::Mat& from, cv::Mat& to) {
        cv::multiply(from, cv::Scalar(factors[0], factors[1], factors[2]), to);
    });
    // One factor for all samples is less than what we do, and OpenCV's fastest multiplication.
    compareStrips(name, "cv-convertTo", picture, 1,
                  [](const cv::Mat& from, cv::Mat& to) { from.convertTo(to, CV_8U, factors[0]); });
    compareStrips(
        name, "cv-LUT", picture, 1,
        [table = multiplicationTable()](const cv::Mat& from, cv::Mat& to) { cv::LUT(from, table, to); });
    compare(
        name, "libvips", [picture] { multiplyWithVips(picture); }, 1);
    compareCopies(name, picture, 1.5);
}

void compareHues(Imaging::IMGBitmapFormat format, const std::string& layout) {
    const std::string name = "hue/" + layout + " 24 MP";
    const Input picture = input(6000, 4000, format);
    compareOurs(name, IMGHueAdjustOp::hueAdjustWithSourceImage(picture->node(), 0.7F));
    compareStrips(name, "OpenCV", picture, 0.5, [](const cv::Mat& from, cv::Mat& to) {
        cv::Mat hsv;
        cv::cvtColor(from, hsv, cv::COLOR_BGR2HSV);
        cv::add(hsv, cv::Scalar(20, 0, 0), hsv);
        cv::cvtColor(hsv, to, cv::COLOR_HSV2BGR, from.channels());
    });
    compareCopies(name, picture, 0);
}

/// Whether the cost of a pixel stays the same from small pictures to large ones.
void compareSizes() {
    const struct {
        const char* name;
        int width;
        int height;
    } sizes[] = {{"1 MP", 1250, 800}, {"10 MP", 4000, 2500}, {"100 MP", 12500, 8000}};
    for (const auto& size : sizes) {
        const Input picture = input(size.width, size.height, Imaging::IMGBitmapFormatRGB);
        compareOurs(std::string("multiply/RGB ") + size.name,
                    IMGColorTransformOp::colorTransformWithSourceImage(picture->node(), factors[0],
                                                                       factors[1], factors[2], 1));
        compareOurs(std::string("hue/RGB ") + size.name,
                    IMGHueAdjustOp::hueAdjustWithSourceImage(picture->node(), 0.7F));
    }
}

} // namespace

int main(int argc, char** argv) {
    if (VIPS_INIT(argv[0]) != 0) vips_error_exit("starting libvips");
    vips_concurrency_set(2);
    vips_cache_set_max(0);
    cv::setNumThreads(2);
    compareMultiplications();
    compareHues(Imaging::IMGBitmapFormatRGB, "RGB");
    compareHues(Imaging::IMGBitmapFormatRGBA, "RGBA");
    compareSizes();
    return run(argc, argv);
}
