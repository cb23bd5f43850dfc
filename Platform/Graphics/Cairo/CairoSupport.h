#pragma once

// Internal: how this library's geometry and Cairo's meet. Not installed.

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Graphics/Cairo/CairoHandles.h"
#include "Platform/Graphics/Color.h"
#include "Platform/Pixels/Rows/PixelImage.h"

#include <cairo.h>
#include <memory>

namespace Imaging::Platform {

cairo_matrix_t cairoMatrix(const NSAffineTransform& transform);

/// Whether Cairo can draw under the matrix, so that it does not stay in error for good after it: all its
/// entries and all of its inverse's are finite.
bool isUsable(const cairo_matrix_t& matrix);

/// Makes a colour the context's source. Components that are not numbers count as 0.
void setSource(cairo_t* context, const NSColor& color);

/// Pixels as a surface to draw on or from, which keeps them alive. Throws an NSException
/// (NSImageCacheException) when a side is longer than the 32750 pixels that Cairo can draw.
CairoSurface surfaceOver(std::shared_ptr<const PixelImage> pixels);

/// A new surface of premultiplied 32-bit pixels, all transparent black. Throws like PixelImage::transparent
/// and surfaceOver.
CairoSurface makePixelSurface(std::int64_t width, std::int64_t height);

/// Throws an NSException (NSGraphicsException) when an earlier call on the context failed.
void checkStatus(cairo_t* context);

} // namespace Imaging::Platform
