#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Export.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Imaging::Platform {

/// Encoded bytes of any kind: a file's content, an archive, a colour profile.
using NSData = std::vector<std::uint8_t>;

/// Bytes that are read and not kept or changed.
using ByteView = std::span<const std::uint8_t>;

/// A file read at most up to `maximumBytes`. Directories, missing and unreadable files, and files that are
/// longer give nullopt and the reason. Special files are read until they end or the limit is reached.
///
/// Example:
/// @code
/// NSError error;
/// const auto bytes = dataWithContentsOfFile("note.txt", 1'000'000, &error);
/// if (!bytes.has_value()) error.message = "note.txt: " + error.message;
/// @endcode
IMAGING_EXPORT std::optional<NSData>
dataWithContentsOfFile(const std::string& path, std::uint64_t maximumBytes, NSError* error = nullptr);

/// Writes a file so that nobody ever sees half of it: the bytes go to a new file of a temporary name in the
/// same folder, which takes the place of `path` only when all of them are on it. On failure the temporary
/// file is removed, an older file at `path` stays as it was, and false comes back with the reason. A path
/// that names a device or pipe (such as /dev/stdout) is written in place.
IMAGING_EXPORT bool writeToFileAtomically(ByteView data, const std::string& path, NSError* error = nullptr);

/// What a number of the system (errno) after a failed write says in the words of `writeToFileAtomically`:
/// "the disk is full".
IMAGING_EXPORT std::string writeErrorInWords(int number);

} // namespace Imaging::Platform
