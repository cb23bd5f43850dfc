#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/BezierPath.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace Imaging {

using Platform::NSAffineTransform;
using Platform::NSBezierPath;
using Platform::NSPoint;
using Platform::NSRect;
using Platform::NSSize;

/// True when the six entries of both transforms are equal byte for byte: no tolerance, and +0 differs from
/// -0.
IMAGING_EXPORT bool isEqualToAffineTransform(const NSAffineTransform& a, const NSAffineTransform& b);

/// The extent of a node: a rectangle in the node's untransformed space and the transform that places it, so
/// that a rotated or flipped extent keeps its exact shape. A value.
///
/// The transform may be missing. The corners are then the zero point and `bezierPath` is the plain rectangle.
///
/// Example:
/// @code
/// NSAffineTransform quarterTurn;
/// quarterTurn.rotateByDegrees(90);
/// const auto bounds = IMGBounds::boundsWithRect(NSMakeRect(10, 20, 100, 50), quarterTurn);
/// const NSRect around = bounds.boundingRect();
/// @endcode
class IMAGING_EXPORT IMGBounds {
public:
    static IMGBounds boundsWithRect(NSRect rect, const std::optional<NSAffineTransform>& transform);

    NSRect rectangle() const { return m_rectangle; }
    void setRectangle(NSRect rectangle) { m_rectangle = rectangle; }

    const std::optional<NSAffineTransform>& transform() const { return m_transform; }
    void setTransform(const std::optional<NSAffineTransform>& transform) { m_transform = transform; }

    /// Afterwards a point is mapped by `transform` first and then by what the bounds' transform was before.
    /// Without a transform nothing happens.
    void concatTransform(const NSAffineTransform& transform);

    /// The transformed corners; the names are those of the untransformed rectangle, y upward.
    NSPoint bottomLeft() const;
    NSPoint bottomRight() const;
    NSPoint topLeft() const;
    NSPoint topRight() const;

    /// The axis-aligned rectangle around the transformed corners. Its right and top edges never lie below
    /// 1.1754944e-38, the smallest normal 32-bit float, so an extent at negative coordinates alone reaches
    /// up to there; documents depend on it.
    NSRect boundingRect() const;

    /// The transformed rectangle itself, as a path.
    NSBezierPath bezierPath() const;

private:
    IMGBounds() = default;
    NSPoint corner(float x, float y) const;

    NSRect m_rectangle;
    std::optional<NSAffineTransform> m_transform;
};

/// One level of a draw: the transform that the level adds and, optionally, a rectangle that the level's
/// drawing is limited to, in the space on which the transform acts (that of the source drawn at this level).
/// A value.
class IMAGING_EXPORT TransformAndClipRect {
public:
    /// A level without a clip, and one with it. Without one the rectangle is the zero rectangle.
    explicit TransformAndClipRect(const NSAffineTransform& transform) : m_transform(transform) {}
    TransformAndClipRect(const NSAffineTransform& transform, NSRect clipRect)
        : m_transform(transform), m_has_clip_rect(true), m_clip_rect(clipRect) {}

    /// The same under their customary names.
    static TransformAndClipRect transformAndClipRectWithTransform(const NSAffineTransform& transform);
    static TransformAndClipRect transformAndClipRectWithTransform(const NSAffineTransform& transform,
                                                                  NSRect clipRect);

    const NSAffineTransform& transform() const { return m_transform; }
    void setTransform(const NSAffineTransform& transform) { m_transform = transform; }

    NSRect clipRect() const { return m_clip_rect; }

    /// Changes the rectangle only; `setHasClipRect` turns the clip on.
    void setClipRect(NSRect clipRect) { m_clip_rect = clipRect; }

    bool hasClipRect() const { return m_has_clip_rect; }
    void setHasClipRect(bool flag) { m_has_clip_rect = flag; }

private:
    NSAffineTransform m_transform;
    bool m_has_clip_rect = false;
    NSRect m_clip_rect;
};

/// The records of a draw from the root down, outermost first. The deepest record's transform acts first on
/// the points of what is drawn. Immutable: `appending` gives a longer list that shares what both have in
/// common, so that going down a level costs the same however deep the graph is. Safe to share.
class IMAGING_EXPORT TransformAndClipList {
public:
    TransformAndClipList() = default;
    explicit TransformAndClipList(const TransformAndClipRect& record);

    TransformAndClipList appending(const TransformAndClipRect& record) const;

    std::size_t size() const;

    /// The records in order, outermost first; each lives as long as this list or one made from it.
    std::vector<const TransformAndClipRect*> records() const;

private:
    struct Link {
        std::shared_ptr<Link> outer;
        TransformAndClipRect record;
        std::size_t count;

        Link(std::shared_ptr<Link> outerLink, const TransformAndClipRect& innermost);
        ~Link();
        Link(const Link&) = delete;
        Link& operator=(const Link&) = delete;
    };

    std::shared_ptr<Link> m_innermost;
};

} // namespace Imaging
