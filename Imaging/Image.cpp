// The base of all nodes: sources and observers, and the walks over them that find bounds and draw. It knows
// none of the classes derived from it; each answers the walks by its overrides.

#include "Imaging/Image.h"

#include "Imaging/CCImage.h"
#include "Imaging/Drawing/AssertionLines.h"
#include "Imaging/Drawing/DrawnPicture.h"
#include "Imaging/Drawing/Guarded.h"
#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

namespace Imaging {

using Platform::NSException;

namespace {

void needSource(const std::shared_ptr<IMGImage>& source) {
    if (source == nullptr) throw NSException(Platform::NSInvalidArgumentException, "a source cannot be null");
}

TransformAndClipList listOf(const NSAffineTransform& transform) {
    return TransformAndClipList(TransformAndClipRect(transform));
}

/// Lets go of sources one after another, also when each of them held the last reference to the next, so
/// that the depth of a graph is not limited by the stack when it is torn down.
void releaseInTurn(IMGImage::Sources sources) {
    static thread_local IMGImage::Sources* t_pending = nullptr;
    if (t_pending != nullptr) {
        std::move(sources.begin(), sources.end(), std::back_inserter(*t_pending));
        return;
    }
    t_pending = &sources;
    while (!sources.empty()) {
        const std::shared_ptr<IMGImage> last = std::move(sources.back());
        sources.pop_back();
    }
    t_pending = nullptr;
}

} // namespace

IMGImage::IMGImage() : IMGImage(Sources{}) {}

IMGImage::IMGImage(std::shared_ptr<IMGImage> source) : IMGImage(Sources{std::move(source)}) {}

IMGImage::IMGImage(Sources sources) {
    for (const std::shared_ptr<IMGImage>& source : sources) needSource(source);
    m_sources = std::make_unique<Sources>(std::move(sources));
    for (const std::shared_ptr<IMGImage>& source : *m_sources) observe(*source);
}

IMGImage::IMGImage(Platform::NSCoder& coder) {
    std::optional<Sources> decoded = coder.decodeArrayOfClass<IMGImage>("source-images");
    if (!decoded.has_value()) return;
    m_sources = std::make_unique<Sources>(std::move(*decoded));
    for (const std::shared_ptr<IMGImage>& source : *m_sources) observe(*source);
}

IMGImage::~IMGImage() {
    if (m_sources == nullptr) return;
    for (const std::shared_ptr<IMGImage>& source : *m_sources) source->removeImageDidChangeObserver(this);
    releaseInTurn(std::move(*m_sources));
}

// Sources

const IMGImage::Sources& IMGImage::sources() const {
    static const Sources none;
    return m_sources != nullptr ? *m_sources : none;
}

std::shared_ptr<IMGImage> IMGImage::sourceAtIndex(std::size_t index) const {
    if (index >= sources().size()) {
        throw NSException(Platform::NSRangeException, "source index " + std::to_string(index) +
                                                          " is beyond the node's " +
                                                          std::to_string(sources().size()) + " sources");
    }
    return sources()[index];
}

void IMGImage::addSource(std::shared_ptr<IMGImage> source) {
    needSource(source);
    if (m_sources == nullptr) return;
    m_sources->push_back(std::move(source));
    observe(*m_sources->back());
}

void IMGImage::exchangeSource(std::size_t index, std::shared_ptr<IMGImage> source) {
    needSource(source);
    const std::shared_ptr<IMGImage> old = std::exchange(m_sources->at(index), std::move(source));
    old->removeImageDidChangeObserver(this);
    observe(*(*m_sources)[index]);
    // A node that is a source twice over is still observed for its other place.
    if (std::find(m_sources->begin(), m_sources->end(), old) != m_sources->end()) observe(*old);
    changed();
}

void IMGImage::replaceSourceAtIndex(std::size_t index, std::shared_ptr<IMGImage> source) {
    needSource(source);
    if (sourceAtIndex(index)->isEqual(*source)) return;
    exchangeSource(index, std::move(source));
}

std::optional<std::size_t> IMGImage::indexOfSource(const IMGImage& source) const {
    const Sources& all = sources();
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i]->isEqual(source)) return i;
    }
    return std::nullopt;
}

void IMGImage::replaceSource(const std::shared_ptr<IMGImage>& oldSource,
                             std::shared_ptr<IMGImage> newSource) {
    needSource(oldSource);
    if (const std::optional<std::size_t> index = indexOfSource(*oldSource)) {
        exchangeSource(*index, std::move(newSource));
        return;
    }
    // A copy of the list: a replacement below may reach this node's observers, which may change it.
    const Sources snapshot = sources();
    for (const std::shared_ptr<IMGImage>& source : snapshot) source->replaceSource(oldSource, newSource);
}

