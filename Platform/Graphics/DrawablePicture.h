#pragma once

// Internal: the ready-to-draw form of a picture, and the drawing of it. Not installed.

#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/CairoSupport.h"

#include <memory>

namespace Platform {

class NSGraphicsContext;

/// Premultiplied 32-bit pixels that cover `bounds` of a picture's own space. The pixels' rows run downward,
/// the space's y axis upward, so the first row lies at the top of the bounds.
class DrawablePicture {
public:
    DrawablePicture(CairoSurface surface, NSRect bounds) : m_surface(std::move(surface)), m_bounds(bounds) {}

    cairo_surface_t* surface() const { return m_surface.get(); }
    NSRect bounds() const { return m_bounds; }

    /// A copy of pixels of its own.
    std::shared_ptr<DrawablePicture> copy() const;

private:
    CairoSurface m_surface;
    NSRect m_bounds;
};

/// A representation that exists only as drawn pixels.
class NSCachedImageRep : public NSImageRep {
public:
    explicit NSCachedImageRep(std::shared_ptr<DrawablePicture> picture);
    ~NSCachedImageRep() override;

    const std::shared_ptr<DrawablePicture>& picture() const { return m_picture; }

private:
    std::shared_ptr<DrawablePicture> m_picture;
};

/// Draws `source` of the picture's space into `destination` of the context's, touching nothing outside.
/// Empty or not finite rectangles draw nothing. Throws an NSException when Cairo fails.
void drawPicture(NSGraphicsContext& context, const DrawablePicture& picture, NSRect destination,
                 NSRect source, int operation, double fraction);

} // namespace Platform
