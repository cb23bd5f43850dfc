// The fitting is one transform, formed in floats whenever it is needed: drawing hands it on as a record with
// the area as its clip, so no pixels are made unless somebody asks for the node's picture.

#include "Imaging/CropAndScale.h"

#include "Imaging/CCImage.h"
#include "Imaging/Drawing/RenderedNode.h"
#include "Imaging/Geometry.h"
#include "Imaging/Words.h"
#include "Platform/Foundation/LocalizedString.h"

#include <array>
#include <utility>

namespace Imaging {

std::shared_ptr<IMGCropAndScale> IMGCropAndScale::cropWithSourceImage(std::shared_ptr<IMGImage> sourceImage,
                                                                      NSRect sourceArea, NSSize targetSize,
                                                                      std::int32_t imageScaling,
                                                                      bool doClip) {
    return std::make_shared<IMGCropAndScale>(std::move(sourceImage), sourceArea, targetSize, imageScaling,
                                             doClip);
}

IMGCropAndScale::IMGCropAndScale(std::shared_ptr<IMGImage> sourceImage, NSRect sourceArea, NSSize targetSize,
                                 std::int32_t imageScaling, bool doClip)
    : IMGImage(std::move(sourceImage)),
      _source_area(sourceArea),
      _target_size(targetSize),
      _image_scaling(imageScaling),
      _do_clip(doClip) {}

IMGCropAndScale::IMGCropAndScale(Platform::NSCoder& coder)
    : IMGImage(coder),
      _source_area(coder.decodeRect("source-area")),
      _target_size(coder.decodeSize("target-size")),
      _image_scaling(static_cast<std::int32_t>(coder.decodeInt("image-scaling"))),
      _do_clip(coder.decodeBool("do-clip")) {}

IMGCropAndScale::~IMGCropAndScale() = default;

void IMGCropAndScale::setSourceArea(NSRect area) {
    if (Platform::NSEqualRects(area, _source_area)) return;
    _source_area = area;
    changed();
}

void IMGCropAndScale::setTargetSize(NSSize size) {
    if (Platform::NSEqualSizes(size, _target_size)) return;
    _target_size = size;
    changed();
}

void IMGCropAndScale::setImageScaling(std::int32_t scaling) {
    if (scaling == _image_scaling) return;
    _image_scaling = scaling;
    changed();
}

void IMGCropAndScale::setDoClip(bool flag) {
    if (flag == _do_clip) return;
    _do_clip = flag;
    changed();
}

void IMGCropAndScale::changed() {
    // Before anybody is told, who may ask for the picture at once.
    _cached_image.reset();
    IMGImage::changed();
}

void IMGCropAndScale::calculateTransform(NSAffineTransform& transform, NSRect area) const {
    const NSSize target = targetSize();
    const float scaleX = target.width / area.size.width;
    const float scaleY = target.height / area.size.height;
    // Each call acts before those above it, so the area is brought to (0, 0) first and scaled last. What
    // centres it is counted in units of the source, since it is scaled too.
    switch (imageScaling()) {
    case SCALE_PROPORTIONALLY:
        if (scaleY > scaleX) { // the width decides, and there is room above and below
            transform.scaleBy(scaleX);
            transform.translateXBy(-area.origin.x, -area.origin.y);
            transform.translateXBy(0, (target.height / scaleX - area.size.height) * 0.5F);
        } else {
            transform.scaleBy(scaleY);
            transform.translateXBy(-area.origin.x, -area.origin.y);
            transform.translateXBy((target.width / scaleY - area.size.width) * 0.5F, 0);
        }
        break;
    case SCALE_TO_FILL:
        transform.scaleXBy(scaleX, scaleY);
        transform.translateXBy(-area.origin.x, -area.origin.y);
        break;
    case SCALE_NONE: // the middle is formed in double, as that of a transposition is
        transform.translateXBy(-static_cast<float>(area.origin.x + area.size.width * 0.5),
                               -static_cast<float>(area.origin.y + area.size.height * 0.5));
        break;
    default: // a number without a name leaves the source where it is
        break;
    }
}

IMGBounds IMGCropAndScale::imageBounds() const {
    return IMGBounds::boundsWithRect(RectFromSize(_target_size), NSAffineTransform());
}

std::optional<IMGBounds> IMGCropAndScale::boundsForImage(const IMGImage& image,
                                                         const NSAffineTransform& transform) const {
    const std::shared_ptr<IMGImage> source = sourceAtIndex(0);
    NSAffineTransform below = transform;
    calculateTransform(below, _source_area);
    below.prependTransform(source->transform());
    return source->boundsForImage(image, below);
}

void IMGCropAndScale::drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                                CompositingOperation operation, float fraction,
                                IMGDrawingTarget* imageContext) {
    const std::shared_ptr<IMGImage> source = sourceAtIndex(0);
    NSAffineTransform fitting;
    calculateTransform(fitting, _source_area);
    const TransformAndClipRect fitted =
        _do_clip ? TransformAndClipRect(fitting, _source_area) : TransformAndClipRect(fitting);
    // The clip lies in the space that the fitting acts on, which has the source's own transform in it
    // already.
    const TransformAndClipRect own(source->transform());
    source->drawImage(image, list.appending(fitted).appending(own), operation, fraction, imageContext);
}

