#pragma once

#include "Platform/Foundation/Export.h"

#include <string>
#include <string_view>
#include <vector>

/// What to tell people who wrote a word that stands for nothing. Everything here is thread-safe.
///
/// Example:
/// @code
/// const std::string reason = unknownWord("easing", "linar", {"linear", "in", "out"});
/// // there is no easing named 'linar'; known are linear, in and out; did you mean 'linear'?
/// @endcode
namespace Imaging {

/// "there is no WHAT named 'WORD'; known are a, b and c; did you mean 'a'?": `what` is "easing" or the like,
/// and `known` has at least one word.
IMAGING_EXPORT std::string unknownWord(const std::string& what, std::string_view word,
                                       const std::vector<std::string>& known);

/// "; did you mean 'X'?" for the known word that is nearest to a mistyped one, or "" when none is near: at
/// most a third of its letters may be inserted, left out, changed or swapped with a neighbour.
IMAGING_EXPORT std::string suggestion(std::string_view word, const std::vector<std::string>& known);

/// "a, b and c"; empty without words.
IMAGING_EXPORT std::string enumeration(const std::vector<std::string>& words);

} // namespace Imaging
