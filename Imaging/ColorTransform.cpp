// The colour transform as a node: its multipliers, and the record that hands them to the workers.

#include "Imaging/ColorTransform.h"

#include "Imaging/Pixels/ColorTransformVectors.h"
#include "Imaging/Words.h"
#include "Platform/Foundation/LocalizedString.h"

#include <utility>

namespace Imaging {

IMGColorTransformOp::IMGColorTransformOp(std::shared_ptr<IMGImage> source, float redMultiplier,
                                         float greenMultiplier, float blueMultiplier, float alphaMultiplier)
    : ChangeCachedOperation(std::move(source)),
      m_red_multiplier(redMultiplier),
      m_green_multiplier(greenMultiplier),
      m_blue_multiplier(blueMultiplier),
      m_alpha_multiplier(alphaMultiplier) {}

std::shared_ptr<IMGColorTransformOp>
IMGColorTransformOp::colorTransformWithSourceImage(std::shared_ptr<IMGImage> source, float redMultiplier,
                                                   float greenMultiplier, float blueMultiplier,
                                                   float alphaMultiplier) {
    return std::make_shared<IMGColorTransformOp>(std::move(source), redMultiplier, greenMultiplier,
                                                 blueMultiplier, alphaMultiplier);
}

IMGColorTransformOp::IMGColorTransformOp(Platform::NSCoder& coder)
    : ChangeCachedOperation(coder),
      m_red_multiplier(coder.decodeFloat("red-multiplier")),
      m_green_multiplier(coder.decodeFloat("green-multiplier")),
      m_blue_multiplier(coder.decodeFloat("blue-multiplier")),
      m_alpha_multiplier(coder.decodeFloat("alpha-multiplier")) {}

IMGColorTransformOp::~IMGColorTransformOp() = default;

/// What does not change is not announced, since observers would draw anew.
void IMGColorTransformOp::setMultiplier(float& held, float multiplier) {
    if (held == multiplier) return;
    held = multiplier;
    changed();
}

void IMGColorTransformOp::setRedMultiplier(float multiplier) { setMultiplier(m_red_multiplier, multiplier); }

void IMGColorTransformOp::setGreenMultiplier(float multiplier) {
    setMultiplier(m_green_multiplier, multiplier);
}

void IMGColorTransformOp::setBlueMultiplier(float multiplier) {
    setMultiplier(m_blue_multiplier, multiplier);
}

void IMGColorTransformOp::setAlphaMultiplier(float multiplier) {
    setMultiplier(m_alpha_multiplier, multiplier);
}

bool IMGColorTransformOp::treatsFormat(IMGBitmapFormat format) const { return format == IMGBitmapFormatRGB; }

std::string IMGColorTransformOp::name() const { return Platform::localizedStringForKey("color transform"); }

std::shared_ptr<IMGImage> IMGColorTransformOp::copy() const {
    return std::make_shared<IMGColorTransformOp>(sourceAtIndex(0), m_red_multiplier, m_green_multiplier,
                                                 m_blue_multiplier, m_alpha_multiplier);
}

std::string IMGColorTransformOp::archiveClassName() const { return "IMGColorTransformOp"; }

std::string IMGColorTransformOp::parameterDescription() const {
    return inWords(m_red_multiplier) + "," + inWords(m_green_multiplier) + "," + inWords(m_blue_multiplier);
}

void IMGColorTransformOp::encodeWithCoder(Platform::NSCoder& coder) const {
    ChangeCachedOperation::encodeWithCoder(coder);
    coder.encodeFloat(m_red_multiplier, "red-multiplier");
    coder.encodeFloat(m_green_multiplier, "green-multiplier");
    coder.encodeFloat(m_blue_multiplier, "blue-multiplier");
    coder.encodeFloat(m_alpha_multiplier, "alpha-multiplier");
}

void IMGColorTransformOp::computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) {
    if (!treatsFormat(imgBitmapFormat(source))) return;
    auto record = recordBetween<ColorTransformRecord>(source, destination);
    record.redMultiplier = m_red_multiplier;
    record.greenMultiplier = m_green_multiplier;
    record.blueMultiplier = m_blue_multiplier;
    runPixelWorkers(color_transform, interleavedRows(record));
}

} // namespace Imaging
