// A coder that can do nothing: both kinds of coders replace the half that is theirs. Beside it the list of
// classes that can be decoded.

#include "Platform/Foundation/Coder.h"

#include "Platform/Foundation/Archive/KeyedArchiveFormat.h"

#include <map>
#include <mutex>

namespace Imaging::Platform {

namespace {

using Decode = std::function<std::shared_ptr<NSCoding>(NSCoder&)>;

struct ClassRegistry {
    std::mutex lock;
    std::map<std::string, Decode, std::less<>> classes;
};

/// Never destroyed: static objects of the program may still unarchive while they are torn down.
ClassRegistry& classRegistry() {
    static ClassRegistry& registry = *new ClassRegistry;
    return registry;
}

[[noreturn]] void cannotEncode() {
    throw NSException(NSInvalidArgumentException, "this coder does not encode");
}

[[noreturn]] void cannotDecode() {
    throw NSException(NSInvalidArgumentException, "this coder does not decode");
}

} // namespace

NSCoding::~NSCoding() = default;

NSCoder::~NSCoder() = default;

void NSCoder::encodeObject(const NSCoding*, std::string_view) { cannotEncode(); }
void NSCoder::encodeArray(const std::vector<const NSCoding*>&, std::string_view) { cannotEncode(); }
void NSCoder::encodeString(const std::string&, std::string_view) { cannotEncode(); }
void NSCoder::encodeData(ByteView, std::string_view) { cannotEncode(); }
void NSCoder::encodeBool(bool, std::string_view) { cannotEncode(); }
void NSCoder::encodeInt(std::int64_t, std::string_view) { cannotEncode(); }
void NSCoder::encodeFloat(float, std::string_view) { cannotEncode(); }
void NSCoder::encodeSize(NSSize, std::string_view) { cannotEncode(); }
void NSCoder::encodeRect(NSRect, std::string_view) { cannotEncode(); }
void NSCoder::encodeTransform(const NSAffineTransform&, std::string_view) { cannotEncode(); }

bool NSCoder::containsValueForKey(std::string_view) const { cannotDecode(); }
std::shared_ptr<NSCoding> NSCoder::decodeObject(std::string_view) { cannotDecode(); }
std::optional<std::vector<std::shared_ptr<NSCoding>>> NSCoder::decodeArray(std::string_view) {
    cannotDecode();
}
std::optional<std::string> NSCoder::decodeString(std::string_view) { cannotDecode(); }
std::optional<NSData> NSCoder::decodeData(std::string_view) { cannotDecode(); }
bool NSCoder::decodeBool(std::string_view) { cannotDecode(); }
std::int64_t NSCoder::decodeInt(std::string_view) { cannotDecode(); }
float NSCoder::decodeFloat(std::string_view) { cannotDecode(); }
NSSize NSCoder::decodeSize(std::string_view) { cannotDecode(); }
NSRect NSCoder::decodeRect(std::string_view) { cannotDecode(); }
std::optional<NSAffineTransform> NSCoder::decodeTransform(std::string_view) { cannotDecode(); }

void NSCoder::throwWrongType(std::string_view key) {
    throwDamagedArchive("the value under the key \"" + textForMessage(key) + "\" is of another type");
}

void registerArchivableClass(std::string_view name, Decode decode) {
    ClassRegistry& registry = classRegistry();
    const std::lock_guard guard(registry.lock);
    registry.classes.insert_or_assign(std::string(name), std::move(decode));
}

std::vector<std::string> archivableClassNames() {
    ClassRegistry& registry = classRegistry();
    const std::lock_guard guard(registry.lock);
    std::vector<std::string> names;
    for (const auto& [name, decode] : registry.classes) names.push_back(name);
    return names;
}

Decode archivableClassNamed(std::string_view name) {
    ClassRegistry& registry = classRegistry();
    const std::lock_guard guard(registry.lock);
    const auto found = registry.classes.find(name);
    return found == registry.classes.end() ? nullptr : found->second;
}

} // namespace Imaging::Platform
