#pragma once

#include "Imaging/PixelOperation.h"

#include <memory>
#include <string>

namespace Imaging {

/// Multiplies every sample of its source, alpha included, by the gray value of a mask: the result's sample is
/// sample · mask / 256, truncated, so that a mask of 255 takes 1 from every sample but 0.
///
/// The mask is a node of its own beside the source, whose result is brought to 8-bit gray. It must have the
/// source's size in pixels. Pictures with alpha (IMGBitmapFormatGrayscaleAlpha, IMGBitmapFormatRGBA) are
/// treated; of any other layout the result is all zero bytes. Without a mask the result is the source's own.
///
/// The result is kept as long as the source answers with the same result and the mask is the same node:
/// changes inside the mask do not reach it.
///
/// Example:
/// @code
/// const auto photo = IMGImageFromNSImage::initWithContentsOfFile("photo.png"); // which has alpha
/// const auto oval = IMGImageFromNSImage::initWithContentsOfFile("oval.png"); // gray, of the same size
/// IMGMaskOp(photo, oval).drawInRect({{0, 0}, {640, 480}});
/// @endcode
class IMAGING_EXPORT IMGMaskOp : public SourceCachedOperation {
public:
    /// Throws an NSException (NSInvalidArgumentException) when the source is null; the mask may be.
    IMGMaskOp(std::shared_ptr<IMGImage> source, std::shared_ptr<IMGImage> maskImage);

    /// The mask of an archive, none without its key.
    explicit IMGMaskOp(Platform::NSCoder& coder);
    ~IMGMaskOp() override;

    /// May be null.
    const std::shared_ptr<IMGImage>& maskImage() const { return m_mask_image; }

    /// Drops the result and sends `changed`. Nothing happens for a mask equal to the one held.
    void setMaskImage(std::shared_ptr<IMGImage> maskImage);

    /// The masked source, or the source's result itself without a mask. A mask whose result is no picture or
    /// has another size calls the assertion handler; where that returns, what both have in common is masked
    /// and the rest is zero bytes.
    std::shared_ptr<CCImage> untransformedImage() override;

    bool treatsFormat(IMGBitmapFormat format) const override;

    /// What the operation is called in the user's language; "mask" without a translation.
    std::string name() const;

    /// An operation on the same source with the same mask.
    std::shared_ptr<IMGImage> copy() const override;

    std::string archiveClassName() const override;

    /// The class of the mask's node.
    std::string parameterDescription() const override;

    /// Writes the mask, where there is one, under "mask-image".
    void encodeWithCoder(Platform::NSCoder& coder) const override;

protected:
    void computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) override;

private:
    std::shared_ptr<NSBitmapImageRep> maskBitmap() const;

    std::shared_ptr<IMGImage> m_mask_image;
};

} // namespace Imaging
