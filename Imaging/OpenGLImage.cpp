// In 2-D the bitmap is described to the graphics in place, so drawing it copies nothing.

#include "Imaging/OpenGLImage.h"

#include "Imaging/CachedImage.h"
#include "Platform/Graphics/CoreGraphics.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <utility>

namespace Imaging {

using Platform::NSBitmapImageRep;
using Platform::NSGraphicsContext;

namespace {

/// The image keeps the bitmap for as long as somebody draws from its memory.
Platform::CGImageRef imageOver(const std::shared_ptr<NSBitmapImageRep>& bitmap) {
    const auto width = static_cast<std::size_t>(bitmap->pixelsWide());
    const auto height = static_cast<std::size_t>(bitmap->pixelsHigh());
    const auto provider = Platform::CGDataProviderCreateWithData(bitmap->bitmapData(),
                                                                 bitmap->bytesPerRow() * height, [bitmap] {});
    return Platform::CGImageCreate(width, height, static_cast<std::size_t>(bitmap->bitsPerSample()),
                                   static_cast<std::size_t>(bitmap->bitsPerPixel()), bitmap->bytesPerRow(),
                                   Platform::CGColorSpaceCreateDeviceRGB(),
                                   Platform::kCGImageAlphaPremultipliedFirst, provider, nullptr);
}

} // namespace

OpenGLImage::OpenGLImage(std::shared_ptr<NSBitmapImageRep> bitmap) : m_bitmap(std::move(bitmap)) {}

OpenGLImage::OpenGLImage(Platform::NSCoder& coder) : IMGImage(coder) {}

OpenGLImage::~OpenGLImage() = default;

NSSize OpenGLImage::untransformedImageSize() const {
    return m_bitmap != nullptr ? m_bitmap->size() : Platform::NSZeroSize;
}

IMGBounds OpenGLImage::imageBounds() const {
    return IMGBounds::boundsWithRect({Platform::NSZeroPoint, untransformedImageSize()}, transform());
}

std::shared_ptr<CCImage> OpenGLImage::image() { return nullptr; }

std::string OpenGLImage::name() const { return "Bitmap"; }

void OpenGLImage::drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                            CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) {
    drawRetainedImage(image, list, operation, fraction, imageContext != nullptr ? imageContext : this);
}

void OpenGLImage::drawImage(IMGImage&, const TransformAndClipList& list, CompositingOperation,
                            float fraction) {
    const std::shared_ptr<NSGraphicsContext> current = NSGraphicsContext::currentContext();
    if (m_bitmap == nullptr || current == nullptr) return;
    const Platform::CGImageRef image = imageOver(m_bitmap);
    if (image == nullptr) return;
    const Platform::CGContextRef context = Platform::CGContextWithGraphicsContext(current);
    for (const TransformAndClipRect* record : list.records()) {
        Platform::CGContextConcatCTM(*context, record->transform());
        if (record->hasClipRect()) Platform::CGContextClipToRect(*context, record->clipRect());
    }
    Platform::CGContextSetAlpha(*context, fraction);
    const NSRect whole = Platform::NSMakeRect(0, 0, static_cast<float>(m_bitmap->pixelsWide()),
                                              static_cast<float>(m_bitmap->pixelsHigh()));
    Platform::CGContextDrawImage(*context, whole, *image);
}

std::shared_ptr<IMGImage> OpenGLImage::copy() const { return std::make_shared<OpenGLImage>(m_bitmap); }

std::string OpenGLImage::archiveClassName() const { return "OpenGLImage"; }

} // namespace Imaging
