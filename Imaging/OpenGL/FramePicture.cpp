// One frame is kept, since a view shows its frame in one size until it is resized.

#include "Imaging/OpenGL/FramePicture.h"

#include "Imaging/BitmapFormats.h"
#include "Imaging/GraphicsUtilities.h"
#include "Imaging/OpenGL/OverlayPicture.h"
#include "Imaging/OpenGLImage.h"
#include "Platform/Graphics/GraphicsContext.h"

#include <mutex>
#include <utility>

namespace Imaging {

namespace {

struct KeptFrame {
    std::mutex lock;
    std::shared_ptr<OpenGLImage> picture;
};

/// Never destroyed: frames may still be drawn while static objects are torn down.
KeptFrame& keptFrame() {
    static KeptFrame& kept = *new KeptFrame;
    return kept;
}

std::shared_ptr<OpenGLImage> drawnFrame(NSRect rect, bool drawBackground) {
    const std::shared_ptr<NSImage> picture = overlayPicture(rect.size, [&] {
        if (drawBackground) Platform::NSDrawWindowBackground(rect);
        DrawFrameInside(rect);
    });
    if (picture == nullptr) return nullptr;
    std::shared_ptr<NSBitmapImageRep> bitmap = bitmapRepresentationWithABGRFormat(*picture);
    return bitmap != nullptr ? std::make_shared<OpenGLImage>(std::move(bitmap)) : nullptr;
}

} // namespace

std::shared_ptr<OpenGLImage> framePicture(NSRect rect, bool drawBackground) {
    KeptFrame& kept = keptFrame();
    const std::lock_guard lock(kept.lock);
    if (kept.picture == nullptr || !Platform::NSEqualSizes(kept.picture->imageSize(), rect.size)) {
        kept.picture.reset();
        kept.picture = drawnFrame(rect, drawBackground);
    }
    return kept.picture;
}

void forgetFramePicture() {
    KeptFrame& kept = keptFrame();
    const std::lock_guard lock(kept.lock);
    kept.picture.reset();
}

} // namespace Imaging
