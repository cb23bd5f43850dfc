// The temporary file stands beside the film, so that putting it in its place is one renaming.

#include "Tools/Film/FilmFile.h"

#include "Platform/Foundation/Data.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Process.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace Imaging::Tool {

namespace {

std::string temporaryName(const std::string& suffix) {
    static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::string name = ".imaging-";
    for (int i = 0; i < 12; ++i) name += letters[random() % letters.size()];
    return name + suffix;
}

/// A link stays a link, and its target is replaced.
std::string targetOf(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path target = std::filesystem::canonical(path, failure);
    return failure ? path : target.string();
}

} // namespace

FilmFile::FilmFile(std::string path, const std::string& suffix)
    : m_path(std::move(path)), m_target(targetOf(m_path)) {
    struct stat existing {};
    const bool exists = ::stat(m_target.c_str(), &existing) == 0;
    if (exists && !S_ISREG(existing.st_mode))
        throw Failure(m_path, "this is no ordinary file, and the encoder can write nothing else");
    if (exists && ::faccessat(AT_FDCWD, m_target.c_str(), W_OK, AT_EACCESS) != 0)
        throw Failure(m_path, Platform::writeErrorInWords(errno));
    m_temporary = (std::filesystem::path(m_target).parent_path() / temporaryName(suffix)).string();
    const int file = ::open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) throw Failure(m_path, Platform::writeErrorInWords(errno));
    // As far as the file system and the process's rights allow: the content matters more.
    if (exists && ::fchown(file, existing.st_uid, existing.st_gid) != 0) errno = 0;
    if (exists && ::fchmod(file, existing.st_mode & 07777) != 0) errno = 0;
    ::close(file);
}

FilmFile::~FilmFile() { remove(); }

int FilmFile::openTemporary() const { return ::open(m_temporary.c_str(), O_WRONLY | O_CLOEXEC); }

void FilmFile::commit() {
    const CreationScope withoutInterrupt;
    if (::rename(m_temporary.c_str(), m_target.c_str()) != 0)
        throw Failure(m_path, Platform::writeErrorInWords(errno));
    m_committed = true;
}

void FilmFile::remove() noexcept {
    if (!m_committed) ::unlink(m_temporary.c_str());
}

} // namespace Imaging::Tool
