#pragma once

#include "Imaging/Image.h"
#include "Platform/Graphics/Color.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The transitions as people know them: names and parameters for the library's classes.
namespace Tool {

/// A parameter of a kind of transition: one of a few words, a colour or a number in a range.
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

/// Values for the parameters of a kind, in its order.
struct TransitionValue {
    std::int32_t word = 0;
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

    /// The node for a weight from 0 to 1 in a frame of a size.
    std::function<std::shared_ptr<Imaging::IMGImage>(
        const std::shared_ptr<Imaging::IMGImage>& from, const std::shared_ptr<Imaging::IMGImage>& to,
        Platform::NSSize size, const std::vector<TransitionValue>& values, float weight)>
        build;
};

/// The table, in the order in which films go through it.
const std::vector<TransitionKind>& transitionKinds();

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

/// "NAME[:PARAMETER=VALUE…]", with defaults for what is left out. Throws a UsageError that begins with
/// `option` and lists what is known.
Transition parseTransition(std::string_view text, const std::string& option);

/// Every combination of a kind's words, other parameters at their defaults: "push" in four directions.
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
    std::vector<std::vector<Transition>> m_rounds; ///< per place of a round, the variants to take in turn
    std::vector<Transition> m_random;              ///< empty unless chosen at random
    std::uint64_t m_seed;
};

} // namespace Tool
