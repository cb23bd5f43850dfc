// Also tests: Platform/Painter/ColorSampler.cpp
// Also tests: Platform/Painter/Painter.cpp

#include "Platform/Graphics/Cairo/Compositing.h"
#include "Platform/Graphics/BezierPath.h"

#include "Platform/Foundation/Exception.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

constexpr int operationCount = 14;
constexpr int side = 24;

/// What the destination and the clips leave of the canvas, by the kind of clip.
enum class ClipKind { None, WholePixels, HalfPixels, Rotated };

void addClip(ClipKind kind) {
    switch (kind) {
    case ClipKind::None:
        break;
    case ClipKind::WholePixels:
        NSRectClip(NSMakeRect(3, 2, 15, 17));
        break;
    case ClipKind::HalfPixels:
        NSRectClip(NSMakeRect(3.5f, 2.25f, 15.25f, 17.5f));
        break;
    case ClipKind::Rotated: {
        NSAffineTransform turn;
        turn.translateXBy(12, 11);
        turn.rotateByDegrees(27);
        NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(-7, -6, 15, 13));
        path.transformUsingAffineTransform(turn);
        path.addClip();
        break;
    }
    }
}

/// Where a pixel stands among those of the canvas.
std::size_t indexOf(int x, int y) { return static_cast<std::size_t>(y) * side + static_cast<std::size_t>(x); }

/// How much of each pixel a clip leaves, 0 to 1, measured by filling white on black.
std::vector<double> measuredCoverage(ClipKind kind) {
    Canvas canvas(side, side, black);
    addClip(kind);
    NSColor::whiteColor().set();
    NSRectFill(NSMakeRect(0, 0, side, side));
    const Grid shown = canvas.pixels();
    std::vector<double> coverage;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) coverage.push_back(shown.at(x, y).r / 255.0);
    }
    return coverage;
}

/// The largest distance from the exact result, in 255ths.
double largestError(const Grid& shown, const Grid& source, const Grid& destination, int operation,
                    double fraction, const std::vector<double>& coverage) {
    double largest = 0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double cover = coverage[indexOf(x, y)];
            const Color exact = composed(operation, source.at(x, y), destination.at(x, y), fraction, cover);
            const Color actual = colorOf(shown.at(x, y));
            for (std::size_t i = 0; i < 4; ++i) {
                largest = std::max(largest, std::abs(actual[i] - exact[i]) * 255);
            }
        }
    }
    return largest;
}

/// Draws a random picture on a random one under a clip and returns the largest error.
double largestErrorOfDrawing(Random& random, int operation, float fraction, ClipKind clip,
                             const std::vector<double>& coverage) {
    const Grid source = random.grid(side, side);
    const Grid destination = random.grid(side, side);
    const auto image = imageOf(source);
    Canvas canvas(destination);
    addClip(clip);
    image->drawInRect(NSMakeRect(0, 0, side, side), NSZeroRect, operation, fraction);
    return largestError(canvas.pixels(), source, destination, operation, double{fraction}, coverage);
}

/// All operations under one clip, with the fractions where rounding is worst and with random ones. The error
/// is counted in 255ths from the exact value, of which rounding to nearest alone costs 0.5.
void expectAllOperationsToBeExact(ClipKind clip) {
    constexpr double tolerance = 0.55; // hence never more than 1 from the exact value's nearest number
    Random random(20240 + static_cast<std::uint32_t>(clip));
    const std::vector<double> coverage = measuredCoverage(clip);
    for (int operation = 0; operation < operationCount; ++operation) {
        std::vector<float> fractions = {0, 0.25F, 0.5F, 1, 1.0F / 3, 1.0F / 255, 254.0F / 255, 0.999F, 1e-4F};
        for (int i = 0; i < 15; ++i) fractions.push_back(random.single(0, 1));
        for (const float fraction : fractions) {
            EXPECT_LT(largestErrorOfDrawing(random, operation, fraction, clip, coverage), tolerance)
                << "operation " << operation << ", fraction " << fraction;
        }
    }
}

} // namespace

TEST(Compositing, FollowsTheFormulasOnWholePictures) { expectAllOperationsToBeExact(ClipKind::None); }

TEST(Compositing, FollowsTheFormulasUnderAClipOnWholePixels) {
    expectAllOperationsToBeExact(ClipKind::WholePixels);
}

TEST(Compositing, MixesByCoverageUnderAClipOnHalfPixels) {
    expectAllOperationsToBeExact(ClipKind::HalfPixels);
}

