#pragma once

#include "Imaging/Image.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Color.h"
#include "Show/Orientation.h"
#include "Tools/Command/Values.h"

#include <functional>
#include <memory>
#include <string>

namespace Imaging::Platform {
class NSGraphicsContext;
}

namespace Imaging::Tool {

/// A node that is ready to be drawn, the way up that its picture declares unless it is asked for as stored.
/// Only a node that is a picture itself declares one; pictures further down in a graph are drawn as they are
/// stored.
class Drawing {
public:
    /// Throws a Failure for `name` when a picture of the graph is missing, or when there is nothing to draw.
    Drawing(std::shared_ptr<Imaging::IMGImage> node, const std::string& name, Upright upright);

    /// In pixels, the right way up; a fraction counts as a whole pixel.
    PixelSize size() const { return m_size; }

    /// The asked size with a missing side filled in from the shape, rounded, at least 1; the own size when
    /// both are missing.
    PixelSize completed(PixelSize asked) const;

    /// Where the drawing goes on a place of whole pixels; see `placedIn`.
    Platform::NSRect placed(Platform::NSRect place, Fit fit) const;

    /// Draws all of it into the rectangle of the calling thread's current context.
    void drawInRect(Platform::NSRect rect) const;

private:
    std::shared_ptr<Imaging::IMGImage> m_node;
    PixelSize m_size;
};

/// Whole pixels for a length, at least 1: a fraction counts as a whole one, unless it is so small that it
/// must come from rounding.
std::int64_t wholePixels(float length);

/// The rectangle around a node as `drawInRect` fits it. Throws a Failure for `name` when the node has none,
/// or one without area.
Platform::NSRect drawableBounds(const Imaging::IMGImage& node, const std::string& name);

/// a · b / c, rounded, at least 1. The factors are below 2^32.
std::int64_t inProportion(std::int64_t a, std::int64_t b, std::int64_t c);

/// A size with a missing side filled in from a shape, rounded, at least 1; the shape itself when both are
/// missing.
PixelSize completedSize(PixelSize asked, PixelSize shape);

/// Where a picture of a size goes on a place of whole pixels: kept in shape, in whole pixels and in the
/// middle, or for Stretch the place itself. With Cover it reaches beyond the place.
Platform::NSRect placedIn(Platform::NSRect place, PixelSize picture, Fit fit);

/// Draws on a new transparent canvas, one point a pixel, and gives the part of it that is `shown` in whole
/// pixels. Throws a Failure for `name`, with `advice` at its end, when the size is beyond the limits.
std::shared_ptr<Platform::NSBitmapImageRep>
drawnOnCanvas(PixelSize size, const std::string& name, const std::string& advice,
              const std::function<Platform::NSRect()>& drawAndSelect);

/// Makes a context the thread's current one until the end of the scope.
class CurrentContextScope {
public:
    explicit CurrentContextScope(std::shared_ptr<Platform::NSGraphicsContext> context);
    ~CurrentContextScope();
    CurrentContextScope(const CurrentContextScope&) = delete;
    CurrentContextScope& operator=(const CurrentContextScope&) = delete;

private:
    std::shared_ptr<Platform::NSGraphicsContext> m_before;
};

/// Covers a rectangle with a colour, source-over.
void paint(Platform::NSRect rect, const Platform::NSColor& color);

} // namespace Imaging::Tool
