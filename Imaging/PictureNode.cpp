// A leaf keeps its picture decoded from the moment it is made and remembers the file only to name it:
// archives then hold the path, and copies read it again.

#include "Imaging/PictureNode.h"

#include "Imaging/Geometry.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/BitmapImageRep.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace Imaging {

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
    return IMGBounds::boundsWithRect(RectFromSize(m_image->size()), NSAffineTransform());
}

std::optional<IMGBounds> IMGImageFromNSImage::boundsForImage(const IMGImage& image,
                                                             const NSAffineTransform& transform) const {
    if (!isEqual(image)) return std::nullopt;
    return IMGBounds::boundsWithRect(RectFromSize(m_image->size()), transform);
}

void IMGImageFromNSImage::drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                                    CompositingOperation operation, float fraction,
                                    IMGDrawingTarget* imageContext) {
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

std::optional<std::string> IMGImageFromNSImage::whyPictureIsMissing() const {
    const std::shared_ptr<NSImage>& picture = m_image->nsImage();
    if (picture != nullptr && !Platform::NSIsEmptyRect(bounds(*picture))) return std::nullopt;
    if (!m_file_name.has_value()) return "the bytes in the archive are damaged or no picture";
    std::error_code failure;
    const auto status = std::filesystem::status(*m_file_name, failure);
    if (std::filesystem::is_other(status)) return "this is no ordinary file";
    NSError error;
    // It was tried before, but the reason was not kept.
    if (NSImage::imageWithContentsOfFile(*m_file_name, &error) != nullptr) return "it was just being changed";
    return error.message;
}

std::string IMGImageFromNSImage::parameterDescription() const {
    if (const std::optional<std::string> why = whyPictureIsMissing()) {
        return m_file_name.value_or("picture in the archive") + " (missing: " + *why + ")";
    }
    return m_file_name.value_or("picture in memory");
}

// What makes these nodes

std::shared_ptr<IMGImageFromNSImage> IMGImage::imageWithContentsOfFile(const std::string& path,
                                                                       NSError* error) {
    return IMGImageFromNSImage::initWithContentsOfFile(path, error);
}

std::shared_ptr<IMGImageFromNSImage> IMGImage::imageWithContentsOfURL(const NSURL& url, NSError* error) {
    return IMGImageFromNSImage::initWithContentsOfURL(url, error);
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
