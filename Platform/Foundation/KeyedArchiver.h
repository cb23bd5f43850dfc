#pragma once

#include "Platform/Foundation/Coder.h"

#include <memory>

namespace Imaging::Platform {

enum class NSPropertyListFormat { Binary, XML };

/// Keyed archives: a property list with the entries "$archiver", "$version", "$top" (under "root" the
/// number of the root object) and "$objects" (all objects, each once, referring to one another by number).
/// Any property list reader can look inside.
///
/// Objects may nest at most `maximumArchiveDepth` deep; deeper graphs throw on encoding and on decoding. Each
/// level takes room on the calling thread's stack, mostly for the decoding constructors of the program; when
/// less than 256 KiB (or a quarter of a smaller stack) of it is left, fewer levels throw in the same way.
inline constexpr int maximumArchiveDepth = 2000;

/// The archive of an object and of all that it refers to. Throws an NSException
/// (NSInvalidArchiveOperationException) when something cannot be archived: an object that contains itself,
/// text that is not UTF-8 or holds a zero byte, in XML also other control characters, more than 2 GiB, and
/// anything that could not be unarchived again. XML turns a float of -0 into 0. The objects must not change
/// meanwhile; otherwise safe on every thread.
IMAGING_EXPORT NSData archivedDataWithRootObject(const NSCoding& root,
                                                 NSPropertyListFormat format = NSPropertyListFormat::Binary);

/// The root object of an archive in either format. Throws an NSException
/// (NSInvalidUnarchiveOperationException), whose reason is one line for people, when the data is no keyed
/// archive, is damaged, names a class that is not registered, holds a wrong type, or contains an object
/// that refers to itself on whatever way. Exceptions of the classes' own decoding pass through. Time and
/// memory stay in proportion to the data's length. Safe on every thread.
IMAGING_EXPORT std::shared_ptr<NSCoding> unarchiveObjectWithData(ByteView data);

/// The same, for a root object of a given class. Throws when it is of another one.
template<class T>
std::shared_ptr<T> unarchiveObjectOfClass(ByteView data) {
    std::shared_ptr<T> typed = std::dynamic_pointer_cast<T>(unarchiveObjectWithData(data));
    if (typed == nullptr) {
        throw NSException(NSInvalidUnarchiveOperationException,
                          "the archive's root object is of another kind than was asked for");
    }
    return typed;
}

/// True when the data begins like a property list in either format, so that it can be told from a picture.
IMAGING_EXPORT bool looksLikePropertyList(ByteView data);

} // namespace Imaging::Platform
