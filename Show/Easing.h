#pragma once

#include "Platform/Foundation/Export.h"

#include <string>

/// How time becomes movement. Everything here is thread-safe.
///
/// Example:
/// @code
/// const double middle = eased(Easing::InOut, 0.5); // 0.5
/// const double soon = eased(easingNamed("in"), 0.5); // 0.125
/// static_cast<void>(middle + soon);
/// @endcode
namespace Imaging {

/// How a transition's weight follows time.
enum class Easing {
    Linear, ///< at one speed
    In,     ///< from rest: the cube of time
    Out,    ///< to rest
    InOut   ///< from rest to rest
};

/// The weight at a time, both from 0 to 1; each end is kept exactly, and between them it never goes back.
IMAGING_EXPORT double eased(Easing easing, double time);

/// By its word: "linear", "in", "out" or "in-out". Throws an NSException (NSInvalidArgumentException) that
/// lists them.
IMAGING_EXPORT Easing easingNamed(const std::string& text);

/// The word that `easingNamed` reads.
IMAGING_EXPORT std::string textOf(Easing easing);

} // namespace Imaging
