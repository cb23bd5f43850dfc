#include "Imaging/Generators.h"

#include "Imaging/Drawing/RecordClips.h"
#include "Imaging/GraphicsContext.h"
#include "Imaging/PolygonClipping.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <bit>
#include <cstdint>
#include <utility>

namespace Imaging {

using Platform::NSGraphicsContext;
using Platform::NSGraphicsStateScope;

namespace {

NSRect wholeRect(NSSize size) { return {Platform::NSZeroPoint, size}; }

/// The rectangle that stands for no clip: minus a quarter, and one half, of the largest float.
NSRect unlimitedRect() {
    const auto low = std::bit_cast<float>(std::uint32_t{0xFE7FFFFF});
    const auto extent = std::bit_cast<float>(std::uint32_t{0x7EFFFFFF});
    return Platform::NSMakeRect(low, low, extent, extent);
}

/// What the records of a draw come to: their transform, and what their clips leave in the target's
/// coordinates.
class Placement {
public:
    explicit Placement(const TransformAndClipList& list) {
        AddRectToPolygon(&m_clip, unlimitedRect());
        for (const TransformAndClipRect* record : list.records()) {
            m_transform.prependTransform(record->transform());
            if (!record->hasClipRect()) continue;
            ClipPolygonToTransformedRect(&m_clip, record->clipRect(), m_transform);
            m_is_clipped = true;
        }
    }

    /// What the clips leave of a rectangle of the picture's own space.
    const gpc_polygon& clippedRect(NSRect rect) {
        ClipPolygonToTransformedRect(&m_clip, rect, m_transform);
        return m_clip;
    }

    /// Brings a polygon of the picture's own space to where it is painted.
    void place(gpc_owned_polygon& polygon) const { TransformPolygon(&polygon, m_transform); }

