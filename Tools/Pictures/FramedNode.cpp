#include "Tools/Pictures/FramedNode.h"

#include "Imaging/Bounds.h"
#include "Imaging/CachedImage.h"
#include "Imaging/Canvas.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/PixelOperation.h"
#include "Imaging/TransformOperations.h"
#include "Platform/Codecs/Codec.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Pictures/Canvas.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

namespace Imaging::Tool {

using Imaging::IMGCropAndScale;
using Imaging::IMGImage;
using Platform::NSAffineTransform;
using Platform::NSMakeRect;
using Platform::NSPoint;
using Platform::NSRect;
using Platform::NSSize;

namespace {

/// The rectangle of whole pixels with the same middle that is just large enough.
NSRect inWholePixels(NSRect rect) {
    const NSSize size = floats({wholePixels(rect.size.width), wholePixels(rect.size.height)});
    return NSMakeRect(rect.origin.x - (size.width - rect.size.width) / 2,
                      rect.origin.y - (size.height - rect.size.height) / 2, size.width, size.height);
}

/// The smallest rectangle around a transformed one. Unlike a node's bounds it is exact everywhere.
NSRect rectAround(NSRect rect, const NSAffineTransform& transform) {
    const auto bounds = Imaging::IMGBounds::boundsWithRect(rect, transform);
    const auto [left, right] =
        std::minmax({bounds.bottomLeft().x, bounds.bottomRight().x, bounds.topLeft().x, bounds.topRight().x});
    const auto [bottom, top] =
        std::minmax({bounds.bottomLeft().y, bounds.bottomRight().y, bounds.topLeft().y, bounds.topRight().y});
    return NSMakeRect(left, bottom, right - left, top - bottom);
}

/// Whether a node's picture has colours of another space than sRGB, which operations on its numbers would
/// take for sRGB.
bool hasOtherColors(IMGImage& node) {
    if (dynamic_cast<const Imaging::IMGImageFromNSImage*>(&node) == nullptr) return false;
    const std::shared_ptr<Imaging::CCImage> picture = node.untransformedImage();
    if (picture == nullptr || picture->nsImage() == nullptr) return false;
    const auto bitmap =
        std::dynamic_pointer_cast<Platform::NSBitmapImageRep>(picture->nsImage()->bestRepresentation());
    if (bitmap == nullptr || bitmap->colorSpaceName() != Platform::NSCalibratedRGBColorSpace) return false;
    const auto property = bitmap->valueForProperty(Platform::NSImageColorSyncProfileData);
    const auto* const profile = property.has_value() ? std::get_if<Platform::NSData>(&*property) : nullptr;
    return profile != nullptr && Platform::colorProfileName(*profile).find("sRGB") == std::string::npos;
}

std::string numberInWords(double number) { return std::to_string(std::llround(number)); }

} // namespace

FramedNode::FramedNode(std::shared_ptr<IMGImage> node, std::string name)
    : m_node(std::move(node)),
      m_name(std::move(name)),
      m_frame(inWholePixels(drawableBounds(*m_node, m_name))) {}

PixelSize FramedNode::size() const {
    return {std::llround(m_frame.size.width), std::llround(m_frame.size.height)};
}

NSPoint FramedNode::middle() const { return {Platform::NSMidX(m_frame), Platform::NSMidY(m_frame)}; }

void FramedNode::cut() {
    if (m_beyond == Beyond::Nothing) return;
    m_node =
        IMGCropAndScale::cropWithSourceImage(m_node, m_frame, m_frame.size, Imaging::SCALE_TO_FILL, true);
    m_frame.origin = Platform::NSZeroPoint;
    m_beyond = Beyond::Nothing;
}

void FramedNode::adoptTurned(std::shared_ptr<IMGImage> node) {
    m_node = std::move(node);
    m_frame = inWholePixels(rectAround(m_frame, m_node->transform()));
}

void FramedNode::recompute() {
    cut();
    const bool isPlain = dynamic_cast<const Imaging::IMGImageFromNSImage*>(m_node.get()) != nullptr ||
                         dynamic_cast<const Imaging::PixelOperation*>(m_node.get()) != nullptr;
    if (isPlain && !hasOtherColors(*m_node)) return;
    adoptBitmap(drawnOnCanvas(size(), shownName(m_name), "--scale or --crop it to a smaller size", [this] {
        draw();
        return NSRect{Platform::NSZeroPoint, m_frame.size};
    }));
}

void FramedNode::adoptBitmap(std::shared_ptr<Platform::NSBitmapImageRep> bitmap) {
    const auto picture = std::make_shared<Platform::NSImage>(bitmap->size());
    picture->addRepresentation(std::move(bitmap));
    m_node = Imaging::imagingImage(picture);
    m_frame.origin = Platform::NSZeroPoint;
}

std::shared_ptr<Platform::NSBitmapImageRep> FramedNode::bitmap() const {
    const std::shared_ptr<Imaging::CCImage> result = m_node->untransformedImage();
    const auto bitmap = result != nullptr && result->nsImage() != nullptr
                            ? Imaging::bitmapRepresentationWithCanonicalFormat(*result->nsImage())
                            : nullptr;
    if (bitmap == nullptr)
        throw Failure(shownName(m_name), "its pixels could not be computed; memory is short");
    return bitmap;
}

Imaging::IMGBitmapFormat FramedNode::layout() const { return Imaging::imgBitmapFormat(*bitmap()); }

void FramedNode::dropNeedlessAlpha() {
    const std::shared_ptr<Platform::NSBitmapImageRep> whole = bitmap();
    if (Imaging::imgBitmapFormat(*whole) != Imaging::IMGBitmapFormatRGBA) return;
    if (auto opaque = withoutNeedlessAlpha(*whole)) adoptBitmap(std::move(opaque));
}

void FramedNode::move(double right, double down) {
    if (m_beyond == Beyond::Covered) cut();
    const NSPoint shift = {static_cast<float>(right), static_cast<float>(-down)};
    m_node = Imaging::IMGTranslationOp::translationBy(shift, m_node);
    m_beyond = Beyond::Moved;
}

void FramedNode::crop(double left, double top, double width, double height) {
    const PixelSize own = size();
    const bool isInside = left < static_cast<double>(own.width) && top < static_cast<double>(own.height) &&
                          left + width > 0 && top + height > 0;
    if (!isInside) {
        throw Failure(shownName(m_name),
                      "--crop: the " + numberInWords(width) + " x " + numberInWords(height) + " pixels at " +
                          numberInWords(left) + "," + numberInWords(top) +
                          " lie outside the picture, which is " + std::to_string(own.width) + " x " +
                          std::to_string(own.height) + " pixels there; choose a place inside");
    }
    cut();
    const NSSize target = {static_cast<float>(width), static_cast<float>(height)};
    const NSRect area = {{m_frame.origin.x + static_cast<float>(left),
                          Platform::NSMaxY(m_frame) - static_cast<float>(top) - target.height},
                         target};
    m_node = IMGCropAndScale::cropWithSourceImage(m_node, area, target, Imaging::SCALE_TO_FILL, true);
    m_frame = {Platform::NSZeroPoint, target};
}

void FramedNode::scale(PixelSize asked, std::int32_t scaling) {
    const PixelSize own = size();
    const PixelSize target = completedSize(asked, own);
    const bool doClip = m_beyond != Beyond::Nothing;
    m_node = IMGCropAndScale::cropWithSourceImage(m_node, m_frame, floats(target), scaling, doClip);
    m_frame = {Platform::NSZeroPoint, floats(target)};
    m_beyond = Beyond::Nothing;
    if (scaling != Imaging::SCALE_NONE) return;
    // The node puts the middle of the picture on (0, 0). The frame goes around it a whole number of pixels
    // away from the picture's edges, half a pixel to the left and down where there is one too many.
    const auto origin = [](std::int64_t picture, std::int64_t frame) {
        const std::int64_t room = frame - picture;
        const std::int64_t before = (room - (room & 1)) / 2;
        return static_cast<float>(-static_cast<double>(picture) / 2 - static_cast<double>(before));
    };
    m_frame.origin = {origin(own.width, target.width), origin(own.height, target.height)};
    if (target.width < own.width || target.height < own.height) m_beyond = Beyond::Covered;
}

void FramedNode::putOnCanvas(PixelSize asked) {
    if (m_beyond == Beyond::Covered) cut();
    const PixelSize own = size();
    const NSSize canvas = floats(asked);
    const NSPoint shift = {-m_frame.origin.x, canvas.height - Platform::NSMaxY(m_frame)};
    m_node = Imaging::IMGTranslationOp::translationBy(shift, m_node);
    m_node = std::make_shared<Imaging::IMGCanvas>(canvas, IMGImage::Sources{m_node});
    const bool fits = m_beyond == Beyond::Nothing && own.width <= asked.width && own.height <= asked.height;
    m_beyond = fits ? Beyond::Nothing : Beyond::Covered;
    m_frame = {Platform::NSZeroPoint, canvas};
}

void FramedNode::draw() const {
    NSAffineTransform transform;
    transform.translateXBy(-m_frame.origin.x, -m_frame.origin.y);
    m_node->drawWithTransform(transform, Platform::NSCompositeSourceOver, 1.0F);
}

} // namespace Imaging::Tool
