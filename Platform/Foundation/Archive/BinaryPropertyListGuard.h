#pragma once

// Internal: the guard before the parser of binary property lists. Not installed.

#include "Platform/Foundation/Archive/PropertyListGuard.h"
#include "Platform/Foundation/Data.h"

namespace Imaging::Platform {

/// True when the data begins like a binary property list of version 00.
bool looksLikeBinaryPropertyList(ByteView data);

/// Throws an NSException (NSInvalidUnarchiveOperationException) when the data is damaged or beyond the limits
/// of PropertyListGuard.h. What passes may still be refused by the parser.
void checkBinaryPropertyList(ByteView data);

} // namespace Imaging::Platform
