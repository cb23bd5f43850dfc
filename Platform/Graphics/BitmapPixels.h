#pragma once

// Internal: bitmaps seen as rows of a pixel layout. Not installed.

#include "Platform/Graphics/CairoSupport.h"
#include "Platform/Graphics/PixelLayout.h"

namespace Platform {

class NSBitmapImageRep;

PixelLayout pixelLayout(const NSBitmapImageRep& bitmap);
SourcePixels sourcePixels(const NSBitmapImageRep& bitmap);
TargetPixels targetPixels(NSBitmapImageRep& bitmap);

/// The bitmap as Cairo draws it: premultiplied 32-bit words. Throws like makePixelSurface.
CairoSurface pixelSurfaceOf(const SourcePixels& pixels, const PixelLayout& layout);

/// The part of a surface of such words that begins at (left, top), as rows of another layout.
void writeSurface(cairo_surface_t* surface, std::size_t left, std::size_t top, const TargetPixels& pixels,
                  const PixelLayout& layout);

} // namespace Platform
