#pragma once

#include "Platform/Foundation/Export.h"
#include "Show/Transition.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Imaging {

/// Which transition comes next: a list that is gone through over and over, all kinds, or a random one. It
/// does not change, so every thread may ask it.
///
/// Example:
/// @code
/// const TransitionChoice choice("push:direction=up,zoom", 1);
/// const Transition third = choice.at(2); // push again
/// @endcode
class IMAGING_EXPORT TransitionChoice {
public:
    /// "NAME[:PARAMETER=VALUE…][,NAME…]", "all" (each kind in turn, a round later in its next variant) or
    /// "random" (any variant of any kind but the one just used; the same for the same seed). Throws an
    /// NSException (NSInvalidArgumentException) that says what is wrong with the text.
    TransitionChoice(std::string_view text, std::uint64_t seed);

    /// The transition number `index` of a show. Does not depend on which were asked for before.
    Transition at(std::size_t index) const;

private:
    std::size_t randomPlace(std::size_t index) const;
    std::size_t firstPlaceOfBlock(std::size_t block) const;

    std::vector<std::vector<Transition>> m_rounds; ///< per place of a round, the variants to take in turn
    bool m_random = false;                         ///< places and variants are chosen at random
    std::uint64_t m_seed;
};

} // namespace Imaging
