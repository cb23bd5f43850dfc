#pragma once

// Internal: bitmaps seen as rows of a pixel layout. Not installed.

#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Pixels/Rows/PixelLayout.h"

namespace Imaging::Platform {

class NSBitmapImageRep;

PixelLayout pixelLayout(const NSBitmapImageRep& bitmap);
SourcePixels sourcePixels(const NSBitmapImageRep& bitmap);
TargetPixels targetPixels(NSBitmapImageRep& bitmap);

// Pictures of more than about a million pixels are brought over on all cores.

/// The bitmap as Cairo draws it: premultiplied 32-bit words. Throws like PixelImage::transparent and
/// surfaceOver.
CairoSurface pixelSurfaceOf(const SourcePixels& pixels, const PixelLayout& layout);

/// The part of a surface of such words that begins at (left, top), as rows of another layout.
void writeSurface(cairo_surface_t* surface, std::size_t left, std::size_t top, const TargetPixels& pixels,
                  const PixelLayout& layout);

/// The source drawn onto nothing in another layout, the lower left corners of the two in the same place: what
/// reaches over the target is cut, and target pixels that the source does not reach are 0 in every sample.
/// Writes each byte of all target pixels, at the roundings of carryRow. The target's layout may not be
/// straight; the target may be planar. The two must not overlap.
void carryPixels(const SourcePixels& source, const PixelLayout& sourceLayout, const TargetPixels& target,
                 const PixelLayout& targetLayout);

} // namespace Imaging::Platform
