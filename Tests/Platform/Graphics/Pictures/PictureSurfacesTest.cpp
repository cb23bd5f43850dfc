// Pictures on the surfaces that callers draw on: without alpha, moved, scaled, parts of others, groups,
// pages.
// Also tests: Platform/Graphics/Cairo/CairoPixels.cpp
// Also tests: Platform/Graphics/Pictures/PictureDrawing.cpp

#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Cairo/CairoPixels.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Tests/Platform/Graphics/DrawnPictures.h"

#include <gtest/gtest.h>

#include <cairo-pdf.h>
#include <string>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

cairo_status_t keepBytes(void* closure, const unsigned char* bytes, unsigned int count) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

CairoSurface pixels(int width, int height, cairo_format_t format = CAIRO_FORMAT_ARGB32) {
    return CairoSurface(cairo_image_surface_create(format, width, height));
}

enum class Way { Whole, Part, Scaled, Reduced, Turned };
constexpr std::array<Way, 5> allWays = {Way::Whole, Way::Part, Way::Scaled, Way::Reduced, Way::Turned};

/// One drawing of a 20 × 16 picture on a page of 24 × 24 units.
struct Drawing {
    Way way;
    NSCompositingOperation operation = NSCompositeSourceOver;
    float fraction = 1;
    bool clipped = false;

    void onto(cairo_t* cairo, DrawablePicture& picture) const {
        const auto context = NSGraphicsContext::graphicsContextWithCairo(cairo, 24);
        context->saveGraphicsState();
        context->addClip(NSBezierPath::bezierPathWithRect(wholeOf(24, 24)));
        if (clipped) {
            context->addClip(NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(1.5F, 2, 21, 19.5F)));
        }
        if (way == Way::Turned) {
            NSAffineTransform turn;
            turn.translateXBy(12, 12);
            turn.rotateByDegrees(33);
            turn.translateXBy(-10, -8);
            context->concat(turn);
        }
        drawPicture(*context, picture, destination(), source(picture), operation, double{fraction});
        context->restoreGraphicsState();
    }

private:
    NSRect destination() const {
        switch (way) {
        case Way::Scaled:
            return NSMakeRect(1.25F, 2.5F, 21.5F, 19);
        case Way::Reduced:
            return NSMakeRect(3.5F, 4, 6.5F, 5.25F);
        case Way::Turned:
            return NSMakeRect(0, 0, 20, 16);
        default:
            return NSMakeRect(2, 3, 20, 16);
        }
    }
    NSRect source(const DrawablePicture& picture) const {
        return way == Way::Part ? NSMakeRect(-4, 5, 20, 16) : picture.bounds(); // beyond its edges
    }
};

std::vector<Drawing> someDrawings() {
    std::vector<Drawing> all;
    for (const Way way : allWays) {
        for (int operation = 0; operation < 14; ++operation) {
            all.push_back({way, compositingOperation(operation), 1, false});
            all.push_back({way, compositingOperation(operation), 0.4F, true});
        }
    }
    return all;
}

std::string nameOf(const Drawing& drawing) {
    return "way " + std::to_string(static_cast<int>(drawing.way)) + ", operation " +
           std::to_string(drawing.operation) + ", clipped " + std::to_string(drawing.clipped);
}

Grid withoutAlpha(Grid grid) {
    for (int y = 0; y < grid.height(); ++y) {
        for (int x = 0; x < grid.width(); ++x) grid.at(x, y).a = 255;
    }
    return grid;
}

/// On plain pixels, `scale` of them for a unit.
Grid drawnPlainly(const Drawing& drawing, DrawablePicture& picture, const Grid& content, double scale = 1) {
    const CairoSurface surface = pixels(content.width(), content.height());
    fillSurface(surface.get(), content);
    const CairoContext cairo(cairo_create(surface.get()));
    cairo_scale(cairo.get(), scale, scale);
    drawing.onto(cairo.get(), picture);
    return gridOf(surface.get());
}

} // namespace

