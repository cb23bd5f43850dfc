// Our operations by Cairo's, for targets that have no pixels. Where Cairo would fade instead of scale, the
// picture is painted into a group first.

#include "Platform/Graphics/Cairo/Compositing.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Pixels/CompositingOperation.h"

#include <algorithm>

namespace Imaging::Platform {

namespace {

cairo_operator_t cairoOperator(NSCompositingOperation operation) {
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

void paintGroup(cairo_t* context, cairo_pattern_t* group) {
    cairo_set_source(context, group);
    cairo_set_operator(context, CAIRO_OPERATOR_SOURCE);
    cairo_paint(context);
}

} // namespace

void compositeClipArea(cairo_t* context, NSCompositingOperation operation, double fraction,
                       const std::function<void(cairo_t*)>& setSource) {
    if (operation == NSCompositePlusDarker) {
        throw NSException(
            NSGraphicsException,
            "the operation plus-darker needs a target made of pixels; draw into a picture instead");
    }
    fraction = fraction > 0 ? std::min(fraction, 1.0) : 0.0; // not-a-number counts as 0
    {
        const CairoStateScope state(context);
        if (operation == NSCompositeCopy && fraction < 1) {
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

} // namespace Imaging::Platform
