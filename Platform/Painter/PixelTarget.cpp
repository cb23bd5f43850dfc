#include "Platform/Painter/PixelTarget.h"

#include <algorithm>
#include <cmath>

namespace Imaging::Platform {

namespace {

/// From a surface's device space, in which clips are given, to its pixels.
cairo_matrix_t deviceToPixels(cairo_surface_t* surface) {
    double scaleX = 1;
    double scaleY = 1;
    double offsetX = 0;
    double offsetY = 0;
    cairo_surface_get_device_scale(surface, &scaleX, &scaleY);
    cairo_surface_get_device_offset(surface, &offsetX, &offsetY);
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, scaleX, 0, 0, scaleY, offsetX, offsetY);
    return matrix;
}

/// The pixels that a rectangle touches, within limits that no surface exceeds.
PixelRect pixelsOf(const cairo_matrix_t& toPixels, double x1, double y1, double x2, double y2) {
    cairo_matrix_transform_point(&toPixels, &x1, &y1);
    cairo_matrix_transform_point(&toPixels, &x2, &y2);
    const auto whole = [](double value) { return static_cast<int>(std::clamp(value, -1e9, 1e9)); };
    return {whole(std::floor(x1)), whole(std::floor(y1)), whole(std::ceil(x2)), whole(std::ceil(y2))};
}

PixelRect intersection(PixelRect a, PixelRect b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

bool isWhole(double value) { return value == std::floor(value); }

} // namespace

std::optional<PixelTarget> PixelTarget::ofContext(cairo_t* context) {
    cairo_surface_t* const surface = cairo_get_group_target(context);
    if (cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE) return std::nullopt;
    const cairo_format_t format = cairo_image_surface_get_format(surface);
    if (format != CAIRO_FORMAT_ARGB32 && format != CAIRO_FORMAT_RGB24) return std::nullopt;
    cairo_surface_flush(surface);
    // Of a finished surface Cairo still gives the address of pixels that are gone; this tells it from others.
    cairo_surface_mark_dirty(surface);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) return std::nullopt;
    PixelTarget target;
    target.m_surface = surface;
    target.m_data = cairo_image_surface_get_data(surface);
    target.m_stride = cairo_image_surface_get_stride(surface);
    target.m_width = cairo_image_surface_get_width(surface);
    target.m_height = cairo_image_surface_get_height(surface);
    target.m_opaque = format == CAIRO_FORMAT_RGB24;
    target.m_device = deviceToPixels(surface);
    if (target.m_data == nullptr) return std::nullopt; // a part of another surface
    return target;
}

cairo_matrix_t PixelTarget::toPixels(const cairo_matrix_t& matrix) const {
    cairo_matrix_t result;
    cairo_matrix_multiply(&result, &matrix, &m_device);
    return result;
}

void PixelTarget::markDirty(PixelRect area) const {
    // Cairo counts the rectangle in device space; all of it is simpler to say and costs nothing.
    if (!area.isEmpty()) cairo_surface_mark_dirty(m_surface);
}

ClipCoverage::ClipCoverage(cairo_t* context, const PixelTarget& target) {
    const CairoStateScope state(context);
    cairo_identity_matrix(context);
    if (const std::optional<PixelRect> whole = wholePixels(context, target)) {
        m_area = intersection(*whole, target.area());
        return;
    }
    rasterise(context, target);
    checkStatus(context);
}

/// The clip where it is one rectangle of whole pixels, or none at all.
std::optional<PixelRect> ClipCoverage::wholePixels(cairo_t* context, const PixelTarget& target) const {
    cairo_matrix_t identity;
    cairo_matrix_init_identity(&identity);
    const cairo_matrix_t toPixels = target.toPixels(identity);
    cairo_rectangle_list_t* const list = cairo_copy_clip_rectangle_list(context);
    std::optional<PixelRect> whole;
    if (list->status == CAIRO_STATUS_SUCCESS && list->num_rectangles == 0) whole = PixelRect{};
    if (list->status == CAIRO_STATUS_SUCCESS && list->num_rectangles == 1) {
        const cairo_rectangle_t& r = list->rectangles[0];
        double x1 = r.x;
        double y1 = r.y;
        double x2 = r.x + r.width;
        double y2 = r.y + r.height;
        whole = pixelsOf(toPixels, x1, y1, x2, y2);
        cairo_matrix_transform_point(&toPixels, &x1, &y1);
        cairo_matrix_transform_point(&toPixels, &x2, &y2);
        if (!isWhole(x1) || !isWhole(y1) || !isWhole(x2) || !isWhole(y2)) whole = std::nullopt;
    }
    cairo_rectangle_list_destroy(list);
    return whole;
}

void ClipCoverage::rasterise(cairo_t* context, const PixelTarget& target) {
    cairo_matrix_t identity;
    cairo_matrix_init_identity(&identity);
    const cairo_matrix_t toPixels = target.toPixels(identity);
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;
    cairo_clip_extents(context, &x1, &y1, &x2, &y2);
    m_area = intersection(pixelsOf(toPixels, x1, y1, x2, y2), target.area());
    if (m_area.isEmpty()) return;

    cairo_push_group_with_content(context, CAIRO_CONTENT_ALPHA);
    cairo_set_source_rgba(context, 0, 0, 0, 1);
    cairo_set_operator(context, CAIRO_OPERATOR_OVER);
    cairo_paint(context);
    m_mask.reset(cairo_pop_group(context));
    cairo_surface_t* mask = nullptr;
    if (cairo_pattern_get_surface(m_mask.get(), &mask) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_get_type(mask) != CAIRO_SURFACE_TYPE_IMAGE ||
        cairo_image_surface_get_format(mask) != CAIRO_FORMAT_A8) {
        m_area = {}; // an empty clip makes an empty group, which Cairo gives as a surface of another type
        return;
    }
    cairo_surface_flush(mask);
    // The group covers the clip's extents; its pixels and the target's are a whole number apart.
    cairo_matrix_t maskToTarget = deviceToPixels(mask);
    cairo_matrix_invert(&maskToTarget);
    cairo_matrix_multiply(&maskToTarget, &maskToTarget, &toPixels);
    const auto left = static_cast<int>(std::lround(maskToTarget.x0));
    const auto top = static_cast<int>(std::lround(maskToTarget.y0));
    const PixelRect covered{left, top, left + cairo_image_surface_get_width(mask),
                            top + cairo_image_surface_get_height(mask)};
    m_area = intersection(m_area, covered);
    m_stride = cairo_image_surface_get_stride(mask);
    m_data = cairo_image_surface_get_data(mask) + static_cast<std::ptrdiff_t>(m_area.top - top) * m_stride +
             (m_area.left - left);
}

const std::uint8_t* ClipCoverage::row(int y) const {
    return m_data != nullptr ? m_data + static_cast<std::ptrdiff_t>(y - m_area.top) * m_stride : nullptr;
}

} // namespace Imaging::Platform
