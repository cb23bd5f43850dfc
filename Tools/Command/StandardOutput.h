#pragma once

#include "Platform/Foundation/Data.h"

#include <string_view>

/// What people asked for, where it goes to no file.
namespace Imaging::Tool {

/// Throws a Failure when not everything could be written.
void writeStandardOutput(Platform::ByteView data);
void writeStandardOutput(std::string_view text);

} // namespace Imaging::Tool