TEST(Compositing, MixesByCoverageUnderARotatedClip) { expectAllOperationsToBeExact(ClipKind::Rotated); }

TEST(Compositing, TheMeasuredCoverageOfTheTestsClipsIsWhatTheirGeometrySays) {
    const std::vector<double> half = measuredCoverage(ClipKind::HalfPixels);
    const auto at = [&half](int x, int yUpward) { return half[indexOf(x, side - 1 - yUpward)]; };
    EXPECT_NEAR(at(3, 10), 0.5, 1.0 / 128); // the left edge at 3.5
    EXPECT_NEAR(at(18, 10), 0.75, 1.0 / 128);
    EXPECT_NEAR(at(10, 2), 0.75, 1.0 / 128); // the bottom edge at 2.25
    EXPECT_NEAR(at(3, 2), 0.375, 1.0 / 64);
    EXPECT_EQ(at(10, 10), 1);
    EXPECT_EQ(at(2, 10), 0);
    double area = 0;
    for (const double cover : measuredCoverage(ClipKind::Rotated)) area += cover;
    EXPECT_NEAR(area, 15 * 13, 1);
}

TEST(Compositing, IsExactAtTheExtremesOfEveryOperation) {
    // Every pairing of no colour, some colour and full colour with no, half and full alpha.
    std::vector<Rgba> all;
    for (const int alpha : {0, 51, 255}) {
        for (const int color : {0, 51, 255}) {
            const auto c = static_cast<std::uint8_t>(std::min(color, alpha));
            all.push_back({c, static_cast<std::uint8_t>(alpha), 0, static_cast<std::uint8_t>(alpha)});
        }
    }
    const int count = static_cast<int>(all.size());
    Grid source(count, count);
    Grid destination(count, count);
    for (int y = 0; y < count; ++y) {
        for (int x = 0; x < count; ++x) {
            source.at(x, y) = all[static_cast<std::size_t>(x)];
            destination.at(x, y) = all[static_cast<std::size_t>(y)];
        }
    }
    const auto image = imageOf(source);
    const auto length = static_cast<float>(count);
    for (int operation = 0; operation < operationCount; ++operation) {
        Canvas canvas(destination);
        image->drawInRect(NSMakeRect(0, 0, length, length), NSZeroRect, operation, 1);
        Grid expected(count, count);
        for (int y = 0; y < count; ++y) {
            for (int x = 0; x < count; ++x) {
                expected.at(x, y) = rounded(composed(operation, source.at(x, y), destination.at(x, y), 1, 1));
            }
        }
        EXPECT_TRUE(areAlike(canvas.pixels(), expected, 0)) << "operation " << operation;
    }
}

TEST(Compositing, ChangesNothingOutsideTheDestinationRectangle) {
    Random random(99);
    const Grid source = random.grid(6, 5);
    const auto image = imageOf(source);
    const Grid destination = random.grid(side, side);
    for (int operation = 0; operation < operationCount; ++operation) {
        for (const float fraction : {1.0F, 0.5F, 0.0F}) {
            Canvas canvas(destination);
            image->drawInRect(NSMakeRect(4, 7, 6, 5), NSZeroRect, operation, fraction);
            const Grid shown = canvas.pixels();
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x) {
                    const int up = side - 1 - y;
                    if (x >= 4 && x < 10 && up >= 7 && up < 12) continue;
                    ASSERT_EQ(shown.at(x, y), destination.at(x, y))
                        << "operation " << operation << " at column " << x << ", row " << y;
                }
            }
        }
    }
}

TEST(Compositing, FillsOfRectanglesFollowTheFormulasToo) {
    Random random(7);
    const Grid destination = random.grid(side, side);
    for (int operation = 0; operation < operationCount; ++operation) {
        Canvas canvas(destination);
        NSColor::colorWithCalibratedRed(1, 0.6F, 0, 0.4F).set(); // premultiplied 102, 61.2, 0, 102
        NSRectFillUsingOperation(NSMakeRect(2, 3, 18, 16), operation);
        const Grid shown = canvas.pixels();
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                const int up = side - 1 - y;
                const bool inside = x >= 2 && x < 20 && up >= 3 && up < 19;
                const Rgba before = destination.at(x, y);
                const Rgba after = rounded(composed(operation, {102, 61, 0, 102}, before, 1, 1));
                ASSERT_LE(difference(shown.at(x, y), inside ? after : before), inside ? 1 : 0)
                    << "operation " << operation << " at column " << x << ", row " << y;
            }
        }
    }
}

