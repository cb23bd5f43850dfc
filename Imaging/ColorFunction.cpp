// The colours of knobs: formulas of one parameter, partly in floats and partly in doubles as each is defined.

#include "Imaging/ColorFunction.h"

#include <cmath>

namespace Imaging {

std::shared_ptr<ColorFunction> ColorFunction::grayColorFunction() {
    // Made on first use and shared: there is nothing in it that could differ.
    static const auto gray = std::make_shared<GrayColorFunction>();
    return gray;
}

std::shared_ptr<ColorFunction> ColorFunction::aquaColorFunction() {
    static const auto aqua = std::make_shared<AquaColorFunction>();
    return aqua;
}

std::shared_ptr<ColorFunction> ColorFunction::colorFunctionWithColor(const NSColor& color) {
    return std::make_shared<ColorColorFunction>(color);
}

ColorFunction::~ColorFunction() = default;
GrayColorFunction::~GrayColorFunction() = default;
AquaColorFunction::~AquaColorFunction() = default;

NSColor GrayColorFunction::colorForParam(float param) const {
    // In double from here on: 0.15 and 0.85 are not the floats next to them.
    const double white = std::abs(double{param} - 0.5) * 2 * 0.15 + 0.85;
    return NSColor::colorWithCalibratedWhite(static_cast<float>(white), 1);
}

NSColor AquaColorFunction::colorForParam(float param) const {
    const float u = 1 - param;
    const NSColor pale = NSColor::colorWithCalibratedRed(218.0F / 255, 1, 1, 1);
    const NSColor base = NSColor::colorWithCalibratedRed(109.0F / 255, 167.0F / 255, 243.0F / 255, 1)
                             .blendedColorWithFraction(u * u, pale);
    if (!(u < 0.5F)) return base; // not-a-number too
    const double fraction = 2 * double{u} * 0.95 + 0.05;
    return NSColor::whiteColor().blendedColorWithFraction(static_cast<float>(fraction), base);
}

ColorColorFunction::ColorColorFunction(const NSColor& color) : m_color(color) {}
ColorColorFunction::~ColorColorFunction() = default;

NSColor ColorColorFunction::colorForParam(float param) const {
    const double u = 1 - param; // formed in floats, then widened
    const double fraction = u < 0.5 ? 2 * u * 0.6 + 0.3 : (u - 0.5) * 2 * -0.35 + 1.0;
    return NSColor::whiteColor().blendedColorWithFraction(static_cast<float>(fraction), m_color);
}

} // namespace Imaging
