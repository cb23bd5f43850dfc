#pragma once

#include "Platform/Foundation/Export.h"

#include <string_view>

namespace Imaging::Platform {

/// The named colour spaces of bitmaps and colours. In the white spaces a sample of 0 is black, in the black
/// ones it is white. "Calibrated" samples are sRGB (or gray with the sRGB curve); device samples are taken
/// to be the same here, and stay apart by name only.
inline constexpr std::string_view NSCalibratedWhiteColorSpace = "NSCalibratedWhiteColorSpace";
inline constexpr std::string_view NSCalibratedBlackColorSpace = "NSCalibratedBlackColorSpace";
inline constexpr std::string_view NSCalibratedRGBColorSpace = "NSCalibratedRGBColorSpace";
inline constexpr std::string_view NSDeviceWhiteColorSpace = "NSDeviceWhiteColorSpace";
inline constexpr std::string_view NSDeviceBlackColorSpace = "NSDeviceBlackColorSpace";
inline constexpr std::string_view NSDeviceRGBColorSpace = "NSDeviceRGBColorSpace";
inline constexpr std::string_view NSDeviceCMYKColorSpace = "NSDeviceCMYKColorSpace";

/// A colour of red, green, blue and alpha from 0 to 1, not premultiplied. A small value; components outside
/// the range are kept and clamped when something is drawn with them.
///
/// Example:
/// @code
/// const NSColor blue = NSColor::colorWithCalibratedRed(0, 0, 1, 1);
/// NSColor::whiteColor().blendedColorWithFraction(0.25F, blue).set();
/// @endcode
class IMAGING_EXPORT NSColor {
public:
    static NSColor colorWithCalibratedRed(float red, float green, float blue, float alpha);
    static NSColor colorWithCalibratedWhite(float white, float alpha);
    static NSColor colorWithDeviceRed(float red, float green, float blue, float alpha);

    static NSColor blackColor() { return colorWithCalibratedWhite(0, 1); }
    static NSColor whiteColor() { return colorWithCalibratedWhite(1, 1); }
    static NSColor clearColor() { return colorWithCalibratedWhite(0, 0); }

    /// Opaque black.
    NSColor() = default;

    float redComponent() const { return m_red; }
    float greenComponent() const { return m_green; }
    float blueComponent() const { return m_blue; }
    float alphaComponent() const { return m_alpha; }

    /// The same colour with another alpha in place of its own.
    NSColor colorWithAlphaComponent(float alpha) const;

    /// This colour with a fraction of another mixed in: (1 − fraction) · own + fraction · other for each of
    /// the four components, alpha like the rest and colours not premultiplied. In double, rounded once. The
    /// fraction is not clamped; one outside 0…1 continues the line through both colours.
    NSColor blendedColorWithFraction(float fraction, const NSColor& color) const;

    bool isEqual(const NSColor& other) const;

    /// Makes this the fill and stroke colour of the current graphics context; nothing happens without one.
    /// Colours know nothing of contexts, so this is found in GraphicsContext.cpp.
    void set() const;

private:
    NSColor(float red, float green, float blue, float alpha)
        : m_red(red), m_green(green), m_blue(blue), m_alpha(alpha) {}

    float m_red = 0;
    float m_green = 0;
    float m_blue = 0;
    float m_alpha = 1;
};

} // namespace Imaging::Platform
