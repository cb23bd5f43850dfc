// How pictures look that are drawn larger, smaller, moved or turned, against exact arithmetic.
// Also tests: Platform/Painter/AffineSampler.cpp
// Also tests: Platform/Painter/PictureSampler.cpp
// Also tests: Platform/Painter/ScaledSampler.cpp

#include "Platform/Graphics/GraphicsContext.h"
#include "Tests/Platform/Graphics/DrawnPictures.h"

#include <gtest/gtest.h>

#include <numbers>
#include <numeric>
#include <string>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

constexpr double pi = std::numbers::pi;

/// Numbers for each pixel's red, green, blue and alpha.
struct Exact {
    Exact(int w, int h)
        : width(w), height(h), samples(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 4) {}

    double& at(int x, int y, std::size_t i) {
        return samples[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                        static_cast<std::size_t>(x)) *
                           4 +
                       i];
    }

    int width;
    int height;
    std::vector<double> samples;
};

std::array<double, 4> samplesOf(Rgba p) {
    const auto number = [](std::uint8_t sample) { return static_cast<double>(sample); };
    return {number(p.r), number(p.g), number(p.b), number(p.a)};
}

/// One axis of an area average: adds share · value(i) for all pixels i that interval [from, to) touches.
template<class Add>
void forShares(double from, double to, int length, const Add& add) {
    for (int i = static_cast<int>(std::floor(from)); i < length && i < to; ++i) {
        const double share = std::min(to, i + 1.0) - std::max(from, static_cast<double>(i));
        if (share > 1e-9) add(i, share / (to - from));
    }
}

/// The mean of all of the picture that falls on each pixel.
Exact areaAverage(const Grid& picture, int width, int height) {
    Exact across(width, picture.height());
    const double stepX = static_cast<double>(picture.width()) / width;
    for (int x = 0; x < width; ++x) {
        forShares(x * stepX, (x + 1) * stepX, picture.width(), [&](int i, double share) {
            for (int y = 0; y < picture.height(); ++y) {
                const std::array<double, 4> samples = samplesOf(picture.at(i, y));
                for (std::size_t j = 0; j < 4; ++j) across.at(x, y, j) += samples[j] * share;
            }
        });
    }
    Exact result(width, height);
    const double stepY = static_cast<double>(picture.height()) / height;
    for (int y = 0; y < height; ++y) {
        forShares(y * stepY, (y + 1) * stepY, picture.height(), [&](int i, double share) {
            for (int x = 0; x < width; ++x) {
                for (std::size_t j = 0; j < 4; ++j) result.at(x, y, j) += across.at(x, i, j) * share;
            }
        });
    }
    return result;
}

double meanDifference(const Grid& shown, Exact& exact) {
    double sum = 0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            const std::array<double, 4> samples = samplesOf(shown.at(x, y));
            for (std::size_t i = 0; i < 3; ++i) sum += std::abs(samples[i] - exact.at(x, y, i));
        }
    }
    return sum / 3 / shown.width() / shown.height();
}

/// The whole picture drawn to fill a canvas.
Grid drawnAt(DrawablePicture& picture, int width, int height,
             NSCompositingOperation operation = NSCompositeCopy) {
    Canvas canvas(width, height);
    drawPicture(canvas.context(), picture, wholeOf(width, height), picture.bounds(), operation, 1);
    return canvas.pixels();
}

/// A number from 0 to 1 that looks random and is always the same for a place.
double noise(int x, int y) {
    auto bits = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U;
    bits = (bits ^ bits >> 15) * 0x2C1B3C6DU;
    bits = (bits ^ bits >> 12) * 0x297A2D39U;
    return ((bits ^ bits >> 15) & 0xffff) / 65535.0;
}

/// Smooth light, waves of several lengths, grain like a sensor's, and sharp edges of leaves and wires, as
/// photographs have them.
Rgba photographAt(double x, double y, double width, double height) {
    const double sky = 60 + 120 * y / height;
    const double waves =
        22 * std::sin(x * 0.11 + 6 * std::sin(y * 0.013)) + 14 * std::sin(y * 0.47 + x * 0.05);
    const double grain = (noise(static_cast<int>(x), static_cast<int>(y)) - 0.5) * 24;
    const double fromMiddle = std::hypot(x - width * 0.4, (y - height * 0.6) * 1.3);
    const bool leaf = fromMiddle < height * 0.3 &&
                      std::fmod(std::atan2(y - height * 0.6, x - width * 0.4) + pi, pi / 8) < pi / 16;
    const bool wire = std::abs(y - height * 0.2 - x * 0.21) < 1.5;
    const double light = wire ? 12 : sky + waves + grain + (leaf ? -70 : 0);
    const auto sample = [](double v) {
        return static_cast<std::uint8_t>(std::lround(std::clamp(v, 0.0, 255.0)));
    };
    return {sample(light + 30 * x / width), sample(light), sample(light * 0.8 + 20), 255};
}

