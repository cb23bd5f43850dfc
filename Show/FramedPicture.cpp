// Everything is drawn once, at the size of a frame: what is done to the photograph is only noted before.

#include "Show/FramedPicture.h"

#include "Imaging/CachedImage.h"
#include "Imaging/CropAndScale.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Show/Canvas.h"
#include "Show/NodeGraph.h"
#include "Show/OpaqueBitmap.h"
#include "Show/Orientation.h"
#include "Show/PictureLoading.h"

#include <cmath>
#include <utility>

namespace Imaging {

using Platform::NSBitmapImageRep;
using Platform::NSRect;

namespace {

FramedNode loadedPicture(const ShowPicture& picture, bool asStored, const std::string& advice) {
    const std::shared_ptr<IMGImage> node =
        picture.node != nullptr ? picture.node() : nodeWithContentsOf(picture.name);
    requireDrawable(node);
    const Upright upright = asStored ? Upright::AsStored : Upright::AsDeclared;
    FramedNode framed(orientedNode(node, upright), picture.name, advice);
    for (const Step& step : picture.steps) step(framed);
    return framed;
}

void drawFitted(FramedNode& framed, NSRect frame, Fit fit) {
    const NSRect place = placedIn(frame, framed.size(), fit);
    framed.scale({std::llround(place.size.width), std::llround(place.size.height)}, SCALE_TO_FILL);
    const Platform::NSGraphicsStateScope scope;
    Platform::NSAffineTransform shift;
    shift.translateXBy(place.origin.x, place.origin.y);
    Platform::NSGraphicsContext::currentContext()->concat(shift);
    framed.draw();
}

} // namespace

std::shared_ptr<IMGImage> framedPicture(const ShowPicture& picture, const Show& show) {
    return framedPicture(picture, show, {});
}

std::shared_ptr<IMGImage> framedPicture(const ShowPicture& picture, const Show& show,
                                        const FramingAdvice& advice) {
    FramedNode framed = loadedPicture(picture, show.asStored, advice.picture);
    const auto drawn = drawnOnCanvas(show.size, advice.frame, [&] {
        const NSRect frame = rectOf(show.size);
        paint(frame, show.background.colorWithAlphaComponent(1)); // a film lets nothing through
        drawFitted(framed, frame, picture.fit);
        return frame;
    });
    // Without alpha it is known to be opaque, and is drawn without looking at what lies below it.
    auto opaque = withoutNeedlessAlpha(*drawn);
    if (opaque == nullptr) {
        throw Platform::NSException(Platform::NSGenericException,
                                    "it could not be made into a frame; memory is short");
    }
    const auto image = std::make_shared<Platform::NSImage>(opaque->size());
    image->addRepresentation(std::move(opaque));
    return imagingImage(image);
}

} // namespace Imaging
