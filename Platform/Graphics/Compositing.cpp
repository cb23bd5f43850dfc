#include "Platform/Graphics/Compositing.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/CairoSupport.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <algorithm>
#include <cstring>

namespace Platform {

namespace {

cairo_operator_t cairoOperator(int operation) {
    switch (operation) {
    case NSCompositeClear:
        return CAIRO_OPERATOR_CLEAR;
    case NSCompositeCopy:
        return CAIRO_OPERATOR_SOURCE;
    case NSCompositeSourceIn:
        return CAIRO_OPERATOR_IN;
    case NSCompositeSourceOut:
        return CAIRO_OPERATOR_OUT;
    case NSCompositeSourceAtop:
        return CAIRO_OPERATOR_ATOP;
    case NSCompositeDestinationOver:
        return CAIRO_OPERATOR_DEST_OVER;
    case NSCompositeDestinationIn:
        return CAIRO_OPERATOR_DEST_IN;
    case NSCompositeDestinationOut:
        return CAIRO_OPERATOR_DEST_OUT;
    case NSCompositeDestinationAtop:
        return CAIRO_OPERATOR_DEST_ATOP;
    case NSCompositeXOR:
        return CAIRO_OPERATOR_XOR;
    case NSCompositePlusLighter:
        return CAIRO_OPERATOR_ADD;
    default:
        return CAIRO_OPERATOR_OVER;
    }
}

/// What `setSource` paints, scaled by the fraction, as a picture of the clip's extents.
CairoPattern paintedGroup(cairo_t* context, double fraction, const std::function<void(cairo_t*)>& setSource) {
    cairo_push_group(context);
    cairo_reset_clip(context);
    setSource(context);
    cairo_set_operator(context, CAIRO_OPERATOR_SOURCE);
    if (fraction < 1) {
        // A mask under the operation "source" fades between old and new, and the group is still empty.
        cairo_paint_with_alpha(context, fraction);
    } else {
        cairo_paint(context);
    }
    return CairoPattern(cairo_pop_group(context));
}

int dividedBy255(int product) { return (product + 127) / 255; }

/// One sample of S and D, from 0 to 255, combined by one of the operations that are computed here.
int combinedSample(int operation, int s, int d, int sa, int da) {
    switch (operation) {
    case NSCompositeSourceIn:
        return dividedBy255(s * da);
    case NSCompositeSourceOut:
        return dividedBy255(s * (255 - da));
    case NSCompositeDestinationIn:
        return dividedBy255(d * sa);
    case NSCompositeDestinationAtop:
        return dividedBy255(d * sa + s * (255 - da));
    case NSCompositePlusDarker:
        return std::max(0, s + d - sa - da + std::min(255, sa + da));
    default:
        return std::min(255, s + d);
    }
}

std::uint32_t combinedWord(int operation, std::uint32_t s, std::uint32_t d) {
    const auto sample = [](std::uint32_t word, int shift) { return static_cast<int>(word >> shift & 0xff); };
    const int sa = sample(s, 24);
    const int da = sample(d, 24);
    // The formula for plus-darker's colour does not give its alpha.
    const int alphaOperation = operation == NSCompositePlusDarker ? NSCompositePlusLighter : operation;
    auto result = static_cast<std::uint32_t>(combinedSample(alphaOperation, sa, da, sa, da)) << 24;
    for (const int shift : {16, 8, 0}) {
        const int color = combinedSample(operation, sample(s, shift), sample(d, shift), sa, da);
        result |= static_cast<std::uint32_t>(color) << shift;
    }
    return result;
}

/// The pixels of a surface of 32-bit words, addressed by device pixel.
class DevicePixels {
public:
    explicit DevicePixels(cairo_surface_t* surface)
        : m_stride(cairo_image_surface_get_stride(surface)),
          m_opaque(cairo_image_surface_get_format(surface) == CAIRO_FORMAT_RGB24 ? 0xff000000 : 0) {
        double x = 0;
        double y = 0;
        cairo_surface_flush(surface);
        cairo_surface_get_device_offset(surface, &x, &y);
        m_left = static_cast<std::ptrdiff_t>(-x);
        m_top = static_cast<std::ptrdiff_t>(-y);
        m_right = m_left + cairo_image_surface_get_width(surface);
        m_bottom = m_top + cairo_image_surface_get_height(surface);
        m_data = cairo_image_surface_get_data(surface);
    }

    std::ptrdiff_t left() const { return m_left; }
    std::ptrdiff_t top() const { return m_top; }
    std::ptrdiff_t right() const { return m_right; }
    std::ptrdiff_t bottom() const { return m_bottom; }