TEST(PictureSurfaces, PixelsWithoutAlphaGetTheColourThatOpaqueOnesGet) {
    Random random(371);
    const auto picture = drawableOf(random.grid(20, 16));
    const Grid content = withoutAlpha(random.grid(24, 24));
    for (const Drawing& drawing : someDrawings()) {
        const CairoSurface surface = pixels(24, 24, CAIRO_FORMAT_RGB24);
        fillSurface(surface.get(), content);
        const CairoContext cairo(cairo_create(surface.get()));
        drawing.onto(cairo.get(), *picture);
        EXPECT_TRUE(areAlike(withoutAlpha(gridOf(surface.get())),
                             withoutAlpha(drawnPlainly(drawing, *picture, content))))
            << nameOf(drawing);
    }
}

TEST(PictureSurfaces, ADeviceOffsetMovesWhatIsDrawn) {
    Random random(372);
    const auto picture = drawableOf(random.grid(20, 16));
    const Grid content = random.grid(24, 24);
    for (const Drawing& drawing : someDrawings()) {
        const CairoSurface surface = pixels(40, 36);
        Grid larger = random.grid(40, 36);
        for (int y = 0; y < 24; ++y) {
            for (int x = 0; x < 24; ++x) larger.at(x + 7, y + 5) = content.at(x, y);
        }
        fillSurface(surface.get(), larger);
        cairo_surface_set_device_offset(surface.get(), 7, 5);
        const CairoContext cairo(cairo_create(surface.get()));
        drawing.onto(cairo.get(), *picture);
        const Grid plain = drawnPlainly(drawing, *picture, content);
        for (int y = 0; y < 24; ++y) {
            for (int x = 0; x < 24; ++x) larger.at(x + 7, y + 5) = plain.at(x, y);
        }
        EXPECT_TRUE(areAlike(gridOf(surface.get()), larger, drawing.way == Way::Turned ? 1 : 0))
            << nameOf(drawing);
    }
}

TEST(PictureSurfaces, ADeviceScaleOfTwoGivesAllThePixelsThereAre) {
    Random random(373);
    const auto picture = drawableOf(random.grid(20, 16));
    const Grid content = random.grid(48, 48);
    for (const Drawing& drawing : someDrawings()) {
        const CairoSurface surface = pixels(48, 48);
        fillSurface(surface.get(), content);
        cairo_surface_set_device_scale(surface.get(), 2, 2);
        const CairoContext cairo(cairo_create(surface.get()));
        drawing.onto(cairo.get(), *picture);
        EXPECT_TRUE(areAlike(gridOf(surface.get()), drawnPlainly(drawing, *picture, content, 2)))
            << nameOf(drawing);
    }
}

TEST(PictureSurfaces, GroupsHoldWhatTheSurfaceWouldHaveGot) {
    Random random(374);
    const auto picture = drawableOf(random.grid(20, 16));
    for (const Drawing& drawing : someDrawings()) {
        // Cairo cuts a slanted edge at the group's own clip before it counts what the edge covers.
        const int tolerance = drawing.way == Way::Turned || drawing.clipped ? 4 : 0;
        Canvas canvas(24, 24);
        cairo_t* const cairo = canvas.cairo();
        cairo_identity_matrix(cairo);
        cairo_rectangle(cairo, 2.5, 3, 17, 15.5); // so that the group is smaller, and its clip not whole
        cairo_clip(cairo);
        cairo_push_group(cairo);
        drawing.onto(cairo, *picture);
        cairo_pop_group_to_source(cairo);
        cairo_reset_clip(cairo);
        cairo_set_operator(cairo, CAIRO_OPERATOR_SOURCE);
        cairo_rectangle(cairo, 4, 5, 14, 12);
        cairo_fill(cairo);
        const Grid plain = drawnPlainly(drawing, *picture, Grid(24, 24));
        const Grid shown = canvas.pixels();
        for (int y = 5; y < 17; ++y) {
            for (int x = 4; x < 18; ++x) {
                ASSERT_LE(difference(shown.at(x, y), plain.at(x, y)), tolerance)
                    << nameOf(drawing) << " at " << x << ", " << y;
            }
        }
    }
}

