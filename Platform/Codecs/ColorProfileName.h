#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Export.h"

#include <string>

namespace Imaging::Platform {

/// The description text of an ICC profile ("sRGB IEC61966-2.1"), or "" when the bytes are no profile. In
/// UTF-8; what is no character becomes U+FFFD. Safe on every thread.
///
/// Example:
/// @code
/// const NSData profile; // as in a picture's header
/// std::string name = colorProfileName(profile);
/// if (name.empty()) name = "no profile";
/// @endcode
IMAGING_EXPORT std::string colorProfileName(ByteView profile);

} // namespace Imaging::Platform
