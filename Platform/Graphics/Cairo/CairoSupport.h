#pragma once

// Internal: how this library's geometry and Cairo's meet. Not installed.

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Color.h"
#include "Platform/Pixels/Rows/PixelImage.h"

#include <cairo.h>
#include <memory>

namespace Imaging::Platform {

struct CairoDeleter {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using CairoContext = std::unique_ptr<cairo_t, CairoDeleter>;
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoDeleter>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, CairoDeleter>;

/// Saves a context's state and restores it at the end of the scope.
class CairoStateScope {
public:
    explicit CairoStateScope(cairo_t* context) : m_context(context) { cairo_save(context); }
    ~CairoStateScope() { cairo_restore(m_context); }
    CairoStateScope(const CairoStateScope&) = delete;
    CairoStateScope& operator=(const CairoStateScope&) = delete;

private:
    cairo_t* m_context;
};

cairo_matrix_t cairoMatrix(const NSAffineTransform& transform);

/// Whether Cairo can draw under the matrix, so that it does not stay in error for good after it: all its
/// entries and all of its inverse's are finite.
bool isUsable(const cairo_matrix_t& matrix);

/// Adds what a path encloses to the context's current path, in the context's user space, for fills and
/// clips. Coordinates may be of any size: what lies too far away for Cairo, and to be seen, is cut off.
/// Nothing is added of a path with coordinates that are not finite.
void appendPath(cairo_t* context, const NSBezierPath& path);

/// The same for a path's lines, to be stroked.
void appendStrokePath(cairo_t* context, const NSBezierPath& path);

/// The path that clips to a rectangle; empty, so that nothing is left, for one without area.
NSBezierPath clipPath(NSRect rect);

void setFillRule(cairo_t* context, NSWindingRule rule);

/// Makes a colour the context's source. Components that are not numbers count as 0.
void setSource(cairo_t* context, const NSColor& color);

/// A context without pixels, for measuring paths.
CairoContext measuringContext();

/// Pixels as a surface to draw on or from, which keeps them alive. Throws an NSException
/// (NSImageCacheException) when a side is longer than the 32750 pixels that Cairo can draw.
CairoSurface surfaceOver(std::shared_ptr<const PixelImage> pixels);

/// A new surface of premultiplied 32-bit pixels, all transparent black. Throws like PixelImage::transparent
/// and surfaceOver.
CairoSurface makePixelSurface(std::int64_t width, std::int64_t height);

/// Throws an NSException (NSGraphicsException) when an earlier call on the context failed.
void checkStatus(cairo_t* context);

} // namespace Imaging::Platform
