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
/// const NSData profile = {'n', 'o', 'n', 'e'};
/// const std::string name = colorProfileName(profile);
/// const bool isNamed = !name.empty();
/// static_cast<void>(isNamed);
/// @endcode
IMAGING_EXPORT std::string colorProfileName(ByteView profile);

} // namespace Imaging::Platform