TEST(PictureSurfaces, APartOfASurfaceGetsThePictureAndTheRestNothing) {
    Random random(375);
    const Grid source = random.grid(20, 16);
    const auto picture = drawableOf(source);
    const Grid content = random.grid(40, 36);
    const CairoSurface whole = pixels(40, 36);
    fillSurface(whole.get(), content);
    const CairoSurface part(cairo_surface_create_for_rectangle(whole.get(), 9, 6, 24, 24));
    {
        const CairoContext cairo(cairo_create(part.get()));
        EXPECT_FALSE(CairoPixels::ofContext(cairo.get()).has_value()); // its pixels are not to be had
        const auto context = NSGraphicsContext::graphicsContextWithCairo(cairo.get(), 24);
        drawPicture(*context, *picture, NSMakeRect(2, 3, 20, 16), picture->bounds(), NSCompositeSourceOver,
                    1);
        drawPicture(*context, *picture, NSMakeRect(20, 20, 20, 16), picture->bounds(), NSCompositeCopy, 1);
        EXPECT_EQ(cairo_status(cairo.get()), CAIRO_STATUS_SUCCESS);
    }
    const Grid shown = gridOf(whole.get());
    for (int y = 0; y < 36; ++y) {
        for (int x = 0; x < 40; ++x) {
            const int u = x - 9;
            const int v = 24 - 1 - (y - 6); // upward in the part
            Rgba expected = content.at(x, y);
            if (u >= 2 && u < 22 && v >= 3 && v < 19) {
                expected = rounded(composed(2, source.above(u - 2, v - 3), expected, 1, 1));
            }
            if (u >= 20 && u < 24 && v >= 20 && v < 24) expected = source.above(u - 20, v - 20);
            ASSERT_LE(difference(shown.at(x, y), expected), 1) << x << ", " << y;
        }
    }
}

TEST(PictureSurfaces, AGroupOnAPageIsDrawnByCairoAndOnPixelsByThePainter) {
    std::string page;
    const CairoSurface surface(cairo_pdf_surface_create_for_stream(keepBytes, &page, 24, 24));
    const CairoContext onPage(cairo_create(surface.get()));
    EXPECT_FALSE(CairoPixels::ofContext(onPage.get()).has_value());
    cairo_push_group(onPage.get());
    EXPECT_FALSE(CairoPixels::ofContext(onPage.get()).has_value());
    cairo_pattern_destroy(cairo_pop_group(onPage.get()));
    const CairoSurface image = pixels(4, 4);
    const CairoContext onPixels(cairo_create(image.get()));
    EXPECT_TRUE(CairoPixels::ofContext(onPixels.get()).has_value());
    cairo_push_group(onPixels.get());
    EXPECT_TRUE(CairoPixels::ofContext(onPixels.get()).has_value());
    cairo_pattern_destroy(cairo_pop_group(onPixels.get()));
}

TEST(PictureSurfaces, AFinishedSurfaceIsLeftAlone) {
    const auto picture = drawableOf(Grid(8, 8, red));
    const CairoSurface image = pixels(8, 8);
    const CairoContext cairo(cairo_create(image.get()));
    const auto context = NSGraphicsContext::graphicsContextWithCairo(cairo.get(), 8);
    cairo_surface_finish(image.get()); // its pixels are gone
    EXPECT_FALSE(CairoPixels::ofContext(cairo.get()).has_value());
    drawPicture(*context, *picture, wholeOf(8, 8), wholeOf(8, 8), NSCompositeCopy, 1);
    EXPECT_NE(cairo_surface_status(image.get()), CAIRO_STATUS_SUCCESS);
}

TEST(PictureSurfaces, EncodedDataThatASurfaceCarriesGoesWithTheFirstDraw) {
    static const unsigned char bytes[] = {0xff, 0xd8, 0xff};
    const auto picture = drawableOf(Grid(8, 8, red));
    const CairoSurface image = pixels(8, 8);
    ASSERT_EQ(
        cairo_surface_set_mime_data(image.get(), CAIRO_MIME_TYPE_JPEG, bytes, sizeof bytes, nullptr, nullptr),
        CAIRO_STATUS_SUCCESS);
    const CairoContext cairo(cairo_create(image.get()));
    const auto context = NSGraphicsContext::graphicsContextWithCairo(cairo.get(), 8);
    drawPicture(*context, *picture, wholeOf(8, 8), wholeOf(8, 8), NSCompositeCopy, 1);
    EXPECT_TRUE(areAlike(gridOf(image.get()), Grid(8, 8, red)));
    const unsigned char* kept = nullptr;
    unsigned long length = 0;
    cairo_surface_get_mime_data(image.get(), CAIRO_MIME_TYPE_JPEG, &kept, &length);
    EXPECT_EQ(kept, nullptr);
}

