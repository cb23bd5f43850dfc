#include "Platform/Graphics/DrawablePicture.h"

#include "Platform/Graphics/Compositing.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace Platform {

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
    const double scaleX =
        static_cast<double>(bounds.size.width) / cairo_image_surface_get_width(picture.surface());
    const double scaleY =
        static_cast<double>(bounds.size.height) / cairo_image_surface_get_height(picture.surface());
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, scaleX, 0, 0, -scaleY, bounds.origin.x, NSMaxY(bounds));
    return matrix;
}

/// The sums of the samples in blocks of 2^shift columns, added to those of earlier rows.
void addRow(const unsigned char* pixels, int width, int shift, std::vector<std::uint64_t>& sums) {
    std::uint64_t* sum = sums.data();
    for (int left = 0; left < width; left += 1 << shift, sum += 4) {
        std::array<std::uint32_t, 4> block{}; // up to 2^15 columns of up to 255
        for (int x = std::min(width - left, 1 << shift); x > 0; --x, pixels += 4) {
            for (std::size_t i = 0; i < 4; ++i) block[i] += pixels[i];
        }
        for (std::size_t i = 0; i < 4; ++i) sum[i] += block[i];
    }
}

/// The means of the same blocks, of which the last may be narrower, rounded to nearest.
void writeMeans(const std::vector<std::uint64_t>& sums, int width, int shift, int rows,
                unsigned char* pixels) {
    for (std::size_t i = 0; i < sums.size(); ++i) {
        const int left = static_cast<int>(i / 4) << shift;
        const int columns = std::min(width - left, 1 << shift);
        const std::uint64_t count = static_cast<std::uint64_t>(columns) * static_cast<std::uint64_t>(rows);
        pixels[i] = static_cast<unsigned char>((sums[i] + count / 2) / count);
    }
}

unsigned char* rowOf(cairo_surface_t* surface, int y) {
    return cairo_image_surface_get_data(surface) +
           static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(surface);
}

/// A picture of the means of blocks of 2^shiftX by 2^shiftY pixels.
CairoSurface reducedSurface(cairo_surface_t* source, int shiftX, int shiftY) {
    const int width = cairo_image_surface_get_width(source);
    const int height = cairo_image_surface_get_height(source);
    const int blocksWide = ((width - 1) >> shiftX) + 1;
    CairoSurface target = makePixelSurface(blocksWide, ((height - 1) >> shiftY) + 1);
    cairo_surface_flush(source);
    std::vector<std::uint64_t> sums(static_cast<std::size_t>(blocksWide) * 4);
    for (int top = 0; top < height; top += 1 << shiftY) {
        const int rows = std::min(height - top, 1 << shiftY);
        std::fill(sums.begin(), sums.end(), 0);
        for (int y = top; y < top + rows; ++y) addRow(rowOf(source, y), width, shiftX, sums);
        writeMeans(sums, width, shiftX, rows, rowOf(target.get(), top >> shiftY));
    }
    cairo_surface_mark_dirty(target.get());
    return target;
}

/// What is sampled for a draw, and how its pixels map to the device's.
struct SampledPicture {
    CairoSurface surface;
    cairo_matrix_t matrix;
};

/// The picture itself or, since Cairo averages 16 pixels along an axis at most, one that was reduced so far
/// that fewer fall onto one pixel of the device. Null when all of it is thinner than could be seen, or
/// drawn out so far in one direction against the other that coordinates lose their meaning.
SampledPicture sampledPicture(cairo_surface_t* surface, const cairo_matrix_t& matrix) {
    constexpr double averagedByCairo = 16;
    constexpr double fewEnough = 8;
    constexpr double invisible = 4096;
    constexpr double drawnOut = 1e12;
    cairo_matrix_t inverse = matrix;
    if (cairo_matrix_invert(&inverse) != CAIRO_STATUS_SUCCESS) return {nullptr, matrix};
    const double stepX = std::hypot(inverse.xx, inverse.xy);
    const double stepY = std::hypot(inverse.yx, inverse.yy);
    const double slant =
        (stepX * stepX + stepY * stepY) / std::abs(inverse.xx * inverse.yy - inverse.xy * inverse.yx);
    if (!(slant <= drawnOut)) return {nullptr, matrix};
    const auto shiftFor = [](double step) {
        if (!(step > averagedByCairo)) return 0;
        return static_cast<int>(std::min(std::ceil(std::log2(step / fewEnough)), 15.0));
    };
    const int shiftX = shiftFor(stepX);
    const int shiftY = shiftFor(stepY);
    if (std::ldexp(stepX, -shiftX) > invisible || std::ldexp(stepY, -shiftY) > invisible) {
        return {nullptr, matrix};
    }
    if (shiftX == 0 && shiftY == 0) return {CairoSurface(cairo_surface_reference(surface)), matrix};
    cairo_matrix_t reduced = matrix;
    cairo_matrix_scale(&reduced, 1 << shiftX, 1 << shiftY);
    return {reducedSurface(surface, shiftX, shiftY), reduced};
}