Grid photograph(int width, int height) {
    return pictureOf(width, height, [&](double x, double y) { return photographAt(x, y, width, height); });
}

/// The centre of gravity of the red samples, in pixels from the upper left corner.
Point centreOf(const Grid& shown) {
    double sum = 0;
    Point centre;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            const double weight = shown.at(x, y).r;
            sum += weight;
            centre.x += weight * (x + 0.5);
            centre.y += weight * (y + 0.5);
        }
    }
    return {centre.x / sum, centre.y / sum};
}

/// A mark without symmetry on black: blobs that are as wide as `unit` says.
Grid softMark(int width, int height, double unit) {
    return pictureOf(width, height, [&](double x, double y) {
        const auto blob = [&](double dx, double dy, double sigma) {
            const double u = (x - width / 2.0 - dx * unit) / (sigma * unit);
            const double v = (y - height / 2.0 - dy * unit) / (sigma * unit);
            return std::exp(-(u * u + v * v) / 2);
        };
        return gray(200 * blob(-3, -1, 1) + 130 * blob(2.5, 2, 1.4));
    });
}

/// A sharp mark without symmetry in the middle of black: a block with a smaller one beside it.
Grid sharpMark(int width, int height, double unit) {
    return pictureOf(width, height, [&](double x, double y) {
        const double u = (x - width / 2.0) / unit;
        const double v = (y - height / 2.0) / unit;
        const bool inside = (std::abs(u) < 3 && std::abs(v) < 2) || (u >= 3 && u < 5 && v >= -1 && v < 2);
        return inside ? white : black;
    });
}

/// Draws with the picture's middle at a point of a canvas (y upward), scaled and turned.
Grid drawnAround(DrawablePicture& picture, int side, Point middle, double scale, double degrees,
                 Rgba background = black, NSCompositingOperation operation = NSCompositeSourceOver) {
    Canvas canvas(side, side, background);
    NSAffineTransform place;
    place.translateXBy(static_cast<float>(middle.x), static_cast<float>(middle.y));
    place.rotateByDegrees(static_cast<float>(degrees));
    place.scaleXBy(static_cast<float>(scale), static_cast<float>(scale));
    canvas.context().concat(place);
    const NSSize size = picture.bounds().size;
    drawPicture(canvas.context(), picture,
                NSMakeRect(-size.width / 2, -size.height / 2, size.width, size.height), picture.bounds(),
                operation, 1);
    return canvas.pixels();
}

/// Where the corners of a picture come to lie on a canvas of `side` pixels, y downward.
std::vector<Point> cornersAround(int width, int height, int side, Point middle, double scale,
                                 double degrees) {
    const double turn = degrees * pi / 180;
    std::vector<Point> corners;
    for (const Point corner : {Point{-0.5, -0.5}, Point{0.5, -0.5}, Point{0.5, 0.5}, Point{-0.5, 0.5}}) {
        const double x = corner.x * width * scale;
        const double y = corner.y * height * scale;
        corners.push_back({middle.x + x * std::cos(turn) - y * std::sin(turn),
                           side - (middle.y + x * std::sin(turn) + y * std::cos(turn))});
    }
    return corners;
}

/// How far a pixel is from being a mix of two colours, in 255ths of the sample that is farthest.
double distanceFromMixes(Rgba pixel, Rgba a, Rgba b) {
    const std::array<double, 4> p = samplesOf(pixel);
    const std::array<double, 4> from = samplesOf(a);
    const std::array<double, 4> to = samplesOf(b);
    double along = 0;
    double length = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        along += (p[i] - from[i]) * (to[i] - from[i]);
        length += (to[i] - from[i]) * (to[i] - from[i]);
    }
    const double t = std::clamp(along / length, 0.0, 1.0);
    double farthest = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        farthest = std::max(farthest, std::abs(p[i] - from[i] - t * (to[i] - from[i])));
    }
    return farthest;
}

} // namespace

