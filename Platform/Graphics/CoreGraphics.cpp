// Two kinds of contexts behind one interface: over a bitmap of the caller, which draws into words and
// carries them over, and over a context of ours.

#include "Platform/Graphics/CoreGraphics.h"

#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Cairo/ClipPath.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Pictures/BitmapPixels.h"
#include "Platform/Graphics/Pictures/BitmapRows.h"
#include "Platform/Graphics/Pictures/PictureDrawing.h"
#include "Platform/Pixels/PixelBuffer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace Imaging::Platform {

namespace {

PixelAlpha pixelAlpha(CGImageAlphaInfo info) {
    switch (info) {
    case kCGImageAlphaPremultipliedLast:
    case kCGImageAlphaLast:
        return PixelAlpha::Last;
    case kCGImageAlphaPremultipliedFirst:
    case kCGImageAlphaFirst:
        return PixelAlpha::First;
    case kCGImageAlphaNoneSkipLast:
        return PixelAlpha::SkipLast;
    case kCGImageAlphaNoneSkipFirst:
        return PixelAlpha::SkipFirst;
    case kCGImageAlphaNone:
        break;
    }
    return PixelAlpha::None;
}

PixelLayout layoutFor(CGColorSpaceModel model, std::size_t bitsPerComponent, CGImageAlphaInfo info) {
    PixelLayout layout;
    layout.color = model == CGColorSpaceModel::RGB ? PixelColor::RGB : PixelColor::Gray;
    layout.alpha = pixelAlpha(info);
    layout.premultiplied = info != kCGImageAlphaLast && info != kCGImageAlphaFirst;
    layout.bitsPerSample = static_cast<int>(bitsPerComponent);
    return layout;
}

std::size_t samplesOf(const PixelLayout& layout) {
    return static_cast<std::size_t>(layout.colorSamples()) + (layout.alpha == PixelAlpha::None ? 0 : 1);
}

PixelLayout layoutOf(const CGImage& image) {
    PixelLayout layout = layoutFor(image.colorSpace->model(), image.bitsPerComponent, image.alphaInfo);
    if (image.inverted) layout.color = PixelColor::InvertedGray;
    return layout;
}

/// The image's memory in place; it lives as long as the image.
SourcePixels pixelsOf(const CGImage& image) {
    SourcePixels pixels;
    pixels.planes[0] = image.provider->data();
    pixels.pixelStride = image.bitsPerPixel / 8;
    pixels.bytesPerRow = image.bytesPerRow;
    pixels.width = image.width;
    pixels.height = image.height;
    return pixels;
}

/// The bytes from the first pixel to the last, or nullopt when that overflows.
std::optional<std::uint64_t> neededBytes(std::size_t pixelBytes, std::size_t width, std::size_t height,
                                         std::size_t bytesPerRow) {
    const auto row = checkedProduct({width, pixelBytes});
    const auto before = checkedProduct({bytesPerRow, height - 1});
    if (!row.has_value() || !before.has_value() || *row > bytesPerRow || *before > UINT64_MAX - *row) {
        return std::nullopt;
    }
    return *before + *row;
}

/// Components of other depths would have to be taken apart bit by bit.
bool isSupportedDepth(std::size_t bits) { return bits == 8 || bits == 16; }

/// Source-over of one row of premultiplied RGBA onto another, rounded to nearest.
template<class Sample>
void composeOver(const Sample* source, Sample* target, std::size_t count) {
    constexpr std::uint32_t maximum = std::numeric_limits<Sample>::max();
    for (std::size_t i = 0; i < count * 4; i += 4) {
        const std::uint32_t rest = maximum - source[i + 3];
        for (std::size_t c = 0; c < 4; ++c) {
            const std::uint32_t sum = source[i + c] + dividedByMaximum(target[i + c] * rest, Sample{});
            target[i + c] = static_cast<Sample>(std::min(sum, maximum));
        }
    }
}

/// Whole pixels from the bitmap's left and top edges.
struct PixelOffset {
    std::int64_t x;
    std::int64_t y;
};

/// A context over pixels in memory. Images that land on whole pixels at their own size go straight from
/// layout to layout; everything else is drawn on a 32-bit copy that is written back.
class BitmapContext final : public CGContext {
public:
    BitmapContext(const TargetPixels& pixels, const PixelLayout& layout)
        : m_pixels(pixels), m_layout(layout) {}

