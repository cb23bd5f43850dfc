#pragma once

// Internal: where a texture is drawn, and what clips leave of it. Not installed.

#include "Imaging/Bounds.h"
#include "Imaging/PolygonClipping.h"

namespace Imaging::Platform {
class OpenGLCommands;
}

namespace Imaging {

/// What a draw of a picture comes to: the picture's size and the records under which it lies in a target's
/// bounds. Worked out before any command is issued.
class TexturePlacement {
public:
    /// `imageClip` is the target's image clip rectangle, the zero rectangle for none.
    TexturePlacement(NSSize imageSize, TransformAndClipList records, NSRect bounds, NSRect imageClip);

    /// Whether anything can be drawn: false without width or height, and under records without an inverse.
    bool isDrawable() const { return m_is_drawable; }

    /// What the bounds, the image clip and the records' clips leave, in the normalised square of the
    /// picture, its first row at -1.
    const gpc_polygon& clip() const { return m_clip; }

    /// Multiplies the current matrix so that the normalised square lies where the picture does, for a square
    /// of the same kind that stands for the bounds. Only their width and height count. `isInverted` is for
    /// pictures whose first row is the lowest one.
    ///
    /// A record's linear part is entered transposed and its y offset negated, which suits the y axis that
    /// points down from here on; for shears, which that does not suit, the picture parts from its clips.
    void multiplyMatrix(Platform::OpenGLCommands& gl, bool isInverted) const;

private:
    void clipToRecords(NSRect imageClip);

    NSSize m_image_size;
    TransformAndClipList m_records;
    NSRect m_bounds;
    NSAffineTransform m_transform; ///< of all records together
    gpc_owned_polygon m_clip;
    bool m_is_drawable = false;
};

} // namespace Imaging
