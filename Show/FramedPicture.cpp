#include "Show/FramedPicture.h"

#include "Imaging/CachedImage.h"
#include "Imaging/CropAndScale.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Show/Canvas.h"
#include "Show/NodeGraph.h"
#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"

#include <cmath>

namespace Imaging::Tool {

using Platform::NSBitmapImageRep;
using Platform::NSRect;

namespace {

FramedNode loadedPicture(const ShowPicture& picture, bool asStored) {
    const std::shared_ptr<Imaging::IMGImage> node = loadNode(picture.name);
    requireDrawable(node, picture.name);
    FramedNode framed(orientedNode(node, asStored ? Upright::AsStored : Upright::AsDeclared), picture.name);
    for (const Step& step : picture.steps) step(framed);
    return framed;
}

void drawFitted(FramedNode& framed, NSRect frame, Fit fit) {
    const NSRect place = placedIn(frame, framed.size(), fit);
    framed.scale({std::llround(place.size.width), std::llround(place.size.height)}, Imaging::SCALE_TO_FILL);
    const Platform::NSGraphicsStateScope scope;
    Platform::NSAffineTransform shift;
    shift.translateXBy(place.origin.x, place.origin.y);
    Platform::NSGraphicsContext::currentContext()->concat(shift);
    framed.draw();
}

} // namespace

std::shared_ptr<Imaging::IMGImage> framePicture(const ShowPicture& picture, const Show& show) {
    FramedNode framed = loadedPicture(picture, show.asStored);
    const auto drawn =
        drawnOnCanvas(show.size, shownName(picture.name), "make the film's frames smaller", [&] {
            const NSRect frame = {
                Platform::NSZeroPoint,
                {static_cast<float>(show.size.width), static_cast<float>(show.size.height)}};
            paint(frame, show.background.colorWithAlphaComponent(1)); // a film lets nothing through
            drawFitted(framed, frame, picture.fit);
            return frame;
        });
    // Without alpha it is known to be opaque, and is drawn without looking at what lies below it.
    auto opaque = withoutNeedlessAlpha(*drawn);
    if (opaque == nullptr)
        throw Failure(shownName(picture.name), "it could not be made into a frame; memory is short");
    const auto image = std::make_shared<Platform::NSImage>(opaque->size());
    image->addRepresentation(std::move(opaque));
    return Imaging::imagingImage(image);
}

} // namespace Imaging::Tool
