// An outline is a real node over a bitmap whose memory nobody touches, so that sizes, placing and layouts
// come about as they do with the picture.

#include "Show/StepCheck.h"

#include "Imaging/CachedImage.h"
#include "Platform/Codecs/CodecRegistry.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Image.h"
#include "Show/NodeGraph.h"
#include "Show/Orientation.h"
#include "Show/PictureLoading.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace Imaging {

using Platform::NSBitmapImageRep;
using Platform::PictureHeader;

namespace {

Upright uprightOf(bool asStored) { return asStored ? Upright::AsStored : Upright::AsDeclared; }

/// The length that pixels of a declared resolution take, as bitmaps have it.
float points(std::uint32_t pixels, double resolution) {
    return static_cast<float>(resolution > 0 ? pixels * 72.0 / resolution : pixels);
}

/// A node as decoding would give it, but for its pixels; null for samples that are converted first.
std::shared_ptr<IMGImage> blankNode(const PictureHeader& header) {
    if (header.bitsPerSample != 8 || header.color == Platform::SampleColor::Black) return nullptr;
    const bool isGray = header.color == Platform::SampleColor::White;
    auto bitmap = NSBitmapImageRep::bitmapWithDescription(
        {.pixelsWide = header.width,
         .pixelsHigh = header.height,
         .samplesPerPixel = header.samplesPerPixel(),
         .hasAlpha = header.hasAlpha,
         .colorSpaceName = std::string(isGray ? Platform::NSCalibratedWhiteColorSpace
                                              : Platform::NSCalibratedRGBColorSpace)});
    if (bitmap == nullptr) return nullptr;
    bitmap->setSize({points(header.width, header.resolutionX), points(header.height, header.resolutionY)});
    bitmap->setProperty(Platform::NSImageOrientation, header.orientation);
    if (!header.colorProfile.empty())
        bitmap->setProperty(Platform::NSImageColorSyncProfileData, header.colorProfile);
    const auto picture = std::make_shared<Platform::NSImage>(bitmap->size());
    picture->addRepresentation(std::move(bitmap));
    return imagingImage(picture);
}

void checkOnPicture(const ShowPicture& picture, bool asStored, const Platform::NSData& bytes,
                    const std::string& advice) {
    const std::shared_ptr<IMGImage> node = nodeWithBytes(bytes);
    requireDrawable(node);
    FramedNode framed(orientedNode(node, uprightOf(asStored)), picture.name, advice);
    for (const Step& step : picture.steps) step(framed);
}

} // namespace

void checkSteps(const ShowPicture& picture, bool asStored, const Platform::NSData& bytes,
                const std::string& advice) {
    const bool isGraph = Platform::looksLikePropertyList(bytes);
    if (!isGraph && checkStepsOnOutline(picture, asStored, Platform::readPictureHeader(bytes), advice))
        return;
    checkOnPicture(picture, asStored, bytes, advice);
}

bool checkStepsOnOutline(const ShowPicture& picture, bool asStored, const PictureHeader& header,
                         const std::string& advice) {
    const std::shared_ptr<IMGImage> blank = blankNode(header);
    if (blank == nullptr) return false;
    try {
        auto framed = FramedNode::outline(orientedNode(blank, uprightOf(asStored)), picture.name, advice,
                                          header.hasAlpha);
        for (const Step& step : picture.steps) step(framed);
        return true;
    } catch (const NeedsPixels&) {
        return false;
    }
}

} // namespace Imaging
