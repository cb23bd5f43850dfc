// Three nodes that are nothing but a transform over their source: one made afresh for each draw, since its
// object is shared, and two that PlacedNode keeps.

#include "Imaging/TransformOperations.h"

#include "Imaging/CCImage.h"
#include "Imaging/Words.h"
#include "Platform/Foundation/LocalizedString.h"

#include <cmath>
#include <utility>

namespace Imaging {

using Platform::localizedStringForKey;

// IMGAffineTransformOp

std::shared_ptr<IMGAffineTransformOp>
IMGAffineTransformOp::transformBy(const NSAffineTransform& transform, std::shared_ptr<IMGImage> sourceImage) {
    return std::make_shared<IMGAffineTransformOp>(transform, std::move(sourceImage));
}

IMGAffineTransformOp::IMGAffineTransformOp(const NSAffineTransform& transform,
                                           std::shared_ptr<IMGImage> sourceImage)
    : IMGImage(std::move(sourceImage)), m_transform(std::make_shared<NSAffineTransform>(transform)) {}

IMGAffineTransformOp::IMGAffineTransformOp(Platform::NSCoder& coder) : IMGImage(coder) {
    if (const auto decoded = coder.decodeTransform("transform")) {
        m_transform = std::make_shared<NSAffineTransform>(*decoded);
    }
}

IMGAffineTransformOp::~IMGAffineTransformOp() = default;

NSAffineTransform IMGAffineTransformOp::affineTransform() const {
    return m_transform != nullptr ? *m_transform : NSAffineTransform();
}

void IMGAffineTransformOp::setAffineTransform(std::shared_ptr<NSAffineTransform> transform) {
    if (transform != nullptr && m_transform != nullptr && transform->isEqual(*m_transform)) return;
    m_transform = std::move(transform);
    changed();
}

NSAffineTransform IMGAffineTransformOp::transform() const {
    // Made afresh each time, since whoever shares the object may have changed it.
    NSAffineTransform whole = IMGImage::transform();
    if (m_transform != nullptr) whole.appendTransform(*m_transform);
    return whole;
}

std::shared_ptr<CCImage> IMGAffineTransformOp::untransformedImage() {
    return sourceAtIndex(0)->untransformedImage();
}

std::shared_ptr<IMGImage> IMGAffineTransformOp::copy() const {
    return std::make_shared<IMGAffineTransformOp>(affineTransform(), sourceAtIndex(0));
}

std::string IMGAffineTransformOp::archiveClassName() const { return "IMGAffineTransformOp"; }

void IMGAffineTransformOp::encodeWithCoder(Platform::NSCoder& coder) const {
    IMGImage::encodeWithCoder(coder);
    if (m_transform != nullptr) coder.encodeTransform(*m_transform, "transform");
}

std::string IMGAffineTransformOp::parameterDescription() const { return inWords(affineTransform()); }

std::string IMGAffineTransformOp::name() const { return localizedStringForKey("transform"); }

// IMGRotationOp

std::shared_ptr<IMGRotationOp> IMGRotationOp::rotationByDegrees(float degrees, NSPoint around,
                                                                std::shared_ptr<IMGImage> sourceImage) {
    return std::make_shared<IMGRotationOp>(degrees, around, std::move(sourceImage));
}

IMGRotationOp::IMGRotationOp(float degrees, NSPoint origin, std::shared_ptr<IMGImage> sourceImage)
    : PlacedNode(std::move(sourceImage)), m_rotation(degrees), m_origin(origin) {}

IMGRotationOp::IMGRotationOp(Platform::NSCoder& coder)
    : PlacedNode(coder),
      m_rotation(coder.decodeFloat("angle-degrees")),
      m_origin(coder.decodePoint("origin")) {}

IMGRotationOp::~IMGRotationOp() = default;

void IMGRotationOp::setRotationDegrees(float degrees) {
    // A comparison that is false for what is not a number, which is ignored too.
    const float difference = std::fabs(degrees - m_rotation);
    if (!(static_cast<double>(difference) < 0.0001)) return;
    m_rotation = degrees;
    changed();
}

void IMGRotationOp::setOrigin(NSPoint origin) {
    if (Platform::NSEqualPoints(origin, m_origin)) return;
    m_origin = origin;
    changed();
}

NSAffineTransform IMGRotationOp::computedTransform() const {
    NSAffineTransform rotation;
    rotation.translateXBy(m_origin.x, m_origin.y);
    rotation.rotateByDegrees(m_rotation);
    rotation.translateXBy(-m_origin.x, -m_origin.y);
    return rotation;
}

std::shared_ptr<IMGImage> IMGRotationOp::copy() const {
    return std::make_shared<IMGRotationOp>(m_rotation, m_origin, sourceAtIndex(0));
}

std::string IMGRotationOp::archiveClassName() const { return "IMGRotationOp"; }

void IMGRotationOp::encodeWithCoder(Platform::NSCoder& coder) const {
    IMGImage::encodeWithCoder(coder);
    coder.encodeFloat(m_rotation, "angle-degrees");
    coder.encodePoint(m_origin, "origin");
}

std::string IMGRotationOp::parameterDescription() const {
    return inWords(m_rotation) + " degrees about " + inWords(m_origin);
}

std::string IMGRotationOp::name() const { return localizedStringForKey("rotation"); }

// IMGTranslationOp

std::shared_ptr<IMGTranslationOp> IMGTranslationOp::translationBy(NSPoint translation,
                                                                  std::shared_ptr<IMGImage> sourceImage) {
    return std::make_shared<IMGTranslationOp>(translation, std::move(sourceImage));
}

IMGTranslationOp::IMGTranslationOp(NSPoint translation, std::shared_ptr<IMGImage> sourceImage)
    : PlacedNode(std::move(sourceImage)), m_translation(translation) {}

IMGTranslationOp::IMGTranslationOp(Platform::NSCoder& coder)
    : PlacedNode(coder), m_translation(coder.decodePoint("translation")) {}

IMGTranslationOp::~IMGTranslationOp() = default;

void IMGTranslationOp::setTranslation(NSPoint translation) {
    if (Platform::NSEqualPoints(translation, m_translation)) return;
    m_translation = translation;
    changed();
}

NSAffineTransform IMGTranslationOp::computedTransform() const {
    NSAffineTransform shift;
    shift.translateXBy(m_translation.x, m_translation.y);
    return shift;
}

std::shared_ptr<IMGImage> IMGTranslationOp::copy() const {
    return std::make_shared<IMGTranslationOp>(m_translation, sourceAtIndex(0));
}

std::string IMGTranslationOp::archiveClassName() const { return "IMGTranslationOp"; }

void IMGTranslationOp::encodeWithCoder(Platform::NSCoder& coder) const {
    IMGImage::encodeWithCoder(coder);
    coder.encodePoint(m_translation, "translation");
}

std::string IMGTranslationOp::parameterDescription() const { return inWords(m_translation); }

std::string IMGTranslationOp::name() const { return localizedStringForKey("translation"); }

} // namespace Imaging
