// Reads files, URLs and standard input within the limits on pictures, and makes nodes of what is read.

#include "Tools/Files/Input.h"

#include "Imaging/CachedImage.h"
#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/URLLoading.h"
#include "Tools/Command/Messages.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <optional>
#include <system_error>
#include <unistd.h>

namespace Imaging::Tool {

using Imaging::IMGImage;
using Platform::NSData;
using Platform::NSError;

namespace {

/// By the descriptor itself, which may be a pipe of any length: read to its end or the limit.
NSData readStandardInput() {
    constexpr std::size_t step = 1 << 16;
    const std::uint64_t maximumBytes = Platform::pictureLimits().maximumBytes;
    const std::string name = shownName("-");
    NSData data;
    while (true) {
        const std::size_t used = data.size();
        data.resize(used + step);
        const ssize_t count = ::read(STDIN_FILENO, data.data() + used, step);
        if (count < 0 && errno != EINTR) throw Failure(name, std::generic_category().message(errno));
        data.resize(used + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count == 0) return data;
        if (data.size() > maximumBytes) {
            throw Failure(name, "it holds more than the limit of " + std::to_string(maximumBytes) + " bytes");
        }
    }
}

NSData readURL(const std::string& name) {
    const std::optional<Platform::NSURL> url = Platform::NSURL::URLWithString(name);
    if (!url.has_value()) {
        throw Failure(
            name, "this is not a URL; spaces and special characters in one are written as %20 and the like");
    }
    NSError error;
    std::optional<NSData> data = Platform::dataWithContentsOfURL(*url, &error);
    if (!data.has_value()) throw Failure(name, error.message);
    return std::move(*data);
}

/// A bitmap of its own instead of the picture as the platform reads it, which would keep the encoded bytes.
std::shared_ptr<IMGImage> decodedNode(const NSData& bytes, const std::string& name) {
    if (Platform::looksLikePropertyList(bytes)) return Platform::unarchiveObjectOfClass<IMGImage>(bytes);
    NSError error;
    auto bitmap = Platform::NSBitmapImageRep::imageRepWithData(bytes, &error);
    if (bitmap == nullptr) throw Failure(shownName(name), error.message);
    const auto picture = std::make_shared<Platform::NSImage>(bitmap->size());
    picture->addRepresentation(std::move(bitmap));
    return Imaging::imagingImage(picture);
}

} // namespace

bool isStandardInput(const std::string& name) { return name == "-"; }

/// "C:x" is a file, and so is "a/b://c", since a scheme has no slash in it.
bool isURL(const std::string& name) {
    const std::size_t colon = name.find(':');
    if (colon == std::string::npos || colon == 0) return false;
    const std::string_view rest = std::string_view(name).substr(colon + 1);
    const std::string_view scheme = std::string_view(name).substr(0, colon);
    const bool isWord = std::all_of(scheme.begin(), scheme.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
               c == '-' || c == '.';
    });
    return isWord && (rest.starts_with("//") || (scheme == "file" && rest.starts_with('/')));
}

std::string shownName(const std::string& name) { return isStandardInput(name) ? "standard input" : name; }

NSData readInput(const std::string& name) {
    if (isStandardInput(name)) return readStandardInput();
    return isURL(name) ? readURL(name) : readFile(name);
}

NSData readFile(const std::string& path) {
    NSError error;
    auto data = Platform::dataWithContentsOfFile(path, Platform::pictureLimits().maximumBytes, &error);
    if (!data.has_value()) throw Failure(path, error.message);
    return std::move(*data);
}

std::shared_ptr<IMGImage> nodeWithBytes(const NSData& bytes, const std::string& name) {
    try {
        return decodedNode(bytes, name);
    } catch (const Platform::NSException& exception) {
        throw Failure(shownName(name), exception.reason());
    } catch (const std::bad_alloc&) {
        throw Failure(shownName(name), "there is not enough memory for it");
    }
}

std::shared_ptr<IMGImage> loadNode(const std::string& name) { return nodeWithBytes(readInput(name), name); }

} // namespace Imaging::Tool
