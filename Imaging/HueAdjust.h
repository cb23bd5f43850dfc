#pragma once

#include "Imaging/PixelOperation.h"

#include <memory>
#include <string>

namespace Imaging {

/// Turns the hue of every pixel by an angle and keeps its largest and its smallest sample as they are, but
/// for truncation. The hue comes from the samples as they stand, premultiplied ones included.
///
/// The hue is counted in sextants of the colour wheel, from red by way of green to blue, as Smith's hexcone
/// model has it (A. R. Smith, "Color gamut transform pairs", 1978), in double precision; results are
/// truncated toward zero. The sum of hue and angle is brought back by one turn at most: a pixel whose sum
/// lies farther away stays as it is, and so does every pixel under an angle that is not a number, and every
/// gray one.
///
/// Pictures in RGB and RGBA (IMGBitmapFormatRGB, IMGBitmapFormatRGBA) are treated, and alpha is kept; of a
/// gray picture the result is all zero bytes.
///
/// Example:
/// @code
/// const auto photo = IMGImageFromNSImage::initWithContentsOfFile("photo.jpg");
/// const auto turned = IMGHueAdjustOp::hueAdjustWithSourceImage(photo, 2.0944F); // red becomes green
/// turned->drawInRect({{0, 0}, {640, 480}});
/// @endcode
class IMAGING_EXPORT IMGHueAdjustOp : public ChangeCachedOperation {
public:
    /// The angle is in radians. Throws an NSException (NSInvalidArgumentException) when the source is null.
    IMGHueAdjustOp(std::shared_ptr<IMGImage> source, float angle);
    static std::shared_ptr<IMGHueAdjustOp> hueAdjustWithSourceImage(std::shared_ptr<IMGImage> source,
                                                                    float angle);

    /// The angle of an archive, 0 without its key.
    explicit IMGHueAdjustOp(Platform::NSCoder& coder);
    ~IMGHueAdjustOp() override;

    float angle() const { return m_angle; }

    /// Sends `changed` when the angle is not equal to the one held.
    void setAngle(float angle);

    bool treatsFormat(IMGBitmapFormat format) const override;

    /// What the operation is called in the user's language; "hue adjust" without a translation.
    std::string name() const;

    /// An operation on the same source with the same angle.
    std::shared_ptr<IMGImage> copy() const override;

    std::string archiveClassName() const override;

    /// The angle.
    std::string parameterDescription() const override;

    /// Writes the angle under "angle".
    void encodeWithCoder(Platform::NSCoder& coder) const override;

protected:
    void computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) override;

private:
    float m_angle;
};

} // namespace Imaging