std::shared_ptr<IMGImage> IMGImage::parentOfSource(const IMGImage& source) {
    if (indexOfSource(source).has_value()) return shared_from_this();
    for (const std::shared_ptr<IMGImage>& candidate : sources()) {
        if (std::shared_ptr<IMGImage> parent = candidate->parentOfSource(source)) return parent;
    }
    return nullptr;
}

// Observers

void IMGImage::observe(IMGImage& source) {
    source.addImageDidChangeObserver(this, &IMGImage::sourceDidChange);
}

void IMGImage::setObserver(const void* observer, Callback callback) {
    m_observers.insert_or_assign(observer, std::make_shared<const Callback>(std::move(callback)));
}

void IMGImage::eraseObserver(const void* observer) { m_observers.erase(observer); }

void IMGImage::changed() {
    const std::shared_ptr<IMGImage> alive = weak_from_this().lock(); // an observer may drop the last owner
    std::vector<const void*> snapshot;
    snapshot.reserve(m_observers.size());
    for (const auto& [observer, callback] : m_observers) snapshot.push_back(observer);
    for (const void* observer : snapshot) {
        const auto entry = m_observers.find(observer);
        if (entry == m_observers.end()) continue;
        const std::shared_ptr<const Callback> callback = entry->second; // it may take its own entry away
        (*callback)(*this);
    }
}

void IMGImage::sourceDidChange(IMGImage&) { changed(); }

// Bounds

IMGBounds IMGImage::imageBounds() const {
    const Sources& all = sources();
    if (all.empty())
        Platform::parameterAssertionFailed("[m_sources count] > 0", "Imaging/Image",
                                           AssertionLines::imageBounds);
    const NSAffineTransform own = transform();
    if (all.size() == 1) {
        IMGBounds bounds = all.front()->imageBounds();
        bounds.concatTransform(own);
        return bounds;
    }
    // Each source is asked once: asked again at every level, a chain of nodes would take twice as long with
    // every node.
    std::vector<NSRect> rectangles;
    rectangles.reserve(all.size());
    for (const std::shared_ptr<IMGImage>& source : all) {
        rectangles.push_back(source->imageBounds().boundingRect());
    }
    // The union begins with the last one.
    NSRect united = rectangles.empty() ? Platform::NSZeroRect : rectangles.back();
    for (const NSRect rectangle : rectangles) united = Platform::NSUnionRect(united, rectangle);
    return IMGBounds::boundsWithRect(united, own);
}

NSRect IMGImage::imageBoundsRect() const { return imageBounds().boundingRect(); }

NSSize IMGImage::imageSize() const { return imageBoundsRect().size; }

NSAffineTransform IMGImage::fitTransform(NSRect rect) const {
    const NSRect bounds = imageBoundsRect();
    const float scaleX = rect.size.width / bounds.size.width;
    const float scaleY = rect.size.height / bounds.size.height;
    NSAffineTransform fit;
    fit.scaleXBy(scaleX, scaleY);
    fit.translateXBy(rect.origin.x / scaleX - bounds.origin.x, rect.origin.y / scaleY - bounds.origin.y);
    fit.prependTransform(transform());
    return fit;
}

std::optional<IMGBounds> IMGImage::boundsForImage(const IMGImage& image, NSRect drawRect) const {
    return boundsForImage(image, fitTransform(drawRect));
}

std::optional<IMGBounds> IMGImage::boundsForImage(const IMGImage& image,
                                                  const NSAffineTransform& transform) const {
    std::optional<IMGBounds> answer;
    for (const std::shared_ptr<IMGImage>& source : sources()) {
        guarded([&] {
            NSAffineTransform below = transform;
            below.prependTransform(source->transform());
            answer = source->boundsForImage(isEqual(image) ? *source : image, below);
        });
        if (answer.has_value()) return answer;
    }
    return std::nullopt;
}

// Drawing

void IMGImage::drawInRect(NSRect rect) { drawInRect(rect, true); }

void IMGImage::drawInRect(NSRect rect, bool retained) {
    drawInRect(rect, defaultCompositingOperation(), defaultCompositingFraction(), retained);
}

void IMGImage::drawInRect(NSRect rect, CompositingOperation operation, float fraction, bool retained,
                          IMGDrawingTarget* imageContext) {
    const TransformAndClipList list = listOf(fitTransform(rect));
    if (retained) {
        drawRetainedImage(nullptr, list, operation, fraction, imageContext);
    } else {
        drawImage(nullptr, list, operation, fraction, imageContext);
    }
}