TEST(PictureQuality, APhotographDrawnSmallIsCloseToItsAreaAverage) {
    // The proportions of 6000 × 4000 pixels on 1920 × 1080.
    const Grid picture = photograph(1500, 1000);
    const auto drawable = drawableOf(picture, true);
    Exact exact = areaAverage(picture, 480, 270);
    const double found = meanDifference(drawnAt(*drawable, 480, 270), exact);
    RecordProperty("mean_difference", std::to_string(found));
    EXPECT_LE(found, 2);
}

TEST(PictureQuality, EveryReductionIsCloseToTheAreaAverage) {
    const Grid picture = photograph(1200, 1000);
    const auto drawable = drawableOf(picture, true);
    for (const double reduction : {1.0625, 1.5, 2.0, 3.0, 3.125, 4.5, 7.0, 10.0, 33.3, 100.0, 1000.0}) {
        const int width = std::max(1, static_cast<int>(std::lround(1200 / reduction)));
        const int height = std::max(1, static_cast<int>(std::lround(1000 / reduction)));
        Exact exact = areaAverage(picture, width, height);
        const double found = meanDifference(drawnAt(*drawable, width, height), exact);
        RecordProperty("by_" + std::to_string(reduction), std::to_string(found));
        // Pixels of a level reach over the borders of drawn pixels. Where few of either make up the picture
        // and edges are everywhere, that shows more.
        EXPECT_LE(found, width > 100 || reduction >= 100 ? 2 : 3) << "reduced " << reduction << " times";
    }
}

TEST(PictureQuality, SqueezesInOneDirectionAreCloseToTheAreaAverage) {
    const Grid picture = photograph(1000, 900);
    const auto drawable = drawableOf(picture, true);
    const std::vector<std::pair<int, int>> sizes = {{1, 900}, {1000, 1}, {3, 900}, {1000, 7}, {40, 900}};
    for (const auto& [width, height] : sizes) {
        Exact exact = areaAverage(picture, width, height);
        EXPECT_LE(meanDifference(drawnAt(*drawable, width, height), exact), 2) << width << " x " << height;
    }
}

TEST(PictureQuality, AZonePlateLeavesNoMoreWavesThanAnAreaAverageDoes) {
    // Rings that grow finer outward, up to 0.47 cycles a pixel at the middle of the sides. Where they are
    // finer than the drawn pixels can show (half a cycle each), any wave that is left is an alias.
    constexpr int size = 1000;
    constexpr int drawn = 320; // 3.125 times smaller
    constexpr double fineness = 0.47 / (size / 2.0);
    const Grid plate = pictureOf(size, size, [](double x, double y) {
        const double squared = (x - size / 2.0) * (x - size / 2.0) + (y - size / 2.0) * (y - size / 2.0);
        return gray(127.5 + 127.5 * std::cos(pi * fineness * squared));
    });
    // The root mean square of the waves that are too fine, 0.6 cycles a drawn pixel or more.
    const auto wavesOf = [](const auto& sampleAt) {
        constexpr double ratio = static_cast<double>(size) / drawn;
        double energy = 0;
        int count = 0;
        for (int y = 0; y < drawn; ++y) {
            for (int x = 0; x < drawn; ++x) {
                const double radius = std::hypot(x + 0.5 - drawn / 2.0, y + 0.5 - drawn / 2.0) * ratio;
                if (radius * fineness * ratio < 0.6 || radius > 0.49 * size) continue;
                energy += (sampleAt(x, y) - 127.5) * (sampleAt(x, y) - 127.5);
                ++count;
            }
        }
        return std::sqrt(energy / count);
    };
    Exact exact = areaAverage(plate, drawn, drawn);
    const double allowed = wavesOf([&](int x, int y) { return exact.at(x, y, 0); });
    RecordProperty("waves_of_the_area_average", std::to_string(allowed));
    const auto drawable = drawableOf(plate, true);
    for (const double degrees : {0.0, 30.0, 45.0}) {
        const Point middle{drawn / 2.0, drawn / 2.0};
        const Grid shown = drawnAround(*drawable, drawn, middle, static_cast<double>(drawn) / size, degrees);
        const double found = wavesOf([&](int x, int y) -> double { return shown.at(x, y).r; });
        RecordProperty("waves_at_" + std::to_string(static_cast<int>(degrees)), std::to_string(found));
        EXPECT_LE(found, allowed * 1.1 + 1) << degrees;
    }
}

