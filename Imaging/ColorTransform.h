#pragma once

#include "Imaging/PixelOperation.h"

#include <memory>
#include <string>

namespace Imaging {

/// Multiplies the colour samples of its source by constants. The result's sample is the product, computed in
/// 32-bit floats, clamped to 0 … 255 and truncated toward zero; a product that is not a number gives 0.
///
/// Only pictures in RGB without alpha (IMGBitmapFormatRGB) are treated; of any other layout the result is all
/// zero bytes. Every setter sends `changed` when its value is not equal to the one held.
///
/// Example:
/// @code
/// const auto photo = IMGImageFromNSImage::initWithContentsOfFile("photo.jpg");
/// const auto warmer = IMGColorTransformOp::colorTransformWithSourceImage(photo, 1.1F, 1, 0.9F, 1);
/// warmer->drawInRect({{0, 0}, {640, 480}});
/// @endcode
class IMAGING_EXPORT IMGColorTransformOp : public ChangeCachedOperation {
public:
    /// Throws an NSException (NSInvalidArgumentException) when the source is null.
    IMGColorTransformOp(std::shared_ptr<IMGImage> source, float redMultiplier, float greenMultiplier,
                        float blueMultiplier, float alphaMultiplier);
    static std::shared_ptr<IMGColorTransformOp>
    colorTransformWithSourceImage(std::shared_ptr<IMGImage> source, float redMultiplier,
                                  float greenMultiplier, float blueMultiplier, float alphaMultiplier);

    /// The multipliers of an archive, each 0 without its key.
    explicit IMGColorTransformOp(Platform::NSCoder& coder);
    ~IMGColorTransformOp() override;

    float redMultiplier() const { return m_red_multiplier; }
    float greenMultiplier() const { return m_green_multiplier; }
    float blueMultiplier() const { return m_blue_multiplier; }

    /// Kept, copied and archived; no pixel depends on it.
    float alphaMultiplier() const { return m_alpha_multiplier; }

    void setRedMultiplier(float multiplier);
    void setGreenMultiplier(float multiplier);
    void setBlueMultiplier(float multiplier);
    void setAlphaMultiplier(float multiplier);

    bool treatsFormat(IMGBitmapFormat format) const override;

    /// What the operation is called in the user's language; "color transform" without a translation.
    std::string name() const;

    /// An operation on the same source with the same multipliers.
    std::shared_ptr<IMGImage> copy() const override;

    std::string archiveClassName() const override;

    /// The factors of red, green and blue.
    std::string parameterDescription() const override;

    /// Writes the multipliers under "red-multiplier", "green-multiplier", "blue-multiplier" and
    /// "alpha-multiplier".
    void encodeWithCoder(Platform::NSCoder& coder) const override;

protected:
    void computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) override;

private:
    void setMultiplier(float& held, float multiplier);

    float m_red_multiplier;
    float m_green_multiplier;
    float m_blue_multiplier;
    float m_alpha_multiplier;
};

} // namespace Imaging
