// Reads files, URLs and standard input within the limits on pictures, and makes nodes of what is read.

#include "Tools/Files/Input.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/Exception.h"
#include "Tools/Command/Messages.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>
#include <unistd.h>

namespace Imaging::Tool {

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

} // namespace

bool isStandardInput(const std::string& name) { return name == "-"; }

std::string shownName(const std::string& name) { return isStandardInput(name) ? "standard input" : name; }

NSData readInput(const std::string& name) {
    if (isStandardInput(name)) return readStandardInput();
    if (!isURL(name)) return readFile(name);
    try {
        return contentsOf(name);
    } catch (const Platform::NSException& exception) {
        throw Failure(name, exception.reason());
    }
}

NSData readFile(const std::string& path) {
    NSError error;
    auto data = Platform::dataWithContentsOfFile(path, Platform::pictureLimits().maximumBytes, &error);
    if (!data.has_value()) throw Failure(path, error.message);
    return std::move(*data);
}

std::shared_ptr<IMGImage> nodeWithBytes(const NSData& bytes, const std::string& name) {
    try {
        return Imaging::nodeWithBytes(bytes);
    } catch (const Platform::NSException& exception) {
        throw Failure(shownName(name), exception.reason());
    } catch (const std::bad_alloc&) {
        throw Failure(shownName(name), "there is not enough memory for it");
    }
}

std::shared_ptr<IMGImage> loadNode(const std::string& name) { return nodeWithBytes(readInput(name), name); }

} // namespace Imaging::Tool
