#pragma once

// What the tests of transitions share: what a built graph says about its layers, a plain painter of such
// layers, pictures that change evenly from pixel to pixel, and films of weights.

#include "Imaging/Canvas.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/Generators.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transitions.h"
#include "Tests/Imaging/PlacingTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace ImagingTests {

// Layers of a frame

/// An area of a picture and where it is shown; without a picture, the panel of a colour.
struct Layer {
    const IMGImage* picture = nullptr;
    NSRect area;
    NSRect place;
    int scaling = 0;
    bool clip = false;
};

inline bool sameNumber(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

inline bool sameRect(NSRect r, NSRect s) {
    return sameNumber(r.origin.x, s.origin.x) && sameNumber(r.origin.y, s.origin.y) &&
           sameNumber(r.size.width, s.size.width) && sameNumber(r.size.height, s.size.height);
}

inline bool operator==(const Layer& a, const Layer& b) {
    return a.picture == b.picture && sameRect(a.area, b.area) && sameRect(a.place, b.place) &&
           a.scaling == b.scaling && a.clip == b.clip;
}

inline std::string inWords(NSRect r) {
    return "(" + std::to_string(r.origin.x) + ", " + std::to_string(r.origin.y) + ", " +
           std::to_string(r.size.width) + ", " + std::to_string(r.size.height) + ")";
}

inline void PrintTo(const Layer& layer, std::ostream* out) {
    *out << (layer.picture != nullptr ? "picture " : "colour ") << layer.picture << " area "
         << inWords(layer.area) << " at " << inWords(layer.place) << " scaling " << layer.scaling
         << (layer.clip ? " clipped" : " unclipped");
}

/// A moved crop, or a moved colour, as what it shows.
inline Layer layerOf(const std::shared_ptr<IMGImage>& node) {
    const auto move = std::dynamic_pointer_cast<Imaging::IMGTranslationOp>(node);
    if (move == nullptr) throw std::runtime_error("the layer is not a translation");
    const NSPoint origin = move->translation();
    const std::shared_ptr<IMGImage> source = move->sourceAtIndex(0);
    if (const auto crop = std::dynamic_pointer_cast<Imaging::IMGCropAndScale>(source)) {
        return {crop->sourceAtIndex(0).get(),
                crop->sourceArea(),
                {origin, crop->targetSize()},
                crop->imageScaling(),
                crop->doClip()};
    }
    if (std::dynamic_pointer_cast<Imaging::IMGConstantImageGenerator>(source) == nullptr) {
        throw std::runtime_error("the layer is neither a crop nor a colour");
    }
    return {nullptr, {}, {origin, source->imageSize()}, 0, false};
}

/// The layers, lowest first, of a graph that shows a canvas in a frame of a size.
inline std::vector<Layer> layersOf(const Imaging::IMGCropAndScale& frame, NSSize size) {
    EXPECT_TRUE(isRect(frame.sourceArea(), 0, 0, size.width, size.height));
    EXPECT_TRUE(isSize(frame.targetSize(), size.width, size.height));
    EXPECT_EQ(frame.imageScaling(), 1);
    EXPECT_FALSE(frame.doClip());
    const auto canvas = std::dynamic_pointer_cast<Imaging::IMGCanvas>(frame.sourceAtIndex(0));
    if (canvas == nullptr) throw std::runtime_error("the frame does not show a canvas");
    EXPECT_TRUE(isSize(canvas->size(), size.width, size.height));
    EXPECT_TRUE(isTransform(canvas->transform(), NSAffineTransform()));
    std::vector<Layer> layers;
    for (const auto& source : canvas->sources()) layers.push_back(layerOf(source));
    return layers;
}

/// The largest rectangle of a shape in the middle of another one, the one comparison at a time.
inline NSRect fittedInto(NSRect panel, NSRect picture) {
    const float aspect = picture.size.width / picture.size.height;
    NSRect fitted = panel;
    if (panel.size.width / panel.size.height > aspect) {
        fitted.size.width = aspect * panel.size.height;
        const double left = (double{panel.size.width} - double{fitted.size.width}) / 2;
        fitted.origin.x = static_cast<float>(panel.origin.x + left);
    } else {
        fitted.size.height = panel.size.width / aspect;
        const double below = (double{panel.size.height} - double{fitted.size.height}) / 2;
        fitted.origin.y = static_cast<float>(panel.origin.y + below);
    }
    return fitted;
}

/// A directional or aperture transition's numbers: both pictures' bounds, where they are fitted, the frame
/// and the weight.
struct Numbers {
    NSSize size;
    float w;
    NSRect a;
    NSRect b;

    float v() const { return 1 - w; }
    NSRect frame() const { return {{0, 0}, size}; }
    NSRect fittedA() const { return fittedInto(frame(), a); }
    NSRect fittedB() const { return fittedInto(frame(), b); }
};

// Cases

/// Weights of films' ends and quarters, ones that are no fractions of 2, and ones outside.
inline const std::vector<float> oddWeights = {0,    0.25F, 0.5F,   0.75F, 1,  0.37F, 1.F / 3.F,
                                              0.9F, 1e-7F, -0.25F, 1.5F,  -3, 1e20F};
inline const std::vector<int> allDirections = {1, 2, 3, 4, 0, -1, 5, 17, -2147483647 - 1, 2147483647};
inline const std::vector<int> allInOuts = {1, 2, 0, -1, 3, 2147483647};

/// Pictures' extents and frames: shapes that differ, off the origin, on both sides of it. What lies at
/// negative coordinates alone reports bounds up to 0, so the bounds are to be asked for.
struct Shapes {
    NSRect a;
    NSRect b;
    NSSize size;
};

inline std::vector<Shapes> allShapes() {
    return {{NSMakeRect(7, 5, 48, 32), NSMakeRect(3, 11, 48, 32), NSMakeSize(48, 32)},
            {NSMakeRect(-11, 3, 40, 90), NSMakeRect(17, -6.5F, 131, 33), NSMakeSize(101, 67)},
            {NSMakeRect(1.25F, -70, 33.3F, 21.7F), NSMakeRect(-100, -200, 7, 300), NSMakeSize(640, 480.5F)}};
}

/// A leaf with such bounds.
inline std::shared_ptr<TestNode> off(NSRect bounds) { return leaf(bounds); }

// Pixels

/// A colour that changes evenly over a picture: by `step` from pixel to pixel in each direction.
struct Gradient {
    double red;
    double green;
    double blue;
    double step = 2;

    /// At a point of the picture's own pixels, y upward from its lower left corner.
    Pixels::Color at(double x, double y) const {
        return {(red + step * x) / 255, (green + step * y) / 255, blue / 255, 1};
    }
};

inline constexpr Gradient reddish{120, 20, 30};
inline constexpr Gradient bluish{20, 80, 200};

inline Grid gradientPicture(int width, int height, const Gradient& gradient) {
    Grid grid(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            grid.at(x, y) = Pixels::rounded(gradient.at(x + 0.5, height - y - 0.5));
        }
    }
    return grid;
}

