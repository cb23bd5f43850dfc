#pragma once

#include "Imaging/Image.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Color.h"
#include "Tools/Values.h"

#include <functional>
#include <memory>
#include <string>

namespace Tool {

/// Whether a picture is drawn the way up that it declares or as it is stored.
enum class Upright { AsDeclared, AsStored };

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

    /// Where the drawing goes on a place of whole pixels: kept in shape, in whole pixels and in the middle,
    /// or for Stretch the place itself. With Cover it reaches beyond the place.
    Platform::NSRect placed(Platform::NSRect place, Fit fit) const;

    /// Draws all of it into the rectangle of the calling thread's current context.
    void drawInRect(Platform::NSRect rect) const;

private:
    std::shared_ptr<Imaging::IMGImage> m_node;
    PixelSize m_stored_size;
    PixelSize m_size;
    int m_orientation = 1;
};

/// Draws on a new transparent canvas, one point a pixel, and gives the part of it that is `shown` in whole
/// pixels. Throws a Failure for `name`, with `advice` at its end, when the size is beyond the limits.
std::shared_ptr<Platform::NSBitmapImageRep>
drawnOnCanvas(PixelSize size, const std::string& name, const std::string& advice,
              const std::function<Platform::NSRect()>& drawAndSelect);

/// Covers a rectangle with a colour, source-over.
void paint(Platform::NSRect rect, const Platform::NSColor& color);

} // namespace Tool