    std::uint32_t word(std::ptrdiff_t x, std::ptrdiff_t y) const {
        std::uint32_t value;
        std::memcpy(&value, address(x, y), sizeof value);
        return value | m_opaque;
    }

    void setWord(std::ptrdiff_t x, std::ptrdiff_t y, std::uint32_t value) {
        std::memcpy(address(x, y), &value, sizeof value);
    }

private:
    unsigned char* address(std::ptrdiff_t x, std::ptrdiff_t y) const {
        return m_data + (y - m_top) * m_stride + (x - m_left) * 4;
    }

    std::ptrdiff_t m_stride;
    std::uint32_t m_opaque; // the bits of alpha where the surface does not store it
    std::ptrdiff_t m_left;
    std::ptrdiff_t m_top;
    std::ptrdiff_t m_right;
    std::ptrdiff_t m_bottom;
    unsigned char* m_data;
};

/// Replaces each word of `picture` by its combination with the target's at the same place.
void combineWith(cairo_surface_t* target, cairo_surface_t* picture, int operation) {
    DevicePixels to(picture);
    const DevicePixels from(target);
    for (std::ptrdiff_t y = std::max(to.top(), from.top()); y < std::min(to.bottom(), from.bottom()); ++y) {
        for (std::ptrdiff_t x = std::max(to.left(), from.left()); x < std::min(to.right(), from.right());
             ++x) {
            to.setWord(x, y, combinedWord(operation, to.word(x, y), from.word(x, y)));
        }
    }
    cairo_surface_mark_dirty(picture);
}

bool isPixelTarget(cairo_surface_t* surface) {
    if (cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE) return false;
    const cairo_format_t format = cairo_image_surface_get_format(surface);
    return format == CAIRO_FORMAT_ARGB32 || format == CAIRO_FORMAT_RGB24;
}

bool clipsWholePixels(cairo_t* context) {
    const CairoStateScope state(context);
    cairo_identity_matrix(context);
    cairo_rectangle_list_t* const rectangles = cairo_copy_clip_rectangle_list(context);
    const bool whole = rectangles->status == CAIRO_STATUS_SUCCESS;
    cairo_rectangle_list_destroy(rectangles);
    return whole;
}

/// Whether an operation is computed here, because Cairo does not have it or, where a pixel is covered in
/// part, clears that pixel instead (source-in and its like) or saturates too early (plus-lighter).
bool needsCombining(cairo_t* context, int operation) {
    switch (operation) {
    case NSCompositePlusDarker:
        return true;
    case NSCompositeSourceIn:
    case NSCompositeSourceOut:
    case NSCompositeDestinationIn:
    case NSCompositeDestinationAtop:
    case NSCompositePlusLighter:
        return isPixelTarget(cairo_get_group_target(context)) && !clipsWholePixels(context);
    default:
        return false;
    }
}

void paintGroup(cairo_t* context, cairo_pattern_t* group) {
    cairo_set_source(context, group);
    cairo_set_operator(context, CAIRO_OPERATOR_SOURCE);
    cairo_paint(context);
}

void compositeCombined(cairo_t* context, int operation, double fraction,
                       const std::function<void(cairo_t*)>& setSource) {
    cairo_surface_t* const target = cairo_get_group_target(context);
    if (!isPixelTarget(target)) {
        throw NSException(
            NSGraphicsException,
            "the operation plus-darker needs a target made of pixels; draw into a picture instead");
    }
    const CairoPattern group = paintedGroup(context, fraction, setSource);
    cairo_surface_t* picture = nullptr;
    if (cairo_pattern_get_surface(group.get(), &picture) != CAIRO_STATUS_SUCCESS) return;
    // An empty clip makes an empty group, which Cairo gives as a surface of another type.
    if (!isPixelTarget(picture)) return;
    combineWith(target, picture, operation);
    paintGroup(context, group.get());
}

} // namespace

void compositeClipArea(cairo_t* context, int operation, double fraction,
                       const std::function<void(cairo_t*)>& setSource) {
    fraction = fraction > 0 ? std::min(fraction, 1.0) : 0.0; // not-a-number counts as 0
    {
        const CairoStateScope state(context);
        if (needsCombining(context, operation)) {
            compositeCombined(context, operation, fraction, setSource);
        } else if (operation == NSCompositeCopy && fraction < 1) {
            // Painting with alpha under "source" would fade in what is there instead of scaling the picture.
            paintGroup(context, paintedGroup(context, fraction, setSource).get());
        } else {
            setSource(context);
            cairo_set_operator(context, cairoOperator(operation));
            if (fraction < 1 && operation != NSCompositeClear) {
                cairo_paint_with_alpha(context, fraction);
            } else {
                cairo_paint(context);
            }
        }
    }
    checkStatus(context);
}

} // namespace Platform
