#pragma once

#include "Imaging/Image.h"

#include <memory>
#include <string>

namespace Imaging {

/// A leaf that shows a bitmap which is decoded already. An OpenGL target draws it from textures, anything
/// else by 2-D graphics straight from the bitmap's memory. Its bytes are alpha, red, green and blue, colours
/// multiplied by alpha, as `bitmapRepresentationWithABGRFormat` makes them. The bitmap is shared, not copied.
///
/// Example:
/// @code
/// const auto bitmap = NSBitmapImageRep::bitmapWithDescription({.pixelsWide = 40, .pixelsHigh = 30});
/// const auto node = std::make_shared<OpenGLImage>(bitmap);
/// const float width = node->imageSize().width;
/// @endcode
class IMAGING_EXPORT OpenGLImage : public IMGImage, public IMGDrawingTarget {
public:
    /// Null makes a node of size zero that draws nothing.
    explicit OpenGLImage(std::shared_ptr<Platform::NSBitmapImageRep> bitmap);

    /// Bitmaps are not archived, so the node comes back without one.
    explicit OpenGLImage(Platform::NSCoder& coder);
    ~OpenGLImage() override;

    const std::shared_ptr<Platform::NSBitmapImageRep>& bitmap() const { return m_bitmap; }

    /// The bitmap's size in points.
    NSSize untransformedImageSize() const;

    /// From (0, 0), of that size.
    IMGBounds imageBounds() const override;

    /// Always null: there is no picture but the bitmap.
    std::shared_ptr<CCImage> image() override;

    /// "Bitmap".
    std::string name() const;

    /// Has the target draw the node, or without a target draws it in 2-D graphics.
    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext) override;

    /// Draws the bitmap, one point a pixel, into the thread's current 2-D context under the records,
    /// source-over whatever the operation, with the fraction as alpha. Transforms, clips and alpha stay in
    /// the context: the caller saves and restores its state. The node that is passed is not looked at.
    void drawImage(IMGImage& node, const TransformAndClipList& list, CompositingOperation operation,
                   float fraction) override;

    /// A node with the same bitmap.
    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;

private:
    std::shared_ptr<Platform::NSBitmapImageRep> m_bitmap;
};

} // namespace Imaging
