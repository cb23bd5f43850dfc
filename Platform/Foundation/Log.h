#pragma once

#include "Platform/Foundation/Export.h"

#include <functional>
#include <string>

/// Messages for whoever runs the program: things that went wrong without anybody to report them to.
///
/// Example:
/// @code
/// NSLog("%d pictures were left out", 3);
/// @endcode
namespace Imaging::Platform {

/// Formats like printf and hands the message to the sink, by default as one line on standard error. Line
/// breaks at the end of the message are dropped. Safe on every thread.
IMAGING_EXPORT void NSLog(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Where messages go instead; null restores standard error. The sink gets the message without a line break
/// at its end, on the thread that logged and with no internal lock held, so it may log itself and several
/// threads may be in it at once; it must not throw. A thread that is just logging may still use the sink from
/// before. Safe on every thread.
IMAGING_EXPORT void setLogSink(std::function<void(const std::string&)> sink);

} // namespace Imaging::Platform
