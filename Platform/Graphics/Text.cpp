// Pango sets the lines, always unhinted, and Cairo draws their glyphs, or their outlines where glyphs would
// be too large or too far out.

#include "Platform/Graphics/Text.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Cairo/CairoPaths.h"
#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <algorithm>
#include <cmath>
#include <fontconfig/fontconfig.h>
#include <memory>
#include <pango/pangocairo.h>
#include <utility>

namespace Imaging::Platform {

namespace {

struct PangoDeleter {
    void operator()(PangoLayout* layout) const { g_object_unref(layout); }
    void operator()(PangoContext* context) const { g_object_unref(context); }
    void operator()(PangoFontDescription* description) const { pango_font_description_free(description); }
    void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
    void operator()(cairo_path_t* path) const { cairo_path_destroy(path); }
    void operator()(char* text) const { g_free(text); }
};
template<class T>
using Owned = std::unique_ptr<T, PangoDeleter>;

/// Lines set in the type library's own coordinates: y downward from the first line's top, in which the font
/// may have another size than the one asked for.
struct SetText {
    Owned<PangoLayout> layout;
    double size = 1;  ///< of the font, in the layout's units
    double scale = 1; ///< one of the layout's units in the caller's

    double height() const {
        int pangoHeight = 0;
        pango_layout_get_size(layout.get(), nullptr, &pangoHeight);
        return scale * pangoHeight / PANGO_SCALE;
    }
};

/// In pixels; the font library has a limit too, some times as large.
constexpr double largestGlyphs = 4096;

bool hasExtent(const std::string& text, const NSFont& font) {
    return !text.empty() && font.pointSize() > 0 && std::isfinite(font.pointSize());
}

/// Bytes that are no UTF-8 as U+FFFD, NUL bytes too.
Owned<char> validUTF8(const std::string& text) {
    return Owned<char>(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
}

/// The calling thread's fonts.
PangoFontMap* fontMap() {
    // Belongs to the type library, which has one for each thread.
    PangoFontMap* const map = pango_cairo_font_map_get_default();
    thread_local bool hasFonts = false;
    if (hasFonts) return map;
    for (const FcSetName name : {FcSetSystem, FcSetApplication}) {
        const FcFontSet* const fonts = FcConfigGetFonts(nullptr, name);
        hasFonts = hasFonts || (fonts != nullptr && fonts->nfont > 0);
    }
    // The type library would draw boxes over one another then, or end the process.
    if (!hasFonts) {
        throw NSException(NSGraphicsException,
                          "there is no font to draw text with; install one, such as the DejaVu fonts");
    }
    return map;
}

/// Fonts as they are designed: nothing rounded to pixels, so that text keeps its proportions in every size
/// and direction, and no colour fringes, which suit one kind of screen only.
Owned<cairo_font_options_t> plainFontOptions() {
    Owned<cairo_font_options_t> options(cairo_font_options_create());
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    return options;
}

Owned<PangoFontDescription> descriptionOf(const NSFont& font, double size) {
    Owned<PangoFontDescription> description(pango_font_description_new());
    pango_font_description_set_family(description.get(), validUTF8(font.family()).get());
    pango_font_description_set_weight(
        description.get(), font.weight() == NSFontWeight::Bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    // Absolute: one unit is one unit of the space drawn in, whatever a screen's resolution is said to be.
    pango_font_description_set_absolute_size(description.get(), size * PANGO_SCALE);
    return description;
}

/// The type library counts in 1024ths as int, which leaves two million units for a line: the longer the text,
/// the smaller the size that it is set in.
double sizeToSetIn(const std::string& text, float wanted) {
    const double largest = std::max(1.0, std::min(1000.0, 1e6 / static_cast<double>(text.size())));
    return std::clamp(double{wanted}, 1.0, largest);
}

SetText setText(const std::string& text, const NSFont& font) {
    constexpr std::size_t longest = 1 << 20;
    if (text.size() > longest) {
        throw NSException(NSInvalidArgumentException, "a text of more than a mebibyte cannot be drawn");
    }
    const Owned<PangoContext> context(pango_font_map_create_context(fontMap()));
    pango_cairo_context_set_font_options(context.get(), plainFontOptions().get());
    pango_context_set_round_glyph_positions(context.get(), FALSE);
    const double size = sizeToSetIn(text, font.pointSize());
    SetText set{Owned<PangoLayout>(pango_layout_new(context.get())), size, font.pointSize() / size};
    pango_layout_set_font_description(set.layout.get(), descriptionOf(font, size).get());
    pango_layout_set_text(set.layout.get(), validUTF8(text).get(), -1);
    return set;
}

/// Whether Cairo can place the text's glyphs by itself: neither too large for glyph pictures nor too far out
/// for its coordinates.
bool isWithinReach(cairo_t* cairo, const SetText& set) {
    constexpr double furthest = 1 << 20;
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo, &matrix);
    const double unit = std::max(std::hypot(matrix.xx, matrix.yx), std::hypot(matrix.xy, matrix.yy));
    if (!(unit * set.size <= largestGlyphs)) return false;
    PangoRectangle ink;
    pango_layout_get_pixel_extents(set.layout.get(), &ink, nullptr);
    for (const int x : {ink.x, ink.x + ink.width}) {
        for (const int y : {ink.y, ink.y + ink.height}) {
            double deviceX = x;
            double deviceY = y;
            cairo_user_to_device(cairo, &deviceX, &deviceY);
            if (!(std::abs(deviceX) <= furthest && std::abs(deviceY) <= furthest)) return false;
        }
    }
    return true;
}

NSPoint pointOf(const cairo_path_data_t& data) {
    return NSMakePoint(static_cast<float>(data.point.x), static_cast<float>(data.point.y));
}

/// Cairo keeps paths in 256ths of its device's units, of which there may be some millions: the finer the
/// better.
double unitsForOutlines(const SetText& set) {
    PangoRectangle ink;
    pango_layout_get_pixel_extents(set.layout.get(), &ink, nullptr);
    const int reach = std::max({1, std::abs(ink.x), std::abs(ink.y), ink.x + ink.width, ink.y + ink.height});
    return std::max(1.0, std::min(1e6 / reach, largestGlyphs / set.size));
}

NSBezierPath outlineOf(const SetText& set) {
    const CairoContext measuring = measuringContext();
    const double units = unitsForOutlines(set);
    cairo_scale(measuring.get(), units, units);
    pango_cairo_layout_path(measuring.get(), set.layout.get());
    const Owned<cairo_path_t> outline(cairo_copy_path(measuring.get()));
    checkStatus(measuring.get());
    NSBezierPath path;
    for (int i = 0; i < outline->num_data; i += outline->data[i].header.length) {
        const cairo_path_data_t* const data = &outline->data[i];
        switch (data->header.type) {
        case CAIRO_PATH_MOVE_TO:
            path.moveToPoint(pointOf(data[1]));
            break;
        case CAIRO_PATH_LINE_TO:
            path.lineToPoint(pointOf(data[1]));
            break;
        case CAIRO_PATH_CURVE_TO:
            path.curveToPoint(pointOf(data[3]), pointOf(data[1]), pointOf(data[2]));
            break;
        case CAIRO_PATH_CLOSE_PATH:
            path.closePath();
            break;
        }
    }
    return path;
}

void showGlyphs(NSGraphicsContext& context, const SetText& set, const NSColor& color) {
    cairo_t* const cairo = context.cairo();
    const CairoStateScope state(cairo);
    setSource(cairo, color);
    cairo_new_path(cairo);
    cairo_move_to(cairo, 0, 0);
    pango_cairo_update_layout(cairo, set.layout.get());
    pango_cairo_show_layout(cairo, set.layout.get());
    context.notePainted();
    checkStatus(cairo);
}

} // namespace

NSFont::NSFont(std::string family, float size, NSFontWeight weight)
    : m_family(std::move(family)), m_point_size(size), m_weight(weight) {}

NSFont NSFont::fontWithFamily(std::string family, float size, NSFontWeight weight) {
    return {std::move(family), size, weight};
}

NSFont NSFont::systemFontOfSize(float size) {
    return {appearance().systemFontFamily, size, NSFontWeight::Regular};
}

NSFont NSFont::boldSystemFontOfSize(float size) {
    return {appearance().systemFontFamily, size, NSFontWeight::Bold};
}

NSSize sizeOfText(const std::string& text, const NSFont& font) {
    if (!hasExtent(text, font)) return NSZeroSize;
    const SetText set = setText(text, font);
    int width = 0;
    pango_layout_get_size(set.layout.get(), &width, nullptr);
    return NSMakeSize(static_cast<float>(set.scale * width / PANGO_SCALE), static_cast<float>(set.height()));
}

void drawTextAtPoint(const std::string& text, const NSFont& font, const NSColor& color, NSPoint point) {
    const auto context = NSGraphicsContext::currentContext();
    if (context == nullptr || !context->canDraw() || !hasExtent(text, font)) return;
    if (!std::isfinite(point.x) || !std::isfinite(point.y)) return;
    const SetText set = setText(text, font);
    const NSGraphicsStateScope state;
    const auto scale = static_cast<float>(set.scale);
    const auto top = static_cast<float>(point.y + set.height());
    context->concat(NSAffineTransform({scale, 0, 0, -scale, point.x, top}));
    if (!context->canDraw()) return; // shrunk to nothing
    if (isWithinReach(context->cairo(), set)) {
        showGlyphs(*context, set, color);
    } else {
        context->setColor(color);
        context->fillPath(outlineOf(set));
    }
}

} // namespace Imaging::Platform