/// A picture whose lower left corner is somewhere.
inline std::shared_ptr<IMGImage> pictureAt(const Grid& grid, float x, float y) {
    return Imaging::IMGTranslationOp::translationBy(NSMakePoint(x, y), pictureNode(grid));
}

/// Two pictures of gradients, what a plain painter knows about them, and a frame.
struct Film {
    NSRect boundsA;
    NSRect boundsB;
    int width;
    int height;
    std::shared_ptr<IMGImage> a;
    std::shared_ptr<IMGImage> b;

    Film(NSRect itsA, NSRect itsB, int frameWidth, int frameHeight)
        : boundsA(itsA),
          boundsB(itsB),
          width(frameWidth),
          height(frameHeight),
          a(picture(itsA, reddish)),
          b(picture(itsB, bluish)) {}

    NSSize size() const { return NSMakeSize(static_cast<float>(width), static_cast<float>(height)); }
    Numbers numbers(float weight) const { return {size(), weight, boundsA, boundsB}; }

    /// The colour of a picture at a point of its own bounds.
    Pixels::Color colorOf(const IMGImage* which, double x, double y) const {
        const NSRect bounds = which == a.get() ? boundsA : boundsB;
        return (which == a.get() ? reddish : bluish).at(x - bounds.origin.x, y - bounds.origin.y);
    }

private:
    static std::shared_ptr<IMGImage> picture(NSRect bounds, const Gradient& gradient) {
        return pictureAt(gradientPicture(static_cast<int>(bounds.size.width),
                                         static_cast<int>(bounds.size.height), gradient),
                         bounds.origin.x, bounds.origin.y);
    }
};

