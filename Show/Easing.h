#pragma once

#include <string>

namespace Imaging::Tool {

/// How a transition's weight follows time.
enum class Easing {
    Linear, ///< at one speed
    In,     ///< from rest: the cube of time
    Out,    ///< to rest
    InOut   ///< from rest to rest
};

/// The weight at a time from 0 to 1, each end kept exactly.
double eased(Easing easing, double time);

/// "linear", "in", "out" or "in-out". Throws a UsageError that begins with `option`.
Easing parseEasing(const std::string& text, const std::string& option);
std::string textOf(Easing easing);

} // namespace Imaging::Tool