TEST(PictureQuality, ACentredMarkStaysCentred) {
    // Sharp edges where all of the picture is averaged, so that nothing but the place matters; soft ones
    // where it is sampled, since samples of a sharp edge weigh more or less by where they happen to fall.
    const Grid sharp = sharpMark(800, 600, 60);
    const Grid soft = softMark(400, 300, 12);
    const auto expectCentred = [](const Grid& mark, const std::vector<std::pair<int, int>>& sizes) {
        const auto drawable = drawableOf(mark, true);
        const Point before = centreOf(mark);
        for (const auto& [width, height] : sizes) {
            const Point after = centreOf(drawnAt(*drawable, width, height));
            EXPECT_NEAR(after.x, before.x * width / mark.width(), 0.01) << width << " x " << height;
            EXPECT_NEAR(after.y, before.y * height / mark.height(), 0.01) << width << " x " << height;
        }
    };
    expectCentred(sharp, {{800, 600}, {400, 300}, {256, 192}, {257, 193}, {202, 142}, {200, 150}, {114, 86}});
    expectCentred(soft, {{400, 300}, {531, 397}, {733, 612}, {411, 333}});
}

TEST(PictureQuality, AMarkStaysWhereItIsUnderTurns) {
    const Grid mark = softMark(120, 120, 5);
    const auto drawable = drawableOf(mark, true);
    const Point before = centreOf(mark);
    for (const double scale : {1.0, 0.5, 0.32, 0.13, 2.5}) {
        const int side = static_cast<int>(180 * std::max(scale, 0.5));
        for (const double degrees : {0.1, 17.0, 45.0, 133.0, 289.0}) {
            const Point middle{side / 2.0, side / 2.0};
            const Point after = centreOf(drawnAround(*drawable, side, middle, scale, degrees));
            const double turn = degrees * pi / 180;
            const double x = (before.x - 60) * scale;
            const double y = (60 - before.y) * scale;
            EXPECT_NEAR(after.x, middle.x + x * std::cos(turn) - y * std::sin(turn), 0.02)
                << scale << ", " << degrees;
            EXPECT_NEAR(after.y, side - (middle.y + x * std::sin(turn) + y * std::cos(turn)), 0.02)
                << scale << ", " << degrees;
        }
    }
}

TEST(PictureQuality, SlowMovementIsSmooth) {
    struct Way {
        double scale;
        double degrees;
    };
    double worst = 0;
    for (const Way way : {Way{1, 0},
                          {0.5, 0},
                          {0.32, 0},
                          {0.4, 0},
                          {1.0 / 7, 0},
                          {3, 0},
                          {1, 30},
                          {0.32, 30},
                          {0.32, 90},
                          {0.7, 5},
                          {2.5, 45}}) {
        const double unit = std::max(1.0, 1 / way.scale); // the mark is some 8 drawn pixels wide
        const int length = static_cast<int>(std::lround(16 * unit)) * 2;
        const auto drawable = drawableOf(sharpMark(length, length, unit), true);
        const int side = static_cast<int>(48 * std::max(1.0, way.scale));
        for (const Point step : {Point{1.0 / 16, 0}, Point{0, 1.0 / 16}, Point{1.0 / 16, 1.0 / 16}}) {
            Point before;
            for (int i = 0; i <= 16; ++i) {
                const Point middle{side / 2.0 + i * step.x, side / 2.0 + i * step.y};
                const Point now = centreOf(drawnAround(*drawable, side, middle, way.scale, way.degrees));
                if (i > 0) {
                    const double offX = now.x - before.x - step.x;
                    const double offY = before.y - now.y - step.y;
                    worst = std::max({worst, std::abs(offX), std::abs(offY)});
                    EXPECT_NEAR(offX, 0, 0.03) << way.scale << ", " << way.degrees << ", step " << i;
                    EXPECT_NEAR(offY, 0, 0.03) << way.scale << ", " << way.degrees << ", step " << i;
                }
                before = now;
            }
        }
    }
    RecordProperty("largest_error_of_a_step", std::to_string(worst));
}

