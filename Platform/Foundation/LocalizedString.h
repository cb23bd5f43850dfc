#pragma once

#include "Platform/Foundation/Export.h"

#include <string>

/// Texts in the language of whoever uses the program, from gettext message catalogues.
///
/// Example:
/// @code
/// const std::string title = localizedStringForKey("open-title", "Open a picture");
/// @endcode
namespace Imaging::Platform {

/// The text for a key in the language that the program chose with `setlocale` (and the variable LANGUAGE),
/// in UTF-8. Where the catalogue has no entry: `value`, or the key when that is empty. Safe on every thread.
IMAGING_EXPORT std::string localizedStringForKey(const std::string& key, const std::string& value = "");

/// Where catalogues are looked for: DIRECTORY/LANGUAGE/LC_MESSAGES/DOMAIN.mo. An empty directory means the
/// system's own. Until this is called the domain is "imaging" in the system's directory. Throws an
/// NSException (NSInvalidArgumentException) when the domain is empty, and std::bad_alloc. Safe on every
/// thread.
IMAGING_EXPORT void setLocalizationDomain(const std::string& domain, const std::string& directory);

} // namespace Imaging::Platform
