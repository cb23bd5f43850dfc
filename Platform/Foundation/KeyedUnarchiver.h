#pragma once

#include "Platform/Foundation/Coder.h"

#include <memory>

/// The way back from keyed archives (see KeyedArchiver.h) to objects.
///
/// Example:
/// @code
/// const NSData data = {'n', 'o', ' ', 'a', 'r', 'c', 'h', 'i', 'v', 'e'};
/// std::shared_ptr<NSCoding> root;
/// if (looksLikePropertyList(data)) root = unarchiveObjectWithData(data);
/// @endcode
namespace Imaging::Platform {

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
