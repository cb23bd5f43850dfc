#pragma once

#include "Imaging/Image.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Show/TransitionKinds.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Imaging {

/// A kind of transition with values for all of its parameters. A plain value.
///
/// Example:
/// @code
/// const Transition slide = makeTransition("slide", {{"direction", "up"}});
/// const Transition same = transitionWithText("slide:direction=up");
/// const std::string text = same.text(); // slide:direction=up:inout=in
/// @endcode
struct IMAGING_EXPORT Transition {
    const TransitionKind* kind = nullptr; ///< of the table; never null in one that was made by the functions
    std::vector<TransitionValue> values;

    /// The node for a weight from 0 to 1; see TransitionKind. It owns both pictures.
    std::shared_ptr<IMGImage> node(const std::shared_ptr<IMGImage>& from, const std::shared_ptr<IMGImage>& to,
                                   Platform::NSSize size, float weight) const;

    /// As `transitionWithText` reads it: "slide:direction=left:inout=in".
    std::string text() const;
};

/// A parameter's value as people write it. Throws an NSException (NSInvalidArgumentException) that says what
/// would have been right.
IMAGING_EXPORT TransitionValue transitionValue(const TransitionParameter& parameter, const std::string& text);

/// A parameter's name and value, as people write them.
using TransitionSettings = std::vector<std::pair<std::string, std::string>>;

/// A kind by its name, with defaults for the parameters that are left out. Throws an NSException
/// (NSInvalidArgumentException) that lists what is known, also for a kind that cannot be drawn and for a
/// parameter that is given twice.
IMAGING_EXPORT Transition makeTransition(const std::string& name, const TransitionSettings& settings = {});

/// "NAME:PARAMETER=VALUE…" taken apart. Throws like `makeTransition`, but looks nothing up.
IMAGING_EXPORT std::pair<std::string, TransitionSettings> splitTransition(std::string_view text);

/// "NAME[:PARAMETER=VALUE…]", with defaults for what is left out. Throws like `makeTransition`.
IMAGING_EXPORT Transition transitionWithText(std::string_view text);

/// Every combination of a kind's words, other parameters at their defaults: "push" in four directions. The
/// first one has the defaults of the words too.
IMAGING_EXPORT std::vector<Transition> variantsOf(const TransitionKind& kind);

} // namespace Imaging
