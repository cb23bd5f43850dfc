// Extents of nodes and the records of a draw. A list of records is a chain of shared links from the innermost
// one outward, so a longer list shares all of the shorter one.

#include "Imaging/Bounds.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <utility>

namespace Imaging {

bool isEqualToAffineTransform(const NSAffineTransform& a, const NSAffineTransform& b) {
    // Six floats without padding, compared by their bits.
    using Bits = std::array<std::uint32_t, 6>;
    return std::bit_cast<Bits>(a.transformStruct()) == std::bit_cast<Bits>(b.transformStruct());
}

IMGBounds IMGBounds::boundsWithRect(NSRect rect, const std::optional<NSAffineTransform>& transform) {
    IMGBounds bounds;
    bounds.m_rectangle = rect;
    bounds.m_transform = transform;
    return bounds;
}

void IMGBounds::concatTransform(const NSAffineTransform& transform) {
    if (m_transform.has_value()) m_transform->prependTransform(transform);
}

NSPoint IMGBounds::corner(float x, float y) const {
    return m_transform.has_value() ? m_transform->transformPoint({x, y}) : Platform::NSZeroPoint;
}

NSPoint IMGBounds::bottomLeft() const { return corner(NSMinX(m_rectangle), NSMinY(m_rectangle)); }

NSPoint IMGBounds::bottomRight() const { return corner(NSMaxX(m_rectangle), NSMinY(m_rectangle)); }

NSPoint IMGBounds::topLeft() const { return corner(NSMinX(m_rectangle), NSMaxY(m_rectangle)); }

NSPoint IMGBounds::topRight() const { return corner(NSMaxX(m_rectangle), NSMaxY(m_rectangle)); }

NSRect IMGBounds::boundingRect() const {
    float minX = std::numeric_limits<float>::max();
    float minY = minX;
    // Not the lowest float: see the header.
    float maxX = std::numeric_limits<float>::min();
    float maxY = maxX;
    for (const NSPoint p : {bottomLeft(), bottomRight(), topLeft(), topRight()}) {
        maxX = std::max(maxX, p.x);
        minX = std::min(minX, p.x);
        minY = std::min(minY, p.y);
        maxY = std::max(maxY, p.y);
    }
    return Platform::NSMakeRect(minX, minY, maxX - minX, maxY - minY);
}

NSBezierPath IMGBounds::bezierPath() const {
    NSBezierPath path = NSBezierPath::bezierPathWithRect(m_rectangle);
    if (m_transform.has_value()) path.transformUsingAffineTransform(*m_transform);
    return path;
}

TransformAndClipRect
TransformAndClipRect::transformAndClipRectWithTransform(const NSAffineTransform& transform) {
    return TransformAndClipRect(transform);
}

TransformAndClipRect
TransformAndClipRect::transformAndClipRectWithTransform(const NSAffineTransform& transform, NSRect clipRect) {
    return {transform, clipRect};
}

TransformAndClipList::Link::Link(std::shared_ptr<Link> outerLink, const TransformAndClipRect& innermost)
    : outer(std::move(outerLink)), record(innermost), count(outer == nullptr ? 1 : outer->count + 1) {}

TransformAndClipList::Link::~Link() {
    // Links that nobody else holds are released one after another rather than inside each other, so that a
    // long list does not need a deep stack.
    std::shared_ptr<Link> next = std::move(outer);
    while (next != nullptr && next.use_count() == 1) {
        next = std::move(next->outer);
    }
}

TransformAndClipList::TransformAndClipList(const TransformAndClipRect& record)
    : m_innermost(std::make_shared<Link>(nullptr, record)) {}

TransformAndClipList TransformAndClipList::appending(const TransformAndClipRect& record) const {
    TransformAndClipList longer;
    longer.m_innermost = std::make_shared<Link>(m_innermost, record);
    return longer;
}

std::size_t TransformAndClipList::size() const { return m_innermost == nullptr ? 0 : m_innermost->count; }

std::vector<const TransformAndClipRect*> TransformAndClipList::records() const {
    std::vector<const TransformAndClipRect*> records(size());
    const Link* link = m_innermost.get();
    for (std::size_t i = records.size(); i > 0; --i, link = link->outer.get()) records[i - 1] = &link->record;
    return records;
}

} // namespace Imaging