    void saveGState() override { m_saved.push_back(m_state); }
    void restoreGState() override {
        if (m_saved.empty()) return;
        m_state = std::move(m_saved.back());
        m_saved.pop_back();
    }
    void concatCTM(const NSAffineTransform& transform) override {
        m_state.transform.prependTransform(transform);
    }
    void clipToRect(NSRect rect) override {
        NSBezierPath path = clipPath(rect);
        path.transformUsingAffineTransform(m_state.transform);
        m_state.clips.push_back(std::move(path));
    }
    void setAlpha(float alpha) override { m_state.alpha = alpha; }
    void drawImage(NSRect rect, const CGImage& image) override;

private:
    struct State {
        NSAffineTransform transform;
        std::vector<NSBezierPath> clips;
        float alpha = 1;
    };

    SourcePixels presentPixels() const;
    std::optional<PixelOffset> wholePixelOffset(NSRect rect, const CGImage& image) const;
    template<class Sample>
    void carryOver(PixelOffset offset, const CGImage& image);
    void drawThroughSurface(NSRect rect, const CGImage& image);
    void writeBack(cairo_surface_t* surface) const;
    void writeChanges(std::size_t y, const std::vector<std::uint16_t>& before,
                      const std::vector<std::uint16_t>& after) const;

    TargetPixels m_pixels;
    PixelLayout m_layout;
    State m_state;
    std::vector<State> m_saved;
};

SourcePixels BitmapContext::presentPixels() const {
    SourcePixels pixels;
    pixels.planes[0] = m_pixels.planes[0];
    pixels.pixelStride = m_pixels.pixelStride;
    pixels.bytesPerRow = m_pixels.bytesPerRow;
    pixels.width = m_pixels.width;
    pixels.height = m_pixels.height;
    return pixels;
}

/// Where an image lands if nothing about it has to be computed anew: at its own size, on whole pixels,
/// without clip or alpha.
std::optional<PixelOffset> BitmapContext::wholePixelOffset(NSRect rect, const CGImage& image) const {
    const NSAffineTransformStruct m = m_state.transform.transformStruct();
    const bool onlyMoves = m.m11 == 1 && m.m12 == 0 && m.m21 == 0 && m.m22 == 1;
    const bool ownSize = rect.size.width == static_cast<float>(image.width) &&
                         rect.size.height == static_cast<float>(image.height);
    const double x = static_cast<double>(rect.origin.x) + m.tX;
    const double y = static_cast<double>(rect.origin.y) + m.tY;
    const bool near = std::abs(x) < 1e9 && std::abs(y) < 1e9;
    if (!onlyMoves || !ownSize || !near || !m_state.clips.empty() || m_state.alpha != 1) return std::nullopt;
    if (x != std::floor(x) || y != std::floor(y)) return std::nullopt;
    const auto bottom = static_cast<std::int64_t>(m_pixels.height) - static_cast<std::int64_t>(y);
    return PixelOffset{static_cast<std::int64_t>(x), bottom - static_cast<std::int64_t>(image.height)};
}

/// Row by row at the bitmap's own depth, so that 16 bits stay 16 bits.
template<class Sample>
void BitmapContext::carryOver(PixelOffset offset, const CGImage& image) {
    const PixelLayout layout = layoutOf(image);
    const SourcePixels source = pixelsOf(image);
    const auto targetWidth = static_cast<std::int64_t>(m_pixels.width);
    const std::int64_t left = std::max<std::int64_t>(0, offset.x);
    const std::int64_t right = std::min(targetWidth, offset.x + static_cast<std::int64_t>(image.width));
    if (left >= right) return;
    std::vector<Sample> sourceRow(image.width * 4);
    // Only the columns that the image covers: a spare sample beside it stays as it is.
    const auto count = static_cast<std::size_t>(right - left);
    const std::size_t skipped = static_cast<std::size_t>(left) * m_pixels.pixelStride;
    std::vector<Sample> targetRow(count * 4);
    SourcePixels present = presentPixels();
    present.planes[0] += skipped;
    present.width = count;
    TargetPixels covered = m_pixels;
    covered.planes[0] += skipped;
    covered.width = count;
    for (std::size_t y = 0; y < image.height; ++y) {
        const std::int64_t targetY = offset.y + static_cast<std::int64_t>(y);
        if (targetY < 0 || targetY >= static_cast<std::int64_t>(m_pixels.height)) continue;
        const auto row = static_cast<std::size_t>(targetY);
        readRow(source, layout, y, sourceRow.data());
        readRow(present, m_layout, row, targetRow.data());
        composeOver(sourceRow.data() + (left - offset.x) * 4, targetRow.data(), count);
        writeRow(covered, m_layout, row, targetRow.data());
    }
}

/// Everything else is drawn in 8 bits, on a copy of the whole bitmap.
void BitmapContext::drawThroughSurface(NSRect rect, const CGImage& image) {
    const CairoSurface surface = pixelSurfaceOf(presentPixels(), m_layout);
    {
        const CairoContext cairo(cairo_create(surface.get()));
        const auto context =
            NSGraphicsContext::graphicsContextWithCairo(cairo.get(), static_cast<double>(m_pixels.height));
        for (const NSBezierPath& clip : m_state.clips) context->addClip(clip);
        context->concat(m_state.transform);
        const CGContextRef target = CGContextWithGraphicsContext(context);
        target->setAlpha(m_state.alpha);
        target->drawImage(rect, image);
    }
    writeBack(surface.get());
}

void BitmapContext::writeBack(cairo_surface_t* surface) const {
    const std::size_t width = m_pixels.width;
    std::vector<std::uint16_t> before(width * 4);
    std::vector<std::uint16_t> after(width * 4);
    TargetPixels row;
    row.planes[0] = reinterpret_cast<std::uint8_t*>(after.data());
    row.pixelStride = 4 * sizeof(std::uint16_t);
    row.bytesPerRow = width * row.pixelStride;
    row.width = width;
    row.height = 1;
    for (std::size_t y = 0; y < m_pixels.height; ++y) {
        readRow(presentPixels(), m_layout, y, before.data());
        writeSurface(surface, 0, y, row, {PixelColor::RGB, PixelAlpha::Last, true, 16});
        writeChanges(y, before, after);
    }
}

// Pixels that look the same in 8 bits were not drawn on: they keep the 16 bits and the spare samples that
// they have.
void BitmapContext::writeChanges(std::size_t y, const std::vector<std::uint16_t>& before,
                                 const std::vector<std::uint16_t>& after) const {
    const auto isChanged = [&](std::size_t x) {
        const auto looksTheSame = [](unsigned was, unsigned is) { return (was + 128) / 257 == is / 257; };
        return !std::equal(&before[x * 4], &before[x * 4] + 4, &after[x * 4], looksTheSame);
    };
    std::size_t x = 0;
    while (x < m_pixels.width) {
        const std::size_t first = x;
        while (x < m_pixels.width && isChanged(x)) ++x;
        TargetPixels run = m_pixels;
        run.planes[0] += first * m_pixels.pixelStride;
        run.width = x - first;
        if (run.width > 0) writeRow(run, m_layout, y, &after[first * 4]);
        ++x;
    }
}

void BitmapContext::drawImage(NSRect rect, const CGImage& image) {
    if (const std::optional<PixelOffset> offset = wholePixelOffset(rect, image)) {
        if (m_layout.bitsPerSample == 16) {
            carryOver<std::uint16_t>(*offset, image);
        } else {
            carryOver<std::uint8_t>(*offset, image);
        }
        return;
    }
    drawThroughSurface(rect, image);
}

/// The drawing calls on a 2-D graphics context.
class GraphicsPort final : public CGContext {
public:
    explicit GraphicsPort(std::shared_ptr<NSGraphicsContext> context) : m_context(std::move(context)) {}