TEST(Compositing, NumbersThatNameNoOperationCountAsSourceOver) {
    Random random(8);
    const Grid source = random.grid(5, 5);
    const Grid destination = random.grid(5, 5);
    const auto drawnWith = [&](int operation) {
        Canvas canvas(destination);
        imageOf(source)->drawInRect(NSMakeRect(0, 0, 5, 5), NSZeroRect, operation, 1);
        return canvas.pixels();
    };
    const Grid over = drawnWith(NSCompositeSourceOver);
    for (const int operation : {-1, 12, 14, 1000, -2147483647})
        EXPECT_TRUE(areAlike(drawnWith(operation), over));
}

TEST(Compositing, AFractionBeyondItsRangeIsClampedAndOneThatIsNoNumberCountsAsNothing) {
    Random random(9);
    const Grid source = random.grid(5, 5);
    const Grid destination = random.grid(5, 5);
    const auto drawnWith = [&](float fraction) {
        Canvas canvas(destination);
        imageOf(source)->drawInRect(NSMakeRect(0, 0, 5, 5), NSZeroRect, NSCompositeSourceOver, fraction);
        return canvas.pixels();
    };
    EXPECT_TRUE(areAlike(drawnWith(-3), destination));
    EXPECT_TRUE(areAlike(drawnWith(7), drawnWith(1)));
    EXPECT_FALSE(areAlike(drawnWith(1), destination));
    EXPECT_TRUE(areAlike(drawnWith(std::nanf("")), destination));
}

TEST(Compositing, PlusDarkerFindsItsPixelsWithinAGroupOfTheCallersContext) {
    Random random(10);
    const Grid source = random.grid(side, side);
    const Grid destination = random.grid(side, side);
    Canvas canvas(side, side);
    // The clip makes the group's surface smaller than the page and moves its origin.
    cairo_save(canvas.cairo());
    cairo_rectangle(canvas.cairo(), 5, 4, 11, 13);
    cairo_clip(canvas.cairo());
    cairo_push_group(canvas.cairo());
    imageOf(destination)->drawInRect(NSMakeRect(0, 0, side, side), NSZeroRect, NSCompositeCopy, 1);
    imageOf(source)->drawInRect(NSMakeRect(0, 0, side, side), NSZeroRect, NSCompositePlusDarker, 1);
    cairo_pop_group_to_source(canvas.cairo());
    cairo_paint(canvas.cairo());
    cairo_restore(canvas.cairo());
    const Grid shown = canvas.pixels();
    for (int up = 4; up < 17; ++up) {
        for (int x = 5; x < 16; ++x) {
            const Color exact =
                composed(NSCompositePlusDarker, source.above(x, up), destination.above(x, up), 1, 1);
            ASSERT_EQ(shown.above(x, up), rounded(exact)) << x << ", " << up;
        }
    }
}

TEST(Compositing, TargetsWithoutAlphaCountAsOpaque) {
    Random random(11);
    const Grid source = random.grid(8, 8);
    for (int operation = 0; operation < operationCount; ++operation) {
        const CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 8, 8));
        const CairoContext cairo(cairo_create(surface.get()));
        cairo_set_source_rgb(cairo.get(), 0.2, 0.4, 0.8); // 51, 102, 204
        cairo_paint(cairo.get());
        {
            NSGraphicsContext::setCurrentContext(NSGraphicsContext::graphicsContextWithCairo(cairo.get(), 8));
            // A clip of half pixels all around, so that the operations are computed in every way there is.
            NSRectClip(NSMakeRect(0.5F, 0.5F, 7, 7));
            imageOf(source)->drawInRect(NSMakeRect(0, 0, 8, 8), NSZeroRect, operation, 1);
            NSGraphicsContext::setCurrentContext(nullptr);
        }
        const Grid shown = gridOf(surface.get());
        for (int y = 1; y < 7; ++y) {
            for (int x = 1; x < 7; ++x) {
                Rgba expected = rounded(composed(operation, source.at(x, y), {51, 102, 204, 255}, 1, 1));
                Rgba actual = shown.at(x, y);
                expected.a = actual.a = 255;
                ASSERT_LE(difference(actual, expected), 1)
                    << "operation " << operation << " at " << x << ", " << y;
            }
        }
    }
}
