#pragma once

#include "Imaging/Image.h"
#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Color.h"

#include <memory>
#include <optional>

/// Leaves that make a picture of a size and a colour: from (0, 0), of their size, whatever they paint. They
/// ignore the operation that they are drawn with and paint over what is there. None archives anything of its
/// own.
namespace Imaging {

using Platform::NSBezierPath;
using Platform::NSColor;

/// Draws nothing.
class IMAGING_EXPORT IMGNullGenerator : public IMGImage {
public:
    static std::shared_ptr<IMGNullGenerator> generatorWithSize(NSSize size);
    explicit IMGNullGenerator(NSSize size);
    ~IMGNullGenerator() override;

    IMGBounds imageBounds() const override;
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override;
    using IMGImage::boundsForImage;

    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list, int operation,
                   float fraction, IMGDrawingTarget* imageContext) override;

private:
    NSSize m_size;
};

/// A rectangle, or a shape, of one colour. The fraction takes the place of the colour's own alpha, which does
/// not count: a half transparent colour drawn at fraction 1 is opaque. (A frame's alpha does count.)
class IMAGING_EXPORT IMGConstantImageGenerator : public IMGImage {
public:
    static std::shared_ptr<IMGConstantImageGenerator> generatorWithSize(NSSize size, const NSColor& color);

    /// The shape lies in the picture's own coordinates and is kept itself, so that later changes show. It is
    /// painted also where it reaches beyond the size. Null stands for the whole rectangle.
    static std::shared_ptr<IMGConstantImageGenerator>
    generatorWithSize(NSSize size, const NSColor& color, std::shared_ptr<NSBezierPath> shape);
    IMGConstantImageGenerator(NSSize size, const NSColor& color, std::shared_ptr<NSBezierPath> shape);
    ~IMGConstantImageGenerator() override;

    IMGBounds imageBounds() const override;
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override;
    using IMGImage::boundsForImage;

    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list, int operation,
                   float fraction, IMGDrawingTarget* imageContext) override;

private:
    NSSize m_size;
    NSColor m_color;
    std::shared_ptr<NSBezierPath> m_shape;
};

/// A frame along the inside of its rectangle's edges. Its alpha is the colour's own times the fraction.
class IMAGING_EXPORT IMGSimpleFrameGenerator : public IMGImage {
public:
    /// `frameWidth` is measured inwards from each edge.
    static std::shared_ptr<IMGSimpleFrameGenerator> generatorWithSize(NSSize size, const NSColor& color,
                                                                      float frameWidth);
    IMGSimpleFrameGenerator(NSSize size, const NSColor& color, float frameWidth);
    ~IMGSimpleFrameGenerator() override;

    IMGBounds imageBounds() const override;
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override;
    using IMGImage::boundsForImage;

    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list, int operation,
                   float fraction, IMGDrawingTarget* imageContext) override;

private:
    NSSize m_size;
    NSColor m_color;
    float m_frame_width;
};

} // namespace Imaging