TEST(PictureSurfaces, CallersScalesFarBeyondReasonLeaveTheContextWorking) {
    const auto picture = drawableOf(Grid(300, 200, red));
    for (const double scale : {1e-20, 1e-100, 1e-150, 1e20, 1e100, 1e150}) {
        for (const double other : {1.0, 1e-3}) {
            Canvas canvas(16, 16);
            cairo_save(canvas.cairo());
            cairo_scale(canvas.cairo(), scale, scale * other);
            ASSERT_EQ(cairo_status(canvas.cairo()), CAIRO_STATUS_SUCCESS) << scale;
            const auto draw = [&](NSRect where) {
                drawPicture(canvas.context(), *picture, where, picture->bounds(), NSCompositeSourceOver, 1);
            };
            EXPECT_NO_THROW(draw(NSMakeRect(-8, -8, 16, 16))) << scale;
            EXPECT_NO_THROW(draw(NSMakeRect(-1e30F, -1e30F, 2e30F, 2e30F))) << scale;
            EXPECT_NO_THROW(draw(NSMakeRect(1e-30F, 1e-30F, 1e-30F, 1e-30F))) << scale;
            cairo_restore(canvas.cairo());
            ASSERT_EQ(cairo_status(canvas.cairo()), CAIRO_STATUS_SUCCESS) << scale;
            draw(wholeOf(16, 16));
            EXPECT_TRUE(areAlike(canvas.pixels(), Grid(16, 16, red))) << scale;
        }
    }
}

TEST(PictureSurfaces, PagesKeepEnoughPixelsForPrint) {
    // 400 × 300 pixels on 10 × 7.5 points: more than print can show, but no fewer than 576 to the inch.
    const auto widthOnPage = [](float width, float height) {
        std::string page;
        {
            const CairoSurface surface(cairo_pdf_surface_create_for_stream(keepBytes, &page, 200, 200));
            const CairoContext cairo(cairo_create(surface.get()));
            const auto context = NSGraphicsContext::graphicsContextWithCairo(cairo.get(), 200);
            const auto picture = drawableOf(Grid(400, 300, {10, 200, 30, 255}), true);
            drawPicture(*context, *picture, NSMakeRect(5, 5, width, height), picture->bounds(),
                        NSCompositeSourceOver, 1);
            cairo_surface_finish(surface.get());
        }
        const std::size_t image = page.find("/Subtype /Image");
        const std::size_t at = page.find("/Width ", image);
        return image == std::string::npos || at == std::string::npos ? 0 : std::stoi(page.substr(at + 7));
    };
    EXPECT_EQ(widthOnPage(100, 75), 400);
    EXPECT_GE(widthOnPage(10, 7.5F), 80);
    EXPECT_LT(widthOnPage(10, 7.5F), 400);
}

TEST(PictureSurfaces, RowsDrawnOneByOneAreTheWholeDrawingButForRounding) {
    // Many rows are painted by several threads; a single one is not. At a picture's end the pixels that are
    // mixed may be counted from another one, by how large the area is.
    Random random(376);
    const auto picture = drawableOf(random.grid(700, 500));
    const Grid content = random.grid(640, 420);
    for (const float degrees : {0.0F, 11.0F}) {
        const auto draw = [&](Canvas& canvas) {
            NSAffineTransform turn;
            turn.translateXBy(30.4F, 20.7F);
            turn.rotateByDegrees(degrees);
            canvas.context().concat(turn);
            drawPicture(canvas.context(), *picture, NSMakeRect(0, 0, 501.5F, 333.25F), picture->bounds(),
                        NSCompositeSourceAtop, 0.7);
        };
        Canvas whole(content);
        draw(whole);
        Canvas byRows(content);
        for (int y = 0; y < 420; ++y) {
            const NSGraphicsStateScope state;
            NSRectClip(NSMakeRect(0, static_cast<float>(y), 640, 1));
            draw(byRows);
        }
        EXPECT_TRUE(areAlike(byRows.pixels(), whole.pixels(), 1)) << degrees;
    }
}
