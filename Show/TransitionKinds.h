#pragma once

#include "Imaging/Image.h"
#include "Platform/Graphics/Color.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The transitions as people know them: names and parameters for the library's classes.
namespace Imaging::Tool {

/// A parameter of a kind of transition: one of a few words, a colour or a number in a range. The words of a
/// direction say which way people see things move, whatever the numbers mean to the class behind the kind.
struct TransitionParameter {
    enum class Type { Word, Color, Number };

    std::string name; ///< "direction"
    std::string help; ///< one line
    Type type = Type::Word;
    std::string byDefault;
    std::vector<std::string> words = {}; ///< what a word may be, the n-th standing for the number n + 1
    double low = 0;                      ///< of a number
    double high = 0;
};

/// The value of a parameter, of which the field of the parameter's type counts.
struct TransitionValue {
    std::int32_t word = 0; ///< the number that the word stands for
    Platform::NSColor color;
    float number = 0;
    std::string text; ///< as people write it
};

/// A kind of transition. Each is one entry of a table; nothing else has to be changed for one more.
struct TransitionKind {
    std::string name;    ///< "color-fade"
    std::string summary; ///< one line
    std::vector<TransitionParameter> parameters;

    /// Whether drawing it needs OpenGL, so that it is left out where all are meant.
    bool needsOpenGL = false;

    /// The node for a weight from 0 to 1 in a frame of a size, to be drawn on black: some transitions add to
    /// what is there. Kinds that move something through the frame take the nearest weight at which it stands
    /// on whole pixels.
    std::function<std::shared_ptr<Imaging::IMGImage>(
        const std::shared_ptr<Imaging::IMGImage>& from, const std::shared_ptr<Imaging::IMGImage>& to,
        Platform::NSSize size, const std::vector<TransitionValue>& values, float weight)>
        build;
};

/// The table, in the order in which films go through it.
const std::vector<TransitionKind>& transitionKinds();

/// Why a kind cannot be drawn, as what follows its name in a message; empty for those that can.
std::string whyNotDrawn(const TransitionKind& kind);

/// The names of those that can be drawn, in the order of the table.
std::vector<std::string> drawnKindNames();

/// A kind with values for all of its parameters.
struct Transition {
    const TransitionKind* kind = nullptr; ///< never null in one that was parsed
    std::vector<TransitionValue> values;

    std::shared_ptr<Imaging::IMGImage> node(const std::shared_ptr<Imaging::IMGImage>& from,
                                            const std::shared_ptr<Imaging::IMGImage>& to,
                                            Platform::NSSize size, float weight) const;

    /// As `parseTransition` reads it: "slide:direction=left:inout=in".
    std::string text() const;
};

/// A parameter's name and value, as people write them.
using TransitionSettings = std::vector<std::pair<std::string, std::string>>;

/// A kind by its name, with defaults for the parameters that are left out. Throws a UsageError that begins
/// with `option` and lists what is known, also for a kind that cannot be drawn and for a parameter that is
/// given twice.
Transition makeTransition(const std::string& name, const TransitionSettings& settings,
                          const std::string& option);

/// "NAME:PARAMETER=VALUE…" taken apart. Throws like `makeTransition`, but looks nothing up.
std::pair<std::string, TransitionSettings> splitTransition(std::string_view text, const std::string& option);

/// "NAME[:PARAMETER=VALUE…]", with defaults for what is left out. Throws a UsageError that begins with
/// `option` and lists what is known.
Transition parseTransition(std::string_view text, const std::string& option);

/// Every combination of a kind's words, other parameters at their defaults: "push" in four directions. The
/// first one has the defaults of the words too.
std::vector<Transition> variantsOf(const TransitionKind& kind);

/// Which transition comes next: a list that is gone through over and over, all kinds, or a random one.
class TransitionChoice {
public:
    /// "NAME[:param=value…][,NAME…]", "all" (each kind in turn, a round later in its next variant) or
    /// "random" (any variant of any kind but the one just used; the same for the same seed). Throws a
    /// UsageError that begins with `option`.
    TransitionChoice(std::string_view text, const std::string& option, std::uint64_t seed);

    /// The transition number `index` of a film. Does not depend on which were asked for before.
    Transition at(std::size_t index) const;

private:
    std::size_t randomPlace(std::size_t index) const;
    std::size_t firstPlaceOfBlock(std::size_t block) const;

    std::vector<std::vector<Transition>> m_rounds; ///< per place of a round, the variants to take in turn
    bool m_random = false;                         ///< places and variants are chosen at random
    std::uint64_t m_seed;
};

} // namespace Imaging::Tool
