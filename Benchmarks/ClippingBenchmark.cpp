// What clipping costs as polygons grow: an intersection of a ring of so many vertices with a small polygon,
// so that only a few edges cross whatever the number. There is no peer for this; what counts is the slope,
// that is, how the time grows from one number of vertices to the next, and how it compares with n log n.

#include "Benchmarks/Ratios.h"
#include "Imaging/PolygonClipping.h"
#include "Platform/Foundation/AffineTransform.h"

#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Imaging;
using Benchmarks::compare;
using Benchmarks::ours;
using Polygon = std::shared_ptr<gpc_owned_polygon>;

Polygon polygonOf(std::vector<gpc_vertex> vertices) {
    auto polygon = std::make_shared<gpc_owned_polygon>();
    const gpc_vertex_list list = {static_cast<int>(vertices.size()), vertices.data()};
    gpc_add_contour(polygon.get(), &list, 0);
    return polygon;
}

/// A ring around (0, 0) whose radius varies between 100 - depth and 100 from vertex to vertex.
Polygon ring(int vertices, double depth) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> variation(0, 1);
    std::vector<gpc_vertex> points;
    for (int i = 0; i < vertices; ++i) {
        const double angle = 2 * M_PI * i / vertices;
        const double radius = 100 - depth * variation(random);
        points.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    return polygonOf(std::move(points));
}

/// A circle: a horizontal line meets two of its edges, and none of its corners points inwards.
Polygon smooth(int vertices) { return ring(vertices, 0); }

/// As rough as its vertices are apart: where it is about level, a horizontal line meets many edges, in
/// proportion to the square root of their number.
Polygon rough(int vertices) { return ring(vertices, 100 * 2 * M_PI / vertices); }

/// Long spikes: a horizontal line meets edges in proportion to their number.
Polygon spikes(int vertices) { return ring(vertices, 50); }

/// Pentagons: one reaches over the ring's lower left, the other lies around all of it.
Polygon corner() { return polygonOf({{-200, -200}, {3, -190}, {10, 1}, {-50, 20}, {-210, 7}}); }
Polygon around() { return polygonOf({{-200, -200}, {203, -190}, {210, 201}, {-50, 220}, {-210, 207}}); }

std::function<void()> intersection(const Polygon& subject, const Polygon& clip) {
    return [subject, clip] {
        gpc_owned_polygon result;
        gpc_polygon_clip(Imaging::Platform::GPC_INT, subject.get(), clip.get(), &result);
        benchmark::DoNotOptimize(result.num_contours);
    };
}

struct Subject {
    std::string name;
    std::function<std::function<void()>(int)> prepare; ///< gives what is timed for a number of vertices
};

const std::vector<int> sizes = {1250, 2500, 5000, 10'000, 20'000};

std::vector<Subject> subjects() {
    return {
        {"Smooth ring and corner", [](int n) { return intersection(smooth(n), corner()); }},
        {"Smooth ring, all of it", [](int n) { return intersection(smooth(n), around()); }},
        {"Rough ring and corner", [](int n) { return intersection(rough(n), corner()); }},
        {"Rough ring, all of it", [](int n) { return intersection(rough(n), around()); }},
        {"Spikes and corner", [](int n) { return intersection(spikes(n), corner()); }},
    };
}

/// What a draw under clips does: rectangles, along the axes and turned.
std::function<void()> clipping(float degrees) {
    return [degrees] {
        NSAffineTransform transform;
        transform.rotateByDegrees(degrees);
        gpc_owned_polygon polygon;
        AddRectToPolygon(&polygon, Imaging::Platform::NSMakeRect(-8.5e37F, -8.5e37F, 1.7e38F, 1.7e38F));
        ClipPolygonToTransformedRect(&polygon, Imaging::Platform::NSMakeRect(0, 0, 1920, 1080), transform);
        ClipPolygonToTransformedRect(&polygon, Imaging::Platform::NSMakeRect(100, 100, 1920, 1080),
                                     transform);
        benchmark::DoNotOptimize(polygon.num_contours);
    };
}

void printSlopes() {
    std::vector<double> ideal;
    for (const int n : sizes) ideal.push_back(n * std::log(n));
    for (const Subject& subject : subjects()) {
        std::printf("\n%s\n", subject.name.c_str());
        std::vector<std::function<void()>> bodies;
        for (const int size : sizes) bodies.push_back(subject.prepare(size));
        const std::vector<double> times = Benchmarks::shortestMicroseconds(bodies, 15);
        for (std::size_t i = 0; i < times.size(); ++i) {
            std::printf("  %6d vertices %12.1f us %9.3f ns per n log2 n\n", sizes[i], times[i],
                        1000 * times[i] / (sizes[i] * std::log2(sizes[i])));
        }
        std::printf("  slope %.2f (n log n has %.2f here, n squared 2)\n", Benchmarks::slope(sizes, times),
                    Benchmarks::slope(sizes, ideal));
    }
}

} // namespace

int main(int argc, char** argv) {
    for (const Subject& subject : subjects()) {
        for (const int size : sizes) {
            compare("Clipping/" + subject.name + ", " + std::to_string(size), ours, subject.prepare(size));
        }
    }
    compare("Clipping/Two upright clips of a draw", ours, clipping(0));
    compare("Clipping/Two turned clips of a draw", ours, clipping(30));
    const int status = Benchmarks::run(argc, argv);
    if (status == 0) printSlopes();
    return status;
}