std::shared_ptr<CCImage> IMGCropAndScale::untransformedImage() {
    // Nothing is scaled then; where the area lies is not looked at.
    if (Platform::NSEqualSizes(_target_size, _source_area.size)) {
        return sourceAtIndex(0)->untransformedImage();
    }
    if (_cached_image == nullptr) _cached_image = renderedNode(*this, _target_size);
    return _cached_image;
}

NSAffineTransform IMGCropAndScale::transformFromSourceToDestination(NSRect destination) const {
    const NSSize size = imageSize();
    NSAffineTransform transform;
    transform.translateXBy(destination.origin.x, destination.origin.y);
    transform.scaleXBy(destination.size.width / size.width, destination.size.height / size.height);
    calculateTransform(transform, _source_area);
    return transform;
}

std::shared_ptr<IMGImage> IMGCropAndScale::copy() const {
    return std::make_shared<IMGCropAndScale>(sourceAtIndex(0), _source_area, _target_size, _image_scaling,
                                             _do_clip);
}

std::string IMGCropAndScale::archiveClassName() const { return "IMGCropAndScale"; }

void IMGCropAndScale::encodeWithCoder(Platform::NSCoder& coder) const {
    IMGImage::encodeWithCoder(coder);
    coder.encodeRect(_source_area, "source-area");
    coder.encodeSize(_target_size, "target-size");
    coder.encodeInt(_image_scaling, "image-scaling");
    coder.encodeBool(_do_clip, "do-clip");
}

std::string IMGCropAndScale::description() const {
    std::string all;
    for (const std::shared_ptr<IMGImage>& source : sources()) {
        all += (all.empty() ? "" : ", ") + source->description();
    }
    // The transform is always null: it has a place in the line that readers of logs look for.
    return "Sources:(" + all + "), Transform:(null), Cached image:" +
           (_cached_image != nullptr ? _cached_image->description() : "(null)") +
           ", Source area:" + Platform::NSStringFromRect(_source_area) +
           ", Target size:" + Platform::NSStringFromSize(_target_size) +
           ", Image scaling:" + std::to_string(_image_scaling) + ", " + (_do_clip ? "CLIP" : "NO_CLIP");
}

std::string IMGCropAndScale::parameterDescription() const {
    static constexpr std::array names = {"SCALE_PROPORTIONALLY", "SCALE_TO_FILL", "SCALE_NONE"};
    const auto mode = static_cast<std::uint32_t>(_image_scaling);
    const std::string scaling = mode < names.size() ? names[mode] : "mode " + std::to_string(_image_scaling);
    return inWords(_source_area) + " to " + inWords(_target_size) + " " + scaling +
           (_do_clip ? " CLIP" : " NO_CLIP");
}

std::string IMGCropAndScale::name() const { return Platform::localizedStringForKey("crop"); }

} // namespace Imaging
