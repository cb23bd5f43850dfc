#pragma once

// Internal: the guard before the parser of property lists in XML. Not installed.

#include "Platform/Foundation/Archive/PropertyListGuard.h"
#include "Platform/Foundation/Data.h"

namespace Imaging::Platform {

/// True when the data begins like a property list in XML: after a byte order mark, spaces, comments and
/// processing instructions comes the document type "plist" or the element of that name.
bool looksLikeXMLPropertyList(ByteView data);

/// Throws an NSException (NSInvalidUnarchiveOperationException) when the data is damaged or beyond the limits
/// of PropertyListGuard.h. What passes may still be refused by the parser.
void checkXMLPropertyList(ByteView data);

} // namespace Imaging::Platform