/// Pictures that fill the frame, and ones of other shapes; both off the origin.
inline Film fillingFilm() { return {NSMakeRect(7, 5, 48, 32), NSMakeRect(3, 11, 48, 32), 48, 32}; }
inline Film fittedFilm() { return {NSMakeRect(7, -15, 24, 32), NSMakeRect(-13, 11, 48, 16), 48, 32}; }

/// Where a layer really shows its picture: proportional scaling leaves room at two sides of the place.
inline NSRect shownPlace(const Layer& layer) {
    return layer.scaling == 0 && layer.picture != nullptr ? fittedInto(layer.place, layer.area) : layer.place;
}

enum class Where { Outside, AtTheEdge, Inside };

/// Pixels within `margin` of an edge are mixed in ways that a plain painter does not know.
inline Where whereIn(NSRect place, double x, double y, double margin) {
    const double inside = std::min({x - place.origin.x, place.origin.x + place.size.width - x,
                                    y - place.origin.y, place.origin.y + place.size.height - y});
    if (!(inside > -margin)) return Where::Outside;
    return inside < margin ? Where::AtTheEdge : Where::Inside;
}

/// The topmost layer's colour at a point; transparent where there is none, nullopt at an edge.
inline std::optional<Pixels::Color> colorAt(const Film& film, const std::vector<Layer>& layers,
                                            const Pixels::Color& panel, double x, double y) {
    for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) {
        const NSRect place = shownPlace(*layer);
        const Where where = whereIn(place, x, y, 1.5);
        if (where == Where::AtTheEdge) return std::nullopt;
        if (where == Where::Outside) continue;
        if (layer->picture == nullptr) return panel;
        const double across = (x - place.origin.x) / place.size.width;
        const double up = (y - place.origin.y) / place.size.height;
        return film.colorOf(layer->picture, layer->area.origin.x + across * layer->area.size.width,
                            layer->area.origin.y + up * layer->area.size.height);
    }
    return Pixels::Color{0, 0, 0, 0};
}

/// Succeeds when a drawn frame shows the layers, wherever the plain painter knows what to expect.
inline testing::AssertionResult showsLayers(const Grid& frame, const Film& film,
                                            const std::vector<Layer>& layers,
                                            const Pixels::Color& panel = {0, 0, 0, 1}) {
    int compared = 0;
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            const auto expected = colorAt(film, layers, panel, x + 0.5, y + 0.5);
            if (!expected.has_value()) continue;
            ++compared;
            const Rgba wanted = Pixels::rounded(*expected);
            if (Pixels::difference(frame.above(x, y), wanted) <= 2) continue;
            return testing::AssertionFailure() << "at (" << x << ", " << y << ") there is "
                                               << frame.above(x, y) << " instead of " << wanted;
        }
    }
    if (compared > frame.width() * frame.height() / 2) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "only " << compared << " pixels could be compared";
}

/// What the frame shows, drawn by walking the graph.
inline Grid shownIn(const Film& film, IMGImage& node) { return walked(node, film.width, film.height); }

// Films

inline constexpr int filmFrames = 60;

/// The mean over the frame of how far the samples of two pictures are apart, alpha included.
inline double meanDifference(const Grid& p, const Grid& q) {
    double sum = 0;
    for (int y = 0; y < p.height(); ++y) {
        for (int x = 0; x < p.width(); ++x) {
            const Rgba& s = p.at(x, y);
            const Rgba& t = q.at(x, y);
            sum += std::abs(s.r - t.r) + std::abs(s.g - t.g) + std::abs(s.b - t.b) + std::abs(s.a - t.a);
        }
    }
    return sum / (4.0 * p.width() * p.height());
}

/// The largest mean difference of neighbouring frames along weights from 0 to 1.
inline double largestStep(const Film& film, int frames,
                          const std::function<std::shared_ptr<IMGImage>(float weight)>& node) {
    double largest = 0;
    std::optional<Grid> last;
    for (int i = 0; i <= frames; ++i) {
        const Grid shown = shownIn(film, *node(static_cast<float>(i) / static_cast<float>(frames)));
        if (last.has_value()) largest = std::max(largest, meanDifference(*last, shown));
        last = shown;
    }
    return largest;
}

} // namespace ImagingTests
