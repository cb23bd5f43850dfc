#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

/// Bitmap contexts, images over memory, and drawing one into the other: the way to bring pixels from one
/// layout into another without an owning bitmap object on either side.
///
/// Example:
/// @code
/// std::array<std::uint8_t, 64> pixels{}; // 4 x 4
/// const CGContextRef context = CGBitmapContextCreate(
///     pixels.data(), 4, 4, 8, 16, CGColorSpaceCreateDeviceRGB(), kCGImageAlphaPremultipliedLast);
/// CGContextSetAlpha(*context, 0.5F);
/// @endcode
namespace Imaging::Platform {

class NSGraphicsContext;

enum class CGColorSpaceModel { Monochrome, RGB };

class IMAGING_EXPORT CGColorSpace {
public:
    explicit CGColorSpace(CGColorSpaceModel model) : m_model(model) {}
    CGColorSpaceModel model() const { return m_model; }

private:
    CGColorSpaceModel m_model;
};
using CGColorSpaceRef = std::shared_ptr<const CGColorSpace>;

IMAGING_EXPORT CGColorSpaceRef CGColorSpaceCreateDeviceGray();
IMAGING_EXPORT CGColorSpaceRef CGColorSpaceCreateDeviceRGB();

/// Where alpha stands in a pixel, and whether colour is multiplied by it. The numbers are fixed.
enum CGImageAlphaInfo : unsigned {
    kCGImageAlphaNone = 0,
    kCGImageAlphaPremultipliedLast = 1,
    kCGImageAlphaPremultipliedFirst = 2,
    kCGImageAlphaLast = 3,
    kCGImageAlphaFirst = 4,
    kCGImageAlphaNoneSkipLast = 5,
    kCGImageAlphaNoneSkipFirst = 6,
};

/// Memory that an image reads in place. `release`, when given, is called once with no lock held, when the
/// last image lets go of it.
class IMAGING_EXPORT CGDataProvider {
public:
    CGDataProvider(const void* data, std::size_t size, std::function<void()> release);
    ~CGDataProvider();
    CGDataProvider(const CGDataProvider&) = delete;
    CGDataProvider& operator=(const CGDataProvider&) = delete;

    const std::uint8_t* data() const { return m_data; }
    std::size_t size() const { return m_size; }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::function<void()> m_release;
};
using CGDataProviderRef = std::shared_ptr<const CGDataProvider>;

IMAGING_EXPORT CGDataProviderRef CGDataProviderCreateWithData(const void* data, std::size_t size,
                                                              std::function<void()> release = {});

/// An image over a provider's memory: the first row in memory is the top one.
struct CGImage {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bitsPerComponent = 8; ///< 8 or 16, the latter in the machine's byte order
    std::size_t bitsPerPixel = 0;
    std::size_t bytesPerRow = 0;
    CGColorSpaceRef colorSpace;
    CGImageAlphaInfo alphaInfo = kCGImageAlphaNone;
    CGDataProviderRef provider;
    bool inverted = false; ///< a gray sample of 0 is white
};
using CGImageRef = std::shared_ptr<const CGImage>;

/// An image of the given layout. `decode` maps gray samples and may be null ({0, 1}) or {1, 0} (inverted).
/// Samples of a pixel beyond colour and alpha are ignored. Null when the layout makes no sense, another
/// decode is asked for, or the provider holds fewer bytes than the rows need; the last row needs no padding.
IMAGING_EXPORT CGImageRef CGImageCreate(std::size_t width, std::size_t height, std::size_t bitsPerComponent,
                                        std::size_t bitsPerPixel, std::size_t bytesPerRow,
                                        const CGColorSpaceRef& space, CGImageAlphaInfo alphaInfo,
                                        const CGDataProviderRef& provider, const float* decode);

/// A place to draw images into, y upward. One thread at a time.
class IMAGING_EXPORT CGContext {
public:
    virtual ~CGContext();
    CGContext(const CGContext&) = delete;
    CGContext& operator=(const CGContext&) = delete;

    virtual void saveGState() = 0;
    virtual void restoreGState() = 0;
    virtual void concatCTM(const NSAffineTransform& transform) = 0;
    virtual void clipToRect(NSRect rect) = 0;
    virtual void setAlpha(float alpha) = 0;
    virtual void drawImage(NSRect rect, const CGImage& image) = 0;

protected:
    CGContext() = default;
};
using CGContextRef = std::shared_ptr<CGContext>;

/// A context over the caller's pixels, which must outlive it: gray with or without alpha, RGB with or
/// without alpha, of 8 or 16 bits a component, pixels without padding, rows `bytesPerRow` apart, the first
/// row in memory the top one. Colours are taken as they are; colour drawn into gray is
/// (30·R + 59·G + 11·B) / 100, and all results are rounded to nearest. A layout without alpha keeps the
/// premultiplied colour. Null when the layout makes no sense, alpha is not premultiplied, or width or height
/// is 0. Contexts of 16 bits draw through 8 bits except where an image lands on whole pixels at its own size;
/// pixels that a draw does not reach keep their samples.
IMAGING_EXPORT CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                                  std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                                  const CGColorSpaceRef& space, CGImageAlphaInfo alphaInfo);

/// The same drawing calls on a 2-D graphics context, which the result keeps.
IMAGING_EXPORT CGContextRef CGContextWithGraphicsContext(std::shared_ptr<NSGraphicsContext> context);

/// The familiar spellings of the members.
inline void CGContextSaveGState(CGContext& context) { context.saveGState(); }
inline void CGContextRestoreGState(CGContext& context) { context.restoreGState(); }
inline void CGContextConcatCTM(CGContext& context, const NSAffineTransform& transform) {
    context.concatCTM(transform);
}
inline void CGContextClipToRect(CGContext& context, NSRect rect) { context.clipToRect(rect); }
inline void CGContextSetAlpha(CGContext& context, float alpha) { context.setAlpha(alpha); }

/// Draws the image into a rectangle of the context's space, source-over, scaled to fit. At the image's own
/// size on whole pixels, samples are carried over one by one.
inline void CGContextDrawImage(CGContext& context, NSRect rect, const CGImage& image) {
    context.drawImage(rect, image);
}

} // namespace Imaging::Platform
