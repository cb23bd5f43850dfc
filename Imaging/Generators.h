#pragma once

#include "Imaging/Image.h"
#include "Imaging/SizedNode.h"
#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Color.h"

#include <memory>
#include <string>

/// Leaves that make a picture of a size and a colour: from (0, 0), of their size, whatever they paint. They
/// ignore the operation and the rendered picture that they are drawn with and paint over what is there.
///
/// Shapes are cut geometrically, in the target's coordinates, by the records' clip rectangles, and filled as
/// paths: by the drawing target where one is given that is a graphics context, otherwise in the calling
/// thread's current NSGraphicsContext (nothing happens without one). A drawing target that is no graphics
/// context fills no paths; it is asked to draw the node itself, as for every leaf.
///
/// Under records that hold values which are not finite the current context shows nothing, and neither do
/// clipped shapes and plain rectangles anywhere. No state of the context is left behind. What a target throws
/// passes on.
///
/// None archives anything of its own: what comes back from an archive has size zero and draws nothing. Copies
/// are equal to the original; the shape is shared.
///
/// Example:
/// @code
/// const NSColor blue = NSColor::colorWithCalibratedRed(0, 0, 1, 1);
/// const auto page = IMGConstantImageGenerator::generatorWithSize(NSMakeSize(400, 300), blue);
/// const auto border = IMGSimpleFrameGenerator::generatorWithSize(page->size(), blue, 10);
/// @endcode
namespace Imaging {

using Platform::NSBezierPath;
using Platform::NSColor;

/// Draws nothing, through no target either.
class IMAGING_EXPORT IMGNullGenerator : public SizedNode {
public:
    static std::shared_ptr<IMGNullGenerator> generatorWithSize(NSSize size);
    explicit IMGNullGenerator(NSSize size);
    explicit IMGNullGenerator(Platform::NSCoder& coder);
    ~IMGNullGenerator() override;

    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
};

/// A rectangle, or a shape, of one colour. The fraction takes the place of the colour's own alpha, which does
/// not count: a half transparent colour drawn at fraction 1 is opaque. (A border's alpha does count.)
class IMAGING_EXPORT IMGConstantImageGenerator : public SizedNode {
public:
    static std::shared_ptr<IMGConstantImageGenerator> generatorWithSize(NSSize size, const NSColor& color);

    /// The shape lies in the picture's own coordinates and is kept itself, so that later changes show. It is
    /// painted also where it reaches beyond the size. Null stands for the whole rectangle.
    ///
    /// A shape is filled contour by contour, so that one that lies in another covers it and leaves no hole.
    /// Where a record has a clip rectangle, the contours are those of the shape's even-odd area inside the
    /// clip, and holes of that area are filled like any other. Curves become 20 lines each, the last of which
    /// goes to the start of what follows (see `GatherVertices`).
    static std::shared_ptr<IMGConstantImageGenerator> generatorWithSize(NSSize size, const NSColor& color,
                                                                        std::shared_ptr<NSBezierPath> shape);
    IMGConstantImageGenerator(NSSize size, const NSColor& color, std::shared_ptr<NSBezierPath> shape);
    explicit IMGConstantImageGenerator(Platform::NSCoder& coder);
    ~IMGConstantImageGenerator() override;

    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;

private:
    NSColor m_color;
    std::shared_ptr<NSBezierPath> m_shape;
};

/// A border along the inside of its rectangle's edges. Its alpha is the colour's own times the fraction.
class IMAGING_EXPORT IMGSimpleFrameGenerator : public SizedNode {
public:
    /// `frameWidth` is the border's, measured inwards from each edge.
    ///
    /// Through a graphics context the border is four strips, each cut by the clip and filled by itself:
    /// bottom and top over the whole width, left and right between them. They do not overlap, so the alpha is
    /// even. Where twice the width is more than the height, the side strips' heights are negative and they
    /// cover the others once more. Without a graphics context the border is what lies between the rectangle
    /// and the same one inset by the width, by the even-odd rule, in one fill.
    static std::shared_ptr<IMGSimpleFrameGenerator> generatorWithSize(NSSize size, const NSColor& color,
                                                                      float frameWidth);
    IMGSimpleFrameGenerator(NSSize size, const NSColor& color, float frameWidth);
    explicit IMGSimpleFrameGenerator(Platform::NSCoder& coder);
    ~IMGSimpleFrameGenerator() override;

    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;

private:
    NSColor m_color;
    float m_frame_width = 0;
};

} // namespace Imaging
