#pragma once

#include "Imaging/Image.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Graphics/Color.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// The transitions as people know them: names and parameters for the library's classes. The table never
/// changes, so every thread may read it.
///
/// Example:
/// @code
/// std::string list;
/// for (const TransitionKind& kind : transitionKinds()) list += kind.name + ": " + kind.summary + "\n";
/// @endcode
namespace Imaging {

/// A parameter of a kind of transition. The words of a direction say which way people see things move,
/// whatever the numbers mean to the class behind the kind.
struct TransitionParameter {
    enum class Type {
        Word,       ///< one of a few words
        Color,      ///< an opaque colour, as `opaqueColorNamed` reads it
        Number,     ///< a number in a range
        WholeNumber ///< a whole number in a range
    };

    std::string name; ///< "direction"; the same name means the same in all kinds
    std::string help; ///< one line
    Type type = Type::Word;
    std::string byDefault;
    std::vector<std::string> words = {}; ///< what a word may be, the n-th standing for the number n + 1
    double low = 0;                      ///< of a number, itself allowed
    double high = 0;                     ///< of a number, itself allowed
};

/// The value of a parameter, of which the field of the parameter's type counts.
struct TransitionValue {
    std::int32_t word = 0; ///< the number that the word stands for
    Platform::NSColor color = Platform::NSColor::blackColor();
    float number = 0;
    std::int32_t whole = 0;
    std::string text = {}; ///< as people write it
};

/// A kind of transition. Each is one row of a table; nothing else has to be changed for one more.
struct TransitionKind {
    std::string name;    ///< "color-fade"
    std::string summary; ///< one line
    std::vector<TransitionParameter> parameters = {};

    /// Whether drawing it needs OpenGL, so that it is left out where all are meant.
    bool needsOpenGL = false;

    /// The node for a weight from 0 to 1 in a frame of a size, to be drawn on black: some transitions add to
    /// what is there. Kinds that move something through the frame take the nearest weight at which it stands
    /// on whole pixels. Both pictures have the bounds {0, 0, width, height}; `values` has one for each
    /// parameter.
    std::function<std::shared_ptr<IMGImage>(const std::shared_ptr<IMGImage>& from,
                                            const std::shared_ptr<IMGImage>& to, Platform::NSSize size,
                                            const std::vector<TransitionValue>& values, float weight)>
        build = {};
};

/// The table, in the order in which shows go through it.
IMAGING_EXPORT const std::vector<TransitionKind>& transitionKinds();

/// The parameters of all kinds, each name once, as the first kind that has it describes it.
IMAGING_EXPORT std::vector<TransitionParameter> transitionParameters();

/// Why a kind cannot be drawn, as what follows its name in a message; empty for those that can.
IMAGING_EXPORT std::string whyNotDrawn(const TransitionKind& kind);

/// The names of those that can be drawn, in the order of the table.
IMAGING_EXPORT std::vector<std::string> drawnKindNames();

/// The kind of a name. Throws an NSException (NSInvalidArgumentException) that lists what is known, also for
/// one that cannot be drawn.
IMAGING_EXPORT const TransitionKind& transitionKindNamed(const std::string& name);

} // namespace Imaging