TEST(PictureQuality, EdgesOfTurnedPicturesAreMixesOfPictureAndBackground) {
    // Coverage is Cairo's, which counts 15 lines of a pixel: an edge that runs along them is off by up to
    // one.
    constexpr double coverageTolerance = 1.0 / 15 + 2.0 / 255;
    Random random(341);
    double worst = 0;
    double worstArea = 0;
    for (int round = 0; round < 60; ++round) {
        const Rgba color{static_cast<std::uint8_t>(random.integer(0, 255)),
                         static_cast<std::uint8_t>(random.integer(0, 255)), 255, 255};
        const Rgba background{static_cast<std::uint8_t>(random.integer(0, 255)), 255, 0, 255};
        const double scale = std::exp2(random.real(-4, 2));
        const int width = static_cast<int>(std::lround(random.integer(12, 40) / scale));
        const int height = static_cast<int>(std::lround(random.integer(12, 30) / scale));
        const double degrees = random.real(0, 360);
        const Point middle{32 + random.real(-1, 1), 32 + random.real(-1, 1)};
        const auto drawable = drawableOf(Grid(width, height, color), round % 2 == 0);
        const Grid shown = drawnAround(*drawable, 64, middle, scale, degrees, background);
        const std::vector<Point> corners = cornersAround(width, height, 64, middle, scale, degrees);
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                const double away = distanceFromMixes(shown.at(x, y), background, color);
                const double covered = (shown.at(x, y).b) / 255.0;
                const double area = coverageOf(corners, x, y);
                worst = std::max(worst, away);
                worstArea = std::max(worstArea, std::abs(covered - area));
                ASSERT_LE(away, 1) << "round " << round << " at " << x << ", " << y;
                ASSERT_NEAR(covered, area, coverageTolerance)
                    << "round " << round << " at " << x << ", " << y;
                if (area > 1 - 1e-9) {
                    ASSERT_EQ(shown.at(x, y), color) << "round " << round;
                }
                if (area == 0) {
                    ASSERT_EQ(shown.at(x, y), background) << "round " << round;
                }
            }
        }
    }
    RecordProperty("largest_distance_from_a_mix", std::to_string(worst));
    RecordProperty("largest_error_of_coverage", std::to_string(worstArea));
}

TEST(PictureQuality, SoftEdgesWithinAPictureGetNoFringes) {
    // A disc of one colour whose alpha fades out, premultiplied; around it transparent black. Every mix with
    // a background must lie between the two colours, however the picture is sampled.
    constexpr int size = 90;
    const Grid disc = pictureOf(size, size, [](double x, double y) {
        const double alpha = std::clamp((40 - std::hypot(x - 45, y - 45)) / 3, 0.0, 1.0);
        const auto part = [alpha](int v) { return static_cast<std::uint8_t>(std::lround(v * alpha)); };
        return Rgba{part(240), part(200), part(20), part(255)};
    });
    const auto drawable = drawableOf(disc);
    for (const Rgba background : {white, black, Rgba{20, 60, 250, 255}}) {
        for (const double scale : {1.0, 0.9, 0.5, 0.3, 0.07, 2.7}) {
            for (const double degrees : {0.0, 30.0, 211.0}) {
                const Grid shown = drawnAround(*drawable, 128, {64.3, 63.6}, scale, degrees, background);
                for (int y = 0; y < 128; ++y) {
                    for (int x = 0; x < 128; ++x) {
                        ASSERT_LE(distanceFromMixes(shown.at(x, y), background, {240, 200, 20, 255}), 1.5)
                            << "scale " << scale << ", " << degrees << " degrees at " << x << ", " << y;
                    }
                }
            }
        }
    }
}

