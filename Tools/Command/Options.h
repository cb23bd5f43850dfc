#pragma once

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

/// The options of a subcommand as a table, and what becomes of their values:
///
///     return {{"--size", "SIZE", "The new size in pixels", into(m_size, parseSize)},
///             {"--hint", "TEXT", "Write a text into the middle", into(m_hint)},
///             {"--json", "", "Write a JSON array", raise(m_json)}};
///
/// A row is all that there is to say about an option. Its name reaches the converter, which needs it for its
/// complaints, so it is written nowhere else. `Parser` reads the command line by such tables: first all of
/// the text, then values in the order of the table, so that a converter finds what rows above it have filled.
///
/// Converters are called as `convert(text, option)` with the option's name, such as "--size", and throw a
/// UsageError that begins with it. They read no input, so that nothing is read before all arguments are
/// right. Those of `Values.h` are of this shape.
namespace Imaging::Tool {

/// What is done with the value of an option. The targets have to outlive the parsing.
struct Binding {
    /// Called with the value, empty for a flag, and the option's name.
    std::function<void(const std::string& text, const std::string& option)> take;

    bool isFlag = false;               ///< stands alone; the others are followed by a value
    bool everyTime = false;            ///< taken each time that it is given; otherwise the last time counts
    bool emptyIsNone = false;          ///< an empty value counts as if the option were not given
    std::function<void()> otherwise{}; ///< called, if there is anything, where the option is not given
};

/// The value goes to a place as `convert` makes it.
template<class Value, class Convert>
Binding into(Value& target, Convert convert) {
    return {.take = [&target, convert](const std::string& text, const std::string& option) {
        target = convert(text, option);
    }};
}

/// The same for a place that says whether there is a value. An empty one counts as none.
template<class Value, class Convert>
Binding into(std::optional<Value>& target, Convert convert) {
    return {.take = [&target, convert](const std::string& text,
                                       const std::string& option) { target = convert(text, option); },
            .emptyIsNone = true};
}

/// The value as it is.
inline Binding into(std::string& target) {
    return {.take = [&target](const std::string& text, const std::string&) { target = text; }};
}

/// A flag: makes a place true, a bool or an optional one.
template<class Flag>
Binding raise(Flag& target) {
    return {.take = [&target](const std::string&, const std::string&) { target = true; }, .isFlag = true};
}

/// Where the option is not given, or its value is empty, `otherwise` is called in its turn: for a default
/// that follows from rows above, or a complaint.
Binding orElse(Binding binding, std::function<void()> otherwise);

/// The option has to be given; `complaint` is the UsageError where it was not.
Binding required(Binding binding, const std::string& complaint);

/// A value that means something only beside what is read later, with the name that complaints begin with.
struct GivenText {
    std::string text;
    std::string option;
};

/// The converter for it.
inline GivenText asGiven(const std::string& text, const std::string& option) { return {text, option}; }

/// One row of a table.
struct Option {
    std::string names;    ///< with commas between them, the one for complaints first of the long ones
    std::string typeName; ///< what its value is called in the help; empty for a flag
    std::string help;     ///< in lines of at most 52 characters
    Binding binding;
    std::string group{}; ///< the heading that it stands below in the help; empty for "Options"
};

/// In the order of the help.
using OptionTable = std::vector<Option>;

/// Several tables as one: what a subcommand has of its own, and what it shares with others.
OptionTable joined(std::initializer_list<OptionTable> tables);

} // namespace Imaging::Tool
