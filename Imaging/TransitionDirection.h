#pragma once

#include "Imaging/EnumOrNumber.h"

#include <cstdint>

/// The ways in which transitions move. Functions that take one also take its number.
namespace Imaging {

/// Where a transition moves. The names tell the movement of push and slide; wipe and slide changer go the
/// opposite way along the same axis. Other numbers stand for no movement.
enum IMGTransitionDirection : std::int32_t {
    IMGTransitionDirectionLeft = 1,
    IMGTransitionDirectionRight = 2,
    IMGTransitionDirectionUp = 3,
    IMGTransitionDirectionDown = 4,
};

/// Which picture moves. Other numbers leave both where they are, unless a transition says otherwise.
enum IMGTransitionInOut : std::int32_t {
    IMGTransitionIn = 1,  ///< the "to" picture arrives over the "from" picture
    IMGTransitionOut = 2, ///< the "from" picture leaves and uncovers the "to" picture
};

} // namespace Imaging
