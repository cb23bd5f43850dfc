// Masking as a node: brings the mask into 8-bit gray, checks that it fits, and hands both bitmaps to the
// workers.

#include "Imaging/Mask.h"

#include "Imaging/Drawing/AssertionLines.h"
#include "Imaging/Pixels/MaskVectors.h"
#include "Imaging/Words.h"
#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/LocalizedString.h"

#include <algorithm>
#include <utility>

namespace Imaging {

namespace {

void check(bool condition, const char* words, int line) {
    if (!condition) Platform::parameterAssertionFailed(words, "Imaging/Mask", line);
}

/// A mask of another size is never stretched. None at all fails every condition.
void checkMask(const NSBitmapImageRep* mask, const NSBitmapImageRep& source) {
    check(mask != nullptr && imgBitmapFormat(*mask) == IMGBitmapFormatGrayscale,
          "[mask_rep imgBitmapFormat] == IMGBitmapFormatGrayscale", AssertionLines::maskLayout);
    check(mask != nullptr && mask->pixelsWide() == source.pixelsWide(), "[mask_rep pixelsWide] == width",
          AssertionLines::maskWidth);
    check(mask != nullptr && mask->pixelsHigh() == source.pixelsHigh(), "[mask_rep pixelsHigh] == height",
          AssertionLines::maskHeight);
}

} // namespace

IMGMaskOp::IMGMaskOp(std::shared_ptr<IMGImage> source, std::shared_ptr<IMGImage> maskImage)
    : SourceCachedOperation(std::move(source)), m_mask_image(std::move(maskImage)) {}

IMGMaskOp::IMGMaskOp(Platform::NSCoder& coder)
    : SourceCachedOperation(coder), m_mask_image(coder.decodeObjectOfClass<IMGImage>("mask-image")) {}

IMGMaskOp::~IMGMaskOp() = default;

void IMGMaskOp::setMaskImage(std::shared_ptr<IMGImage> maskImage) {
    if (maskImage == m_mask_image) return; // null by null too, which isEqual cannot say
    if (maskImage != nullptr && m_mask_image != nullptr && maskImage->isEqual(*m_mask_image)) return;
    m_mask_image = std::move(maskImage);
    dropResult();
    changed();
}

std::shared_ptr<CCImage> IMGMaskOp::untransformedImage() {
    // Without a mask the source's result passes through as the same object, and none is made or kept.
    return m_mask_image != nullptr ? SourceCachedOperation::untransformedImage() : sourceResult();
}

bool IMGMaskOp::treatsFormat(IMGBitmapFormat format) const {
    return format == IMGBitmapFormatGrayscaleAlpha || format == IMGBitmapFormatRGBA;
}

std::string IMGMaskOp::name() const { return Platform::localizedStringForKey("mask"); }

std::shared_ptr<IMGImage> IMGMaskOp::copy() const {
    return std::make_shared<IMGMaskOp>(sourceAtIndex(0), m_mask_image);
}

std::string IMGMaskOp::archiveClassName() const { return "IMGMaskOp"; }

std::string IMGMaskOp::parameterDescription() const {
    return m_mask_image != nullptr ? "by " + m_mask_image->archiveClassName() : "without a mask";
}

void IMGMaskOp::encodeWithCoder(Platform::NSCoder& coder) const {
    SourceCachedOperation::encodeWithCoder(coder);
    if (m_mask_image != nullptr) coder.encodeObject(m_mask_image.get(), "mask-image");
}

/// The mask in 8-bit gray; null when its node gives no picture.
std::shared_ptr<NSBitmapImageRep> IMGMaskOp::maskBitmap() const {
    const std::shared_ptr<CCImage> result = m_mask_image->untransformedImage();
    if (result == nullptr || result->nsImage() == nullptr) return nullptr;
    return bitmapRepresentationWithMaskFormat(*result->nsImage());
}

void IMGMaskOp::computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) {
    const std::shared_ptr<NSBitmapImageRep> mask = maskBitmap();
    checkMask(mask.get(), source);
    if (mask == nullptr || imgBitmapFormat(*mask) != IMGBitmapFormatGrayscale) return;
    requireSizesOfRecords(*mask);
    const IMGBitmapFormat format = imgBitmapFormat(source);
    if (!treatsFormat(format)) return;
    // What both have in common, where the assertion handler lets a mask of another size pass.
    auto record = recordBetween<MaskRecord>(source, destination);
    record.width = std::min(record.width, static_cast<std::int32_t>(mask->pixelsWide()));
    record.height = std::min(record.height, static_cast<std::int32_t>(mask->pixelsHigh()));
    record.mask = mask->bitmapData();
    record.maskBytesPerRow = static_cast<std::uint32_t>(mask->bytesPerRow());
    runPixelWorkers(format == IMGBitmapFormatRGBA ? mask_worker<RGBAPixel> : mask_worker<GAPixel>,
                    interleavedRows(record));
}

} // namespace Imaging
