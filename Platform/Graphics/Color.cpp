#include "Platform/Graphics/Color.h"

#include "Platform/Graphics/GraphicsContext.h"

namespace Platform {

NSColor NSColor::colorWithCalibratedRed(float red, float green, float blue, float alpha) {
    return {red, green, blue, alpha};
}

NSColor NSColor::colorWithCalibratedWhite(float white, float alpha) { return {white, white, white, alpha}; }

NSColor NSColor::colorWithDeviceRed(float red, float green, float blue, float alpha) {
    return {red, green, blue, alpha};
}

NSColor NSColor::colorWithAlphaComponent(float alpha) const { return {m_red, m_green, m_blue, alpha}; }

bool NSColor::isEqual(const NSColor& other) const {
    return m_red == other.m_red && m_green == other.m_green && m_blue == other.m_blue &&
           m_alpha == other.m_alpha;
}

void NSColor::set() const {
    if (const auto context = NSGraphicsContext::currentContext()) context->setColor(*this);
}

} // namespace Platform
