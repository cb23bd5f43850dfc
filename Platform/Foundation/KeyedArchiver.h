#pragma once

#include "Platform/Foundation/Coder.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

/// Keyed archives: a property list with the entries "$archiver", "$version", "$top" (under "root" the
/// number of the root object) and "$objects" (all objects, each once, referring to one another by number).
/// Any property list reader can look inside.
///
/// Example:
/// @code
/// class Note : public NSCoding {
///     std::string archiveClassName() const override { return "Note"; }
///     void encodeWithCoder(NSCoder& coder) const override { coder.encodeString("hello", "text"); }
/// };
/// const NSData archive = archivedDataWithRootObject(Note(), NSPropertyListFormat::XML);
/// @endcode
namespace Imaging::Platform {

enum class NSPropertyListFormat { Binary, XML };

/// The archive of an object and of all that it refers to. Throws an NSException
/// (NSInvalidArchiveOperationException) when something cannot be archived: an object that contains itself,
/// text that is not UTF-8 or holds a zero byte, in XML also other control characters, more than 2 GiB, and
/// anything that could not be unarchived again. XML turns a float of -0 into 0. The objects must not change
/// meanwhile; otherwise safe on every thread.
IMAGING_EXPORT NSData archivedDataWithRootObject(const NSCoding& root,
                                                 NSPropertyListFormat format = NSPropertyListFormat::Binary);

} // namespace Imaging::Platform
