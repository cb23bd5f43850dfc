#include "Platform/Foundation/Data.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Imaging::Platform {

namespace {

/// A descriptor that is closed when it goes out of scope.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor() {
        if (m_descriptor >= 0) ::close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

int openForReading(const std::string& path) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

std::nullopt_t unreadable(int number, NSError* error) {
    switch (number) {
    case ENOENT:
        setError(error, NSErrorCode::FileNotFound, "there is no such file");
        break;
    case ENOTDIR:
        setError(error, NSErrorCode::FileNotFound, "a part of the path is not a folder");
        break;
    case EISDIR:
        setError(error, NSErrorCode::FileUnreadable, "this is a folder, not a file");
        break;
    case EACCES:
    case EPERM:
        setError(error, NSErrorCode::FileUnreadable, "reading it is not permitted");
        break;
    default:
        setError(error, NSErrorCode::FileUnreadable, std::generic_category().message(number));
    }
    return std::nullopt;
}

std::nullopt_t tooLarge(std::uint64_t maximumBytes, NSError* error) {
    setError(error, NSErrorCode::TooLarge,
             "it holds more than the limit of " + std::to_string(maximumBytes) + " bytes");
    return std::nullopt;
}

/// Reads once, at most `size` bytes; 0 at the end and -1 on an error in errno.
ssize_t readSome(int descriptor, std::uint8_t* bytes, std::size_t size) {
    ssize_t count = 0;
    do {
        count = ::read(descriptor, bytes, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

/// Reads until the end. The size that the file claims is a hint only: files in /proc claim 0, and others
/// grow or shrink meanwhile.
std::optional<NSData> readToEnd(int descriptor, std::uint64_t claimedSize, std::uint64_t maximumBytes,
                                NSError* error) {
    constexpr std::uint64_t smallestStep = 65'536;
    NSData data;
    std::uint64_t used = 0;
    // One byte more than is expected, so that the end is seen without growing once more.
    std::uint64_t room = std::max(claimedSize + 1, smallestStep);
    while (true) {
        data.resize(room);
        const ssize_t count = readSome(descriptor, data.data() + used, room - used);
        if (count < 0) return unreadable(errno, error);
        used += static_cast<std::uint64_t>(count);
        if (used > maximumBytes) return tooLarge(maximumBytes, error);
        if (count == 0) break;
        if (used == room) room += std::max(room / 2, smallestStep);
    }
    data.resize(used);
    return data;
}

} // namespace

std::optional<NSData> dataWithContentsOfFile(const std::string& path, std::uint64_t maximumBytes,
                                             NSError* error) {
    if (path.find('\0') != std::string::npos) return unreadable(ENOENT, error);
    const Descriptor file(openForReading(path));
    if (file.get() < 0) return unreadable(errno, error);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return unreadable(errno, error);
    if (S_ISDIR(status.st_mode)) return unreadable(EISDIR, error);
    const std::uint64_t size = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
    if (size > maximumBytes) return tooLarge(maximumBytes, error);
    try {
        return readToEnd(file.get(), size, maximumBytes, error);
    } catch (const std::bad_alloc&) {
        setError(error, NSErrorCode::TooLarge, "there is not enough memory to read it");
    } catch (const std::length_error&) {
        setError(error, NSErrorCode::TooLarge, "there is not enough memory to read it");
    }
    return std::nullopt;
}

} // namespace Imaging::Platform
