#pragma once

#include "Platform/Foundation/Export.h"

#include <string>
#include <vector>

/// Files that the library needs while it runs, such as the pictures of frames.
///
/// They are looked for in these folders, in this order, and the first file of the name counts, so that an
/// application replaces all of them or only some: the folder that the application set; the folder that the
/// environment variable IMAGING_RESOURCES names; the one that was installed with the library, found from
/// where the library lies now and then where it was configured to be installed; and the folder of the sources
/// that the library was built from, for programs that run before anything is installed.
///
/// Everything here is safe on every thread, as long as none changes the environment.
///
/// Example:
/// @code
/// setResourceFolder("/opt/frames");
/// const std::vector<std::string> folders = resourceFolders(); // begins with /opt/frames
/// @endcode
namespace Imaging::Platform {

/// A folder to look in first; empty for none. What was read already stays as it is.
IMAGING_EXPORT void setResourceFolder(const std::string& folder);

/// The folders in the order in which they are looked in, whether they exist or not.
IMAGING_EXPORT std::vector<std::string> resourceFolders();

/// The path of a picture, which is a PNG file, by its name without ".png". Throws an NSException
/// (NSResourceException) that names the file, where it was looked for and what to do when it is nowhere.
IMAGING_EXPORT std::string pathForImageResource(const std::string& name);

} // namespace Imaging::Platform
