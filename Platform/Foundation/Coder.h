#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Geometry.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Keyed archiving: what an object must offer to be archived, and what a coder offers to objects.
///
/// An object writes its parts under keys in `encodeWithCoder` and reads them back in a constructor that
/// takes an NSCoder; its class is made known once with an `NSArchivableClass`. An object that several others
/// refer to is written once and comes back as one object.
///
/// Example:
/// @code
/// struct Note : NSCoding {
///     explicit Note(NSCoder& coder) : text(coder.decodeString("text").value_or("")) {}
///     std::string archiveClassName() const override { return "Note"; }
///     void encodeWithCoder(NSCoder& coder) const override { coder.encodeString(text, "text"); }
///     std::string text;
/// };
/// const NSArchivableClass<Note> registration("Note");
/// @endcode
namespace Imaging::Platform {

class NSCoder;

/// Objects may nest at most `maximumArchiveDepth` deep; deeper graphs throw on encoding and on decoding. Each
/// level takes room on the calling thread's stack, mostly for the decoding constructors of the program; when
/// less than 256 KiB (or a quarter of a smaller stack) of it is left, fewer levels throw in the same way.
inline constexpr int maximumArchiveDepth = 2000;

/// Base of everything that can stand in an archive as an object.
class IMAGING_EXPORT NSCoding {
public:
    virtual ~NSCoding();

    /// The name of the object's class in archives.
    virtual std::string archiveClassName() const = 0;

    /// Writes the object's parts. Throws an NSException when a part cannot be archived.
    virtual void encodeWithCoder(NSCoder& coder) const = 0;

protected:
    NSCoding() = default;
    NSCoding(const NSCoding&) = default;
    NSCoding& operator=(const NSCoding&) = default;
};

/// Encodes or decodes one archive. A coder does one of the two; calling the other half throws an
/// NSException (NSInvalidArgumentException). Encoding one key twice in one object throws the same.
///
/// Decoding a key that is absent gives nullopt or null, or for plain numbers zero and false. Decoding a key
/// that holds another type throws an NSException named NSInvalidUnarchiveOperationException whose reason
/// names the key; only `decodeFloat` takes a whole number too.
///
/// Objects are told apart by their addresses, so whatever is encoded must stay alive until the whole archive
/// is written. A coder is only used within the call that it is handed to.
class IMAGING_EXPORT NSCoder {
public:
    virtual ~NSCoder();

    /// Writes a part under a key. A null object is written as such; the key is then present and decodes to
    /// null. Throws NSInvalidArchiveOperationException for an object that contains itself.
    virtual void encodeObject(const NSCoding* object, std::string_view key);
    /// Elements may be null, and may stand several times.
    virtual void encodeArray(const std::vector<const NSCoding*>& objects, std::string_view key);
    /// UTF-8 without zero bytes, and in XML without control characters; others throw
    /// NSInvalidArchiveOperationException.
    virtual void encodeString(const std::string& value, std::string_view key);
    /// Plain values are copied. Floats come back bit for bit, but for the limits of XML (see
    /// KeyedArchiver.h).
    virtual void encodeData(ByteView value, std::string_view key);
    virtual void encodeBool(bool value, std::string_view key);
    virtual void encodeInt(std::int64_t value, std::string_view key);
    virtual void encodeFloat(float value, std::string_view key);
    virtual void encodeSize(NSSize value, std::string_view key);
    /// Written like a size, "{x, y}".
    void encodePoint(NSPoint value, std::string_view key) { encodeSize({value.x, value.y}, key); }
    virtual void encodeRect(NSRect value, std::string_view key);
    virtual void encodeTransform(const NSAffineTransform& value, std::string_view key);

    /// True also for a null object.
    virtual bool containsValueForKey(std::string_view key) const;

    /// Reads a part. The same object comes back each time, shared with whoever else refers to it.
    virtual std::shared_ptr<NSCoding> decodeObject(std::string_view key);
    virtual std::optional<std::vector<std::shared_ptr<NSCoding>>> decodeArray(std::string_view key);

    /// Strings are well-formed UTF-8. Floats that do not fit in 32 bits are of a wrong type.
    virtual std::optional<std::string> decodeString(std::string_view key);
    virtual std::optional<NSData> decodeData(std::string_view key);
    virtual bool decodeBool(std::string_view key);
    virtual std::int64_t decodeInt(std::string_view key);
    virtual float decodeFloat(std::string_view key);
    virtual NSSize decodeSize(std::string_view key);
    virtual NSRect decodeRect(std::string_view key);
    NSPoint decodePoint(std::string_view key) {
        const NSSize pair = decodeSize(key);
        return {pair.width, pair.height};
    }
    virtual std::optional<NSAffineTransform> decodeTransform(std::string_view key);

    /// The object under the key as a T. An object of another class throws like any wrong type.
    template<class T>
    std::shared_ptr<T> decodeObjectOfClass(std::string_view key) {
        const std::shared_ptr<NSCoding> object = decodeObject(key);
        std::shared_ptr<T> typed = std::dynamic_pointer_cast<T>(object);
        if (object != nullptr && typed == nullptr) throwWrongType(key);
        return typed;
    }

    /// The array under the key as Ts. A null element or one of another class throws like any wrong type.
    template<class T>
    std::optional<std::vector<std::shared_ptr<T>>> decodeArrayOfClass(std::string_view key) {
        std::optional<std::vector<std::shared_ptr<NSCoding>>> objects = decodeArray(key);
        if (!objects.has_value()) return std::nullopt;
        std::vector<std::shared_ptr<T>> typed;
        typed.reserve(objects->size());
        for (const std::shared_ptr<NSCoding>& object : *objects) {
            typed.push_back(std::dynamic_pointer_cast<T>(object));
            if (typed.back() == nullptr) throwWrongType(key);
        }
        return typed;
    }

protected:
    NSCoder() = default;
    [[noreturn]] static void throwWrongType(std::string_view key);
};

/// Makes a class known to unarchivers. Classes are registered once, usually by a static object; a second
/// registration of a name replaces the first. Safe on every thread.
IMAGING_EXPORT void registerArchivableClass(std::string_view name,
                                            std::function<std::shared_ptr<NSCoding>(NSCoder&)> decode);

/// The names of all classes that are registered at this time, in ascending order. Safe on every thread.
IMAGING_EXPORT std::vector<std::string> archivableClassNames();

/// The function that decodes objects of a class, for unarchivers; null when no class of that name is
/// registered. Not part of the library's interface. Safe on every thread.
std::function<std::shared_ptr<NSCoding>(NSCoder&)> archivableClassNamed(std::string_view name);

/// `static const NSArchivableClass<MyNode> registration("MyNode");` for a class with a constructor
/// `MyNode(NSCoder&)`.
template<class T>
class NSArchivableClass {
public:
    explicit NSArchivableClass(std::string_view name) {
        registerArchivableClass(
            name, [](NSCoder& coder) -> std::shared_ptr<NSCoding> { return std::make_shared<T>(coder); });
    }
};

} // namespace Imaging::Platform
