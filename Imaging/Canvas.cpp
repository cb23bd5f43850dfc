#include "Imaging/Canvas.h"

#include "Imaging/CachedImage.h"
#include "Imaging/Drawing/RenderedNode.h"

#include <utility>

namespace Imaging {

// IMGCanvas

std::shared_ptr<IMGCanvas> IMGCanvas::canvasWithSize(NSSize size) {
    return std::make_shared<IMGCanvas>(size);
}

IMGCanvas::IMGCanvas(NSSize size, Sources sources)
    : IMGCanvas(size, NSAffineTransform(), std::move(sources)) {}

IMGCanvas::IMGCanvas(NSSize size, const NSAffineTransform& transform, Sources sources)
    : IMGImage(std::move(sources)),
      m_size(size),
      m_canvas_transform(std::make_shared<NSAffineTransform>(transform)) {}

IMGCanvas::IMGCanvas(Platform::NSCoder& coder) : IMGImage(coder), m_size(coder.decodeSize("size")) {
    if (const auto decoded = coder.decodeTransform("canvas-transform")) {
        m_canvas_transform = std::make_shared<NSAffineTransform>(*decoded);
    }
}

IMGCanvas::~IMGCanvas() = default;

void IMGCanvas::setCanvasTransform(std::shared_ptr<NSAffineTransform> transform) {
    m_canvas_transform = std::move(transform);
}

void IMGCanvas::rotateByDegrees(float degrees) {
    if (m_canvas_transform != nullptr) m_canvas_transform->rotateByDegrees(degrees);
}

void IMGCanvas::addSource(std::shared_ptr<IMGImage> source) {
    IMGImage::addSource(std::move(source));
    m_canvas_image.reset();
}

void IMGCanvas::replaceSourceAtIndex(std::size_t index, std::shared_ptr<IMGImage> source) {
    IMGImage::replaceSourceAtIndex(index, std::move(source));
    m_canvas_image.reset();
}

void IMGCanvas::changed() {
    m_canvas_image.reset();
    IMGImage::changed();
}

NSAffineTransform IMGCanvas::transform() const {
    return m_canvas_transform != nullptr ? *m_canvas_transform : NSAffineTransform();
}

IMGBounds IMGCanvas::imageBounds() const {
    return IMGBounds::boundsWithRect({Platform::NSZeroPoint, m_size}, NSAffineTransform());
}

std::optional<IMGBounds> IMGCanvas::boundsForImage(const IMGImage& image,
                                                   const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    return IMGBounds::boundsWithRect({Platform::NSZeroPoint, m_size}, transform);
}

std::shared_ptr<CCImage> IMGCanvas::untransformedImage() {
    if (m_canvas_image == nullptr) m_canvas_image = renderedNode(*this, m_size);
    return m_canvas_image;
}

std::shared_ptr<IMGImage> IMGCanvas::copy() const { return std::make_shared<IMGCanvas>(m_size, sources()); }

std::string IMGCanvas::archiveClassName() const { return "IMGCanvas"; }

void IMGCanvas::encodeWithCoder(Platform::NSCoder& coder) const {
    IMGImage::encodeWithCoder(coder);
    coder.encodeSize(m_size, "size");
    if (m_canvas_transform != nullptr) coder.encodeTransform(*m_canvas_transform, "canvas-transform");
}

// IMGCompositeOp

IMGCompositeOp::~IMGCompositeOp() = default;

std::optional<IMGBounds> IMGCompositeOp::boundsForImage(const IMGImage& image,
                                                        const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    NSRect united = Platform::NSZeroRect;
    bool isFirst = true;
    for (const std::shared_ptr<IMGImage>& source : sources()) {
        const std::optional<IMGBounds> answer = source->boundsForImage(*source, NSAffineTransform());
        const NSRect rectangle = answer.has_value() ? answer->boundingRect() : Platform::NSZeroRect;
        united = std::exchange(isFirst, false) ? rectangle : Platform::NSUnionRect(united, rectangle);
    }
    return IMGBounds::boundsWithRect(united, transform);
}

std::shared_ptr<IMGImage> IMGCompositeOp::copy() const { return std::make_shared<IMGCompositeOp>(sources()); }

std::string IMGCompositeOp::archiveClassName() const { return "IMGCompositeOp"; }

} // namespace Imaging
