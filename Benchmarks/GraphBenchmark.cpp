// What a node costs: draws of chains and of wide canvases, bounds, and the news of a change. There is no peer
// for this; what counts is the slope, that is, how the time grows from one number of nodes to the next.

#include "Benchmarks/Ratios.h"
#include "Imaging/CachedImage.h"
#include "Imaging/Canvas.h"
#include "Imaging/TransformOperations.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace Imaging;
using Benchmarks::compare;
using Benchmarks::ours;

std::shared_ptr<IMGImage> pixel() {
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = 1;
    description.pixelsHigh = 1;
    const auto picture = std::make_shared<Imaging::Platform::NSImage>(Imaging::Platform::NSMakeSize(1, 1));
    picture->addRepresentation(Imaging::Platform::NSBitmapImageRep::bitmapWithDescription(description));
    return imagingImage(picture);
}

/// A chain of so many nodes over a source.
std::shared_ptr<IMGImage> chain(std::shared_ptr<IMGImage> source, int nodes) {
    std::shared_ptr<IMGImage> top = std::move(source);
    for (int i = 0; i < nodes; ++i) top = IMGTranslationOp::translationBy({0, 0}, top);
    return top;
}

/// A canvas of so many translations of the same source.
std::shared_ptr<IMGImage> canvas(const std::shared_ptr<IMGImage>& source, int nodes) {
    const auto wide = IMGCanvas::canvasWithSize(Imaging::Platform::NSMakeSize(100, 100));
    for (int i = 0; i < nodes; ++i) {
        const Imaging::Platform::NSPoint place = {static_cast<float>(i % 100),
                                                  static_cast<float>(i / 100 % 100)};
        wide->addSource(IMGTranslationOp::translationBy(place, source));
    }
    return wide;
}

/// Something that is measured for several numbers of nodes.
struct Subject {
    std::string name;
    std::vector<int> sizes;
    std::function<std::function<void()>(int)> prepare; ///< gives what is timed
};

std::function<void()> drawing(std::shared_ptr<IMGImage> root) {
    const auto picture =
        std::make_shared<Imaging::Platform::NSImage>(Imaging::Platform::NSMakeSize(100, 100));
    return [root, picture] {
        const Imaging::Platform::NSImageFocus focus(*picture);
        root->drawWithTransform(NSAffineTransform(), Imaging::Platform::NSCompositeSourceOver, 1);
    };
}

/// `changed` on a leaf that has so many nodes above it, in a graph of 10,000.
std::function<void()> change(int ancestors) {
    const auto leaf = pixel();
    const auto above = chain(leaf, ancestors - 1);
    const auto rest = canvas(pixel(), 10'000 - ancestors - 1);
    rest->addSource(above);
    return [leaf, rest] { leaf->changed(); };
}

std::vector<Subject> subjects() {
    return {
        {"Draw a chain", {125, 250, 500, 1000, 2000}, [](int n) { return drawing(chain(pixel(), n)); }},
        {"Draw a canvas", {1250, 2500, 5000, 10'000}, [](int n) { return drawing(canvas(pixel(), n)); }},
        {"Bounds of a chain",
         {125, 250, 500, 1000, 2000},
         [](int n) {
             const auto top = chain(pixel(), n);
             return [top] { benchmark::DoNotOptimize(top->imageBoundsRect()); };
         }},
        {"Change a leaf among 10000 nodes", {10, 100, 1000, 5000}, change},
    };
}

void printSlopes() {
    for (const Subject& subject : subjects()) {
        std::printf("\n%s\n", subject.name.c_str());
        std::vector<std::function<void()>> bodies;
        for (const int size : subject.sizes) bodies.push_back(subject.prepare(size));
        const std::vector<double> times = Benchmarks::shortestMicroseconds(bodies, 40);
        for (std::size_t i = 0; i < times.size(); ++i) {
            std::printf("  %6d nodes %12.1f us %9.3f us a node\n", subject.sizes[i], times[i],
                        times[i] / subject.sizes[i]);
        }
        std::printf("  slope %.2f (1 is linear)\n", Benchmarks::slope(subject.sizes, times));
    }
}

} // namespace

int main(int argc, char** argv) {
    for (const Subject& subject : subjects()) {
        for (const int size : subject.sizes) {
            compare("Graph/" + subject.name + ", " + std::to_string(size), ours, subject.prepare(size));
        }
    }
    const int status = Benchmarks::run(argc, argv);
    if (status == 0) printSlopes();
    return status;
}
