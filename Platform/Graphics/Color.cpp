// Colours are four floats; mixing computes in double and rounds once.

#include "Platform/Graphics/Color.h"

namespace Imaging::Platform {

NSColor NSColor::colorWithCalibratedRed(float red, float green, float blue, float alpha) {
    return {red, green, blue, alpha};
}

NSColor NSColor::colorWithCalibratedWhite(float white, float alpha) { return {white, white, white, alpha}; }

NSColor NSColor::colorWithDeviceRed(float red, float green, float blue, float alpha) {
    return {red, green, blue, alpha};
}

NSColor NSColor::colorWithAlphaComponent(float alpha) const { return {m_red, m_green, m_blue, alpha}; }

NSColor NSColor::blendedColorWithFraction(float fraction, const NSColor& color) const {
    const double theirs = fraction;
    const auto mixed = [theirs](float a, float b) {
        return static_cast<float>((1 - theirs) * double{a} + theirs * double{b});
    };
    return {mixed(m_red, color.m_red), mixed(m_green, color.m_green), mixed(m_blue, color.m_blue),
            mixed(m_alpha, color.m_alpha)};
}

bool NSColor::isEqual(const NSColor& other) const {
    return m_red == other.m_red && m_green == other.m_green && m_blue == other.m_blue &&
           m_alpha == other.m_alpha;
}

} // namespace Imaging::Platform
