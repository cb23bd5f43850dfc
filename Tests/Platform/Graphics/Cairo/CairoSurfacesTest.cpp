// Also tests: Platform/Graphics/Cairo/CairoSupport.cpp

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/BezierPath.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

// Drawing into Cairo contexts that the caller made, on surfaces of several kinds.

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

cairo_status_t ignoreBytes(void*, const unsigned char*, unsigned int) { return CAIRO_STATUS_SUCCESS; }

cairo_status_t keepBytes(void* closure, const unsigned char* bytes, unsigned int count) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

/// A context on a caller's as the thread's current one for a scope.
class CurrentScope {
public:
    CurrentScope(cairo_t* cairo, double height) : m_previous(NSGraphicsContext::currentContext()) {
        NSGraphicsContext::setCurrentContext(NSGraphicsContext::graphicsContextWithCairo(cairo, height));
    }
    ~CurrentScope() { NSGraphicsContext::setCurrentContext(m_previous); }
    CurrentScope(const CurrentScope&) = delete;
    CurrentScope& operator=(const CurrentScope&) = delete;

private:
    std::shared_ptr<NSGraphicsContext> m_previous;
};

/// A bit of everything: fills, strokes, clips and pictures with every operation but plus-darker.
void drawAllSorts(NSImage& image) {
    NSColor::colorWithCalibratedRed(0, 0.5F, 1, 0.5F).set();
    NSRectFill(NSMakeRect(1, 1, 10, 10));
    NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(3, 3, 9, 5)).stroke();
    const NSGraphicsStateScope state;
    NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(0, 0, 14, 14)).addClip();
    for (int operation = 0; operation < 14; ++operation) {
        if (operation == NSCompositePlusDarker) continue;
        for (const float fraction : {1.0F, 0.5F}) {
            image.drawInRect(NSMakeRect(2.5F, 3, 6, 7), NSZeroRect, operation, fraction);
            NSRectFillUsingOperation(NSMakeRect(4, 4, 5, 5), operation);
        }
    }
}

CairoSurface recordingSurface(bool bounded) {
    const cairo_rectangle_t extents{0, 0, 16, 16};
    return CairoSurface(
        cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, bounded ? &extents : nullptr));
}

/// The surfaces that callers draw on, by name.
std::vector<std::pair<std::string, CairoSurface>> allSurfaces() {
    std::vector<std::pair<std::string, CairoSurface>> all;
    const auto add = [&all](const char* name, CairoSurface surface) {
        all.emplace_back(name, std::move(surface));
    };
    add("pixels with alpha", CairoSurface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 16, 16)));
    add("pixels without alpha", CairoSurface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 16, 16)));
    add("16-bit pixels", CairoSurface(cairo_image_surface_create(CAIRO_FORMAT_RGB16_565, 16, 16)));
    add("a mask", CairoSurface(cairo_image_surface_create(CAIRO_FORMAT_A8, 16, 16)));
    add("PDF", CairoSurface(cairo_pdf_surface_create_for_stream(ignoreBytes, nullptr, 16, 16)));
    add("SVG", CairoSurface(cairo_svg_surface_create_for_stream(ignoreBytes, nullptr, 16, 16)));
    add("a recording", recordingSurface(true));
    add("a recording without bounds", recordingSurface(false));
    return all;
}

struct CallersState {
    cairo_matrix_t matrix;
    cairo_operator_t op;
    cairo_antialias_t antialias;
    cairo_fill_rule_t rule;
    double width;
    double dashOffset;
    double clip[4];
    cairo_pattern_t* source;
};

CallersState stateOf(cairo_t* cairo) {
    CallersState s{};
    cairo_get_matrix(cairo, &s.matrix);
    s.op = cairo_get_operator(cairo);
    s.antialias = cairo_get_antialias(cairo);
    s.rule = cairo_get_fill_rule(cairo);
    s.width = cairo_get_line_width(cairo);
    double dashes[4] = {};
    cairo_get_dash(cairo, dashes, &s.dashOffset);
    s.dashOffset += dashes[0] * 100 + cairo_get_dash_count(cairo) * 1000;
    cairo_clip_extents(cairo, &s.clip[0], &s.clip[1], &s.clip[2], &s.clip[3]);
    s.source = cairo_get_source(cairo);
    return s;
}

} // namespace

TEST(CairoSurfaces, EverythingWorksOnEveryKindOfSurface) {
    Random random(81);
    const auto image = imageOf(random.grid(6, 7));
    for (const auto& [name, surface] : allSurfaces()) {
        const CairoContext cairo(cairo_create(surface.get()));
        {
            const CurrentScope current(cairo.get(), 16);
            EXPECT_NO_THROW(drawAllSorts(*image)) << name;
            EXPECT_TRUE(NSGraphicsContext::currentContext()->hasPainted()) << name;
        }
        EXPECT_EQ(cairo_status(cairo.get()), CAIRO_STATUS_SUCCESS) << name;
        cairo_surface_finish(surface.get());
        EXPECT_EQ(cairo_surface_status(surface.get()), CAIRO_STATUS_SUCCESS) << name;
    }
}

