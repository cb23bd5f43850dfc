#pragma once

#include "Tools/Command/Options.h"
#include "Tools/Pictures/FramedNode.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// What can be done to pictures on the way, as options that are carried out in the order in which they are
/// given.
namespace Imaging::Tool {

/// One step, ready to be carried out. It throws a Failure when the picture is not fit for it.
using Step = std::function<void(FramedNode&)>;

/// An operation as people know it. Each is one entry of a table; nothing else has to be changed for one more.
struct Operation {
    std::string name;     ///< the option, such as "--rotate"
    std::string typeName; ///< what its value is called in the help; empty for an option without value
    std::string help;     ///< in lines of at most 52 characters

    /// Makes a step of the value and the modifier's, both with the names of their options. Throws a
    /// UsageError; reads no files, so that nothing is read before all arguments are right (a step may).
    std::function<Step(const GivenText& value, const GivenText& modifier)> make;

    /// An option that follows and says more about it, or empty; its value is empty where it is left out.
    std::string modifier = {};
    std::string modifierTypeName = {};
    std::string modifierHelp = {};

    bool valueIsFile = false; ///< the value names a file

    /// The step for values as they were given.
    Step parse(const std::string& value, const std::string& modifierValue) const {
        return make({.text = value, .option = name}, {.text = modifierValue, .option = modifier});
    }
};

/// The table of those that place, cut and scale.
const std::vector<Operation>& placingOperations();

/// The table of those that compute new pixels.
const std::vector<Operation>& pixelOperations();

/// All operations of all tables, in the order of the help.
std::vector<const Operation*> allOperations();

/// The operations of a command line.
class OperationOptions {
public:
    OperationOptions() = default;
    OperationOptions(const OperationOptions&) = delete;
    OperationOptions& operator=(const OperationOptions&) = delete;

    /// An option for each operation, which this object notes.
    OptionTable options();

    /// The steps in their order. Throws a UsageError.
    std::vector<Step> steps() const;

private:
    struct Given {
        const Operation* operation;
        std::string value;
        std::string modifier;
    };

    void setModifier(const Operation& operation, const std::string& value);

    std::vector<Given> m_given;
    std::vector<std::string> m_lost_modifiers; ///< complaints, kept until everything is parsed
};

} // namespace Imaging::Tool
