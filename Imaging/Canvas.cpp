// Canvases and composites draw like any node, by walking down; a canvas keeps a picture of itself for those
// who ask for one and drops it when anything below changes.

#include "Imaging/Canvas.h"

#include "Imaging/CCImage.h"
#include "Imaging/Drawing/Guarded.h"
#include "Imaging/Drawing/RenderedNode.h"
#include "Imaging/Words.h"

#include <utility>

namespace Imaging {

// IMGCanvas

std::shared_ptr<IMGCanvas> IMGCanvas::canvasWithSize(NSSize size) {
    return std::make_shared<IMGCanvas>(size);
}

IMGCanvas::IMGCanvas(NSSize size, Sources sources)
    : IMGCanvas(size, NSAffineTransform(), std::move(sources)) {}

IMGCanvas::IMGCanvas(NSSize size, const NSAffineTransform& transform, Sources sources)
    : SizedNode(size, std::move(sources)),
      m_canvas_transform(std::make_shared<NSAffineTransform>(transform)) {}

IMGCanvas::IMGCanvas(Platform::NSCoder& coder) : SizedNode(coder) {
    setSize(coder.decodeSize("size"));
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
    // Nothing announces a source that is added, so this is the only chance to notice.
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

std::shared_ptr<CCImage> IMGCanvas::untransformedImage() {
    if (m_canvas_image == nullptr) m_canvas_image = renderedNode(*this, size());
    return m_canvas_image;
}

std::shared_ptr<IMGImage> IMGCanvas::copy() const { return std::make_shared<IMGCanvas>(size(), sources()); }

std::string IMGCanvas::archiveClassName() const { return "IMGCanvas"; }

void IMGCanvas::encodeWithCoder(Platform::NSCoder& coder) const {
    IMGImage::encodeWithCoder(coder);
    coder.encodeSize(size(), "size");
    if (m_canvas_transform != nullptr) coder.encodeTransform(*m_canvas_transform, "canvas-transform");
}

std::string IMGCanvas::parameterDescription() const {
    const std::string words = inWords(size());
    const NSAffineTransform placed = transform();
    return placed.isEqual(NSAffineTransform()) ? words : words + " under " + inWords(placed);
}

// IMGCompositeOp

IMGCompositeOp::~IMGCompositeOp() = default;

std::optional<IMGBounds> IMGCompositeOp::boundsForImage(const IMGImage& image,
                                                        const NSAffineTransform& transform) const {
    if (!isEqual(image)) return IMGImage::boundsForImage(image, transform);
    // The first rectangle is taken as it is, since one without area would be lost in a union.
    NSRect united = Platform::NSZeroRect;
    bool isFirst = true;
    for (const std::shared_ptr<IMGImage>& source : sources()) {
        guarded([&] {
            const std::optional<IMGBounds> answer = source->boundsForImage(*source, NSAffineTransform());
            const NSRect rectangle = answer.has_value() ? answer->boundingRect() : Platform::NSZeroRect;
            united = std::exchange(isFirst, false) ? rectangle : Platform::NSUnionRect(united, rectangle);
        });
    }
    return IMGBounds::boundsWithRect(united, transform);
}

std::shared_ptr<IMGImage> IMGCompositeOp::copy() const { return std::make_shared<IMGCompositeOp>(sources()); }

std::string IMGCompositeOp::archiveClassName() const { return "IMGCompositeOp"; }

} // namespace Imaging
