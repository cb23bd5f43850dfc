#include "Imaging/CachedImage.h"

#include "Imaging/BitmapFormats.h"
#include "Imaging/Drawing/RecordClips.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

namespace Imaging {

using Platform::NSGraphicsContext;

namespace {

/// What `cacheable` and `fixSize` have in common: `prepare` is called for each correction.
template<class Prepare>
void adoptPixelSize(NSImage& image, const Prepare& prepare) {
    const NSSize declared = image.size();
    for (const auto& representation : image.representations()) {
        const auto bitmap = std::dynamic_pointer_cast<Platform::NSBitmapImageRep>(representation);
        if (bitmap == nullptr) continue;
        const NSSize pixels = {static_cast<float>(bitmap->pixelsWide()),
                               static_cast<float>(bitmap->pixelsHigh())};
        if (Platform::NSEqualSizes(declared, pixels)) continue;
        image.setSize(pixels);
        prepare(image);
    }
}

/// Archives may come from anywhere, and opening a pipe that one of them names would wait for ever.
bool isOrdinaryFile(const std::string& path) {
    std::error_code failure;
    return std::filesystem::is_regular_file(path, failure);
}

} // namespace

// CCImage

CCImage::CCImage() = default;

CCImage::CCImage(std::shared_ptr<NSImage> image) : m_ns_image(std::move(image)) {}

CCImage::~CCImage() = default;

std::shared_ptr<CCImage> CCImage::ccImageWithNSImage(std::shared_ptr<NSImage> image) {
    return std::make_shared<CCImage>(std::move(image));
}

std::shared_ptr<CCImage> CCImage::ccImageWithCIImage(const std::shared_ptr<CIImage>&) {
    return std::shared_ptr<CCImage>(new CCImage());
}

NSSize CCImage::size() const { return m_ns_image != nullptr ? m_ns_image->size() : Platform::NSZeroSize; }

std::string CCImage::description() const {
    char address[2 + 2 * sizeof(void*) + 1];
    std::snprintf(address, sizeof address, "0x%" PRIxPTR, reinterpret_cast<std::uintptr_t>(this));
    return std::string("<CCImage: ") + address + ">";
}

void CCImage::forceToCache() {
    if (m_ns_image == nullptr) return;
    try {
        const Platform::NSImageFocus focus(*m_ns_image);
    } catch (...) { // the first draw will tell
    }
}

void CCImage::drawWithTransformClip(const TransformAndClipList& list, int operation, float fraction,
                                    IMGDrawingTarget*) {
    const std::shared_ptr<NSGraphicsContext> context = NSGraphicsContext::currentContext();
    if (context == nullptr) return;
    const NSRect whole = {Platform::NSZeroPoint, size()};
    const Platform::NSGraphicsStateScope state; // restoring it also undoes the transform
    const NSAffineTransform transform = addRecordClips(list);
    if (m_ns_image == nullptr) return;
    context->concat(transform);
    const std::lock_guard<std::recursive_mutex> lock(GlobalImageLock());
    m_ns_image->drawInRect(whole, whole, operation, fraction);
}

// IMGImageFromNSImage

IMGImageFromNSImage::IMGImageFromNSImage(std::shared_ptr<NSImage> image, std::optional<std::string> fileName)
    : m_image(CCImage::ccImageWithNSImage(cacheable(std::move(image)))), m_file_name(std::move(fileName)) {}

IMGImageFromNSImage::IMGImageFromNSImage(std::shared_ptr<NSImage> image)
    : IMGImageFromNSImage(std::move(image), std::nullopt) {
    if (m_image->nsImage() == nullptr) {
        throw Platform::NSException(Platform::NSInvalidArgumentException, "a picture node needs a picture");
    }
}

std::shared_ptr<IMGImageFromNSImage> IMGImageFromNSImage::initWithContentsOfFile(const std::string& path,
                                                                                 NSError* error) {
    std::shared_ptr<NSImage> image = NSImage::imageWithContentsOfFile(path, error);
    if (image == nullptr) return nullptr;
    return std::shared_ptr<IMGImageFromNSImage>(new IMGImageFromNSImage(std::move(image), path));
}

std::shared_ptr<IMGImageFromNSImage> IMGImageFromNSImage::initWithContentsOfURL(const NSURL& url,
                                                                                NSError* error) {
    std::shared_ptr<NSImage> image = NSImage::imageWithContentsOfURL(url, error);
    return image != nullptr ? std::make_shared<IMGImageFromNSImage>(std::move(image)) : nullptr;
}

IMGImageFromNSImage::IMGImageFromNSImage(Platform::NSCoder& coder) : IMGImage(coder) {
    m_file_name = coder.decodeString("file-name");
    std::shared_ptr<NSImage> picture;
    if (coder.containsValueForKey("ns-image")) {
        picture = coder.decodeObjectOfClass<NSImage>("ns-image");
    } else if (m_file_name.has_value() && isOrdinaryFile(*m_file_name)) {
        picture = NSImage::imageWithContentsOfFile(*m_file_name);
    }
    m_image = CCImage::ccImageWithNSImage(cacheable(std::move(picture)));
}

IMGImageFromNSImage::~IMGImageFromNSImage() = default;

std::shared_ptr<CCImage> IMGImageFromNSImage::untransformedImage() { return m_image; }

std::shared_ptr<CCImage> IMGImageFromNSImage::image() { return m_image; }

IMGBounds IMGImageFromNSImage::imageBounds() const {
    return IMGBounds::boundsWithRect({Platform::NSZeroPoint, m_image->size()}, NSAffineTransform());
}

std::optional<IMGBounds> IMGImageFromNSImage::boundsForImage(const IMGImage& image,
                                                             const NSAffineTransform& transform) const {
    if (!isEqual(image)) return std::nullopt;
    return IMGBounds::boundsWithRect({Platform::NSZeroPoint, m_image->size()}, transform);
}

void IMGImageFromNSImage::drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                                    int operation, float fraction, IMGDrawingTarget* imageContext) {
    drawRetainedImage(image, list, operation, fraction, imageContext);
}

