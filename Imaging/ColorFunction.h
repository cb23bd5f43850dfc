#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Graphics/Color.h"

#include <memory>

namespace Imaging {

using Platform::NSColor;

/// A colour for each number from 0 to 1, such as those of the rows of a knob from the bottom to the top (see
/// `drawAsKnob`). Parameters outside that range continue the formulas. Functions do not change once they are
/// made and may be shared by threads.
///
/// "A with f of B" below is `blendedColorWithFraction(f, B)` sent to A, and u = 1 − parameter in 32-bit
/// floats.
///
/// Example:
/// @code
/// const auto aqua = ColorFunction::aquaColorFunction();
/// const NSColor top = aqua->colorForParam(1);
/// const NSColor middle = aqua->colorForParam(0.5F);
/// @endcode
class IMAGING_EXPORT ColorFunction {
public:
    /// Shared by all callers, since they have no state.
    static std::shared_ptr<ColorFunction> grayColorFunction();
    static std::shared_ptr<ColorFunction> aquaColorFunction();

    /// A ColorColorFunction.
    static std::shared_ptr<ColorFunction> colorFunctionWithColor(const NSColor& color);

    ColorFunction(const ColorFunction&) = delete;
    ColorFunction& operator=(const ColorFunction&) = delete;
    virtual ~ColorFunction();

    virtual NSColor colorForParam(float param) const = 0;

protected:
    ColorFunction() = default;
};

/// Opaque grays: white at both ends, 0.85 in the middle, linear between (in double).
class IMAGING_EXPORT GrayColorFunction : public ColorFunction {
public:
    GrayColorFunction() = default;
    ~GrayColorFunction() override;
    NSColor colorForParam(float param) const override;
};

/// Opaque blues, a sheen of light from below: the blue is (109, 167, 243) / 255 with u² of (218, 255, 255) /
/// 255. For u from 0.5, and not-a-number, it is the colour; below that the colour is white with 2u · 0.95 +
/// 0.05 (in double) of it, so that the end at parameter 1 is nearly white.
class IMAGING_EXPORT AquaColorFunction : public ColorFunction {
public:
    AquaColorFunction() = default;
    ~AquaColorFunction() override;
    NSColor colorForParam(float param) const override;
};

/// White with a fraction f of a colour (in double), alpha included: for u below 0.5, f is 2u · 0.6 + 0.3,
/// from 0.3 up to 0.9; from there on it is (u − 0.5) · 2 · (−0.35) + 1, from 1 down to 0.65. The step in the
/// middle is part of the look. A parameter that is not a number gives a colour of such components.
class IMAGING_EXPORT ColorColorFunction : public ColorFunction {
public:
    explicit ColorColorFunction(const NSColor& color);
    ~ColorColorFunction() override;
    NSColor colorForParam(float param) const override;

private:
    NSColor m_color;
};

} // namespace Imaging
