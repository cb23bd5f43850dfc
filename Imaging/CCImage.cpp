// One platform picture as the last step of a draw: the records' transforms and clips go to the current
// context, and the platform paints the picture there while the one lock for pictures is held.

#include "Imaging/CCImage.h"

#include "Imaging/BitmapFormats.h"
#include "Imaging/Drawing/RecordClips.h"
#include "Imaging/Geometry.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <cinttypes>
#include <cstdio>
#include <mutex>
#include <utility>

namespace Imaging {

using Platform::NSGraphicsContext;

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

void CCImage::drawWithTransformClip(const TransformAndClipList& list, CompositingOperation operation,
                                    float fraction, IMGDrawingTarget*) {
    const std::shared_ptr<NSGraphicsContext> context = NSGraphicsContext::currentContext();
    if (context == nullptr) return;
    const NSRect whole = RectFromSize(size());
    const Platform::NSGraphicsStateScope state; // restoring it also undoes the transform
    const NSAffineTransform transform = addRecordClips(list);
    if (m_ns_image == nullptr) return;
    context->concat(transform);
    const std::lock_guard<std::recursive_mutex> lock(GlobalImageLock());
    m_ns_image->drawInRect(whole, whole, operation, fraction);
}

} // namespace Imaging
