// A picture makes what is ready to be drawn from its best representation when it is first needed, and
// replaces its representations by what was drawn into it.

#include "Platform/Graphics/Image.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/URLLoading.h"
#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Pictures/BitmapPixels.h"
#include "Platform/Graphics/Pictures/BitmapRows.h"
#include "Platform/Graphics/Pictures/CachedImageRep.h"
#include "Platform/Graphics/Pictures/DrawablePicture.h"
#include "Platform/Graphics/Pictures/PictureDrawing.h"
#include "Platform/Pixels/PictureLimits.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Imaging::Platform {

namespace {

const NSArchivableClass<NSImage> registration("NSImage");

bool isDrawableSize(NSSize size) {
    return size.width > 0 && size.height > 0 && std::isfinite(size.width) && std::isfinite(size.height);
}

/// Whether a size became another one only because files round the resolution that it follows from.
bool isRounded(NSSize size, NSSize exact) {
    const auto isClose = [](float a, float b) { return std::abs(a - b) <= b * 1e-3F; };
    return isClose(size.width, exact.width) && isClose(size.height, exact.height);
}

/// Whole pixels for a length in points. Less than 1/256 of a pixel would not show in 8 bits, and comes from
/// rounding in a transform rather than from a wish for one more row.
std::int64_t pixelsForPoints(float points) {
    if (!(points > 0) || points > 1e9F) return points > 0 ? std::int64_t{1} << 40 : 0;
    return std::max<std::int64_t>(1, static_cast<std::int64_t>(std::ceil(points - 1.0 / 256)));
}

/// What was drawn as a bitmap.
std::shared_ptr<NSBitmapImageRep> bitmapOf(DrawablePicture& picture) {
    NSBitmapDescription description;
    description.pixelsWide = picture.width();
    description.pixelsHigh = picture.height();
    std::shared_ptr<NSBitmapImageRep> bitmap = NSBitmapImageRep::bitmapWithDescription(description);
    if (bitmap == nullptr) return nullptr;
    const std::shared_ptr<const PixelImage> pixels = picture.level(0);
    const TargetPixels target = targetPixels(*bitmap);
    for (int y = 0; y < pixels->height(); ++y) {
        writeWords(target, pixelLayout(*bitmap), static_cast<std::size_t>(y), pixels->row(y));
    }
    return bitmap;
}

} // namespace

/// What `unlockFocus` needs: the place that was drawn into and what was current before.
struct NSImage::Focus {
    std::shared_ptr<DrawablePicture> picture;
    std::shared_ptr<NSGraphicsContext> context;
    std::shared_ptr<NSGraphicsContext> previous;
};

NSImage::NSImage(NSSize size) : m_size(size) {}

NSImage::NSImage(NSCoder& coder) : m_size(NSZeroSize) {
    std::optional<NSData> data = coder.decodeData("data");
    if (!data.has_value()) {
        m_size = coder.decodeSize("size");
        return;
    }
    adoptBitmap(*data, nullptr);
    if (m_representations.empty()) return;
    m_encoded_data = std::make_shared<const NSData>(std::move(*data));
    m_scales_when_resized = coder.decodeBool("scales-when-resized");
    if (!coder.containsValueForKey("size")) return;
    m_size = coder.decodeSize("size");
    NSImageRep& bitmap = *m_representations.front();
    if (isRounded(bitmap.size(), m_size)) bitmap.setSize(m_size);
}

NSImage::~NSImage() = default;

void NSImage::adoptBitmap(ByteView data, NSError* error) {
    const std::shared_ptr<NSBitmapImageRep> bitmap = NSBitmapImageRep::imageRepWithData(data, error);
    if (bitmap == nullptr) return;
    m_representations = {bitmap};
    m_size = bitmap->size();
}

std::shared_ptr<NSImage> NSImage::imageWithContentsOfFile(const std::string& path, NSError* error) {
    const std::optional<NSData> data = dataWithContentsOfFile(path, pictureLimits().maximumBytes, error);
    if (!data.has_value()) return nullptr;
    auto image = std::make_shared<NSImage>(NSZeroSize);
    image->adoptBitmap(*data, error);
    return image->m_representations.empty() ? nullptr : image;
}

std::shared_ptr<NSImage> NSImage::imageWithContentsOfURL(const NSURL& url, NSError* error) {
    std::optional<NSData> data = dataWithContentsOfURL(url, error);
    return data.has_value() ? imageWithData(std::move(*data), error) : nullptr;
}

