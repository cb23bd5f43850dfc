#include "Platform/Graphics/CairoSupport.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/Exception.h"

#include <cmath>
#include <new>
#include <string>

namespace Platform {

namespace {

/// A surface may be 32767 pixels wide and high. But where a filter's reach beyond the edges brings a picture
/// or a place to draw past that, Cairo paints nothing without a word; it reaches 12 pixels at the most.
constexpr std::int64_t maximumCairoSide = 32750;

} // namespace

cairo_matrix_t cairoMatrix(const NSAffineTransform& transform) {
    const NSAffineTransformStruct m = transform.transformStruct();
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, m.m11, m.m12, m.m21, m.m22, m.tX, m.tY);
    return matrix;
}

bool isUsable(const cairo_matrix_t& matrix) {
    const auto isFinite = [](const cairo_matrix_t& m) {
        return std::isfinite(m.xx) && std::isfinite(m.yx) && std::isfinite(m.xy) && std::isfinite(m.yy) &&
               std::isfinite(m.x0) && std::isfinite(m.y0);
    };
    // Cairo itself refuses a matrix by its determinant, but inverts some whose determinant underflows.
    const double determinant = matrix.xx * matrix.yy - matrix.yx * matrix.xy;
    if (!isFinite(matrix) || !std::isfinite(determinant) || determinant == 0) return false;
    cairo_matrix_t inverse = matrix;
    return cairo_matrix_invert(&inverse) == CAIRO_STATUS_SUCCESS && isFinite(inverse);
}

NSBezierPath clipPath(NSRect rect) {
    return NSIsEmptyRect(rect) ? NSBezierPath() : NSBezierPath::bezierPathWithRect(rect);
}

void setFillRule(cairo_t* context, NSWindingRule rule) {
    cairo_set_fill_rule(context,
                        rule == NSWindingRule::EvenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
}

CairoContext measuringContext() {
    const CairoSurface surface(cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr));
    return CairoContext(cairo_create(surface.get()));
}

CairoSurface makePixelSurface(std::int64_t width, std::int64_t height) {
    const std::string measures = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width <= 0 || height <= 0) {
        throw NSException(NSImageCacheException, "a picture of " + measures + " cannot be drawn");
    }
    if (width > maximumCairoSide || height > maximumCairoSide) {
        throw NSException(NSImageCacheException, "a picture of " + measures + " cannot be drawn; at most " +
                                                     std::to_string(maximumCairoSide) +
                                                     " pixels fit along a side");
    }
    const PictureLimits limits = pictureLimits();
    const auto pixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    if (pixels > limits.maximumPixels || pixels > limits.maximumBytes / 4) {
        throw NSException(NSImageCacheException,
                          "a picture of " + measures + " is beyond the picture limits");
    }
    CairoSurface surface(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width), static_cast<int>(height)));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
    return surface;
}

void checkStatus(cairo_t* context) {
    const cairo_status_t status = cairo_status(context);
    if (status == CAIRO_STATUS_SUCCESS) return;
    throw NSException(NSGraphicsException, std::string("drawing failed: ") + cairo_status_to_string(status));
}

} // namespace Platform
