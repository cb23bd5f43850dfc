#pragma once

#include "Platform/Foundation/Export.h"

#include <memory>
#include <string>

/// What happens when a parameter or a state is not as it must be: a mistake in the program, not bad input.
///
/// Example:
/// @code
/// const int width = 3;
/// if (width < 1) parameterAssertionFailed("width >= 1", __FILE__, __LINE__);
/// @endcode
namespace Imaging::Platform {

/// Decides what a failed assertion does. There is one handler for the whole process; a program may put its
/// own in place, for instance to log and go on.
class IMAGING_EXPORT NSAssertionHandler {
public:
    NSAssertionHandler() = default;
    virtual ~NSAssertionHandler();
    NSAssertionHandler(const NSAssertionHandler&) = delete;
    NSAssertionHandler& operator=(const NSAssertionHandler&) = delete;

    /// The handler in force, never null. Safe on every thread.
    static std::shared_ptr<NSAssertionHandler> currentHandler();

    /// Puts another handler in force; null restores the default one. Safe on every thread; failures that are
    /// just being handled stay with the handler that they began with.
    static void setCurrentHandler(std::shared_ptr<NSAssertionHandler> handler);

    /// Called on the thread of the failure, with no internal lock held, with where it is in the source and
    /// what is wrong. The default throws an NSException named NSInternalInconsistencyException with the
    /// description as its reason. When a handler returns, the code that failed goes on as best it can.
    virtual void handleFailureInFile(const std::string& file, int line, const std::string& description);
};

/// Reports a parameter that does not meet its condition: calls the current handler with the description
/// "Invalid parameter not satisfying: " and the text of the condition. Returns if the handler does.
IMAGING_EXPORT void parameterAssertionFailed(const char* condition, const char* file, int line);

} // namespace Imaging::Platform