    void saveGState() override {
        m_context->saveGraphicsState();
        m_saved_alphas.push_back(m_alpha);
    }
    void restoreGState() override {
        if (m_saved_alphas.empty()) return;
        m_context->restoreGraphicsState();
        m_alpha = m_saved_alphas.back();
        m_saved_alphas.pop_back();
    }
    void concatCTM(const NSAffineTransform& transform) override { m_context->concat(transform); }
    void clipToRect(NSRect rect) override { m_context->addClip(clipPath(rect)); }
    void setAlpha(float alpha) override { m_alpha = alpha; }

    void drawImage(NSRect rect, const CGImage& image) override {
        const NSRect bounds =
            NSMakeRect(0, 0, static_cast<float>(image.width), static_cast<float>(image.height));
        DrawablePicture picture(std::make_shared<PlainRows>(pixelsOf(image), layoutOf(image)), bounds);
        drawPicture(*m_context, picture, rect, bounds, NSCompositeSourceOver, static_cast<double>(m_alpha));
    }

private:
    std::shared_ptr<NSGraphicsContext> m_context;
    std::vector<float> m_saved_alphas;
    float m_alpha = 1;
};

} // namespace

CGContext::~CGContext() = default;

CGColorSpaceRef CGColorSpaceCreateDeviceGray() {
    return std::make_shared<CGColorSpace>(CGColorSpaceModel::Monochrome);
}

