// Hands Cairo a level of the picture that is small enough for its own averaging, and has it composed with the
// clip area.

#include "Platform/Graphics/Pictures/CairoPictures.h"

#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Cairo/CairoPaths.h"
#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Graphics/Cairo/Compositing.h"

#include <algorithm>
#include <cmath>

namespace Imaging::Platform {

namespace {

/// What is handed to Cairo, and how its pixels map to the context's user space under identity.
struct Handed {
    CairoSurface surface;
    cairo_matrix_t matrix;
};

/// Pages are printed and enlarged, so they get more pixels than one a point.
double pixelsAPoint(cairo_t* context) {
    switch (cairo_surface_get_type(cairo_get_group_target(context))) {
    case CAIRO_SURFACE_TYPE_PDF:
    case CAIRO_SURFACE_TYPE_PS:
    case CAIRO_SURFACE_TYPE_SVG:
    case CAIRO_SURFACE_TYPE_RECORDING:
        return 8; // 576 to the inch
    default:
        return 1;
    }
}

/// Cairo averages no more than 16 pixels along an axis; a level leaves it fewer than that, and enough to
/// average.
int levelFor(cairo_t* context, const PlacedPicture& placed) {
    constexpr double leftToCairo = 4;
    cairo_matrix_t inverse = placed.matrix;
    if (cairo_matrix_invert(&inverse) != CAIRO_STATUS_SUCCESS) return 0;
    const double step = std::min(std::hypot(inverse.xx, inverse.yx), std::hypot(inverse.xy, inverse.yy)) /
                        pixelsAPoint(context);
    if (!(step > leftToCairo)) return 0;
    return static_cast<int>(
        std::min<double>(std::ceil(std::log2(step / leftToCairo)), placed.picture.levelCount() - 1));
}

Handed handed(cairo_t* context, const PlacedPicture& placed) {
    const int k = levelFor(context, placed);
    Handed result{surfaceOver(placed.picture.level(k)), placed.matrix};
    cairo_matrix_scale(&result.matrix, std::ldexp(1.0, k), std::ldexp(1.0, k));
    return result;
}

void setSource(cairo_t* context, const Handed& picture) {
    cairo_set_source_surface(context, picture.surface.get(), 0, 0);
    // The clip ends the picture; beyond its last pixels there is nothing to blend with.
    cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_GOOD);
}

/// The clip area as a picture of its own that is transparent where the picture does not reach.
CairoPattern pictureOnNothing(cairo_t* context, const PlacedPicture& placed, const Handed& picture) {
    cairo_push_group(context);
    cairo_reset_clip(context);
    cairo_set_matrix(context, &placed.matrix);
    cairo_new_path(context);
    appendPath(context,
               NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, static_cast<float>(placed.picture.width()),
                                                           static_cast<float>(placed.picture.height())))
                   .elements());
    cairo_clip(context);
    cairo_set_matrix(context, &picture.matrix);
    setSource(context, picture);
    cairo_paint(context);
    return CairoPattern(cairo_pop_group(context));
}

/// Whether any of the picture lies in the clip area, of which a pixel more is looked at on each side. Where
/// coordinates are so large that they say little, the clip may hold what the picture does not reach, and
/// Cairo fails for samples far outside.
bool isInClip(cairo_t* context, const Handed& picture) {
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;
    {
        const CairoStateScope state(context);
        cairo_identity_matrix(context);
        cairo_clip_extents(context, &x1, &y1, &x2, &y2);
    }
    cairo_matrix_t inverse = picture.matrix;
    if (x1 >= x2 || y1 >= y2 || cairo_matrix_invert(&inverse) != CAIRO_STATUS_SUCCESS) return false;
    double middleX = (x1 + x2) / 2;
    double middleY = (y1 + y2) / 2;
    cairo_matrix_transform_point(&inverse, &middleX, &middleY);
    const double halfWidth = (x2 - x1) / 2 + 1;
    const double halfHeight = (y2 - y1) / 2 + 1;
    const double reachX = std::abs(inverse.xx) * halfWidth + std::abs(inverse.xy) * halfHeight;
    const double reachY = std::abs(inverse.yx) * halfWidth + std::abs(inverse.yy) * halfHeight;
    const int width = cairo_image_surface_get_width(picture.surface.get());
    const int height = cairo_image_surface_get_height(picture.surface.get());
    return middleX + reachX >= 0 && middleX - reachX <= width && middleY + reachY >= 0 &&
           middleY - reachY <= height;
}

} // namespace

void drawByCairo(cairo_t* context, const PlacedPicture& placed, NSCompositingOperation operation,
                 double fraction) {
    const Handed picture = handed(context, placed);
    if (!isUsable(picture.matrix)) return;
    const bool shows = isInClip(context, picture);
    if (!placed.coversClip) {
        const CairoPattern whole = shows ? pictureOnNothing(context, placed, picture)
                                         : CairoPattern(cairo_pattern_create_rgba(0, 0, 0, 0));
        compositeClipArea(context, operation, fraction,
                          [&whole](cairo_t* target) { cairo_set_source(target, whole.get()); });
    } else if (shows) {
        const CairoStateScope state(context);
        cairo_set_matrix(context, &picture.matrix);
        compositeClipArea(context, operation, fraction,
                          [&picture](cairo_t* target) { setSource(target, picture); });
    }
}

} // namespace Imaging::Platform
