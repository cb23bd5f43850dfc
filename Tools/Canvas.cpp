#include "Tools/Canvas.h"

#include "Imaging/CachedImage.h"
#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"
#include "Tools/Graph.h"
#include "Tools/Input.h"
#include "Tools/Messages.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

namespace Tool {

using Imaging::IMGImage;
using Platform::NSAffineTransform;
using Platform::NSBitmapImageRep;
using Platform::NSMakeRect;
using Platform::NSRect;
using Platform::NSSize;

namespace {

/// Canvases are at most this wide and high, which is what can be drawn on.
constexpr std::int64_t maximumSide = 32750;

/// The orientation that a picture node's file declares; 1 for all other nodes.
int declaredOrientation(IMGImage& node) {
    const auto* picture = dynamic_cast<Imaging::IMGImageFromNSImage*>(&node);
    if (picture == nullptr) return 1;
    const auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(
        node.untransformedImage()->nsImage()->bestRepresentation());
    if (bitmap == nullptr) return 1;
    const auto value = bitmap->valueForProperty(Platform::NSImageOrientation);
    const int* number = value.has_value() ? std::get_if<int>(&*value) : nullptr;
    return number != nullptr && *number >= 1 && *number <= 8 ? *number : 1;
}

/// Maps a stored picture of a size onto the same picture the right way up, whose lower left corner is (0, 0)
/// too. The numbers are EXIF's: they say where the stored first row and column belong. y grows upward.
NSAffineTransform uprightTransform(int orientation, float w, float h) {
    switch (orientation) {
    case 2: // row at the top, column at the right
        return NSAffineTransform({-1, 0, 0, 1, w, 0});
    case 3: // bottom, right
        return NSAffineTransform({-1, 0, 0, -1, w, h});
    case 4: // bottom, left
        return NSAffineTransform({1, 0, 0, -1, 0, h});
    case 5: // left, top
        return NSAffineTransform({0, -1, -1, 0, h, w});
    case 6: // right, top
        return NSAffineTransform({0, -1, 1, 0, 0, w});
    case 7: // right, bottom
        return NSAffineTransform({0, 1, 1, 0, 0, 0});
    case 8: // left, bottom
        return NSAffineTransform({0, 1, -1, 0, h, 0});
    default:
        return {};
    }
}

/// Whole pixels for a length; what is hardly a fraction comes from rounding.
std::int64_t wholePixels(float length) {
    return std::max<std::int64_t>(
        1, static_cast<std::int64_t>(std::ceil(static_cast<double>(length) - 1.0 / 256)));
}

PixelSize storedSize(IMGImage& node, const std::string& name) {
    NSSize size;
    try {
        size = node.imageSize();
    } catch (const Platform::NSException&) { // which nodes without sources raise, in words for programmers
        throw Failure(shownName(name), "a node of the graph has nothing below it, so the graph has no size");
    }
    const bool isDrawable = size.width > 0 && size.height > 0 && size.width < 1e9F && size.height < 1e9F;
    if (!isDrawable) throw Failure(shownName(name), "the graph covers no area, so there is nothing to draw");
    return {wholePixels(size.width), wholePixels(size.height)};
}

/// a · b / c, rounded, at least 1. The factors are below 2^32.
std::int64_t inProportion(std::int64_t a, std::int64_t b, std::int64_t c) {
    return std::max<std::int64_t>(
        1, std::llround(static_cast<double>(a) * static_cast<double>(b) / static_cast<double>(c)));
}

} // namespace

Drawing::Drawing(std::shared_ptr<IMGImage> node, const std::string& name, Upright upright)
    : m_node(std::move(node)) {
    requireDrawable(m_node, name);
    m_stored_size = storedSize(*m_node, name);
    if (upright == Upright::AsDeclared) m_orientation = declaredOrientation(*m_node);
    m_size = m_stored_size;
    if (m_orientation >= 5) std::swap(m_size.width, m_size.height);
}

PixelSize Drawing::completed(PixelSize asked) const {
    if (asked.width == 0 && asked.height == 0) return m_size;
    if (asked.height == 0) asked.height = inProportion(asked.width, m_size.height, m_size.width);
    if (asked.width == 0) asked.width = inProportion(asked.height, m_size.width, m_size.height);
    return asked;
}

NSRect Drawing::placed(NSRect place, Fit fit) const {
    if (fit == Fit::Stretch) return place;
    const auto width = static_cast<std::int64_t>(place.size.width);
    const auto height = static_cast<std::int64_t>(place.size.height);
    // Compared without division: the side on which the picture meets the place.
    const bool isWider = m_size.width * height > width * m_size.height;
    const bool meetsSides = isWider == (fit == Fit::Contain);
    PixelSize size = {width, height};
    if (meetsSides) {
        size.height = inProportion(width, m_size.height, m_size.width);
    } else {
        size.width = inProportion(height, m_size.width, m_size.height);
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

void Drawing::drawInRect(NSRect rect) const {
    if (m_orientation == 1) {
        m_node->drawInRect(rect, Platform::NSCompositeSourceOver, 1.0F, false, nullptr);
        return;
    }
    const auto context = Platform::NSGraphicsContext::currentContext();
    if (context == nullptr) return;
    const auto storedWidth = static_cast<float>(m_stored_size.width);
    const auto storedHeight = static_cast<float>(m_stored_size.height);
    NSAffineTransform transform;
    transform.translateXBy(rect.origin.x, rect.origin.y);
    transform.scaleXBy(rect.size.width / static_cast<float>(m_size.width),
                       rect.size.height / static_cast<float>(m_size.height));
    transform.prependTransform(uprightTransform(m_orientation, storedWidth, storedHeight));
    const Platform::NSGraphicsStateScope state;
    context->concat(transform);
    m_node->drawInRect(NSMakeRect(0, 0, storedWidth, storedHeight), Platform::NSCompositeSourceOver, 1.0F,
                       false, nullptr);
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

void paint(NSRect rect, const Platform::NSColor& color) {
    color.set();
    Platform::NSRectFillUsingOperation(rect, Platform::NSCompositeSourceOver);
}

} // namespace Tool
