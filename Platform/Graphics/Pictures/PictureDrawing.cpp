// Works out where a picture comes to lie and has it drawn: by the painter onto pixels, by Cairo elsewhere.

#include "Platform/Graphics/Pictures/PictureDrawing.h"

#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Cairo/CairoPaths.h"
#include "Platform/Graphics/Cairo/CairoPixels.h"
#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/PictureMemory.h"
#include "Platform/Graphics/Pictures/CairoPictures.h"
#include "Platform/Painter/ColorSampler.h"
#include "Platform/Painter/Painter.h"
#include "Platform/Painter/PictureSampler.h"

#include <cmath>
#include <new>

namespace Imaging::Platform {

namespace {

bool isDrawable(NSRect r) {
    return !NSIsEmptyRect(r) && std::isfinite(r.origin.x) && std::isfinite(r.origin.y) &&
           std::isfinite(NSMaxX(r)) && std::isfinite(NSMaxY(r));
}

/// Maps the picture's space to the context's: source onto destination, each axis by itself.
cairo_matrix_t placement(NSRect source, NSRect destination) {
    const double scaleX = static_cast<double>(destination.size.width) / source.size.width;
    const double scaleY = static_cast<double>(destination.size.height) / source.size.height;
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, scaleX, 0, 0, scaleY, destination.origin.x - source.origin.x * scaleX,
                      destination.origin.y - source.origin.y * scaleY);
    return matrix;
}

/// Maps pixels, rows downward, to the space that the picture's bounds lie in.
cairo_matrix_t pixelPlacement(const DrawablePicture& picture) {
    const NSRect bounds = picture.bounds();
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, static_cast<double>(bounds.size.width) / picture.width(), 0, 0,
                      -static_cast<double>(bounds.size.height) / picture.height(), bounds.origin.x,
                      NSMaxY(bounds));
    return matrix;
}

/// Whether the picture's bounds hold the rectangle, give or take what would not show in 8 bits.
bool reachesOver(const DrawablePicture& picture, NSRect source) {
    const NSRect bounds = picture.bounds();
    const float slackX = bounds.size.width / (256.0F * static_cast<float>(picture.width()));
    const float slackY = bounds.size.height / (256.0F * static_cast<float>(picture.height()));
    return NSContainsRect(NSInsetRect(bounds, -slackX, -slackY), source);
}

/// Whether the context draws onto the picture's own pixels, which then would be read while being written.
bool drawsOnto(cairo_t* cairo, const DrawablePicture& picture) {
    const auto pixels = CairoPixels::ofContext(cairo);
    return pixels.has_value() && picture.holds(pixels->target().row(0));
}

void clipToPicture(cairo_t* cairo, const PlacedPicture& placed) {
    cairo_reset_clip(cairo);
    cairo_set_matrix(cairo, &placed.matrix);
    cairo_new_path(cairo);
    appendPath(cairo,
               NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, static_cast<float>(placed.picture.width()),
                                                           static_cast<float>(placed.picture.height())))
                   .elements());
    cairo_clip(cairo);
}

void drawClipped(cairo_t* cairo, const PlacedPicture& placed, NSCompositingOperation operation,
                 double fraction) {
    if (CairoPixels::ofContext(cairo).has_value()) {
        drawByPainter(cairo, placed, operation, fraction);
    } else {
        drawByCairo(cairo, placed, operation, fraction);
    }
}

} // namespace

void drawByPainter(cairo_t* context, const PlacedPicture& placed, NSCompositingOperation operation,
                   double fraction) {
    const CairoPixels pixels = CairoPixels::ofContext(context).value();
    const ClipCoverage clip(context, pixels);
    if (clip.area().isEmpty()) return;
    const PixelTarget& target = pixels.target();
    const auto sampler = makePictureSampler(placed.picture, pixels.toPixels(placed.matrix), clip.area());
    if (sampler != nullptr && placed.coversClip) {
        paint(target, clip.coverage(), *sampler, operation, fraction);
    } else if (sampler != nullptr) {
        const CairoStateScope state(context);
        clipToPicture(context, placed);
        const ClipCoverage within(context, pixels);
        paint(target, clip.coverage(), *sampler, operation, fraction, &within.coverage());
    } else if (!placed.coversClip) {
        paint(target, clip.coverage(), *makeColorSampler(0), operation, fraction);
    }
    pixels.markDirty(clip.area());
}

void drawPicture(NSGraphicsContext& context, DrawablePicture& picture, NSRect destination, NSRect source,
                 NSCompositingOperation operation, double fraction) {
    if (!context.canDraw() || !isDrawable(destination) || !isDrawable(source)) return;
    cairo_t* const cairo = context.cairo();
    if (drawsOnto(cairo, picture)) {
        drawPicture(context, *picture.copy(), destination, source, operation, fraction);
        return;
    }
    const CairoStateScope state(cairo);
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo, &matrix);
    const cairo_matrix_t place = placement(source, destination);
    const cairo_matrix_t pixels = pixelPlacement(picture);
    cairo_matrix_multiply(&matrix, &place, &matrix);
    cairo_matrix_multiply(&matrix, &pixels, &matrix);
    if (!isUsable(matrix)) return; // shrunk to nothing

    cairo_new_path(cairo);
    appendPath(cairo, NSBezierPath::bezierPathWithRect(destination).elements());
    cairo_clip(cairo);
    const PlacedPicture placed{picture, matrix, reachesOver(picture, source)};
    try {
        drawClipped(cairo, placed, operation, fraction);
    } catch (const std::bad_alloc&) {
        releasePictureMemory();
        drawClipped(cairo, placed, operation, fraction);
    }
    checkStatus(cairo);
    context.notePainted();
}

} // namespace Imaging::Platform
