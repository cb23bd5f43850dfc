// Everything is done by Show's functions of the same names; what is added here is the name of the input or
// output that an error is about.

#include "Tools/Pictures/Canvas.h"

#include "Platform/Graphics/GraphicsContext.h"

#include <utility>

namespace Imaging::Tool {

using Platform::NSBitmapImageRep;
using Platform::NSGraphicsContext;
using Platform::NSRect;
using Platform::NSSize;

void requirePictures(const std::shared_ptr<IMGImage>& root, const std::string& name) {
    naming(name, [&] { Imaging::requirePictures(root); });
}

void requireDrawable(const std::shared_ptr<IMGImage>& root, const std::string& name) {
    naming(name, [&] { Imaging::requireDrawable(root); });
}

FramedNode processed(const std::shared_ptr<IMGImage>& node, const std::string& name,
                     const std::vector<Step>& steps) {
    return naming(name, [&] {
        FramedNode picture(node, name, makeItSmaller);
        for (const Step& step : steps) step(picture);
        return picture;
    });
}

Drawing::Drawing(std::shared_ptr<IMGImage> node, const std::string& name, Upright upright)
    : m_node(std::move(node)) {
    requireDrawable(m_node, name);
    m_node = orientedNode(std::move(m_node), upright);
    const NSSize size = naming(name, [&] { return drawableBounds(*m_node); }).size;
    m_size = {wholePixels(size.width), wholePixels(size.height)};
}

PixelSize Drawing::completed(PixelSize asked) const { return completedSize(asked, m_size); }

NSRect Drawing::placed(NSRect place, Fit fit) const { return placedIn(place, m_size, fit); }

void Drawing::drawInRect(NSRect rect) const {
    m_node->drawInRect(rect, Platform::NSCompositeSourceOver, 1.0F, false, nullptr);
}

std::shared_ptr<NSBitmapImageRep> drawnOnCanvas(PixelSize size, const std::string& name,
                                                const std::string& advice,
                                                const std::function<NSRect()>& drawAndSelect) {
    // Asked beforehand, so that nothing that `drawAndSelect` throws is taken for it.
    naming(name, [&] { requireCanvas(size, advice); });
    return Imaging::drawnOnCanvas(size, advice, drawAndSelect);
}

CurrentContextScope::CurrentContextScope(std::shared_ptr<NSGraphicsContext> context)
    : m_before(NSGraphicsContext::currentContext()) {
    NSGraphicsContext::setCurrentContext(std::move(context));
}

CurrentContextScope::~CurrentContextScope() { NSGraphicsContext::setCurrentContext(std::move(m_before)); }

} // namespace Imaging::Tool
