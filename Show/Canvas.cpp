// A canvas is a picture that is focused while it is drawn on, read back once.

#include "Show/Canvas.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"

#include <algorithm>
#include <cstdint>

namespace Imaging {

using Platform::NSBitmapImageRep;
using Platform::NSException;
using Platform::NSRect;

namespace {

/// Canvases are at most this wide and high, which is what can be drawn on.
constexpr std::int64_t maximumSide = 32750;

} // namespace

void requireCanvas(PixelSize size, const std::string& advice) {
    const std::string measures =
        "the result would be " + std::to_string(size.width) + " x " + std::to_string(size.height) + " pixels";
    if (size.width > maximumSide || size.height > maximumSide) {
        throw NSException(Platform::NSInvalidArgumentException, measures + ", and at most " +
                                                                    std::to_string(maximumSide) +
                                                                    " can be drawn along a side; " + advice);
    }
    const Platform::PictureLimits limits = Platform::pictureLimits();
    const std::uint64_t maximumPixels = std::min(limits.maximumPixels, limits.maximumBytes / 4);
    if (static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height) > maximumPixels) {
        throw NSException(Platform::NSInvalidArgumentException, measures + ", more than the limit of " +
                                                                    std::to_string(maximumPixels) +
                                                                    " pixels; " + advice);
    }
}

std::shared_ptr<NSBitmapImageRep> drawnOnCanvas(PixelSize size, const std::string& advice,
                                                const std::function<NSRect()>& drawAndSelect) {
    requireCanvas(size, advice);
    Platform::NSImage canvas(floats(size));
    canvas.setCacheMode(Platform::NSImageCacheNever);
    const Platform::NSImageFocus focus(canvas);
    const NSRect shown = drawAndSelect();
    std::shared_ptr<NSBitmapImageRep> bitmap = NSBitmapImageRep::bitmapWithFocusedViewRect(shown);
    if (bitmap == nullptr)
        throw NSException(Platform::NSGenericException, "what was drawn could not be read back");
    return bitmap;
}

void paint(NSRect rect, const Platform::NSColor& color) {
    color.set();
    Platform::NSRectFillUsingOperation(rect, Platform::NSCompositeSourceOver);
}

} // namespace Imaging