void IMGImage::drawWithTransform(const NSAffineTransform& transform, CompositingOperation operation,
                                 float fraction, IMGDrawingTarget* imageContext) {
    NSAffineTransform whole = transform;
    whole.prependTransform(this->transform());
    drawImage(nullptr, listOf(whole), operation, fraction, imageContext);
}

void IMGImage::drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                         CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) {
    drawSources(image, list, operation, fraction, imageContext);
}

void IMGImage::drawSources(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                           CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext,
                           const std::function<float(float)>& nextFraction) {
    for (const std::shared_ptr<IMGImage>& source : sources()) {
        guarded([&] {
            source->drawImage(image, list.appending(TransformAndClipRect(source->transform())), operation,
                              fraction, imageContext);
            if (nextFraction != nullptr) fraction = nextFraction(fraction);
        });
    }
}

void IMGImage::drawRetainedImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                                 CompositingOperation operation, float fraction,
                                 IMGDrawingTarget* imageContext) {
    guarded([&] {
        if (image == nullptr && imageContext != nullptr) {
            imageContext->drawImage(*this, list, operation, fraction);
            return;
        }
        const std::shared_ptr<CCImage> rendered = image != nullptr ? image : untransformedImage();
        if (rendered != nullptr) rendered->drawWithTransformClip(list, operation, fraction, imageContext);
    });
}

// Rendering

std::shared_ptr<CCImage> IMGImage::image() {
    std::shared_ptr<CCImage> rendered;
    guarded([&] {
        if (isEqualToAffineTransform(transform(), NSAffineTransform())) {
            rendered = untransformedImage();
            return;
        }
        rendered = CCImage::ccImageWithNSImage(drawnPicture(imageSize(), [this](NSRect whole) {
            drawInRect(whole, Platform::NSCompositeSourceOver, 1.0F, false);
        }));
    });
    return rendered;
}

std::optional<NSData> IMGImage::representationUsingType(int type, const NSImageProperties& properties,
                                                        NSError* error) {
    try {
        const auto picture = drawnPicture(
            imageSize(),
            [this](NSRect whole) { drawInRect(whole, Platform::NSCompositeSourceOver, 1.0F, false); },
            Platform::NSImageCacheNever);
        const std::optional<NSData> tiff = picture->TIFFRepresentation(error);
        if (!tiff.has_value()) return std::nullopt;
        const auto bitmap = Platform::NSBitmapImageRep::imageRepWithData(*tiff, error);
        if (bitmap == nullptr) return std::nullopt;
        return bitmap->representationUsingType(type, properties, error);
    } catch (const NSException& failure) {
        Platform::setError(error, Platform::NSErrorCode::Failed, failure.reason());
    } catch (const std::exception& failure) {
        Platform::setError(error, Platform::NSErrorCode::Failed, failure.what());
    } catch (...) {
        Platform::setError(error, Platform::NSErrorCode::Failed, "drawing the picture failed");
    }
    return std::nullopt;
}

// Identity, copies and archives

bool IMGImage::isEqual(const IMGImage& other) const { return this == &other; }

std::string IMGImage::description() const {
    std::array<char, 2 * sizeof(void*)> digits{};
    const auto [end, failure] = std::to_chars(digits.data(), digits.data() + digits.size(),
                                              reinterpret_cast<std::uintptr_t>(this), 16);
    return "<" + archiveClassName() + ": 0x" + std::string(digits.data(), end) + ">";
}

std::shared_ptr<IMGImage> IMGImage::copy() const { return std::make_shared<IMGImage>(sources()); }

std::string IMGImage::archiveClassName() const { return "IMGImage"; }

void IMGImage::encodeWithCoder(Platform::NSCoder& coder) const {
    if (m_sources == nullptr) return;
    std::vector<const Platform::NSCoding*> objects;
    objects.reserve(m_sources->size());
    for (const std::shared_ptr<IMGImage>& source : *m_sources) objects.push_back(source.get());
    coder.encodeArray(objects, "source-images");
}

// What a class tells of itself

bool IMGImage::needsSource() const { return false; }

bool IMGImage::hasOwnPixels() const { return false; }

std::string IMGImage::parameterDescription() const { return {}; }

// The protocol's defaults

NSAffineTransform IMGImage::transform() const { return {}; }

std::shared_ptr<CCImage> IMGImage::untransformedImage() { return nullptr; }

Platform::NSCompositingOperation IMGImage::defaultCompositingOperation() const {
    return Platform::NSCompositeSourceOver;
}

float IMGImage::defaultCompositingFraction() const { return 1.0F; }

} // namespace Imaging
