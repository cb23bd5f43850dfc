#pragma once

/// The ways in which pixels are put onto others, by T. Porter and T. Duff (Compositing Digital Images, 1984)
/// but for the three with a name of their own. Plain numbers, of which everything that draws knows; functions
/// that take one also take the number that stands for it.
namespace Imaging::Platform {

/// How what is drawn (S) combines with what is there (D), both premultiplied with alpha Sa and Da.
/// The numbers are the ones that graphs carry; numbers that name no operation count as source-over.
enum NSCompositingOperation : int {
    NSCompositeClear = 0,           ///< 0
    NSCompositeCopy = 1,            ///< S
    NSCompositeSourceOver = 2,      ///< S + D·(1 − Sa)
    NSCompositeSourceIn = 3,        ///< S·Da
    NSCompositeSourceOut = 4,       ///< S·(1 − Da)
    NSCompositeSourceAtop = 5,      ///< S·Da + D·(1 − Sa)
    NSCompositeDestinationOver = 6, ///< D + S·(1 − Da)
    NSCompositeDestinationIn = 7,   ///< D·Sa
    NSCompositeDestinationOut = 8,  ///< D·(1 − Sa)
    NSCompositeDestinationAtop = 9, ///< D·Sa + S·(1 − Da)
    NSCompositeXOR = 10,            ///< S·(1 − Da) + D·(1 − Sa)
    NSCompositePlusDarker = 11,     ///< alpha Ra = min(1, Sa + Da); colour max(0, S + D − Sa − Da + Ra)
    NSCompositeHighlight = 12,      ///< the same as source-over
    NSCompositePlusLighter = 13,    ///< min(1, S + D)
};

/// The operation that a number stands for. It is kept as it is where it names none, so that it is written
/// back as it was read.
///
/// Example:
/// @code
/// NSCompositingOperation operation = compositingOperation(5);
/// bool keepsTheShapeBelow = operation == NSCompositeSourceAtop;
/// if (!keepsTheShapeBelow) operation = NSCompositeSourceOver;
/// @endcode
constexpr NSCompositingOperation compositingOperation(int number) {
    return static_cast<NSCompositingOperation>(number);
}

} // namespace Imaging::Platform