std::shared_ptr<IMGImage> IMGImageFromNSImage::copy() const {
    return m_file_name.has_value() ? initWithContentsOfFile(*m_file_name) : nullptr;
}

std::string IMGImageFromNSImage::archiveClassName() const { return "IMGImageFromNSImage"; }

void IMGImageFromNSImage::encodeWithCoder(Platform::NSCoder& coder) const {
    IMGImage::encodeWithCoder(coder);
    if (m_file_name.has_value()) {
        coder.encodeString(*m_file_name, "file-name");
    } else if (m_image->nsImage() != nullptr) {
        coder.encodeObject(m_image->nsImage().get(), "ns-image");
    }
}

std::string IMGImageFromNSImage::description() const {
    return m_file_name.value_or("(null)") + " " + m_image->description();
}

// Extensions of the picture class

std::shared_ptr<IMGImageFromNSImage> imagingImage(std::shared_ptr<NSImage> image) {
    return std::make_shared<IMGImageFromNSImage>(std::move(image));
}

std::shared_ptr<NSImage> cacheable(std::shared_ptr<NSImage> image) {
    if (image == nullptr) return nullptr;
    adoptPixelSize(*image, [](NSImage& picture) { picture.setScalesWhenResized(true); });
    image->setCacheMode(Platform::NSImageCacheAlways);
    return image;
}

std::shared_ptr<NSImage> fixSize(std::shared_ptr<NSImage> image) {
    if (image == nullptr) return nullptr;
    image->setCacheMode(Platform::NSImageCacheAlways);
    adoptPixelSize(*image, [](NSImage& picture) { picture.setDataRetained(true); });
    return image;
}

} // namespace Imaging