    /// Cuts a placed polygon by the clips.
    void clip(gpc_owned_polygon& polygon) const {
        if (!m_is_clipped) return;
        gpc_owned_polygon clipped;
        gpc_polygon_clip(Platform::GPC_INT, &polygon, &m_clip, &clipped);
        gpc_free_polygon(&polygon);
        clipped.moveTo(&polygon);
    }

private:
    NSAffineTransform m_transform;
    gpc_owned_polygon m_clip;
    bool m_is_clipped = false;
};

NSBezierPath pathOf(const gpc_vertex_list& contour) {
    NSBezierPath path;
    const int last = contour.num_vertices - 1;
    for (int i = 0; i <= last; ++i) {
        const gpc_vertex& vertex = contour.vertex[i];
        const gpc_vertex& first = contour.vertex[0];
        const NSPoint point = {static_cast<float>(vertex.x), static_cast<float>(vertex.y)};
        if (i == 0 && last > 0) {
            path.moveToPoint(point);
        } else if (i == last && vertex.x == first.x && vertex.y == first.y) {
            path.closePath();
        } else {
            path.lineToPoint(point);
        }
    }
    return path;
}

/// Without a target, into the current context.
void fillPath(NSBezierPath path, const NSColor& color, GraphicsContext* target) {
    if (target != nullptr) {
        target->fillBezierPath(path, color);
        return;
    }
    const NSGraphicsStateScope state;
    color.set();
    path.fill();
}

/// Each contour by itself, so that holes are painted too.
void fillContours(const gpc_polygon& polygon, const NSColor& color, GraphicsContext* target) {
    for (int i = 0; i < polygon.num_contours; ++i) fillPath(pathOf(polygon.contour[i]), color, target);
}

/// Whether a target that fills no paths has taken the draw over.
bool isDrawnByTarget(IMGImage& node, const TransformAndClipList& list, int operation, float fraction,
                     IMGDrawingTarget* target) {
    if (target == nullptr || target->graphicsContext() != nullptr) return false;
    target->drawImage(node, list, operation, fraction);
    return true;
}

GraphicsContext* graphicsContextOf(IMGDrawingTarget* target) {
    return target != nullptr ? target->graphicsContext() : nullptr;
}

void appendStrip(NSBezierPath& path, NSPoint lowerLeft, NSSize size) {
    path.moveToPoint(lowerLeft);
    path.relativeLineToPoint({0, size.height});
    path.relativeLineToPoint({size.width, 0});
    path.relativeLineToPoint({0, -size.height});
    path.closePath();
}

NSBezierPath frameStrips(NSRect rect, float width) {
    const NSPoint origin = rect.origin;
    const NSSize across = {rect.size.width, width};
    const NSSize upright = {width, rect.size.height - 2 * width};
    NSBezierPath path;
    appendStrip(path, origin, across);
    appendStrip(path, {origin.x, origin.y + rect.size.height - width}, across);
    appendStrip(path, {origin.x, origin.y + width}, upright);
    appendStrip(path, {origin.x + rect.size.width - width, origin.y + width}, upright);
    return path;
}

/// Each strip is clipped by itself: clipped together they would grow into one contour around a hole, and the
/// hole would be painted.
void fillStrips(const NSBezierPath& strips, const Placement& placement, const NSColor& color,
                GraphicsContext* target) {
    gpc_owned_polygon whole;
    ConvertBezierPathToPolygon(strips, &whole);
    placement.place(whole);
    for (int i = 0; i < whole.num_contours; ++i) {
        gpc_owned_polygon strip;
        gpc_add_contour(&strip, &whole.contour[i], 0);
        placement.clip(strip);
        fillContours(strip, color, target);
    }
}

void fillFrameInCurrentContext(NSRect rect, float width, const TransformAndClipList& list,
                               const NSColor& color) {
    const std::shared_ptr<NSGraphicsContext> context = NSGraphicsContext::currentContext();
    if (context == nullptr) return;
    const NSGraphicsStateScope state;
    const NSAffineTransform transform = addRecordClips(list);
    NSBezierPath frame = NSBezierPath::bezierPathWithRect(rect);
    frame.appendBezierPathWithRect(Platform::NSInsetRect(rect, width, width));
    frame.setWindingRule(Platform::NSWindingRule::EvenOdd);
    context->concat(transform);
    color.set();
    frame.fill();
}

} // namespace

// IMGNullGenerator

std::shared_ptr<IMGNullGenerator> IMGNullGenerator::generatorWithSize(NSSize size) {
    return std::make_shared<IMGNullGenerator>(size);
}

IMGNullGenerator::IMGNullGenerator(NSSize size) : m_size(size) {}

IMGNullGenerator::IMGNullGenerator(Platform::NSCoder& coder) : IMGImage(coder) {}

IMGNullGenerator::~IMGNullGenerator() = default;

IMGBounds IMGNullGenerator::imageBounds() const {
    return IMGBounds::boundsWithRect(wholeRect(m_size), NSAffineTransform());
}

std::optional<IMGBounds> IMGNullGenerator::boundsForImage(const IMGImage& image,
                                                          const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    return IMGBounds::boundsWithRect(wholeRect(m_size), transform);
}

void IMGNullGenerator::drawImage(const std::shared_ptr<CCImage>&, const TransformAndClipList&, int, float,
                                 IMGDrawingTarget*) {}

std::shared_ptr<IMGImage> IMGNullGenerator::copy() const { return generatorWithSize(m_size); }

std::string IMGNullGenerator::archiveClassName() const { return "IMGNullGenerator"; }

// IMGConstantImageGenerator

std::shared_ptr<IMGConstantImageGenerator>
IMGConstantImageGenerator::generatorWithSize(NSSize size, const NSColor& color) {
    return generatorWithSize(size, color, nullptr);
}

std::shared_ptr<IMGConstantImageGenerator>
IMGConstantImageGenerator::generatorWithSize(NSSize size, const NSColor& color,
                                             std::shared_ptr<NSBezierPath> shape) {
    return std::make_shared<IMGConstantImageGenerator>(size, color, std::move(shape));
}

IMGConstantImageGenerator::IMGConstantImageGenerator(NSSize size, const NSColor& color,
                                                     std::shared_ptr<NSBezierPath> shape)
    : m_size(size), m_color(color), m_shape(std::move(shape)) {}

IMGConstantImageGenerator::IMGConstantImageGenerator(Platform::NSCoder& coder) : IMGImage(coder) {}

IMGConstantImageGenerator::~IMGConstantImageGenerator() = default;

IMGBounds IMGConstantImageGenerator::imageBounds() const {
    return IMGBounds::boundsWithRect(wholeRect(m_size), NSAffineTransform());
}

std::optional<IMGBounds> IMGConstantImageGenerator::boundsForImage(const IMGImage& image,
                                                                   const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    return IMGBounds::boundsWithRect(wholeRect(m_size), transform);
}

void IMGConstantImageGenerator::drawImage(const std::shared_ptr<CCImage>&, const TransformAndClipList& list,
                                          int operation, float fraction, IMGDrawingTarget* imageContext) {
    if (isDrawnByTarget(*this, list, operation, fraction, imageContext)) return;
    GraphicsContext* const target = graphicsContextOf(imageContext);
    const NSColor color = m_color.colorWithAlphaComponent(fraction);
    Placement placement(list);
    if (m_shape == nullptr) {
        fillContours(placement.clippedRect(wholeRect(m_size)), color, target);
        return;
    }
    gpc_owned_polygon shape;
    ConvertBezierPathToPolygon(*m_shape, &shape);
    placement.place(shape);
    placement.clip(shape);
    fillContours(shape, color, target);
}

std::shared_ptr<IMGImage> IMGConstantImageGenerator::copy() const {
    return generatorWithSize(m_size, m_color, m_shape);
}

std::string IMGConstantImageGenerator::archiveClassName() const { return "IMGConstantImageGenerator"; }

// IMGSimpleFrameGenerator

std::shared_ptr<IMGSimpleFrameGenerator>
IMGSimpleFrameGenerator::generatorWithSize(NSSize size, const NSColor& color, float frameWidth) {
    return std::make_shared<IMGSimpleFrameGenerator>(size, color, frameWidth);
}

IMGSimpleFrameGenerator::IMGSimpleFrameGenerator(NSSize size, const NSColor& color, float frameWidth)
    : m_size(size), m_color(color), m_frame_width(frameWidth) {}

IMGSimpleFrameGenerator::IMGSimpleFrameGenerator(Platform::NSCoder& coder) : IMGImage(coder) {}

IMGSimpleFrameGenerator::~IMGSimpleFrameGenerator() = default;

IMGBounds IMGSimpleFrameGenerator::imageBounds() const {
    return IMGBounds::boundsWithRect(wholeRect(m_size), NSAffineTransform());
}

std::optional<IMGBounds> IMGSimpleFrameGenerator::boundsForImage(const IMGImage& image,
                                                                 const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    return IMGBounds::boundsWithRect(wholeRect(m_size), transform);
}

void IMGSimpleFrameGenerator::drawImage(const std::shared_ptr<CCImage>&, const TransformAndClipList& list,
                                        int operation, float fraction, IMGDrawingTarget* imageContext) {
    if (isDrawnByTarget(*this, list, operation, fraction, imageContext)) return;
    const NSColor color = m_color.colorWithAlphaComponent(m_color.alphaComponent() * fraction);
    const NSRect rect = wholeRect(m_size);
    if (GraphicsContext* const target = graphicsContextOf(imageContext)) {
        fillStrips(frameStrips(rect, m_frame_width), Placement(list), color, target);
    } else {
        fillFrameInCurrentContext(rect, m_frame_width, list, color);
    }
}

std::shared_ptr<IMGImage> IMGSimpleFrameGenerator::copy() const {
    return generatorWithSize(m_size, m_color, m_frame_width);
}

std::string IMGSimpleFrameGenerator::archiveClassName() const { return "IMGSimpleFrameGenerator"; }

} // namespace Imaging