std::shared_ptr<NSImage> NSImage::imageWithData(NSData data, NSError* error) {
    auto image = std::make_shared<NSImage>(NSZeroSize);
    image->adoptBitmap(data, error);
    if (image->m_representations.empty()) return nullptr;
    image->m_encoded_data = std::make_shared<const NSData>(std::move(data));
    return image;
}

// Encoded bytes are kept for archives only as long as they are what the picture shows.
void NSImage::contentChanged() {
    m_encoded_data.reset();
    recache();
}

void NSImage::setSize(NSSize size) {
    m_size = size;
    recache();
}

void NSImage::addRepresentation(std::shared_ptr<NSImageRep> representation) {
    if (representation == nullptr) {
        throw NSException(NSInvalidArgumentException, "a picture cannot have a null representation");
    }
    m_representations.push_back(std::move(representation));
    contentChanged();
}

void NSImage::removeRepresentation(const std::shared_ptr<NSImageRep>& representation) {
    std::erase(m_representations, representation);
    contentChanged();
}

void NSImage::setScalesWhenResized(bool flag) {
    m_scales_when_resized = flag;
    recache();
}

void NSImage::setCacheMode(int mode) {
    m_cache_mode = mode;
    recache();
}

void NSImage::recache() { m_drawable.reset(); }

// By pixels rather than by size: what has most of them shows most when it is drawn large.
std::shared_ptr<NSImageRep> NSImage::bestRepresentation() const {
    std::shared_ptr<NSImageRep> best;
    for (const std::shared_ptr<NSImageRep>& candidate : m_representations) {
        if (best == nullptr ||
            candidate->pixelsWide() * candidate->pixelsHigh() > best->pixelsWide() * best->pixelsHigh()) {
            best = candidate;
        }
    }
    return best;
}

// A representation of another size stands in the corner unless the picture says that it scales.
bool NSImage::fillsPicture(const NSImageRep& representation) const {
    return m_scales_when_resized || NSEqualSizes(representation.size(), m_size);
}

std::shared_ptr<DrawablePicture> NSImage::makeDrawable() const {
    const std::shared_ptr<NSImageRep> best = bestRepresentation();
    if (best == nullptr) return nullptr;
    const NSRect bounds{NSZeroPoint, fillsPicture(*best) ? m_size : best->size()};
    if (const auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(best)) {
        return std::make_shared<DrawablePicture>(std::make_shared<BitmapRows>(bitmap), bounds);
    }
    const auto cached = std::dynamic_pointer_cast<NSCachedImageRep>(best);
    if (cached == nullptr) return nullptr; // a form that only the application knows how to draw
    if (NSEqualRects(cached->picture()->bounds(), bounds)) return cached->picture();
    return cached->picture()->withBounds(bounds);
}

// Without a cache the picture is made for one draw and goes with its last owner.
std::shared_ptr<DrawablePicture> NSImage::drawable() {
    if (m_drawable != nullptr) return m_drawable;
    std::shared_ptr<DrawablePicture> made = makeDrawable();
    if (m_cache_mode != NSImageCacheNever) m_drawable = made;
    return made;
}

std::shared_ptr<DrawablePicture> NSImage::focusDrawable() {
    const std::shared_ptr<NSImageRep> best = bestRepresentation();
    const std::shared_ptr<DrawablePicture> shown = drawable();
    if (shown != nullptr && fillsPicture(*best)) {
        if (!isDrawableSize(m_size)) {
            throw NSException(NSImageCacheException, "a picture without a finite area cannot be drawn into");
        }
        // Whoever else has what was drawn once (another picture, say) keeps it as it is.
        const bool isShared = best.use_count() > 2 && dynamic_cast<NSCachedImageRep*>(best.get()) != nullptr;
        return isShared ? shown->copy() : shown;
    }
    const auto pixels =
        PixelImage::transparent(pixelsForPoints(m_size.width), pixelsForPoints(m_size.height));
    // One point a pixel, so the last column and row may reach beyond a size that is not whole.
    const NSRect covered =
        NSMakeRect(0, 0, static_cast<float>(pixels->width()), static_cast<float>(pixels->height()));
    auto picture = std::make_shared<DrawablePicture>(pixels, covered);
    if (shown == nullptr) return picture;
    const CairoSurface surface = surfaceOver(pixels);
    const CairoContext cairo(cairo_create(surface.get()));
    const auto context =
        NSGraphicsContext::graphicsContextWithCairo(cairo.get(), static_cast<double>(covered.size.height));
    drawPicture(*context, *shown, shown->bounds(), shown->bounds(), NSCompositeCopy, 1);
    return picture;
}