TEST(CairoSurfaces, PlusDarkerIsRefusedWhereThereAreNoPixelsAndDrawingGoesOn) {
    const auto image = imageOf(Grid(6, 7, red));
    for (const auto& [name, surface] : allSurfaces()) {
        const CairoContext cairo(cairo_create(surface.get()));
        const CurrentScope current(cairo.get(), 16);
        const bool hasPixels = name == "pixels with alpha" || name == "pixels without alpha";
        try {
            image->drawInRect(NSMakeRect(2, 3, 6, 7), NSZeroRect, NSCompositePlusDarker, 1);
            EXPECT_TRUE(hasPixels) << name;
        } catch (const NSException& exception) {
            EXPECT_FALSE(hasPixels) << name;
            EXPECT_EQ(exception.name(), NSGraphicsException);
        }
        EXPECT_EQ(cairo_status(cairo.get()), CAIRO_STATUS_SUCCESS) << name;
        EXPECT_NO_THROW(NSRectFill(NSMakeRect(1, 1, 3, 3))) << name;
    }
}

TEST(CairoSurfaces, TheCallersStateIsAsBeforeAfterwards) {
    const auto image = imageOf(Grid(6, 7, red));
    for (const auto& [name, surface] : allSurfaces()) {
        const CairoContext owner(cairo_create(surface.get()));
        cairo_t* const cairo = owner.get();
        cairo_rectangle(cairo, 1, 2, 12, 11);
        cairo_clip(cairo);
        cairo_translate(cairo, 0.5, 0.25);
        cairo_rotate(cairo, 0.3);
        cairo_set_operator(cairo, CAIRO_OPERATOR_XOR);
        cairo_set_antialias(cairo, CAIRO_ANTIALIAS_NONE);
        cairo_set_fill_rule(cairo, CAIRO_FILL_RULE_EVEN_ODD);
        cairo_set_line_width(cairo, 3.25);
        const double dash = 2;
        cairo_set_dash(cairo, &dash, 1, 0.5);
        const CairoPattern source(cairo_pattern_create_rgba(0.1, 0.2, 0.3, 0.4));
        cairo_set_source(cairo, source.get());
        const CallersState before = stateOf(cairo);
        {
            const CurrentScope current(cairo, 16);
            NSGraphicsContext::currentContext()->saveGraphicsState(); // and never restored
            NSGraphicsContext::currentContext()->concat(NSAffineTransform({2, 0, 0, 2, 1, 1}));
            drawAllSorts(*image);
        }
        const CallersState after = stateOf(cairo);
        EXPECT_EQ(std::memcmp(&before.matrix, &after.matrix, sizeof before.matrix), 0) << name;
        EXPECT_EQ(before.op, after.op) << name;
        EXPECT_EQ(before.antialias, after.antialias) << name;
        EXPECT_EQ(before.rule, after.rule) << name;
        EXPECT_EQ(before.width, after.width) << name;
        EXPECT_EQ(before.dashOffset, after.dashOffset) << name;
        for (int i = 0; i < 4; ++i) EXPECT_EQ(before.clip[i], after.clip[i]) << name;
        EXPECT_EQ(before.source, after.source) << name;
        EXPECT_EQ(cairo_get_reference_count(cairo), 1U) << name;
    }
}

TEST(CairoSurfaces, WhatTheCallerDrewWithBeforeDoesNotShow) {
    const auto drawn = [](bool withSettings) {
        const CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 16, 16));
        const CairoContext cairo(cairo_create(surface.get()));
        if (withSettings) {
            const double dash = 1;
            cairo_set_operator(cairo.get(), CAIRO_OPERATOR_CLEAR);
            cairo_set_antialias(cairo.get(), CAIRO_ANTIALIAS_NONE);
            cairo_set_fill_rule(cairo.get(), CAIRO_FILL_RULE_EVEN_ODD);
            cairo_set_dash(cairo.get(), &dash, 1, 0);
            cairo_set_line_cap(cairo.get(), CAIRO_LINE_CAP_ROUND);
            cairo_set_tolerance(cairo.get(), 5);
            cairo_move_to(cairo.get(), 0, 0); // half a path
            cairo_line_to(cairo.get(), 16, 3);
        }
        const CurrentScope current(cairo.get(), 16);
        NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
        NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(2, 3, 11, 9)).fill();
        NSColor::whiteColor().set();
        NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(1.5F, 1, 12, 13)).stroke();
        return gridOf(surface.get());
    };
    EXPECT_TRUE(areAlike(drawn(true), drawn(false)));
    EXPECT_NE(drawn(false).at(7, 7), transparent);
}