TEST(PictureQuality, OneColourStaysThatColourUnderEveryTransform) {
    Random random(342);
    for (int round = 0; round < 150; ++round) {
        const Rgba color = round % 3 == 0 ? Rgba{255, 255, 255, 255} : random.pixel();
        const int width = random.integer(1, 300);
        const int height = random.integer(1, 300);
        const auto drawable = drawableOf(Grid(width, height, color), color.a == 255 && round % 2 == 0);
        // The sides on the canvas, whatever squeeze that means, and sometimes no turn.
        const float wide = random.single(3, 50);
        const float high = random.single(3, 50);
        NSAffineTransform place;
        place.translateXBy(32, 32);
        if (round % 4 != 0) place.rotateByDegrees(random.single(0, 360));
        Canvas canvas(64, 64, {1, 2, 3, 200});
        canvas.context().concat(place);
        drawPicture(canvas.context(), *drawable, NSMakeRect(-wide / 2, -high / 2, wide, high),
                    drawable->bounds(), NSCompositeCopy, 1);
        const Grid shown = canvas.pixels();
        const NSAffineTransformStruct t = place.transformStruct();
        std::vector<Point> corners;
        for (const Point c : {Point{-wide / 2, -high / 2},
                              {wide / 2, -high / 2},
                              {wide / 2, high / 2},
                              {-wide / 2, high / 2}}) {
            corners.push_back({t.m11 * c.x + t.m21 * c.y + t.tX, 64 - (t.m12 * c.x + t.m22 * c.y + t.tY)});
        }
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                if (coverageOf(corners, x, y) < 1 - 1e-9) continue;
                ASSERT_EQ(shown.at(x, y), color)
                    << "round " << round << ", " << width << " x " << height << " at " << x << ", " << y;
            }
        }
    }
}

TEST(PictureQuality, LargePicturesAreCopiedExactlyUnderMovesFlipsAndQuarterTurns) {
    Random random(343);
    constexpr int width = 1100;
    constexpr int height = 300;
    const Grid picture = random.grid(width, height);
    const auto drawable = drawableOf(picture);
    struct Map {
        float m11, m12, m21, m22;
        bool turned;
    };
    for (const Map m : {Map{1, 0, 0, 1, false},
                        {-1, 0, 0, 1, false},
                        {1, 0, 0, -1, false},
                        {-1, 0, 0, -1, false},
                        {0, 1, -1, 0, true},
                        {0, -1, 1, 0, true},
                        {0, 1, 1, 0, true},
                        {0, -1, -1, 0, true}}) {
        const int wide = m.turned ? height : width;
        const int high = m.turned ? width : height;
        for (const float far : {0.0F, 500000.0F, -1000000.0F}) {
            Canvas canvas(wide, high, red);
            NSAffineTransform place(
                {m.m11, m.m12, m.m21, m.m22, static_cast<float>(wide) / 2, static_cast<float>(high) / 2});
            place.translateXBy(far, -far);
            canvas.context().concat(place);
            drawPicture(canvas.context(), *drawable,
                        NSMakeRect(-width / 2.0F - far, -height / 2.0F + far, width, height),
                        drawable->bounds(), NSCompositeCopy, 1);
            const Grid shown = canvas.pixels();
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const float u = static_cast<float>(x) + 0.5F - width / 2.0F;
                    const float v = height / 2.0F - (static_cast<float>(y) + 0.5F);
                    const auto toX =
                        static_cast<int>(std::floor(static_cast<float>(wide) / 2 + m.m11 * u + m.m21 * v));
                    const auto toY =
                        high - 1 -
                        static_cast<int>(std::floor(static_cast<float>(high) / 2 + m.m12 * u + m.m22 * v));
                    ASSERT_EQ(shown.at(toX, toY), picture.at(x, y)) << x << ", " << y << ", far " << far;
                }
            }
        }
    }
}

TEST(PictureQuality, NothingJumpsWhereAnotherLevelTakesOver) {
    const Grid picture = photograph(1024, 768);
    const auto drawable = drawableOf(picture, true);
    for (const double degrees : {0.0, 30.0}) {
        for (const double reduction : {2.0, 4.0, 8.0, 16.0}) {
            const auto shownAt = [&](double scale) {
                return drawnAround(*drawable, 200, {100.3, 99.6}, scale, degrees, black, NSCompositeCopy);
            };
            const Grid before = shownAt((1 + 5e-5) / reduction);
            const Grid after = shownAt((1 - 5e-5) / reduction);
            double sum = 0;
            for (int y = 20; y < 180; ++y) {
                for (int x = 20; x < 180; ++x) sum += std::abs(before.at(x, y).g - after.at(x, y).g);
            }
            RecordProperty("by_" + std::to_string(static_cast<int>(reduction)) + "_at_" +
                               std::to_string(static_cast<int>(degrees)),
                           std::to_string(sum / 160 / 160) + " largest " +
                               std::to_string(difference(before, after).largest));
            // Averages along the axes go on over 2 to 4 pixels of a level, interpolation begins anew at 1.
            const double little = degrees == 0 && reduction > 2 ? 0.75 : 3;
            EXPECT_LE(sum / 160 / 160, little) << "reduced " << reduction << ", " << degrees << " degrees";
        }
    }
}
