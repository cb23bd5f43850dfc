// What was drawn in a context as a bitmap: the part of NSBitmapImageRep that needs the current context, of
// which the others know nothing.

#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Pictures/BitmapPixels.h"

#include <algorithm>
#include <cmath>

namespace Imaging::Platform {

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::bitmapWithFocusedViewRect(NSRect rect) {
    const auto context = NSGraphicsContext::currentContext();
    if (context == nullptr || !context->canDraw() || NSIsEmptyRect(rect)) return nullptr;
    cairo_surface_t* const surface = cairo_get_group_target(context->cairo());
    if (cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE ||
        cairo_image_surface_get_format(surface) != CAIRO_FORMAT_ARGB32) {
        return nullptr;
    }
    double x1 = NSMinX(rect);
    double y1 = NSMinY(rect);
    double x2 = NSMaxX(rect);
    double y2 = NSMaxY(rect);
    cairo_user_to_device(context->cairo(), &x1, &y1);
    cairo_user_to_device(context->cairo(), &x2, &y2);
    if (!std::isfinite(x1) || !std::isfinite(y1) || !std::isfinite(x2) || !std::isfinite(y2)) return nullptr;
    double offsetX = 0;
    double offsetY = 0;
    cairo_surface_get_device_offset(surface, &offsetX, &offsetY);
    const auto clamped = [](double value, int limit) {
        return std::clamp(std::round(value), 0.0, 1.0 * limit);
    };
    const double left = clamped(std::min(x1, x2) + offsetX, cairo_image_surface_get_width(surface));
    const double right = clamped(std::max(x1, x2) + offsetX, cairo_image_surface_get_width(surface));
    const double top = clamped(std::min(y1, y2) + offsetY, cairo_image_surface_get_height(surface));
    const double bottom = clamped(std::max(y1, y2) + offsetY, cairo_image_surface_get_height(surface));
    NSBitmapDescription description;
    description.pixelsWide = static_cast<std::int64_t>(right - left);
    description.pixelsHigh = static_cast<std::int64_t>(bottom - top);
    const std::shared_ptr<NSBitmapImageRep> bitmap = bitmapWithUninitialisedPixels(description);
    if (bitmap == nullptr) return nullptr;
    writeSurface(surface, static_cast<std::size_t>(left), static_cast<std::size_t>(top),
                 targetPixels(*bitmap), pixelLayout(*bitmap));
    return bitmap;
}

} // namespace Imaging::Platform
