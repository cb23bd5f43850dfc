// A context's pixels are those of its surface, and its clip's coverage is what Cairo paints through it into a
// mask, but where the clip is one rectangle of whole pixels.

#include "Platform/Graphics/Cairo/CairoPixels.h"

#include <algorithm>
#include <cmath>

namespace Imaging::Platform {

namespace {

/// Cairo's entries mean what ours do.
Affine affine(const cairo_matrix_t& m) { return {m.xx, m.yx, m.xy, m.yy, m.x0, m.y0}; }

/// From a surface's device space, in which clips are given, to its pixels.
Affine deviceToPixels(cairo_surface_t* surface) {
    Affine map;
    cairo_surface_get_device_scale(surface, &map.xx, &map.yy);
    cairo_surface_get_device_offset(surface, &map.x0, &map.y0);
    return map;
}

/// A rectangle's corners (x1, y1) and (x2, y2).
struct Corners {
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;

    Corners under(const Affine& m) const {
        return {m.xx * x1 + m.xy * y1 + m.x0, m.yx * x1 + m.yy * y1 + m.y0, m.xx * x2 + m.xy * y2 + m.x0,
                m.yx * x2 + m.yy * y2 + m.y0};
    }
};

/// The pixels that a rectangle of pixels touches, within limits that no surface exceeds.
PixelRect touched(const Corners& r) {
    const auto whole = [](double value) { return static_cast<int>(std::clamp(value, -1e9, 1e9)); };
    return {whole(std::floor(r.x1)), whole(std::floor(r.y1)), whole(std::ceil(r.x2)), whole(std::ceil(r.y2))};
}

bool isWhole(double value) { return value == std::floor(value); }

/// The clip where it is one rectangle of whole pixels, or none at all.
std::optional<PixelRect> wholePixels(cairo_t* context, const Affine& toPixels) {
    cairo_rectangle_list_t* const list = cairo_copy_clip_rectangle_list(context);
    std::optional<PixelRect> whole;
    if (list->status == CAIRO_STATUS_SUCCESS && list->num_rectangles == 0) whole = PixelRect{};
    if (list->status == CAIRO_STATUS_SUCCESS && list->num_rectangles == 1) {
        const cairo_rectangle_t& r = list->rectangles[0];
        const Corners corners = Corners{r.x, r.y, r.x + r.width, r.y + r.height}.under(toPixels);
        if (isWhole(corners.x1) && isWhole(corners.y1) && isWhole(corners.x2) && isWhole(corners.y2)) {
            whole = touched(corners);
        }
    }
    cairo_rectangle_list_destroy(list);
    return whole;
}

} // namespace

std::optional<CairoPixels> CairoPixels::ofContext(cairo_t* context) {
    cairo_surface_t* const surface = cairo_get_group_target(context);
    if (cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE) return std::nullopt;
    const cairo_format_t format = cairo_image_surface_get_format(surface);
    if (format != CAIRO_FORMAT_ARGB32 && format != CAIRO_FORMAT_RGB24) return std::nullopt;
    cairo_surface_flush(surface);
    // Of a finished surface Cairo still gives the address of pixels that are gone; this tells it from others.
    cairo_surface_mark_dirty(surface);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) return std::nullopt;
    CairoPixels pixels;
    pixels.m_surface = surface;
    pixels.m_device = deviceToPixels(surface);
    PixelTarget& target = pixels.m_target;
    target.data = cairo_image_surface_get_data(surface);
    target.stride = cairo_image_surface_get_stride(surface);
    target.width = cairo_image_surface_get_width(surface);
    target.height = cairo_image_surface_get_height(surface);
    target.opaque = format == CAIRO_FORMAT_RGB24;
    if (target.data == nullptr) return std::nullopt; // a part of another surface
    return pixels;
}

Affine CairoPixels::toPixels(const cairo_matrix_t& matrix) const { return affine(matrix).then(m_device); }

void CairoPixels::markDirty(PixelRect area) const {
    // Cairo counts the rectangle in device space; all of it is simpler to say and costs nothing.
    if (!area.isEmpty()) cairo_surface_mark_dirty(m_surface);
}

ClipCoverage::ClipCoverage(cairo_t* context, const CairoPixels& pixels) {
    const CairoStateScope state(context);
    cairo_identity_matrix(context);
    cairo_matrix_t identity;
    cairo_matrix_init_identity(&identity);
    if (const std::optional<PixelRect> whole = wholePixels(context, pixels.toPixels(identity))) {
        m_coverage.area = intersection(*whole, pixels.target().area());
        return;
    }
    rasterise(context, pixels);
    checkStatus(context);
}

void ClipCoverage::rasterise(cairo_t* context, const CairoPixels& pixels) {
    cairo_matrix_t identity;
    cairo_matrix_init_identity(&identity);
    const Affine toPixels = pixels.toPixels(identity);
    Corners clip;
    cairo_clip_extents(context, &clip.x1, &clip.y1, &clip.x2, &clip.y2);
    m_coverage.area = intersection(touched(clip.under(toPixels)), pixels.target().area());
    if (m_coverage.area.isEmpty()) return;

    cairo_push_group_with_content(context, CAIRO_CONTENT_ALPHA);
    cairo_set_source_rgba(context, 0, 0, 0, 1);
    cairo_set_operator(context, CAIRO_OPERATOR_OVER);
    cairo_paint(context);
    m_mask.reset(cairo_pop_group(context));
    cairo_surface_t* mask = nullptr;
    if (cairo_pattern_get_surface(m_mask.get(), &mask) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_get_type(mask) != CAIRO_SURFACE_TYPE_IMAGE ||
        cairo_image_surface_get_format(mask) != CAIRO_FORMAT_A8) {
        m_coverage
            .area = {}; // an empty clip makes an empty group, which Cairo gives as a surface of another type
        return;
    }
    cairo_surface_flush(mask);
    // The group covers the clip's extents; its pixels and the target's are a whole number apart.
    const Affine maskToTarget = deviceToPixels(mask).inverse().value_or(Affine{}).then(toPixels);
    const auto left = static_cast<int>(std::lround(maskToTarget.x0));
    const auto top = static_cast<int>(std::lround(maskToTarget.y0));
    const PixelRect covered{left, top, left + cairo_image_surface_get_width(mask),
                            top + cairo_image_surface_get_height(mask)};
    m_coverage.area = intersection(m_coverage.area, covered);
    m_coverage.stride = cairo_image_surface_get_stride(mask);
    m_coverage.data = cairo_image_surface_get_data(mask) + (m_coverage.area.top - top) * m_coverage.stride +
                      (m_coverage.area.left - left);
}

} // namespace Imaging::Platform
