// Transforms, colours and pixels as Cairo takes them, and its errors as exceptions.

#include "Platform/Graphics/Cairo/CairoSupport.h"

#include "Platform/Foundation/Exception.h"

#include <cmath>
#include <new>
#include <string>
#include <utility>

namespace Imaging::Platform {

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

// Cairo clamps components to its range, but not what is not a number.
void setSource(cairo_t* context, const NSColor& color) {
    const auto number = [](float component) { return std::isnan(component) ? 0.0 : double{component}; };
    cairo_set_source_rgba(context, number(color.redComponent()), number(color.greenComponent()),
                          number(color.blueComponent()), number(color.alphaComponent()));
}

CairoSurface surfaceOver(std::shared_ptr<const PixelImage> pixels) {
    static const cairo_user_data_key_t ownerKey{};
    if (pixels->width() > maximumCairoSide || pixels->height() > maximumCairoSide) {
        throw NSException(NSImageCacheException, "a picture of " + std::to_string(pixels->width()) + " x " +
                                                     std::to_string(pixels->height()) +
                                                     " pixels cannot be drawn this way; at most " +
                                                     std::to_string(maximumCairoSide) +
                                                     " pixels fit along a side");
    }
    // Cairo takes what it only reads as writable too.
    auto* const words = const_cast<std::uint32_t*>(pixels->row(0));
    CairoSurface surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(words),
                                                             CAIRO_FORMAT_ARGB32, pixels->width(),
                                                             pixels->height(), pixels->width() * 4));
    auto* const owner = new std::shared_ptr<const PixelImage>(std::move(pixels));
    const auto release = [](void* data) { delete static_cast<std::shared_ptr<const PixelImage>*>(data); };
    if (cairo_surface_set_user_data(surface.get(), &ownerKey, owner, release) != CAIRO_STATUS_SUCCESS) {
        delete owner;
        throw std::bad_alloc();
    }
    return surface;
}

CairoSurface makePixelSurface(std::int64_t width, std::int64_t height) {
    return surfaceOver(PixelImage::transparent(width, height));
}

void checkStatus(cairo_t* context) {
    const cairo_status_t status = cairo_status(context);
    if (status == CAIRO_STATUS_SUCCESS) return;
    throw NSException(NSGraphicsException, std::string("drawing failed: ") + cairo_status_to_string(status));
}

} // namespace Imaging::Platform