TEST(CairoSurfaces, TheCallersTransformAndClipStayInForce) {
    const CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 20, 20));
    const CairoContext cairo(cairo_create(surface.get()));
    cairo_scale(cairo.get(), 2, 2);
    cairo_rectangle(cairo.get(), 0, 0, 3, 10); // the left six pixels
    cairo_clip(cairo.get());
    {
        const CurrentScope current(cairo.get(), 10);
        NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
        NSRectFill(NSMakeRect(1, 2, 8, 3)); // pixels 2 to 18 and 4 to 10 from below
    }
    const Grid shown = gridOf(surface.get());
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 20; ++x) {
            const bool inside = x >= 2 && x < 6 && y >= 4 && y < 10;
            EXPECT_EQ(shown.above(x, y), inside ? red : transparent) << x << ", " << y;
        }
    }
}

TEST(CairoSurfaces, ARecordingIsPlayedBackAsItWasDrawn) {
    Random random(82);
    const Grid picture = random.grid(6, 7);
    const CairoSurface recording = recordingSurface(true);
    {
        const CairoContext cairo(cairo_create(recording.get()));
        const CurrentScope current(cairo.get(), 16);
        imageOf(picture)->drawInRect(NSMakeRect(3, 2, 6, 7), NSZeroRect, NSCompositeSourceOver, 1);
    }
    Canvas canvas(16, 16);
    cairo_set_source_surface(canvas.cairo(), recording.get(), 0, 0);
    cairo_identity_matrix(canvas.cairo());
    cairo_set_source_surface(canvas.cairo(), recording.get(), 0, 0);
    cairo_paint(canvas.cairo());
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 6; ++x) EXPECT_EQ(canvas.pixels().above(3 + x, 2 + y), picture.above(x, y));
    }
}

TEST(CairoSurfaces, VectorPagesKeepPathsAsPaths) {
    std::string svg;
    {
        const CairoSurface surface(cairo_svg_surface_create_for_stream(keepBytes, &svg, 16, 16));
        const CairoContext cairo(cairo_create(surface.get()));
        const CurrentScope current(cairo.get(), 16);
        NSBezierPath line;
        line.moveToPoint({2, 3});
        line.lineToPoint({11, 13});
        line.stroke();
    }
    EXPECT_NE(svg.find("<path"), std::string::npos);
    EXPECT_EQ(svg.find("<image"), std::string::npos);
}

TEST(CairoSurfaces, AContextInErrorIsRefused) {
    const CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 4, 4));
    const CairoContext cairo(cairo_create(surface.get()));
    for (const double height : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        EXPECT_THROW(NSGraphicsContext::graphicsContextWithCairo(cairo.get(), height), NSException);
    }
    EXPECT_EQ(cairo_status(cairo.get()), CAIRO_STATUS_SUCCESS);
    cairo_restore(cairo.get()); // without a save
    EXPECT_THROW(NSGraphicsContext::graphicsContextWithCairo(cairo.get(), 4), NSException);
}

TEST(CairoSurfaces, TheContextKeepsTheCallersAlive) {
    const CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 4, 4));
    cairo_t* const cairo = cairo_create(surface.get());
    const auto context = NSGraphicsContext::graphicsContextWithCairo(cairo, 4);
    cairo_destroy(cairo);
    context->setColor(NSColor::colorWithCalibratedRed(1, 0, 0, 1));
    context->fillRect(NSMakeRect(0, 0, 4, 4), NSCompositeCopy);
    EXPECT_TRUE(areAlike(gridOf(surface.get()), Grid(4, 4, red)));
}

TEST(CairoSurfaces, FilledPathsStayPathsOnAPageAndKeepTheirHoles) {
    std::string svg;
    {
        const CairoSurface surface(cairo_svg_surface_create_for_stream(keepBytes, &svg, 40, 40));
        const CairoContext cairo(cairo_create(surface.get()));
        const CurrentScope current(cairo.get(), 40);
        NSBezierPath frame;
        for (const float inset : {0.0F, 4.0F}) { // both counter-clockwise
            frame.moveToPoint({20, 2 + inset});
            frame.lineToPoint({38 - inset, 20});
            frame.lineToPoint({20, 38 - inset});
            frame.lineToPoint({2 + inset, 20});
            frame.closePath();
        }
        frame.setWindingRule(NSWindingRule::EvenOdd);
        NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
        frame.fill();
    }
    EXPECT_NE(svg.find("fill-rule:evenodd"), std::string::npos) << svg;
    EXPECT_EQ(svg.find("clip"), std::string::npos) << svg;
}