void NSImage::lockFocus() {
    if (m_focus != nullptr) throw NSException(NSImageCacheException, "the picture already has focus");
    auto focus = std::make_unique<Focus>();
    focus->picture = focusDrawable();
    const auto pixelsWide = static_cast<float>(focus->picture->width());
    const auto pixelsHigh = static_cast<float>(focus->picture->height());
    const CairoSurface surface = surfaceOver(focus->picture->pixels());
    const CairoContext cairo(cairo_create(surface.get()));
    focus->context = NSGraphicsContext::graphicsContextWithCairo(cairo.get(), pixelsHigh);
    if (!NSEqualSizes(focus->picture->bounds().size, NSMakeSize(pixelsWide, pixelsHigh))) {
        // The pixels are the representation's, of which there may be more or fewer than points.
        focus->context->concat(
            NSAffineTransform({pixelsWide / m_size.width, 0, 0, pixelsHigh / m_size.height, 0, 0}));
    }
    focus->picture->beginChanges();
    focus->previous = NSGraphicsContext::currentContext();
    NSGraphicsContext::setCurrentContext(focus->context);
    m_focus = std::move(focus);
}

void NSImage::unlockFocus() {
    if (m_focus == nullptr) throw NSException(NSImageCacheException, "the picture has no focus");
    const std::unique_ptr<Focus> focus = std::move(m_focus);
    NSGraphicsContext::setCurrentContext(focus->previous);
    cairo_surface_flush(cairo_get_target(focus->context->cairo()));
    const bool painted = focus->context->hasPainted();
    focus->picture->endChanges(painted);
    if (painted) {
        m_representations = {std::make_shared<NSCachedImageRep>(focus->picture)};
        contentChanged();
    }
    if (m_cache_mode != NSImageCacheNever && (painted || !m_representations.empty())) {
        m_drawable = focus->picture;
    }
}

std::shared_ptr<NSBitmapImageRep> NSImage::bitmapToEncode(NSError* error) const {
    const std::shared_ptr<NSImageRep> best = bestRepresentation();
    if (auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(best)) return bitmap;
    std::shared_ptr<NSBitmapImageRep> drawn;
    if (const auto cached = std::dynamic_pointer_cast<NSCachedImageRep>(best)) {
        drawn = bitmapOf(*cached->picture());
        if (drawn != nullptr) drawn->setSize(cached->size()); // which the file shows as its resolution
    } else {
        NSBitmapDescription blank;
        blank.pixelsWide = pixelsForPoints(m_size.width);
        blank.pixelsHigh = pixelsForPoints(m_size.height);
        drawn = NSBitmapImageRep::bitmapWithDescription(blank);
    }
    if (drawn == nullptr) {
        setError(error, NSErrorCode::TooLarge, "the picture has no area, or is beyond the picture limits");
    }
    return drawn;
}

std::optional<NSData> NSImage::TIFFRepresentation(NSError* error) const {
    const std::shared_ptr<NSBitmapImageRep> bitmap = bitmapToEncode(error);
    return bitmap != nullptr ? bitmap->TIFFRepresentation(error) : std::nullopt;
}

void NSImage::drawInRect(NSRect destination, NSRect source, NSCompositingOperation operation,
                         float fraction) {
    const auto context = NSGraphicsContext::currentContext();
    if (context == nullptr || !context->canDraw()) return;
    std::shared_ptr<DrawablePicture> picture = m_focus != nullptr ? m_focus->picture : drawable();
    if (picture == nullptr) {
        // Nothing, which still replaces what is there under an operation such as copy.
        picture =
            std::make_shared<DrawablePicture>(PixelImage::transparent(1, 1), NSRect{NSZeroPoint, m_size});
    }
    const NSRect part = NSEqualRects(source, NSZeroRect) ? NSRect{NSZeroPoint, m_size} : source;
    drawPicture(*context, *picture, destination, part, operation, static_cast<double>(fraction));
}

std::string NSImage::archiveClassName() const { return "NSImage"; }

void NSImage::encodeWithCoder(NSCoder& coder) const {
    coder.encodeSize(m_size, "size");
    coder.encodeBool(m_scales_when_resized, "scales-when-resized");
    if (m_encoded_data != nullptr) {
        coder.encodeData(*m_encoded_data, "data");
        return;
    }
    if (m_representations.empty()) return;
    NSError error;
    const std::shared_ptr<NSBitmapImageRep> bitmap = bitmapToEncode(&error);
    const auto png =
        bitmap != nullptr ? bitmap->representationUsingType(NSPNGFileType, {}, &error) : std::nullopt;
    if (!png.has_value()) throw NSException(NSInvalidArchiveOperationException, error.message);
    coder.encodeData(*png, "data");
}

} // namespace Imaging::Platform
