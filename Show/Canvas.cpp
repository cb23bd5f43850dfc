#include "Show/Canvas.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"
#include "Show/NodeGraph.h"
#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Imaging::Tool {

using Imaging::IMGImage;
using Platform::NSBitmapImageRep;
using Platform::NSGraphicsContext;
using Platform::NSMakeRect;
using Platform::NSRect;
using Platform::NSSize;

namespace {

/// Canvases are at most this wide and high, which is what can be drawn on.
constexpr std::int64_t maximumSide = 32750;

} // namespace

std::int64_t wholePixels(float length) {
    return std::max<std::int64_t>(
        1, static_cast<std::int64_t>(std::ceil(static_cast<double>(length) - 1.0 / 256)));
}

NSRect drawableBounds(const IMGImage& node, const std::string& name) {
    NSRect bounds;
    try {
        bounds = node.imageBoundsRect();
    } catch (const Platform::NSException&) { // which nodes without sources raise, in words for programmers
        throw Failure(shownName(name), "a node of the graph has nothing below it, so the graph has no size");
    }
    const NSSize size = bounds.size;
    const bool isDrawable = size.width > 0 && size.height > 0 && size.width < 1e9F && size.height < 1e9F;
    if (!isDrawable) throw Failure(shownName(name), "the graph covers no area, so there is nothing to draw");
    return bounds;
}

std::int64_t inProportion(std::int64_t a, std::int64_t b, std::int64_t c) {
    return std::max<std::int64_t>(
        1, std::llround(static_cast<double>(a) * static_cast<double>(b) / static_cast<double>(c)));
}

PixelSize completedSize(PixelSize asked, PixelSize shape) {
    if (asked.width == 0 && asked.height == 0) return shape;
    if (asked.height == 0) asked.height = inProportion(asked.width, shape.height, shape.width);
    if (asked.width == 0) asked.width = inProportion(asked.height, shape.width, shape.height);
    return asked;
}

Drawing::Drawing(std::shared_ptr<IMGImage> node, const std::string& name, Upright upright)
    : m_node(std::move(node)) {
    requireDrawable(m_node, name);
    m_node = orientedNode(std::move(m_node), upright);
    const NSSize size = drawableBounds(*m_node, name).size;
    m_size = {wholePixels(size.width), wholePixels(size.height)};
}

PixelSize Drawing::completed(PixelSize asked) const { return completedSize(asked, m_size); }

NSRect Drawing::placed(NSRect place, Fit fit) const { return placedIn(place, m_size, fit); }

void Drawing::drawInRect(NSRect rect) const {
    m_node->drawInRect(rect, Platform::NSCompositeSourceOver, 1.0F, false, nullptr);
}

NSRect placedIn(NSRect place, PixelSize picture, Fit fit) {
    if (fit == Fit::Stretch) return place;
    const auto width = static_cast<std::int64_t>(place.size.width);
    const auto height = static_cast<std::int64_t>(place.size.height);
    // Compared without division: the side on which the picture meets the place.
    const bool isWider = picture.width * height > width * picture.height;
    const bool meetsSides = isWider == (fit == Fit::Contain);
    PixelSize size = {width, height};
    if (meetsSides) {
        size.height = inProportion(width, picture.height, picture.width);
    } else {
        size.width = inProportion(height, picture.width, picture.height);
    }
    // Halves are rounded down, also below zero, where the picture reaches beyond the place.
    const auto offset = [](std::int64_t room) {
        const std::int64_t half = (room - (room & 1)) / 2;
        return static_cast<float>(half);
    };
    return NSMakeRect(place.origin.x + offset(width - size.width),
                      place.origin.y + offset(height - size.height), static_cast<float>(size.width),
                      static_cast<float>(size.height));
}

std::shared_ptr<NSBitmapImageRep> drawnOnCanvas(PixelSize size, const std::string& name,
                                                const std::string& advice,
                                                const std::function<NSRect()>& drawAndSelect) {
    const std::string measures =
        "the result would be " + std::to_string(size.width) + " x " + std::to_string(size.height) + " pixels";
    if (size.width > maximumSide || size.height > maximumSide) {
        throw Failure(name, measures + ", and at most " + std::to_string(maximumSide) +
                                " can be drawn along a side; " + advice);
    }
    const Platform::PictureLimits limits = Platform::pictureLimits();
    const std::uint64_t maximumPixels = std::min(limits.maximumPixels, limits.maximumBytes / 4);
    if (static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height) > maximumPixels) {
        throw Failure(name, measures + ", more than the limit of " + std::to_string(maximumPixels) +
                                " pixels; " + advice);
    }
    Platform::NSImage canvas({static_cast<float>(size.width), static_cast<float>(size.height)});
    canvas.setCacheMode(Platform::NSImageCacheNever);
    const Platform::NSImageFocus focus(canvas);
    const NSRect shown = drawAndSelect();
    std::shared_ptr<NSBitmapImageRep> bitmap = NSBitmapImageRep::bitmapWithFocusedViewRect(shown);
    if (bitmap == nullptr) throw Failure(name, "what was drawn could not be read back");
    return bitmap;
}

CurrentContextScope::CurrentContextScope(std::shared_ptr<NSGraphicsContext> context)
    : m_before(NSGraphicsContext::currentContext()) {
    NSGraphicsContext::setCurrentContext(std::move(context));
}

CurrentContextScope::~CurrentContextScope() { NSGraphicsContext::setCurrentContext(std::move(m_before)); }

void paint(NSRect rect, const Platform::NSColor& color) {
    color.set();
    Platform::NSRectFillUsingOperation(rect, Platform::NSCompositeSourceOver);
}

} // namespace Imaging::Tool