CGColorSpaceRef CGColorSpaceCreateDeviceRGB() {
    return std::make_shared<CGColorSpace>(CGColorSpaceModel::RGB);
}

CGDataProvider::CGDataProvider(const void* data, std::size_t size, std::function<void()> release)
    : m_data(static_cast<const std::uint8_t*>(data)), m_size(size), m_release(std::move(release)) {}

CGDataProvider::~CGDataProvider() {
    if (m_release) m_release();
}

CGDataProviderRef CGDataProviderCreateWithData(const void* data, std::size_t size,
                                               std::function<void()> release) {
    return std::make_shared<CGDataProvider>(data, size, std::move(release));
}

CGImageRef CGImageCreate(std::size_t width, std::size_t height, std::size_t bitsPerComponent,
                         std::size_t bitsPerPixel, std::size_t bytesPerRow, const CGColorSpaceRef& space,
                         CGImageAlphaInfo alphaInfo, const CGDataProviderRef& provider, const float* decode) {
    if (width == 0 || height == 0 || space == nullptr || provider == nullptr) return nullptr;
    if (!isSupportedDepth(bitsPerComponent) || bitsPerPixel % 8 != 0) return nullptr;
    const bool inverted = decode != nullptr && decode[0] == 1 && decode[1] == 0;
    if (decode != nullptr && !inverted && !(decode[0] == 0 && decode[1] == 1)) return nullptr;
    if (inverted && space->model() != CGColorSpaceModel::Monochrome) return nullptr;
    if (alphaInfo > kCGImageAlphaNoneSkipFirst) return nullptr;
    const PixelLayout layout = layoutFor(space->model(), bitsPerComponent, alphaInfo);
    if (bitsPerPixel < samplesOf(layout) * bitsPerComponent) return nullptr;
    const auto needed = neededBytes(bitsPerPixel / 8, width, height, bytesPerRow);
    if (!needed.has_value() || *needed > provider->size()) return nullptr;
    return std::make_shared<CGImage>(CGImage{width, height, bitsPerComponent, bitsPerPixel, bytesPerRow,
                                             space, alphaInfo, provider, inverted});
}

CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                   std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                   const CGColorSpaceRef& space, CGImageAlphaInfo alphaInfo) {
    if (data == nullptr || width == 0 || height == 0 || space == nullptr) return nullptr;
    if (!isSupportedDepth(bitsPerComponent) || alphaInfo > kCGImageAlphaNoneSkipFirst) return nullptr;
    const PixelLayout layout = layoutFor(space->model(), bitsPerComponent, alphaInfo);
    if (layout.hasAlpha() && !layout.premultiplied) return nullptr;
    const std::size_t pixelBytes = samplesOf(layout) * (bitsPerComponent / 8);
    if (!neededBytes(pixelBytes, width, height, bytesPerRow).has_value()) return nullptr;
    TargetPixels pixels;
    pixels.planes[0] = static_cast<std::uint8_t*>(data);
    pixels.pixelStride = pixelBytes;
    pixels.bytesPerRow = bytesPerRow;
    pixels.width = width;
    pixels.height = height;
    return std::make_shared<BitmapContext>(pixels, layout);
}

CGContextRef CGContextWithGraphicsContext(std::shared_ptr<NSGraphicsContext> context) {
    return context == nullptr ? nullptr : std::make_shared<GraphicsPort>(std::move(context));
}

} // namespace Imaging::Platform