/// Whether any of the picture lies in the clip area, of which a pixel more is looked at on each side. Where
/// coordinates are so large that they say little, the clip may hold what the picture does not reach, and
/// Cairo fails for samples far outside.
bool isInClip(cairo_t* context, const SampledPicture& sampled) {
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;
    {
        const CairoStateScope state(context);
        cairo_identity_matrix(context);
        cairo_clip_extents(context, &x1, &y1, &x2, &y2);
    }
    cairo_matrix_t inverse = sampled.matrix;
    if (x1 >= x2 || y1 >= y2 || cairo_matrix_invert(&inverse) != CAIRO_STATUS_SUCCESS) return false;
    double middleX = (x1 + x2) / 2;
    double middleY = (y1 + y2) / 2;
    cairo_matrix_transform_point(&inverse, &middleX, &middleY);
    const double halfWidth = (x2 - x1) / 2 + 1;
    const double halfHeight = (y2 - y1) / 2 + 1;
    const double reachX = std::abs(inverse.xx) * halfWidth + std::abs(inverse.xy) * halfHeight;
    const double reachY = std::abs(inverse.yx) * halfWidth + std::abs(inverse.yy) * halfHeight;
    const int width = cairo_image_surface_get_width(sampled.surface.get());
    const int height = cairo_image_surface_get_height(sampled.surface.get());
    return middleX + reachX >= 0 && middleX - reachX <= width && middleY + reachY >= 0 &&
           middleY - reachY <= height;
}

void setSourceSurface(cairo_t* context, cairo_surface_t* surface) {
    cairo_set_source_surface(context, surface, 0, 0);
    // The clip ends the picture; beyond its last pixels there is nothing to blend with.
    cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_GOOD);
}

/// The clip area as a picture of its own that is transparent where the picture does not reach.
CairoPattern pictureOnNothing(cairo_t* context, const DrawablePicture& picture, const SampledPicture& sampled,
                              const cairo_matrix_t& pixels) {
    cairo_push_group(context);
    cairo_reset_clip(context);
    if (sampled.surface != nullptr) {
        cairo_set_matrix(context, &pixels);
        cairo_new_path(context);
        const auto width = static_cast<float>(cairo_image_surface_get_width(picture.surface()));
        const auto height = static_cast<float>(cairo_image_surface_get_height(picture.surface()));
        appendPath(context, NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, width, height)));
        cairo_clip(context);
        cairo_set_matrix(context, &sampled.matrix);
        if (isInClip(context, sampled)) {
            setSourceSurface(context, sampled.surface.get());
            cairo_paint(context);
        }
    }
    return CairoPattern(cairo_pop_group(context));
}

/// Whether the picture's bounds hold the rectangle, give or take what would not show in 8 bits.
bool reachesOver(const DrawablePicture& picture, NSRect source) {
    const NSRect bounds = picture.bounds();
    const float slackX = bounds.size.width / (256.0F * cairo_image_surface_get_width(picture.surface()));
    const float slackY = bounds.size.height / (256.0F * cairo_image_surface_get_height(picture.surface()));
    return NSContainsRect(NSInsetRect(bounds, -slackX, -slackY), source);
}

} // namespace

std::shared_ptr<DrawablePicture> DrawablePicture::copy() const {
    CairoSurface pixels =
        makePixelSurface(cairo_image_surface_get_width(surface()), cairo_image_surface_get_height(surface()));
    const CairoContext context(cairo_create(pixels.get()));
    cairo_set_operator(context.get(), CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(context.get(), surface(), 0, 0);
    cairo_paint(context.get());
    checkStatus(context.get());
    return std::make_shared<DrawablePicture>(std::move(pixels), m_bounds);
}

NSCachedImageRep::NSCachedImageRep(std::shared_ptr<DrawablePicture> picture)
    : NSImageRep(cairo_image_surface_get_width(picture->surface()),
                 cairo_image_surface_get_height(picture->surface())),
      m_picture(std::move(picture)) {
    setSize(m_picture->bounds().size);
}

NSCachedImageRep::~NSCachedImageRep() = default;

void drawPicture(NSGraphicsContext& context, const DrawablePicture& picture, NSRect destination,
                 NSRect source, int operation, double fraction) {
    if (!context.canDraw() || !isDrawable(destination) || !isDrawable(source)) return;
    cairo_t* const cairo = context.cairo();
    if (cairo_get_group_target(cairo) == picture.surface()) {
        // Drawing a picture into itself would read pixels while it writes them.
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
    const SampledPicture sampled = sampledPicture(picture.surface(), matrix);
    if (!isUsable(sampled.matrix)) return;

    cairo_new_path(cairo);
    appendPath(cairo, NSBezierPath::bezierPathWithRect(destination));
    cairo_clip(cairo);
    if (!reachesOver(picture, source)) {
        const CairoPattern whole = pictureOnNothing(cairo, picture, sampled, matrix);
        compositeClipArea(cairo, operation, fraction,
                          [&whole](cairo_t* target) { cairo_set_source(target, whole.get()); });
    } else if (sampled.surface != nullptr && isInClip(cairo, sampled)) {
        cairo_set_matrix(cairo, &sampled.matrix);
        compositeClipArea(cairo, operation, fraction,
                          [&sampled](cairo_t* target) { setSourceSurface(target, sampled.surface.get()); });
    }
    context.notePainted();
}

} // namespace Platform
