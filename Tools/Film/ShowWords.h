#pragma once

#include "Show/Schedule.h"
#include "Show/Show.h"
#include "Show/TransitionChoice.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

/// What people write about a show, as Show understands it. What is wrong with it is a UsageError here, which
/// begins with `option`, and what is wrong with a picture a Failure that names it.
namespace Imaging::Tool {

/// As `easingNamed`.
Easing parseEasing(const std::string& text, const std::string& option);

/// As `Imaging::makeTransition`, `Imaging::splitTransition` and `transitionWithText`.
Transition makeTransition(const std::string& name, const TransitionSettings& settings,
                          const std::string& option);
std::pair<std::string, TransitionSettings> splitTransition(std::string_view text, const std::string& option);
Transition parseTransition(std::string_view text, const std::string& option);

/// As the constructor of TransitionChoice.
TransitionChoice parseTransitionChoice(std::string_view text, const std::string& option, std::uint64_t seed);

/// The schedule of a film; where there can be none, the message says which options to change.
Schedule scheduleOf(const Show& show);

/// As `framedPicture`, of an input: the picture's name may be "-". Throws a Failure that names the picture.
std::shared_ptr<IMGImage> framePicture(const ShowPicture& picture, const Show& show);

} // namespace Imaging::Tool
