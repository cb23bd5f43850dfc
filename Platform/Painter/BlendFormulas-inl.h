// Internal: the formulas of the compositing operations, once for single numbers and vectors alike. Not
// installed. Compiled anew for each kind of processor, hence no `#pragma once`.

#if defined(IMAGING_BLEND_FORMULAS) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGING_BLEND_FORMULAS
#undef IMAGING_BLEND_FORMULAS
#else
#define IMAGING_BLEND_FORMULAS
#endif

#include "Platform/Pixels/CompositingOperation.h"

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Imaging::Platform::HWY_NAMESPACE {

/// The result of an operation for samples in steps of 1/128 (so that 255 is 32640).
///
/// `Math` brings the arithmetic of 16-bit signed numbers: `Number`; `add` and `subtract`, which saturate;
/// `scaled(v, f)`, v·f / 32768 rounded to nearest; `part(alpha)`, an alpha as a factor f of up to 32767;
/// `rest(f)`, 32767 − f; `smaller`, `larger`; `zero()` and `full()` (32640).
template<NSCompositingOperation operation, class Math, class Number = typename Math::Number>
HWY_INLINE Number blended(const Math& math, Number s, Number sa, Number d, Number da) {
    const auto inSource = [&](Number v) HWY_ATTR { return math.scaled(v, math.part(sa)); };
    const auto outsideSource = [&](Number v) HWY_ATTR { return math.scaled(v, math.rest(math.part(sa))); };
    const auto inDestination = [&](Number v) HWY_ATTR { return math.scaled(v, math.part(da)); };
    const auto outsideDestination = [&](Number v)
                                        HWY_ATTR { return math.scaled(v, math.rest(math.part(da))); };
    if constexpr (operation == NSCompositeClear) {
        return math.zero();
    } else if constexpr (operation == NSCompositeCopy) {
        return s;
    } else if constexpr (operation == NSCompositeSourceIn) {
        return inDestination(s);
    } else if constexpr (operation == NSCompositeSourceOut) {
        return outsideDestination(s);
    } else if constexpr (operation == NSCompositeSourceAtop) {
        return math.add(inDestination(s), outsideSource(d));
    } else if constexpr (operation == NSCompositeDestinationOver) {
        return math.add(d, outsideDestination(s));
    } else if constexpr (operation == NSCompositeDestinationIn) {
        return inSource(d);
    } else if constexpr (operation == NSCompositeDestinationOut) {
        return outsideSource(d);
    } else if constexpr (operation == NSCompositeDestinationAtop) {
        return math.add(inSource(d), outsideDestination(s));
    } else if constexpr (operation == NSCompositeXOR) {
        return math.add(outsideDestination(s), outsideSource(d));
    } else if constexpr (operation == NSCompositePlusDarker) {
        // In the alpha sample the two differences are 0, so this gives alpha's own formula there.
        const Number alpha = math.smaller(math.full(), math.add(sa, da));
        const Number missing = math.add(math.subtract(s, sa), math.subtract(d, da));
        return math.larger(math.zero(), math.add(missing, alpha));
    } else if constexpr (operation == NSCompositePlusLighter) {
        return math.smaller(math.full(), math.add(s, d));
    } else {
        return math.add(s, outsideSource(d));
    }
}

/// Calls `body.template run<operation>()` for an operation known only at run time.
template<class Body>
void withOperation(NSCompositingOperation operation, const Body& body) {
    switch (operation) {
    case NSCompositeClear:
        return body.template run<NSCompositeClear>();
    case NSCompositeCopy:
        return body.template run<NSCompositeCopy>();
    case NSCompositeSourceIn:
        return body.template run<NSCompositeSourceIn>();
    case NSCompositeSourceOut:
        return body.template run<NSCompositeSourceOut>();
    case NSCompositeSourceAtop:
        return body.template run<NSCompositeSourceAtop>();
    case NSCompositeDestinationOver:
        return body.template run<NSCompositeDestinationOver>();
    case NSCompositeDestinationIn:
        return body.template run<NSCompositeDestinationIn>();
    case NSCompositeDestinationOut:
        return body.template run<NSCompositeDestinationOut>();
    case NSCompositeDestinationAtop:
        return body.template run<NSCompositeDestinationAtop>();
    case NSCompositeXOR:
        return body.template run<NSCompositeXOR>();
    case NSCompositePlusDarker:
        return body.template run<NSCompositePlusDarker>();
    case NSCompositePlusLighter:
        return body.template run<NSCompositePlusLighter>();
    default:
        return body.template run<NSCompositeSourceOver>();
    }
}

} // namespace Imaging::Platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
