// The hue adjustment as a node: its angle, and the record that hands it to the workers in sextants.

#include "Imaging/HueAdjust.h"

#include "Imaging/Pixels/HueAdjustVectors.h"
#include "Imaging/Words.h"
#include "Platform/Foundation/LocalizedString.h"

#include <numbers>
#include <utility>

namespace Imaging {

IMGHueAdjustOp::IMGHueAdjustOp(std::shared_ptr<IMGImage> source, float angle)
    : ChangeCachedOperation(std::move(source)), m_angle(angle) {}

std::shared_ptr<IMGHueAdjustOp> IMGHueAdjustOp::hueAdjustWithSourceImage(std::shared_ptr<IMGImage> source,
                                                                         float angle) {
    return std::make_shared<IMGHueAdjustOp>(std::move(source), angle);
}

IMGHueAdjustOp::IMGHueAdjustOp(Platform::NSCoder& coder)
    : ChangeCachedOperation(coder), m_angle(coder.decodeFloat("angle")) {}

IMGHueAdjustOp::~IMGHueAdjustOp() = default;

void IMGHueAdjustOp::setAngle(float angle) {
    if (m_angle == angle) return;
    m_angle = angle;
    changed();
}

bool IMGHueAdjustOp::treatsFormat(IMGBitmapFormat format) const {
    return format == IMGBitmapFormatRGB || format == IMGBitmapFormatRGBA;
}

std::string IMGHueAdjustOp::name() const { return Platform::localizedStringForKey("hue adjust"); }

std::shared_ptr<IMGImage> IMGHueAdjustOp::copy() const {
    return std::make_shared<IMGHueAdjustOp>(sourceAtIndex(0), m_angle);
}

std::string IMGHueAdjustOp::archiveClassName() const { return "IMGHueAdjustOp"; }

std::string IMGHueAdjustOp::parameterDescription() const { return inWords(angle()) + " radians"; }

void IMGHueAdjustOp::encodeWithCoder(Platform::NSCoder& coder) const {
    ChangeCachedOperation::encodeWithCoder(coder);
    coder.encodeFloat(m_angle, "angle");
}

void IMGHueAdjustOp::computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) {
    const IMGBitmapFormat format = imgBitmapFormat(source);
    if (!treatsFormat(format)) return;
    constexpr double pi = std::numbers::pi;
    auto record = recordBetween<HueAdjustRecord>(source, destination);
    // In double up to here: the workers are defined by the float that comes of it.
    record.hueShift = static_cast<float>(double{m_angle} * 6 / (pi + pi));
    runPixelWorkers(format == IMGBitmapFormatRGB ? hue_adjust_rgb : hue_adjust_rgba, interleavedRows(record));
}

} // namespace Imaging
