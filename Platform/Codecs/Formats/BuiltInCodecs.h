#pragma once

// Internal: the one list of the formats that come with the library. Not installed.
//
// A new format is a codec in files of its own beside this one, which the build finds by itself, and two lines
// in BuiltInCodecs.cpp: the include and the entry.

#include "Platform/Codecs/Codec.h"

#include <memory>
#include <vector>

namespace Imaging::Platform {

/// The codecs that are there from the start, in the order in which they are asked. That matters to nobody but
/// who reads the list in a message: no bytes begin like two formats.
std::vector<std::shared_ptr<const Codec>> builtInCodecs();

} // namespace Imaging::Platform
