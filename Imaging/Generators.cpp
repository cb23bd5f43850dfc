// Generators keep no pixels: a draw brings their rectangle or shape to the target's coordinates as polygons,
// cuts it by the records' clips there, and fills what is left as paths.

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
bool isDrawnByTarget(IMGImage& node, const TransformAndClipList& list, CompositingOperation operation,
                     float fraction, IMGDrawingTarget* target) {
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

NSBezierPath borderStrips(NSRect rect, float width) {
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

void fillBorderInCurrentContext(NSRect rect, float width, const TransformAndClipList& list,
                                const NSColor& color) {
    const std::shared_ptr<NSGraphicsContext> context = NSGraphicsContext::currentContext();
    if (context == nullptr) return;
    const NSGraphicsStateScope state;
    const NSAffineTransform transform = addRecordClips(list);
    NSBezierPath border = NSBezierPath::bezierPathWithRect(rect);
    border.appendBezierPathWithRect(Platform::NSInsetRect(rect, width, width));
    border.setWindingRule(Platform::NSWindingRule::EvenOdd);
    context->concat(transform);
    color.set();
    border.fill();
}

} // namespace

// IMGNullGenerator

std::shared_ptr<IMGNullGenerator> IMGNullGenerator::generatorWithSize(NSSize size) {
    return std::make_shared<IMGNullGenerator>(size);
}

IMGNullGenerator::IMGNullGenerator(NSSize size) : SizedNode(size) {}

IMGNullGenerator::IMGNullGenerator(Platform::NSCoder& coder) : SizedNode(coder) {}

IMGNullGenerator::~IMGNullGenerator() = default;

void IMGNullGenerator::drawImage(const std::shared_ptr<CCImage>&, const TransformAndClipList&,
                                 CompositingOperation, float, IMGDrawingTarget*) {}

std::shared_ptr<IMGImage> IMGNullGenerator::copy() const { return generatorWithSize(size()); }

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
    : SizedNode(size), m_color(color), m_shape(std::move(shape)) {}

IMGConstantImageGenerator::IMGConstantImageGenerator(Platform::NSCoder& coder) : SizedNode(coder) {}

IMGConstantImageGenerator::~IMGConstantImageGenerator() = default;

void IMGConstantImageGenerator::drawImage(const std::shared_ptr<CCImage>&, const TransformAndClipList& list,
                                          CompositingOperation operation, float fraction,
                                          IMGDrawingTarget* imageContext) {
    if (isDrawnByTarget(*this, list, operation, fraction, imageContext)) return;
    GraphicsContext* const target = graphicsContextOf(imageContext);
    const NSColor color = m_color.colorWithAlphaComponent(fraction);
    Placement placement(list);
    if (m_shape == nullptr) {
        fillContours(placement.clippedRect(wholeRect()), color, target);
        return;
    }
    gpc_owned_polygon shape;
    ConvertBezierPathToPolygon(*m_shape, &shape);
    placement.place(shape);
    placement.clip(shape);
    fillContours(shape, color, target);
}

std::shared_ptr<IMGImage> IMGConstantImageGenerator::copy() const {
    return generatorWithSize(size(), m_color, m_shape);
}

std::string IMGConstantImageGenerator::archiveClassName() const { return "IMGConstantImageGenerator"; }

// IMGSimpleFrameGenerator

std::shared_ptr<IMGSimpleFrameGenerator>
IMGSimpleFrameGenerator::generatorWithSize(NSSize size, const NSColor& color, float frameWidth) {
    return std::make_shared<IMGSimpleFrameGenerator>(size, color, frameWidth);
}

IMGSimpleFrameGenerator::IMGSimpleFrameGenerator(NSSize size, const NSColor& color, float frameWidth)
    : SizedNode(size), m_color(color), m_frame_width(frameWidth) {}

IMGSimpleFrameGenerator::IMGSimpleFrameGenerator(Platform::NSCoder& coder) : SizedNode(coder) {}

IMGSimpleFrameGenerator::~IMGSimpleFrameGenerator() = default;

void IMGSimpleFrameGenerator::drawImage(const std::shared_ptr<CCImage>&, const TransformAndClipList& list,
                                        CompositingOperation operation, float fraction,
                                        IMGDrawingTarget* imageContext) {
    if (isDrawnByTarget(*this, list, operation, fraction, imageContext)) return;
    const NSColor color = m_color.colorWithAlphaComponent(m_color.alphaComponent() * fraction);
    const NSRect rect = wholeRect();
    if (GraphicsContext* const target = graphicsContextOf(imageContext)) {
        fillStrips(borderStrips(rect, m_frame_width), Placement(list), color, target);
    } else {
        fillBorderInCurrentContext(rect, m_frame_width, list, color);
    }
}

std::shared_ptr<IMGImage> IMGSimpleFrameGenerator::copy() const {
    return generatorWithSize(size(), m_color, m_frame_width);
}

std::string IMGSimpleFrameGenerator::archiveClassName() const { return "IMGSimpleFrameGenerator"; }

} // namespace Imaging
