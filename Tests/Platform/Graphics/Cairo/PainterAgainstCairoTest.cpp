// The two ways in which pictures are drawn, one against the other on the same pixels.
// Also tests: Platform/Graphics/Pictures/CairoPictures.cpp

#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Pictures/CairoPictures.h"
#include "Platform/Graphics/Pictures/PictureDrawing.h"
#include "Tests/Platform/Graphics/DrawnPictures.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

constexpr int side = 24;
constexpr int operationCount = 14;

enum class Clip { None, WholePixels, HalfPixels, Rotated };
constexpr std::array<Clip, 4> allClips = {Clip::None, Clip::WholePixels, Clip::HalfPixels, Clip::Rotated};

/// Where Cairo's own way of compositing is not ours. It knows no plus-darker. Where a pixel is covered in
/// part, it lets four operations clear what lies there instead of changing it in proportion, and it adds the
/// picture in proportion before plus-lighter's limit instead of after it.
bool cairoHasItRight(int operation, bool coveredInPart) {
    switch (operation) {
    case NSCompositePlusDarker:
        return false;
    case NSCompositeSourceIn:
    case NSCompositeSourceOut:
    case NSCompositeDestinationIn:
    case NSCompositeDestinationAtop:
    case NSCompositePlusLighter:
        return !coveredInPart;
    default:
        return true;
    }
}

/// Cairo rounds a fraction to 8 bits, the picture times the fraction too, then each of the products of an
/// operation that adds two of them, and what a clip's edge makes of that: half a step each time.
bool addsTwoProducts(int operation) {
    return operation == NSCompositeSourceAtop || operation == NSCompositeDestinationAtop ||
           operation == NSCompositeXOR;
}

/// Clips to the destination rectangle, then to what else there is.
void clip(cairo_t* cairo, Clip kind, NSRect destination) {
    cairo_rectangle(cairo, destination.origin.x, destination.origin.y, destination.size.width,
                    destination.size.height);
    cairo_clip(cairo);
    switch (kind) {
    case Clip::None:
        return;
    case Clip::WholePixels:
        cairo_rectangle(cairo, 4, 3, 15, 17);
        break;
    case Clip::HalfPixels:
        cairo_rectangle(cairo, 3.5, 2.25, 15.25, 17.5);
        break;
    case Clip::Rotated:
        cairo_save(cairo);
        cairo_translate(cairo, 12, 11);
        cairo_rotate(cairo, 0.4);
        cairo_rectangle(cairo, -7, -6, 15, 13);
        cairo_restore(cairo);
        break;
    }
    cairo_clip(cairo);
}

using Draw = void (*)(cairo_t*, const PlacedPicture&, NSCompositingOperation, double);

Grid drawnBy(Draw draw, cairo_format_t format, const Grid& content, const PlacedPicture& placed, Clip kind,
             NSRect destination, int operation, double fraction) {
    const CairoSurface surface(cairo_image_surface_create(format, side, side));
    fillSurface(surface.get(), content);
    const CairoContext cairo(cairo_create(surface.get()));
    clip(cairo.get(), kind, destination);
    draw(cairo.get(), placed, compositingOperation(operation), fraction);
    EXPECT_EQ(cairo_status(cairo.get()), CAIRO_STATUS_SUCCESS);
    Grid shown = gridOf(surface.get());
    if (format == CAIRO_FORMAT_ARGB32) return shown;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) shown.at(x, y).a = 255;
    }
    return shown;
}

struct Placement {
    std::string name;
    cairo_matrix_t matrix;
    NSRect destination;
};

/// Ways to place a picture of 14 × 11 pixels such that no pixel is interpolated.
std::vector<Placement> wholePlacements() {
    return {{"moved", {1, 0, 0, 1, 5, 6}, NSMakeRect(5, 6, 14, 11)},
            {"flipped", {-1, 0, 0, 1, 19, 6}, NSMakeRect(5, 6, 14, 11)},
            {"turned", {0, 1, -1, 0, 17, 4}, NSMakeRect(6, 4, 11, 14)},
            {"in part", {1, 0, 0, 1, -3, -2}, NSMakeRect(2, 1, 8, 7)}};
}

/// The largest differences between the two over everything that Cairo has right: under the operations that
/// add two products, where pixels are covered wholly and in part, and under the others.
struct Largest {
    int ofSums = 0;
    int ofSumsInPart = 0;
    int ofOthers = 0;
};

Largest largestDifference(Random& random, cairo_format_t format, const std::vector<double>& fractions) {
    Largest largest;
    const auto picture = drawableOf(random.grid(14, 11));
    for (const Placement& placement : wholePlacements()) {
        const PlacedPicture placed{*picture, placement.matrix, true};
        for (const Clip kind : allClips) {
            const bool inPart = kind == Clip::HalfPixels || kind == Clip::Rotated;
            for (int operation = 0; operation < operationCount; ++operation) {
                if (!cairoHasItRight(operation, inPart)) continue;
                int& ofSums = inPart ? largest.ofSumsInPart : largest.ofSums;
                int& found = addsTwoProducts(operation) ? ofSums : largest.ofOthers;
                for (const double fraction : fractions) {
                    const Grid content = random.grid(side, side);
                    const auto shownBy = [&](Draw draw) {
                        return drawnBy(draw, format, content, placed, kind, placement.destination, operation,
                                       fraction);
                    };
                    found = std::max(found, difference(shownBy(drawByPainter), shownBy(drawByCairo)).largest);
                }
            }
        }
    }
    return largest;
}

} // namespace

TEST(PainterAgainstCairo, WholePicturesDifferByOneWhereCairoRoundsTwice) {
    Random random(331);
    const Largest found = largestDifference(random, CAIRO_FORMAT_ARGB32, std::vector<double>(12, 1));
    EXPECT_LE(found.ofSums, 1);
    EXPECT_LE(found.ofSumsInPart, 2);
    EXPECT_LE(found.ofOthers, 1);
}

TEST(PainterAgainstCairo, PicturesOnPixelsWithoutAlphaDoToo) {
    Random random(332);
    const Largest found = largestDifference(random, CAIRO_FORMAT_RGB24, std::vector<double>(12, 1));
    EXPECT_LE(found.ofSums, 1);
    EXPECT_LE(found.ofSumsInPart, 2);
    EXPECT_LE(found.ofOthers, 1);
}

TEST(PainterAgainstCairo, AnyFractionDiffersByTwoAtMost) {
    Random random(334);
    std::vector<double> fractions = {0};
    for (int i = 0; i < 8; ++i) fractions.push_back(random.real(0, 1));
    for (int i = 0; i < 8; ++i) fractions.push_back(random.integer(1, 254) / 255.0); // no rounding of its own
    for (const cairo_format_t format : {CAIRO_FORMAT_ARGB32, CAIRO_FORMAT_RGB24}) {
        const Largest found = largestDifference(random, format, fractions);
        EXPECT_LE(found.ofOthers, 2);
        EXPECT_LE(found.ofSums, 2);
        EXPECT_LE(found.ofSumsInPart, 2);
    }
}
