// Files are read until their end, whatever size they claim, and written under a temporary name that takes the
// place of the file when everything is on the disk.

#include "Platform/Foundation/Data.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <fcntl.h>
#include <filesystem>
#include <new>
#include <poll.h>
#include <random>
#include <stdexcept>
#include <string_view>
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

int openRetrying(const std::string& path, int flags, mode_t mode) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
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

bool fail(int number, NSError* error) {
    setError(error, NSErrorCode::FileUnwritable, writeErrorInWords(number));
    return false;
}

/// Waits until a descriptor that does not block can take more.
void waitUntilWritable(int descriptor) {
    pollfd request{descriptor, POLLOUT, 0};
    ::poll(&request, 1, -1);
}

/// Writes everything; 0 or the number of the error.
int writeAll(int descriptor, ByteView data) {
    while (!data.empty()) {
        // Larger single writes than this are cut or refused by some systems.
        const std::size_t size = data.size() < (1U << 30) ? data.size() : (1U << 30);
        const ssize_t count = ::write(descriptor, data.data(), size);
        if (count >= 0) {
            data = data.subspan(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            waitUntilWritable(descriptor);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

/// Closes and gives 0 or the number of the error; some file systems report a full disk only here. After
/// EINTR the descriptor is closed all the same.
int closeChecked(int descriptor) { return ::close(descriptor) == 0 || errno == EINTR ? 0 : errno; }

int writeAndClose(int descriptor, ByteView data) {
    const int writeError = writeAll(descriptor, data);
    const int closeError = closeChecked(descriptor);
    return writeError != 0 ? writeError : closeError;
}

/// The number in a path such as /dev/fd/1, which names a descriptor of this process, or -1.
int descriptorNamedBy(const std::string& path) {
    for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/", "/proc/thread-self/fd/"}) {
        if (!path.starts_with(folder)) continue;
        int number = -1;
        const char* end = path.data() + path.size();
        const auto [parsed, failure] = std::from_chars(path.data() + folder.size(), end, number);
        if (failure == std::errc() && parsed == end) return number;
    }
    return -1;
}

/// Where the bytes finally go: the path with symbolic links at its last component followed, so that a link
/// stays a link and its target is replaced. Stops at a name of an open descriptor. Throws
/// std::system_error when the links lead in a circle.
std::string followLinks(std::string path) {
    for (int steps = 0; steps < 40; ++steps) {
        if (descriptorNamedBy(path) >= 0) return path;
        std::error_code failure;
        const std::filesystem::path target = std::filesystem::read_symlink(path, failure);
        if (failure) return path;
        path = (std::filesystem::path(path).parent_path() / target).string();
    }
    throw std::system_error(ELOOP, std::generic_category());
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string temporaryName() {
    static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::string name = ".imaging-";
    for (int i = 0; i < 12; ++i) name += letters[random() % letters.size()];
    return name + ".tmp";
}

/// A new file beside the one that it is to replace. Created with mode 0666 so that the system applies the
/// umask, which a thread cannot read without changing it. Gives the descriptor, or -1 and errno.
int createBeside(const std::string& path, std::string& name) {
    for (int tries = 0; tries < 100; ++tries) {
        name = folderOf(path) + temporaryName();
        const int descriptor = openRetrying(name, O_WRONLY | O_CREAT | O_EXCL, 0666);
        if (descriptor >= 0 || errno != EEXIST) return descriptor;
    }
    return -1;
}

/// Gives the new file the owner and mode of the one that it replaces, as far as the file system and the
/// process's rights allow: the content matters more.
void takeOver(int descriptor, const struct stat& existing) {
    struct stat created {};
    if (::fstat(descriptor, &created) != 0) return;
    if (created.st_uid != existing.st_uid || created.st_gid != existing.st_gid) {
        if (::fchown(descriptor, existing.st_uid, existing.st_gid) != 0) errno = 0;
    }
    if (((created.st_mode ^ existing.st_mode) & 07777) != 0) {
        if (::fchmod(descriptor, existing.st_mode & 07777) != 0) errno = 0;
    }
}

bool replaceFile(ByteView data, const std::string& path, const struct stat* existing, NSError* error) {
    std::string temporary;
    const int descriptor = createBeside(path, temporary);
    if (descriptor < 0) return fail(errno, error);
    if (existing != nullptr) takeOver(descriptor, *existing);
    int number = writeAndClose(descriptor, data);
    if (number == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) number = errno;
    if (number == 0) return true;
    ::unlink(temporary.c_str());
    return fail(number, error);
}

bool writeInPlace(ByteView data, int descriptor, NSError* error) {
    if (descriptor < 0) return fail(errno, error);
    const int number = writeAndClose(descriptor, data);
    return number == 0 || fail(number, error);
}

} // namespace

std::optional<NSData> dataWithContentsOfFile(const std::string& path, std::uint64_t maximumBytes,
                                             NSError* error) {
    if (path.find('\0') != std::string::npos) return unreadable(ENOENT, error);
    const Descriptor file(openRetrying(path, O_RDONLY, 0));
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

std::string writeErrorInWords(int number) {
    switch (number) {
    case ENOSPC:
        return "the disk is full";
    case EDQUOT:
        return "the quota on the disk is used up";
    case EFBIG:
        return "the file would be larger than the system permits";
    case EACCES:
    case EPERM:
        return "writing there is not permitted";
    case EROFS:
        return "the file system is read-only";
    case ENOENT:
        return "the folder does not exist";
    case ENOTDIR:
        return "a part of the path is not a folder";
    case EISDIR:
        return "this is a folder, not a file";
    case ENAMETOOLONG:
        return "the name is too long";
    case ELOOP:
        return "the symbolic links lead in a circle";
    case EPIPE:
        return "nobody reads the other end any more";
    default:
        return std::generic_category().message(number);
    }
}

bool writeToFileAtomically(ByteView data, const std::string& path, NSError* error) {
    if (path.empty() || path.find('\0') != std::string::npos) return fail(ENOENT, error);
    std::string target;
    try {
        target = followLinks(path);
    } catch (const std::system_error& failure) {
        return fail(failure.code().value(), error);
    }
    // Standard output redirected to a file is continued where it stands, as a pipe would be.
    if (const int named = descriptorNamedBy(target); named >= 0) {
        return writeInPlace(data, ::fcntl(named, F_DUPFD_CLOEXEC, 0), error);
    }
    struct stat status {};
    if (::stat(target.c_str(), &status) != 0) {
        if (errno != ENOENT) return fail(errno, error);
        return replaceFile(data, target, nullptr, error);
    }
    if (S_ISDIR(status.st_mode)) return fail(EISDIR, error);
    if (!S_ISREG(status.st_mode)) return writeInPlace(data, openRetrying(target, O_WRONLY, 0), error);
    // The folder's permission would be enough, but nobody expects a write-protected file to change.
    if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return fail(errno, error);
    return replaceFile(data, target, &status, error);
}

} // namespace Imaging::Platform
