#pragma once

#include <string>

namespace Imaging::Platform {

/// Why something could not be had, for programs that want to branch on it.
enum class NSErrorCode {
    None,
    FileNotFound,      ///< no such file
    FileUnreadable,    ///< there, but not to be read: permissions, a directory, a device error
    FileUnwritable,    ///< cannot be written: permissions, a missing folder, a full disk
    UnsupportedFormat, ///< not in any format that is known here
    CorruptData,       ///< of a known format, but truncated or damaged
    TooLarge,          ///< beyond the pixel, memory or transfer limit
    Network,           ///< the server could not be reached, answered with an error or stalled
    Failed,            ///< something else, which the message tells
    UnsupportedURL,    ///< a scheme other than file, http and https, or no URL at all
};

/// The reason of a failure. Functions that answer null on failure take a pointer to one as their last
/// argument, null by default; it is written only on failure. The message is one line without a full stop
/// that says what is wrong and, where something can be done, what to do; it does not repeat the name of the
/// file or URL, which the caller knows.
///
/// Example:
/// @code
/// NSError error;
/// setError(&error, NSErrorCode::TooLarge, "it holds more than the limit of 100 bytes");
/// if (error.code == NSErrorCode::TooLarge) error.message += "; raise the limit";
/// @endcode
struct NSError {
    NSErrorCode code = NSErrorCode::None;
    std::string message;
};

/// Writes the reason if the caller asked for it.
inline void setError(NSError* error, NSErrorCode code, std::string message) {
    if (error != nullptr) *error = {code, std::move(message)};
}

} // namespace Imaging::Platform
