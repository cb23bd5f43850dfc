// Looks for the first pixel that lets something through, and copies the colours where there is none.

#include "Show/OpaqueBitmap.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Imaging {

using Platform::NSBitmapImageRep;

namespace {

bool isOpaque(const NSBitmapImageRep& bitmap) {
    for (std::int64_t y = 0; y < bitmap.pixelsHigh(); ++y) {
        const std::uint8_t* row = bitmap.bitmapData() + static_cast<std::size_t>(y) * bitmap.bytesPerRow();
        for (std::int64_t x = 0; x < bitmap.pixelsWide(); ++x) {
            if (row[x * 4 + 3] != 255) return false;
        }
    }
    return true;
}

/// The colour of a drawn bitmap (8 bits, red, green, blue and alpha) alone; null when memory runs out.
std::shared_ptr<NSBitmapImageRep> withoutAlpha(const NSBitmapImageRep& bitmap) {
    Platform::NSBitmapDescription description;
    description.pixelsWide = bitmap.pixelsWide();
    description.pixelsHigh = bitmap.pixelsHigh();
    description.samplesPerPixel = 3;
    description.hasAlpha = false;
    std::shared_ptr<NSBitmapImageRep> opaque = NSBitmapImageRep::bitmapWithDescription(description);
    if (opaque == nullptr) return nullptr;
    for (std::int64_t y = 0; y < bitmap.pixelsHigh(); ++y) {
        const std::uint8_t* from = bitmap.bitmapData() + static_cast<std::size_t>(y) * bitmap.bytesPerRow();
        std::uint8_t* to = opaque->bitmapData() + static_cast<std::size_t>(y) * opaque->bytesPerRow();
        for (std::int64_t x = 0; x < bitmap.pixelsWide(); ++x) std::copy_n(from + x * 4, 3, to + x * 3);
    }
    return opaque;
}

} // namespace

std::shared_ptr<NSBitmapImageRep> withoutNeedlessAlpha(const NSBitmapImageRep& bitmap) {
    return isOpaque(bitmap) ? withoutAlpha(bitmap) : nullptr;
}

} // namespace Imaging
