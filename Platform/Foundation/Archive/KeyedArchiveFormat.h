#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Geometry.h"

#include <cstdint>
#include <locale.h>
#include <memory>
#include <optional>
#include <plist/plist.h>
#include <string>
#include <string_view>

/// What the archiver and the unarchiver agree on, not part of the library's interface: the names in an
/// archive, how values are put into text and bytes, and the limits that both keep.
namespace Imaging::Platform {

inline constexpr const char* archiverName = "NSKeyedArchiver";
inline constexpr std::uint64_t archiveVersion = 100000;
inline constexpr const char* nullEntry = "$null";
inline constexpr const char* arrayClassName = "NSArray";
inline constexpr const char* arrayElementsKey = "NS.objects";
inline constexpr const char* transformClassName = "NSAffineTransform";
inline constexpr const char* transformKey = "NSTransformStruct";

/// Entries of an archive may be shared, so what is decoded can be larger than the archive. This is the most
/// in bytes of strings, data and arrays that an archive of the given length may decode to.
constexpr std::uint64_t maximumDecodedBytes(std::uint64_t archiveBytes) {
    return 64 * archiveBytes + (64ULL << 20);
}

struct PropertyListDeleter {
    void operator()(void* node) const { plist_free(node); }
};

/// A node of a property list that has no parent yet, with all below it.
using PropertyList = std::unique_ptr<void, PropertyListDeleter>;

/// Gives the calling thread the C locale until it goes out of scope. The property list library reads and
/// writes numbers as the locale has them, and a decimal comma would spoil them.
class ScopedCLocale {
public:
    ScopedCLocale();
    ~ScopedCLocale();
    ScopedCLocale(const ScopedCLocale&) = delete;
    ScopedCLocale& operator=(const ScopedCLocale&) = delete;

private:
    locale_t m_previous;
};

/// Recursion over objects: counts how deep it is and looks at the room that is left on the thread's stack.
class NestingGuard {
public:
    /// Allows so many levels.
    explicit NestingGuard(int deepest);

    /// False when another level would be one too many. Levels are left with `leave`.
    bool enter();
    void leave() { --m_depth; }

private:
    int m_deepest;
    int m_depth = 0;
    std::uintptr_t m_lowest_address = 0; ///< 0 where the stack's extent is not known
};

/// Throws an NSException named NSInvalidUnarchiveOperationException.
[[noreturn]] void throwDamagedArchive(const std::string& reason);

/// A text for a one-line message: control characters become "?", and long ones are cut.
std::string textForMessage(std::string_view text);

/// The key as it stands in the archive: keys that begin with "$" belong to the archive itself, so those of
/// objects get one "$" more. Throws NSInvalidArgumentException when it is not UTF-8 or holds a zero byte.
std::string archiveKey(std::string_view key);

/// True for well-formed UTF-8 without zero bytes, which is what a property list can hold.
bool isArchivableText(std::string_view text);

/// True when the text has control characters other than tab, line feed and carriage return; XML has no way
/// to write those.
bool hasControlCharacters(std::string_view text);

/// "{w, h}" and "{{x, y}, {w, h}}" with nine significant digits, enough to get every float back.
std::string stringFromSize(NSSize size);
std::string stringFromRect(NSRect rect);

/// The other way; spaces may stand between the parts. Nullopt for any other text.
std::optional<NSSize> sizeFromString(std::string_view text);
std::optional<NSRect> rectFromString(std::string_view text);

/// Six big-endian 32-bit floats: m11 m12 m21 m22 tX tY.
std::string bytesFromTransform(const NSAffineTransform& transform);

/// The other way; nullopt unless there are exactly 24 bytes.
std::optional<NSAffineTransform> transformFromBytes(std::string_view bytes);

} // namespace Imaging::Platform
