#pragma once

#include "Platform/Foundation/Data.h"
#include "Tools/Film/ShowSettings.h"

#include <string>
#include <vector>

/// Films that are described in a file; docs/show-file.md says how.
namespace Imaging::Tool {

struct ShowFile {
    ShowSettings settings;
    std::vector<ShowEntry> pictures; ///< at least one; names relative to the file's folder are made whole
};

/// Whether an input is a show file: "-", or an ordinary file whose first byte that is no white space is '{',
/// whatever its name.
bool isShowFile(const std::string& name);

/// Throws a Failure for `name` that says where in it something is wrong and what would be right.
ShowFile readShowFile(const std::string& name);

/// The same for the bytes of one, of which `name` is only a name: its folder is where relative names begin.
ShowFile showFileWithBytes(const Platform::NSData& bytes, const std::string& name);

} // namespace Imaging::Tool
